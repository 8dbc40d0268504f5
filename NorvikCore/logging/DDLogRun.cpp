#include "NorvikCore/logging/DDLogRun.h"

#include "NorvikCore/logging/internal/LogRecord.h"

namespace norvik {

// An entry without a record is that of a message that the caller created as an object.

int DDLogEntry::logLevel() const noexcept { return record_ ? record_->site().level : message().logLevel(); }
int DDLogEntry::logFlag() const noexcept { return record_ ? record_->site().flag : message().logFlag(); }
int DDLogEntry::logContext() const noexcept { return record_ ? record_->site().context : message().logContext(); }

Date DDLogEntry::timestamp() const noexcept {
  if (!record_) return message().timestamp();
  constexpr std::int64_t second = 1'000'000'000;
  const auto seconds = static_cast<double>(wallNanoseconds_ / second);
  return Date::dateWithTimeIntervalSince1970(seconds).dateByAddingTimeInterval(
      static_cast<double>(wallNanoseconds_ % second) / 1e9);
}

const char* DDLogEntry::file() const noexcept { return record_ ? record_->site().file : message().file(); }
const char* DDLogEntry::function() const noexcept { return record_ ? record_->site().function : message().function(); }
int DDLogEntry::lineNumber() const noexcept { return record_ ? record_->site().line : message().lineNumber(); }
std::uint32_t DDLogEntry::machThreadID() const noexcept {
  return record_ ? record_->threadId() : message().machThreadID();
}
std::string_view DDLogEntry::threadName() const noexcept {
  return record_ ? record_->threadName() : message().threadName().view();
}
std::string_view DDLogEntry::queueLabel() const noexcept {
  return record_ ? record_->queueLabel() : message().queueLabel();
}
NSString DDLogEntry::text() const { return record_ ? record_->text() : message().logMsg(); }

void DDLogEntry::appendText(std::string& line) const {
  if (record_) return record_->appendText(line);
  line += message().logMsg().utf8();
}

const DDLogMessage& DDLogEntry::message() const {
  if (const DDLogMessage* made = message_.loadAcquire()) return *made;
  Ref<DDLogMessage> made = make<DDLogMessage>(*record_, timestamp());
  DDLogMessage* other = nullptr;
  if (message_.compareExchange(other, made.get())) return *made.take();
  return *other;  // another logger has created it in the meantime
}

}  // namespace norvik
