#include "NorvikCore/logging/DDLogFileFormatterDefault.h"

#include "NorvikCore/platform/foundation/NSDateFormatter.h"

#include <utility>

namespace norvik {
namespace {

/// As UTF-8, which most texts are in already.
void append(std::string& line, const NSString& text) {
  if (text.isWellFormed()) {
    line += text.view();
  } else {
    line += text.utf8();
  }
}

}  // namespace

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

void DDLogFileFormatterDefault::appendLogMessage(std::string& text, const DDLogMessage& message) {
  appendTimestamp(text, message.timestamp());
  append(text, message.logMsg());
}

void DDLogFileFormatterDefault::appendTimestamp(std::string& line, Date timestamp) const {
  dateFormatter->appendStringFromDate(timestamp, line);
  line += "  ";
}

}  // namespace norvik
