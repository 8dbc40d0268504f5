#include "NorvikCore/logging/internal/LogRecord.h"

#include "NorvikCore/platform/values/internal/FormatCopy.h"

#include <new>

namespace norvik::detail {

LogRecord* LogRecord::filledOnHeap(const LogSite& site, const LogCaller& caller, const LogContent& content) {
  for (;;) {
    const std::size_t room =
        roomForFormatArguments(content.arguments) + caller.namesSize() + sizeof(Value) + alignof(Value);
    void* const memory = ::operator new (sizeof(LogRecord) + room, std::align_val_t{alignof(LogRecord)});
    auto* const record = ::new (memory) LogRecord;
    record->onHeap_ = true;
    if (record->fillWithin(static_cast<char*>(memory) + sizeof(LogRecord) + room, site, caller, content)) return record;
    record->giveBack();  // a text has grown meanwhile: its owner's mistake, but no reason to end the process
  }
}

Date LogRecord::timestamp() const noexcept {
  constexpr std::int64_t second = 1'000'000'000;
  const auto seconds = static_cast<double>(wallNanoseconds_ / second);
  return Date::dateWithTimeIntervalSince1970(seconds).dateByAddingTimeInterval(
      static_cast<double>(wallNanoseconds_ % second) / 1e9);
}

NSString LogRecord::text() const { return stringWithFormatArguments({format_, formatSize_}, arguments()); }

void LogRecord::appendText(std::string& line) const {
  appendFormatArguments(line, {format_, formatSize_}, arguments());
}

void LogRecord::dispose() noexcept {
  releaseFormatCopies(arguments());
  if (tag_) tag_->~Value();
  giveBack();
}

void LogRecord::giveBack() noexcept {
  if (!onHeap_) return inUse_.store(false, std::memory_order_release);
  this->~LogRecord();
  ::operator delete (this, std::align_val_t{alignof(LogRecord)});
}

}  // namespace norvik::detail
