#include "NorvikCore/platform/kernel/Clock.h"

#include <gtest/gtest.h>
#include <time.h>

namespace norvik {
namespace {

TEST(Clock, HeaderExample) {
  const double now = kernel::wallSeconds();
  const std::int64_t start = kernel::monotonicNanoseconds();
  const std::int64_t spent = kernel::monotonicNanoseconds() - start;
  EXPECT_GT(now, 700'000'000.0);  // later than 2023
  EXPECT_GE(spent, 0);
}

TEST(Clock, WallNanosecondsAreTheSystemsTimeSince1970) {
  const time_t before = time(nullptr);
  const std::int64_t seconds = kernel::wallNanoseconds() / 1'000'000'000;
  // time() reads a coarser clock, which may be a tick behind.
  EXPECT_GE(seconds, before);
  EXPECT_LE(seconds, time(nullptr) + 1);
}

TEST(Clock, WallSecondsCountFrom2001) {
  const std::int64_t before = kernel::wallNanoseconds();
  const double seconds = kernel::wallSeconds();
  const std::int64_t after = kernel::wallNanoseconds();
  // 11,323 days of 86,400 seconds lie between the two origins.
  EXPECT_GE(seconds, static_cast<double>(before) / 1e9 - 978'307'200.0 - 0.000001);
  EXPECT_LE(seconds, static_cast<double>(after) / 1e9 - 978'307'200.0 + 0.000001);
}

TEST(Clock, MonotonicTimeNeverGoesBack) {
  std::int64_t last = kernel::monotonicNanoseconds();
  for (int i = 0; i < 10'000; ++i) {
    const std::int64_t now = kernel::monotonicNanoseconds();
    ASSERT_GE(now, last);
    last = now;
  }
}

TEST(Clock, TheSystemClockReadsTheMachinesClocks) {
  const std::int64_t wall = kernel::wallNanoseconds(), monotonic = kernel::monotonicNanoseconds();
  EXPECT_GE(kernel::systemClock().wallNanoseconds(), wall);
  EXPECT_GE(kernel::systemClock().monotonicNanoseconds(), monotonic);
  EXPECT_LT(kernel::systemClock().wallNanoseconds() - wall, 60'000'000'000);
}

TEST(Clock, AManualClockStandsStillUntilMoved) {
  kernel::ManualClock clock(1'000, 50);
  EXPECT_EQ(clock.wallNanoseconds(), 1'000);
  EXPECT_EQ(clock.monotonicNanoseconds(), 50);
  clock.advance(7);
  EXPECT_EQ(clock.wallNanoseconds(), 1'007);
  EXPECT_EQ(clock.monotonicNanoseconds(), 57);
}

TEST(Clock, OnlyTheWallClockOfAManualClockJumps) {
  kernel::ManualClock clock(1'000, 50);
  clock.jumpWallClock(-600);
  EXPECT_EQ(clock.wallNanoseconds(), 400);
  EXPECT_EQ(clock.monotonicNanoseconds(), 50);
}

}  // namespace
}  // namespace norvik
