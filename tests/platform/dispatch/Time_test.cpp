#include "NorvikCore/platform/dispatch/Time.h"

#include "NorvikCore/platform/values/Date.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>

namespace norvik {
namespace {

std::uint64_t monotonicNow() {
  return static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
}

using namespace std::chrono_literals;

TEST(Time, HeaderExample) {
  dispatch_time_t inAMinute = dispatch_time(DISPATCH_TIME_NOW, 1min);
  EXPECT_EQ(dispatch_time(inAMinute, -1min + 1ms), dispatch_time(inAMinute, -60 * NSEC_PER_SEC + NSEC_PER_MSEC));
  EXPECT_EQ(dispatch_time(inAMinute, std::chrono::hours::max()), DISPATCH_TIME_FOREVER);
  dispatch_time_t inTwoSeconds = dispatch_time(DISPATCH_TIME_NOW, 2 * NSEC_PER_SEC);
  dispatch_time_t later = dispatch_time(inTwoSeconds, 500 * NSEC_PER_MSEC);
  EXPECT_EQ(later - inTwoSeconds, 500'000'000U);
  const std::timespec noon{1'700'000'000, 0};
  dispatch_time_t noonByTheWall = dispatch_walltime(&noon, 0);
  EXPECT_NE(noonByTheWall, DISPATCH_TIME_FOREVER);
  const Date payday = std::chrono::sys_days{std::chrono::May / 10 / 2021};
  dispatch_time_t noonOfPayday = dispatch_walltime(payday + 12h);
  const std::timespec noonOfThatDay{1'620'648'000, 0};
  EXPECT_EQ(noonOfPayday, dispatch_walltime(&noonOfThatDay, 0));
}

TEST(Time, AWallPointIsGivenAsADateOrATimeOfTheSystemClock) {
  const std::timespec quarter{1'620'648'000, 250'000'000};
  const std::chrono::sys_time<std::chrono::milliseconds> point{1'620'648'000'250ms};
  EXPECT_EQ(dispatch_walltime(point), dispatch_walltime(&quarter, 0));
  EXPECT_EQ(dispatch_walltime(Date(point)), dispatch_walltime(&quarter, 0));
  const std::timespec start{};
  const dispatch_time_t start1970 = dispatch_walltime(&start, 0);
  EXPECT_EQ(dispatch_walltime(std::chrono::sys_days{std::chrono::January / 1 / 1960}), start1970);
  EXPECT_EQ(dispatch_walltime(Date::distantPast()), start1970);
  EXPECT_EQ(dispatch_walltime(Date::fromReferenceSeconds(std::numeric_limits<double>::quiet_NaN())), start1970);
  EXPECT_EQ(dispatch_walltime(Date::distantFuture()), DISPATCH_TIME_FOREVER);
  EXPECT_EQ(dispatch_walltime(Date::fromReferenceSeconds(std::numeric_limits<double>::infinity())),
            DISPATCH_TIME_FOREVER);
}

TEST(Time, NowIsThePresentOfTheMonotonicClock) {
  const std::uint64_t before = monotonicNow();
  const dispatch_time_t now = dispatch_time(DISPATCH_TIME_NOW, 0);
  EXPECT_GE(now, before);
  EXPECT_LE(now, monotonicNow());
}

TEST(Time, MonotonicPointsMoveBothWaysAndStopAtTheEnds) {
  EXPECT_EQ(dispatch_time(1'000, 500), 1'500U);
  EXPECT_EQ(dispatch_time(1'000, -400), 600U);
  EXPECT_EQ(dispatch_time(1'000, -1'000), 1U);
  EXPECT_EQ(dispatch_time(1'000, -5'000), 1U);
  EXPECT_EQ(dispatch_time(1'000, INT64_MIN), 1U);
  EXPECT_EQ(dispatch_time(1'000, INT64_MAX), DISPATCH_TIME_FOREVER);
  EXPECT_EQ(dispatch_time(1, INT64_MAX - 1), 9'223'372'036'854'775'807U);
  EXPECT_EQ(dispatch_time(DISPATCH_TIME_FOREVER, -5), DISPATCH_TIME_FOREVER);
}

TEST(Time, WallPointsMoveOnTheirOwnClock) {
  const std::timespec when{100, 250};
  const std::timespec later{101, 0};
  EXPECT_EQ(dispatch_time(dispatch_walltime(&when, 0), 999'999'750), dispatch_walltime(&later, 0));
  EXPECT_EQ(dispatch_walltime(&later, -999'999'750), dispatch_walltime(&when, 0));
  EXPECT_EQ(dispatch_walltime(&when, INT64_MAX), DISPATCH_TIME_FOREVER);
  EXPECT_EQ(dispatch_time(dispatch_walltime(&when, 0), INT64_MAX), DISPATCH_TIME_FOREVER);
  const std::timespec farAway{INT64_MAX, 0};
  EXPECT_EQ(dispatch_walltime(&farAway, 0), DISPATCH_TIME_FOREVER);
}

TEST(Time, WallPointsBefore1970AreItsBeginning) {
  const std::timespec before{-5, 0};
  const std::timespec start{0, 0};
  EXPECT_EQ(dispatch_walltime(&before, 0), dispatch_walltime(&start, 0));
  EXPECT_NE(dispatch_walltime(&start, 0), DISPATCH_TIME_FOREVER);
  EXPECT_EQ(dispatch_time(dispatch_walltime(&start, 0), INT64_MIN), dispatch_walltime(&start, 0));
}

}  // namespace
}  // namespace norvik
