#include "NorvikCore/logging/DDLogger.h"

#include "tests/support/RecordingLogger.h"

#include <gtest/gtest.h>

#include <atomic>

namespace norvik {
namespace {

using DDLoggerTest = test::CleanDDLog;

class ErrorCounter : public DDAbstractLogger {
  NK_OBJECT(ErrorCounter, DDAbstractLogger)
  void logMessage(const DDLogMessage& message) override {
    if (message.logFlag() == LOG_FLAG_ERROR) ++errors;
  }
  std::atomic<int> errors = 0;
};

TEST_F(DDLoggerTest, HeaderExample) {
  auto counter = make<ErrorCounter>();
  DDLog::addLogger(counter);
  test::say("a warning", LOG_FLAG_WARN);
  test::say("an error", LOG_FLAG_ERROR);
  DDLog::flushLog();
  EXPECT_EQ(counter->errors, 1);
}

}  // namespace
}  // namespace norvik
