#include "NorvikCore/platform/dispatch/Semaphore.h"

#include "NorvikCore/platform/values/Date.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/platform/dispatch/Watchdog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace norvik {
namespace {

class Semaphore : public test::WatchedTest {};

TEST_F(Semaphore, HeaderExample) {
  auto permits = dispatch_semaphore_create(1000);
  EXPECT_EQ(dispatch_semaphore_wait(permits, DISPATCH_TIME_FOREVER), 0);
  EXPECT_EQ(dispatch_semaphore_wait(permits, std::chrono::milliseconds(100)), 0);
  EXPECT_EQ(dispatch_semaphore_signal(permits), 0) << "nobody was asleep";
}

TEST_F(Semaphore, PermitsAreCounted) {
  auto permits = dispatch_semaphore_create(2);
  EXPECT_EQ(dispatch_semaphore_wait(permits, DISPATCH_TIME_NOW), 0);
  EXPECT_EQ(dispatch_semaphore_wait(permits, DISPATCH_TIME_NOW), 0);
  EXPECT_NE(dispatch_semaphore_wait(permits, DISPATCH_TIME_NOW), 0);
  dispatch_semaphore_signal(permits);
  EXPECT_EQ(dispatch_semaphore_wait(permits, DISPATCH_TIME_NOW), 0);
}

TEST_F(Semaphore, AWaitGivesUpAtItsTimeAndTakesNothing) {
  auto permits = dispatch_semaphore_create(0);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_NE(dispatch_semaphore_wait(permits, dispatch_time(DISPATCH_TIME_NOW, 5 * NSEC_PER_MSEC)), 0);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(5));
  dispatch_semaphore_signal(permits);
  EXPECT_EQ(dispatch_semaphore_wait(permits, DISPATCH_TIME_NOW), 0);
}

TEST_F(Semaphore, AWaitMayBeLimitedByAnInstant) {
  auto permits = dispatch_semaphore_create(1);
  const auto past = std::chrono::system_clock::now() - std::chrono::hours(1);
  const auto soon = [] { return std::chrono::system_clock::now() + std::chrono::milliseconds(5); };
  EXPECT_EQ(dispatch_semaphore_wait(permits, past), 0) << "a permit is taken at once";
  EXPECT_NE(dispatch_semaphore_wait(permits, past), 0);
  EXPECT_NE(dispatch_semaphore_wait(permits, Date(past)), 0);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_NE(dispatch_semaphore_wait(permits, soon()), 0);
  EXPECT_NE(dispatch_semaphore_wait(permits, Date(soon())), 0);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(9));
}

TEST_F(Semaphore, AWaitMayBeLimitedByADuration) {
  auto none = dispatch_semaphore_create(0);
  EXPECT_NE(dispatch_semaphore_wait(none, std::chrono::milliseconds(1)), 0);
  EXPECT_NE(dispatch_semaphore_wait(none, std::chrono::seconds(-1)), 0);
  dispatch_semaphore_signal(none);
  EXPECT_EQ(dispatch_semaphore_wait(none, std::chrono::hours::max()), 0);
}

TEST_F(Semaphore, NoMoreThreadsThanPermitsAreInside) {
  auto permits = dispatch_semaphore_create(3);
  std::atomic<int> inside{0};
  std::atomic<int> most{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 2000; ++i) {
        dispatch_semaphore_wait(permits, DISPATCH_TIME_FOREVER);
        const int now = ++inside;
        int seen = most.load();
        while (now > seen && !most.compare_exchange_weak(seen, now)) {
        }
        --inside;
        dispatch_semaphore_signal(permits);
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_LE(most.load(), 3);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(dispatch_semaphore_wait(permits, DISPATCH_TIME_NOW), 0) << "none was lost";
  EXPECT_NE(dispatch_semaphore_wait(permits, DISPATCH_TIME_NOW), 0) << "none was made";
}

TEST_F(Semaphore, TwoThreadsCanTakeTurns) {
  auto ping = dispatch_semaphore_create(0);
  auto pong = dispatch_semaphore_create(0);
  int turns = 0;
  std::thread other([&] {
    for (int i = 0; i < 2000; ++i) {
      dispatch_semaphore_wait(ping, DISPATCH_TIME_FOREVER);
      ++turns;
      dispatch_semaphore_signal(pong);
    }
  });
  for (int i = 0; i < 2000; ++i) {
    ++turns;
    dispatch_semaphore_signal(ping);
    dispatch_semaphore_wait(pong, DISPATCH_TIME_FOREVER);
  }
  other.join();
  EXPECT_EQ(turns, 4000);
}

TEST_F(Semaphore, ANumberOfPermitsOutOfRangeMakesNone) {
  EXPECT_FALSE(dispatch_semaphore_create(-1));
  EXPECT_FALSE(dispatch_semaphore_create(2147483648));
  EXPECT_TRUE(dispatch_semaphore_create(2147483647));
  EXPECT_THROW(dispatch_semaphore_wait(nullptr, DISPATCH_TIME_NOW), NSException);
  EXPECT_THROW(dispatch_semaphore_signal(nullptr), NSException);
}

}  // namespace
}  // namespace norvik
