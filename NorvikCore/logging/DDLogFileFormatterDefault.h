// NorvikCore/logging/DDLogFileFormatterDefault.h - formats a line of a log file: time stamp, two spaces, text.
//
//   2021/05/10 14:30:12:045  40 payslips written
//
// Line breaks in a message are written unchanged. So a message of several lines is several lines of the file, and a
// message that contains a line feed and a time looks like two messages. If texts come from outside the program, use
// DDLogLineFormatter.
//
//   logger->setLogFormatter(make<DDLogFileFormatterDefault>());                  // as above, local time
//   logger->setLogFormatter(DDLogFileFormatterDefault::initWithDateFormatter(isoFormatter));
//
// Ownership: retains its date formatter, which must not be changed while messages are logged.
// Threads:   confined to the queue of the logger that owns it.
#pragma once

#include "NorvikCore/logging/DDLogger.h"
#include "NorvikCore/platform/export.h"

#include <string>

namespace norvik {

class NSDateFormatter;

class NK_EXPORT DDLogFileFormatterDefault : public DDLogFormatter {
  NK_OBJECT(DDLogFileFormatterDefault, DDLogFormatter)

  /// If no date formatter is given: "yyyy/MM/dd HH:mm:ss:SSS" in the locale and the time zone at the time of
  /// construction.
  DDLogFileFormatterDefault();
  explicit DDLogFileFormatterDefault(Ref<NSDateFormatter> dateFormatter);
  [[nodiscard]] static Ref<DDLogFileFormatterDefault> initWithDateFormatter(const Ref<NSDateFormatter>& dateFormatter);

  [[nodiscard]] std::optional<NSString> formatLogMessage(const DDLogMessage& message) override;

  bool appendLogMessage(std::string& line, const DDLogMessage& message) override;
  bool appendLogEntry(std::string& line, const DDLogEntry& entry) override;
  /// True, except for a derived class.
  [[nodiscard]] bool takesRuns() const noexcept override;

 protected:
  ~DDLogFileFormatterDefault() override;

 private:
  Ref<NSDateFormatter> dateFormatter;
};

}  // namespace norvik
