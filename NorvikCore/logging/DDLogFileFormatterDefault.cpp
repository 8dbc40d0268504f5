#include "NorvikCore/logging/DDLogFileFormatterDefault.h"

#include "NorvikCore/logging/internal/LogTimeStamp.h"

namespace norvik {

DDLogFileFormatterDefault::DDLogFileFormatterDefault() : stamp_(std::make_unique<detail::LogTimeStamp>()) {}

DDLogFileFormatterDefault::~DDLogFileFormatterDefault() = default;

std::optional<NSString> DDLogFileFormatterDefault::formatLogMessage(const DDLogMessage& message) {
  char stamp[detail::LogTimeStamp::length];
  stamp_->write(message.timestamp(), stamp);
  return std::string_view(stamp, sizeof stamp) + ("  " + message.logMsg());
}

void DDLogFileFormatterDefault::appendLogMessage(std::string& text, const DDLogMessage& message) {
  char stamp[detail::LogTimeStamp::length + 2];
  stamp_->write(message.timestamp(), stamp);
  stamp[detail::LogTimeStamp::length] = stamp[detail::LogTimeStamp::length + 1] = ' ';
  text.append(stamp, sizeof stamp);
  if (message.logMsg().isWellFormed()) {
    text.append(message.logMsg().view());
  } else {
    text.append(message.logMsg().utf8());
  }
}

}  // namespace norvik
