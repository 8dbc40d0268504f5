#include "NorvikCore/logging/LogLevel.h"

#include "tests/support/RecordingLogger.h"

#include <gtest/gtest.h>

#include <thread>

namespace norvik {
namespace {

using LogLevelTest = test::CleanDDLog;

TEST(LogLevel, TheLibrarysLevelIsThreeAtFirst) { EXPECT_EQ(ddLogLevel, 3); }

TEST_F(LogLevelTest, HeaderExample) {
  EXPECT_FALSE(ddLogLevel & LOG_FLAG_INFO);
  std::thread([] { ddLogLevel = LOG_LEVEL_VERBOSE; }).join();
  EXPECT_TRUE(ddLogLevel & LOG_FLAG_INFO);
}

TEST(LogLevel, ALevelIsTheSumOfTheFlagsItAdmits) {
  EXPECT_EQ(LOG_LEVEL_OFF, 0);
  EXPECT_EQ(LOG_LEVEL_ERROR, 1);
  EXPECT_EQ(LOG_LEVEL_WARN, 3);
  EXPECT_EQ(LOG_LEVEL_INFO, 7);
  EXPECT_EQ(LOG_LEVEL_DEBUG, 15);
  EXPECT_EQ(LOG_LEVEL_VERBOSE, 31);
  EXPECT_EQ(LOG_FLAG_ERROR, 1);
  EXPECT_EQ(LOG_FLAG_WARN, 2);
  EXPECT_EQ(LOG_FLAG_INFO, 4);
  EXPECT_EQ(LOG_FLAG_DEBUG, 8);
  EXPECT_EQ(LOG_FLAG_VERBOSE, 16);
}

}  // namespace
}  // namespace norvik
