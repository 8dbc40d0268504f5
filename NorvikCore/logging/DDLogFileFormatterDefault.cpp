#include "NorvikCore/logging/DDLogFileFormatterDefault.h"

#include "NorvikCore/platform/foundation/NSDateFormatter.h"

#include <typeinfo>
#include <utility>

namespace norvik {

DDLogFileFormatterDefault::DDLogFileFormatterDefault() : DDLogFileFormatterDefault(nullptr) {}

DDLogFileFormatterDefault::DDLogFileFormatterDefault(Ref<NSDateFormatter> given) : dateFormatter(std::move(given)) {
  if (dateFormatter) return;
  dateFormatter = make<NSDateFormatter>();
  dateFormatter->setFormatterBehavior(NSDateFormatterBehavior10_4);
  dateFormatter->setDateFormat("yyyy/MM/dd HH:mm:ss:SSS");
}

DDLogFileFormatterDefault::~DDLogFileFormatterDefault() = default;

Ref<DDLogFileFormatterDefault> DDLogFileFormatterDefault::initWithDateFormatter(
    const Ref<NSDateFormatter>& dateFormatter) {
  return make<DDLogFileFormatterDefault>(dateFormatter);
}

std::optional<NSString> DDLogFileFormatterDefault::formatLogMessage(const DDLogMessage& message) {
  return dateFormatter->stringFromDate(message.timestamp()) + "  " + message.logMsg();
}

bool DDLogFileFormatterDefault::appendLogMessage(std::string& line, const DDLogMessage& message) {
  if (!DDLogFileFormatterDefault::takesRuns()) return DDLogFormatter::appendLogMessage(line, message);
  dateFormatter->appendStringFromDate(message.timestamp(), line);
  line += "  ";
  line += message.logMsg().utf8();
  return true;
}

bool DDLogFileFormatterDefault::appendLogEntry(std::string& line, const DDLogEntry& entry) {
  if (!DDLogFileFormatterDefault::takesRuns()) return DDLogFormatter::appendLogEntry(line, entry);
  dateFormatter->appendStringFromDate(entry.timestamp(), line);
  line += "  ";
  entry.appendText(line);
  return true;
}

/// A derived class may override formatLogMessage().
bool DDLogFileFormatterDefault::takesRuns() const noexcept {
  return typeid(*this) == typeid(DDLogFileFormatterDefault);
}

}  // namespace norvik
