#include "NorvikCore/logging/DDLogMacros.h"

#include "NorvikCore/platform/values/Date.h"
#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/NSNumber.h"
#include "tests/support/RecordingLogger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace norvik {
namespace {

using test::RecordingLogger;
using ::testing::ElementsAre;
using DDLogMacros = test::CleanDDLog;

TEST_F(DDLogMacros, HeaderExample) {
  const auto logger = make<RecordingLogger>();
  DDLog::addLogger(logger);
  int described = 0;
  const auto expensiveDescription = [&] { return std::to_string(++described); };
  const Date date = Date::fromReferenceSeconds(60);
  DDLogWarn("Date time component is non zero : %@", date);
  DDLogVerbose("%@", expensiveDescription());
  settle();
  EXPECT_EQ(described, 0);
  EXPECT_THAT(logger->all(),
              ElementsAre("[added]", "Date time component is non zero : 2001-01-01 00:01:00 +0000", "[flushed]"));
}

TEST_F(DDLogMacros, ShowAmountsRoundedAsDecimals) {
  const auto logger = make<RecordingLogger>();
  DDLog::addLogger(logger);
  Decimal net = 1234.565_dec;
  DDLogWarn("net %.2f of %@", net, net);
  DDLogError("%9.2f|%.1f|%.2f", -12_dec, NSNumber(0.25), std::optional<Decimal>());
  net = 0;  // the message has its own copy
  settle();
  EXPECT_THAT(logger->all(), ElementsAre("[added]", "net 1234.57 of 1234.565", "   -12.00|0.3|(null)", "[flushed]"));
}

TEST_F(DDLogMacros, TestTheLevelBeforeAnythingIsEvaluated) {
  const auto logger = make<RecordingLogger>();
  DDLog::addLogger(logger);
  int evaluated = 0;
  const auto next = [&] { return ++evaluated; };
  ddLogLevel = LOG_LEVEL_INFO;
  DDLogError("error %d", next());
  DDLogWarn("warning %d", next());
  DDLogInfo("info %d", next());
  DDLogDebug("debug %d", next());
  DDLogVerbose("verbose %d", next());
  ddLogLevel = LOG_LEVEL_OFF;
  DDLogError("off %d", next());
  ddLogLevel = LOG_LEVEL_VERBOSE;
  DDLogDebug("debug %d", next());
  DDLogVerbose("verbose %d", next());
  settle();
  EXPECT_EQ(evaluated, 5);
  EXPECT_THAT(logger->all(),
              ElementsAre("[added]", "error 1", "warning 2", "info 3", "debug 4", "verbose 5", "[flushed]"));
}

TEST_F(DDLogMacros, GiveLevelFlagAndPlace) {
  const auto logger = make<RecordingLogger>();
  Ref<const DDLogMessage> got;
  logger->onMessage = [&](const DDLogMessage& message) { got = Ref<const DDLogMessage>(&message); };
  DDLog::addLogger(logger);
  ddLogLevel = LOG_LEVEL_DEBUG;
  const int line = __LINE__ + 1;
  DDLogInfo("here");
  settle();
  ASSERT_TRUE(got);
  EXPECT_EQ(got->logLevel(), 15);
  EXPECT_EQ(got->logFlag(), 4);
  EXPECT_EQ(got->logContext(), 0);
  EXPECT_EQ(got->lineNumber(), line);
  EXPECT_EQ(got->fileName(), "DDLogMacros_test");
  EXPECT_EQ(got->methodName(), "TestBody");
  EXPECT_TRUE(got->tag().isAbsent());
}

TEST_F(DDLogMacros, AMacroIsOneStatement) {
  ddLogLevel = LOG_LEVEL_OFF;
  if (ddLogLevel == LOG_LEVEL_OFF)
    DDLogError("suppressed");
  else
    FAIL();
}

struct Submission {
  static int ddLogLevel() { return LOG_LEVEL_DEBUG; }
};

#undef NK_LOG_LEVEL
#define NK_LOG_LEVEL Submission::ddLogLevel()

TEST_F(DDLogMacros, AFileMayHaveALevelOfItsOwn) {
  const auto logger = make<RecordingLogger>();
  DDLog::addLogger(logger);
  ddLogLevel = LOG_LEVEL_OFF;
  DDLogDebug("debug");
  DDLogVerbose("verbose");
  settle();
  EXPECT_THAT(logger->all(), ElementsAre("[added]", "debug", "[flushed]"));
}

}  // namespace
}  // namespace norvik
