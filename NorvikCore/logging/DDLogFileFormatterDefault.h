// NorvikCore/logging/DDLogFileFormatterDefault.h - how a line of a log file looks: time stamp, two blanks, text.
//
//   2021/05/10 14:30:12:045  40 payslips written
//
// Threads: confined, to the queue of the logger that has it.
#pragma once

#include "NorvikCore/logging/DDLogger.h"
#include "NorvikCore/platform/export.h"

#include <memory>
#include <string>

namespace norvik {

namespace detail {
class LogTimeStamp;
}

class NK_EXPORT DDLogFileFormatterDefault : public DDLogFormatter {
  NK_OBJECT(DDLogFileFormatterDefault, DDLogFormatter)

  DDLogFileFormatterDefault();

  [[nodiscard]] std::optional<NSString> formatLogMessage(const DDLogMessage& message) override;

  /// Appends what formatLogMessage() gives, as UTF-8.
  void appendLogMessage(std::string& text, const DDLogMessage& message);

 protected:
  ~DDLogFileFormatterDefault() override;

 private:
  std::unique_ptr<detail::LogTimeStamp> stamp_;
};

}  // namespace norvik
