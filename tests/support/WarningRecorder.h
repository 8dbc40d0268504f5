// tests/support/WarningRecorder.h - collects the messages that the library logs while it exists.
#pragma once

#include "NorvikCore/logging/DDAbstractLogger.h"
#include "NorvikCore/logging/DDLog.h"

#include <string>
#include <vector>

namespace norvik::test {

struct RecordedWarning {
  std::string text, file, function;
  int level, flag, context;
  bool hasTag;
};

class RecordingLogger : public norvik::DDAbstractLogger {
  NK_OBJECT(RecordingLogger, DDAbstractLogger)
  void logMessage(const norvik::DDLogMessage& message) override {
    warnings.push_back({message.logMsg().utf8(), message.file(), message.function(), message.logLevel(),
                        message.logFlag(), message.logContext(), !message.tag().isAbsent()});
  }
  std::vector<RecordedWarning> warnings;
};

/// Adds a logger when it is created and removes it when it is destroyed. Loggers of tests in one program see each
/// other's messages, so a test compares only the messages that it has caused.
class WarningRecorder {
 public:
  WarningRecorder() { norvik::DDLog::addLogger(logger_); }
  ~WarningRecorder() {
    norvik::DDLog::removeLogger(logger_);
    norvik::DDLog::flushLog();
  }
  WarningRecorder(const WarningRecorder&) = delete;
  WarningRecorder& operator=(const WarningRecorder&) = delete;

  /// Returns the messages since the last call and clears the list.
  [[nodiscard]] std::vector<RecordedWarning> take() {
    norvik::DDLog::flushLog();
    return std::exchange(logger_->warnings, {});
  }

 private:
  norvik::Ref<RecordingLogger> logger_ = norvik::make<RecordingLogger>();
};

}  // namespace norvik::test
