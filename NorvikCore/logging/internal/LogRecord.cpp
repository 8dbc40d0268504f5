#include "NorvikCore/logging/internal/LogRecord.h"

namespace norvik::detail {

void LogRecord::fillOnHeap(const LogSite& site, const LogCaller& caller, const LogContent& content) {
  onHeap_ = nullptr;
  made_ = nullptr;
  format_ = nullptr;
  for (;;) {
    const std::size_t room =
        roomForFormatArguments(content.arguments) + caller.namesSize() + sizeof(Value) + alignof(Value);
    void* const memory = ::operator new(sizeof(LogRecord) + room);
    auto* const record = ::new (memory) LogRecord;
    if (record->fillWithin(static_cast<char*>(memory) + sizeof(LogRecord) + room, site, caller, content)) {
      onHeap_ = record;
      return;
    }
    ::operator delete(memory);  // a text has grown in between, by its owner's error; the process continues
  }
}

void LogRecord::fill(const Ref<DDLogMessage>& message) noexcept {
  onHeap_ = nullptr;
  made_ = Ref<DDLogMessage>(message).take();
}

void LogRecord::fillWithNothing() noexcept {
  onHeap_ = nullptr;
  made_ = nullptr;
  format_ = nullptr;
}

NSString LogRecord::text() const {
  const LogRecord& record = whole();
  return stringWithFormatArguments({record.format_, record.formatSize_}, record.arguments());
}

void LogRecord::appendText(std::string& line) const {
  const LogRecord& record = whole();
  if (record.format_ == LogContent::formed.data()) {
    if (const FormatArgument& argument = record.arguments().data()[0]; argument.kind() == FormatKind::text) {
      line.append(static_cast<const char*>(argument.pointer), argument.length);
      return;
    }
  }
  appendFormatArguments(line, {record.format_, record.formatSize_}, record.arguments());
}

void LogRecord::dispose() noexcept {
  if (made_) [[unlikely]] {
    (void)Ref<DDLogMessage>::adopt(made_);
  } else if (onHeap_) [[unlikely]] {
    onHeap_->dispose();
    ::operator delete(onHeap_);
  } else if (format_) {
    releaseFormatCopies(arguments());
    if (tag_) tag_->~Value();
  }
}

}  // namespace norvik::detail
