// NorvikCore/logging/DDLogFileFormatterDefault.h - how a line of a log file looks: time stamp, two blanks, text.
//
//   2021/05/10 14:30:12:045  40 payslips written
//
// Line breaks in a message are written unchanged, so that a message of several lines is several lines of the file, and
// one that holds a line feed and a time looks like two messages. Where texts come from outside the program, prefer
// DDLogLineFormatter.
//
//   logger->setLogFormatter(make<DDLogFileFormatterDefault>());                  // as above, local time
//   logger->setLogFormatter(DDLogFileFormatterDefault::initWithDateFormatter(isoFormatter));
//
// Ownership: keeps its date formatter, which nobody changes while messages flow.
// Threads:   confined, to the queue of the logger that has it.
#pragma once

#include "NorvikCore/logging/DDLogger.h"
#include "NorvikCore/platform/export.h"

#include <string>

namespace norvik {

class NSDateFormatter;

class NK_EXPORT DDLogFileFormatterDefault : public DDLogFormatter {
  NK_OBJECT(DDLogFileFormatterDefault, DDLogFormatter)

  /// Without a date formatter: "yyyy/MM/dd HH:mm:ss:SSS" in the locale and the time zone of this moment.
  DDLogFileFormatterDefault();
  explicit DDLogFileFormatterDefault(Ref<NSDateFormatter> dateFormatter);
  [[nodiscard]] static Ref<DDLogFileFormatterDefault> initWithDateFormatter(const Ref<NSDateFormatter>& dateFormatter);

  [[nodiscard]] std::optional<NSString> formatLogMessage(const DDLogMessage& message) override;

  bool appendLogMessage(std::string& line, const DDLogMessage& message) override;
  bool appendLogEntry(std::string& line, const DDLogEntry& entry) override;
  /// Unless it is of a class derived from this one.
  [[nodiscard]] bool takesRuns() const noexcept override;

 protected:
  ~DDLogFileFormatterDefault() override;

 private:
  Ref<NSDateFormatter> dateFormatter;
};

}  // namespace norvik
