// The mock date stays until the process ends, so each test runs in its own child process.
#include "NorvikCore/Categories/NSDate+Mock.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "NorvikCore/Categories/NSDate+Norvik.h"
#include "NorvikCore/logging/DDLogMessage.h"
#include "NorvikCore/platform/values/Date_literals.h"

namespace norvik {
namespace {

/// Runs `body` in a child process; `body` may use expectations.
template <class Body>
void inChildProcess(Body body) {
  EXPECT_EXIT(
      {
        body();
        std::exit(::testing::Test::HasFailure() ? 1 : 0);
      },
      ::testing::ExitedWithCode(0), "");
}

bool isRealClock(std::optional<Date> date) {
  return date && std::abs(date->timeIntervalSinceDate(Date::systemDate())) < 60;
}

TEST(NSDateMock, HeaderExample) {
  inChildProcess([] {
    setMockDateStringValue("2021-04-06 00:00:00 +0000");
    EXPECT_EQ(NSDate::date(), "2021-04-06"_date);
    EXPECT_TRUE(isRealClock(mockCurrentDate()));
  });
}

TEST(NSDateMock, IsInactiveAtFirst) {
  inChildProcess([] {
    EXPECT_EQ(mockCurrentDate(), std::nullopt);
    EXPECT_TRUE(isRealClock(NSDate::date()));
  });
}

TEST(NSDateMock, ReplacesTodayAndWhatBuildsOnIt) {
  inChildProcess([] {
    setMockDateStringValue("2021-04-07 15:30:00 +0000");
    EXPECT_EQ(nk_today(), "2021-04-07"_date);
    EXPECT_EQ(nk_tomorrow(), "2021-04-08"_date);
    EXPECT_EQ(nk_startOfNextTaxMonth(), "2021-05-06"_date);
  });
}

TEST(NSDateMock, ALaterDateReplacesAnEarlierOne) {
  inChildProcess([] {
    setMockDateStringValue("2021-04-06 00:00:00 +0000");
    setMockDateStringValue("2022-01-01 01:00:00 +0100");
    EXPECT_EQ(NSDate::date(), "2022-01-01"_date);
    EXPECT_TRUE(isRealClock(mockCurrentDate()));
  });
}

TEST(NSDateMock, ATextThatIsNoDateLeavesNoCurrentDate) {
  inChildProcess([] {
    setMockDateStringValue("2021-04-06 00:00:00 +0000");
    setMockDateStringValue("the sixth of April");
    EXPECT_EQ(NSDate::date(), std::nullopt);
    EXPECT_THROW((void)nk_today(), std::exception);
  });
}

TEST(NSDateMock, ATextThatIsNoDateActivatesTheMockToo) {
  inChildProcess([] {
    setMockDateStringValue("");
    EXPECT_EQ(NSDate::date(), std::nullopt);
    EXPECT_TRUE(isRealClock(mockCurrentDate()));
    setMockDateStringValue("2021-04-06 00:00:00 +0000");
    EXPECT_EQ(NSDate::date(), "2021-04-06"_date);
  });
}

TEST(NSDateMock, ExchangesWhateverTheCurrentDateWasBefore) {
  inChildProcess([] {
    Date::setCurrentDateSource([]() -> std::optional<Date> { return "1999-12-31"_date; });
    setMockDateStringValue("2021-04-06 00:00:00 +0000");
    EXPECT_EQ(NSDate::date(), "2021-04-06"_date);
    EXPECT_EQ(mockCurrentDate(), "1999-12-31"_date);
  });
}

TEST(NSDateMock, LogTimesStayReal) {
  inChildProcess([] {
    setMockDateStringValue("1999-12-31 00:00:00 +0000");
    EXPECT_TRUE(isRealClock(DDLogMessage::initWithLogMsg("x", 3, 2, 0, "f", "g", 1, Value(), 0)->timestamp()));
  });
}

}  // namespace
}  // namespace norvik
