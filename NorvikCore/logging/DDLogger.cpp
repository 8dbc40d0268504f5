#include "NorvikCore/logging/DDLogger.h"

namespace norvik {

DDLogFormatter::~DDLogFormatter() = default;
bool DDLogFormatter::appendLogMessage(std::string& line, const DDLogMessage& message) {
  const std::optional<NSString> text = formatLogMessage(message);
  if (text) line += text->utf8();
  return text.has_value();
}
bool DDLogFormatter::appendLogEntry(std::string& line, const DDLogEntry& entry) {
  return appendLogMessage(line, entry.message());
}
bool DDLogFormatter::takesRuns() const noexcept { return false; }
void DDLogFormatter::didAddToLogger(DDLogger&) {}
void DDLogFormatter::willRemoveFromLogger(DDLogger&) {}

DDLogger::~DDLogger() = default;
bool DDLogger::takesRuns() const noexcept { return false; }
std::size_t DDLogger::logMessages(const DDLogRun& run) {
  logMessage(run[0].message());
  return 1;
}
dispatch_queue_t DDLogger::loggerQueue() { return nullptr; }
std::optional<NSString> DDLogger::loggerName() { return std::nullopt; }
void DDLogger::didAddLogger() {}
void DDLogger::willRemoveLogger() {}
void DDLogger::flush() {}
Ref<DDLogFormatter> DDLogger::logFormatter() { return nullptr; }
void DDLogger::setLogFormatter(const Ref<DDLogFormatter>&) {}

}  // namespace norvik
