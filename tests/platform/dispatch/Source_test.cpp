#include "NorvikCore/platform/dispatch/Source.h"

#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/dispatch/internal/TimerClock.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/platform/dispatch/Watchdog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace norvik {
namespace {

/// Timers on a manual clock and a serial queue; their handlers record what they do as text.
class Source : public test::WatchedTest {
 protected:
  dispatch_source_t timer(const char* name) {
    auto source = dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, queue_);
    dispatch_source_set_clock(source, clock_);
    dispatch_source_set_event_handler(source, [this, name] { seen_ += name; });
    return source;
  }
  /// Advances the clock and lets the handlers run; then returns what they recorded.
  std::string after(std::uint64_t nanoseconds) {
    clock_.advance(nanoseconds);
    return dispatch_sync(queue_, [this] { return std::exchange(seen_, std::string()); });
  }

  dispatch_manual_clock clock_;
  const dispatch_queue_t queue_ = dispatch_queue_create("timers");
  std::string seen_;
};

TEST_F(Source, HeaderExample) {
  bool rolled = false;
  auto done = dispatch_semaphore_create(0);
  auto timer = dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, queue_);
  dispatch_source_set_event_handler(timer, [&] {
    rolled = true;
    dispatch_semaphore_signal(done);
  });
  dispatch_source_set_timer(timer, dispatch_time(DISPATCH_TIME_NOW, 2 * NSEC_PER_MSEC), 0, 0);
  dispatch_resume(timer);
  dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
  EXPECT_TRUE(rolled);
}

TEST_F(Source, IntervalsMayBeDurations) {
  using namespace std::chrono_literals;
  auto once = timer("o"), often = timer("r");
  dispatch_source_set_timer(once, dispatch_time(clock_.time(0), 3ms), -1s);  // below zero is zero: once
  dispatch_source_set_timer(often, dispatch_time(clock_.time(0), 1ms), 2ms, 0ms);
  dispatch_resume(once);
  dispatch_resume(often);
  EXPECT_EQ(after(1'000'000), "r");
  EXPECT_EQ(after(1'999'999), "");
  EXPECT_EQ(after(1), "or");
  EXPECT_EQ(after(2'000'000), "r");
}

TEST_F(Source, AOneShotTimerFiresOnceAtItsTime) {
  auto source = timer("a");
  dispatch_source_set_timer(source, clock_.time(100), 0, 0);
  dispatch_resume(source);
  EXPECT_EQ(after(99), "");
  EXPECT_EQ(after(1), "a");
  EXPECT_EQ(after(1000), "");
  EXPECT_EQ(clock_.armedTimers(), 0U);
}

TEST_F(Source, AStartThatIsPastFiresAtOnce) {
  auto source = timer("a");
  dispatch_source_set_timer(source, DISPATCH_TIME_NOW, DISPATCH_TIME_FOREVER, 0);
  dispatch_resume(source);
  EXPECT_EQ(after(0), "a");
}

TEST_F(Source, TimersThatMayWaitForEachOtherFireTogether) {
  // The clock begins at one second, which is a multiple of 512 ns.
  auto a = timer("a");
  auto b = timer("b");
  auto exact = timer("!");
  dispatch_source_set_timer(a, clock_.time(600), 0, 700);
  dispatch_source_set_timer(b, clock_.time(900), 0, 600);
  dispatch_source_set_timer(exact, clock_.time(600), 0, 0);
  for (const auto& source : {a, b, exact}) dispatch_resume(source);
  EXPECT_EQ(after(599), "");
  EXPECT_EQ(after(1), "!");
  EXPECT_EQ(after(423), "");
  EXPECT_EQ(after(1), "ab") << "at 1024, a multiple of 512";
}

TEST_F(Source, ARepeatingTimerKeepsToItsGrid) {
  auto source = timer("a");
  dispatch_source_set_timer(source, clock_.time(100), 50, 0);
  dispatch_resume(source);
  EXPECT_EQ(after(99), "");
  EXPECT_EQ(after(1), "a");
  EXPECT_EQ(after(49), "");
  EXPECT_EQ(after(1), "a");
  EXPECT_EQ(after(70), "a");
  EXPECT_EQ(after(29), "") << "199 + 50 = 249 after the start is not yet 250";
  EXPECT_EQ(after(1), "a");
}

TEST_F(Source, PeriodsThatPassBeforeTheHandlerRunsAreOneCall) {
  auto source = timer("a");
  std::vector<std::uintptr_t> data;
  dispatch_source_set_event_handler(source, [&] { data.push_back(dispatch_source_get_data(source)); });
  dispatch_source_set_timer(source, clock_.time(10), 10, 0);
  dispatch_resume(source);
  dispatch_sync(queue_, [&] { clock_.advance(45); });
  dispatch_sync(queue_, [] {});
  EXPECT_EQ(data, (std::vector<std::uintptr_t>{4}));
  dispatch_source_set_event_handler(source, nullptr);
}

TEST_F(Source, TimersFireInTheOrderOfTheirDeadlinesThenOfTheirSetting) {
  auto a = timer("a");
  auto b = timer("b");
  auto c = timer("c");
  auto d = timer("d");
  dispatch_source_set_timer(c, clock_.time(30), 0, 0);
  dispatch_source_set_timer(a, clock_.time(10), 0, 0);
  dispatch_source_set_timer(b, clock_.time(20), 0, 0);
  dispatch_source_set_timer(d, clock_.time(30), 0, 0);
  for (const auto& source : {a, b, c, d}) dispatch_resume(source);
  EXPECT_EQ(after(30), "abcd");
}

TEST_F(Source, SettingATimerAgainReplacesWhatWasSet) {
  auto source = timer("a");
  dispatch_source_set_timer(source, clock_.time(10), 0, 0);
  dispatch_resume(source);
  dispatch_source_set_timer(source, clock_.time(50), 0, 0);
  EXPECT_EQ(after(49), "");
  EXPECT_EQ(after(1), "a");
  dispatch_source_set_timer(source, clock_.time(10), 0, 0);
  dispatch_source_set_timer(source, DISPATCH_TIME_FOREVER, 0, 0);
  EXPECT_EQ(after(1000), "") << "stopped";
  dispatch_source_set_timer(source, clock_.time(5), 0, 0);
  EXPECT_EQ(after(5), "a");
}

TEST_F(Source, SettingATimerAgainTakesBackWhatHasFiredAndNotYetBeenHandled) {
  auto source = timer("a");
  dispatch_source_set_timer(source, clock_.time(10), 0, 0);
  dispatch_resume(source);
  dispatch_sync(queue_, [&] {
    clock_.advance(10);  // the timer fires, and its handler waits for this block
    dispatch_source_set_timer(source, clock_.time(10), 0, 0);
  });
  EXPECT_EQ(after(9), "");
  EXPECT_EQ(after(1), "a");
}

TEST_F(Source, ASourceStartsSuspended) {
  auto source = timer("a");
  dispatch_source_set_timer(source, clock_.time(10), 0, 0);
  EXPECT_EQ(after(20), "");
  dispatch_resume(source);
  EXPECT_EQ(after(0), "a") << "what fired meanwhile is handled after the resume";
}

TEST_F(Source, SuspensionsAreCountedAndWhatFiresMeanwhileIsOneCall) {
  auto source = timer("a");
  dispatch_source_set_timer(source, clock_.time(10), 10, 0);
  dispatch_resume(source);
  EXPECT_EQ(after(10), "a");
  dispatch_suspend(source);
  dispatch_suspend(source);
  EXPECT_EQ(after(50), "");
  dispatch_resume(source);
  EXPECT_EQ(after(10), "");
  dispatch_resume(source);
  EXPECT_EQ(after(0), "a");
  EXPECT_EQ(after(10), "a");
}

TEST_F(Source, ASuspendThatComesBeforeTheHandlerKeepsItBack) {
  auto source = timer("a");
  dispatch_source_set_timer(source, clock_.time(10), 0, 0);
  dispatch_resume(source);
  dispatch_sync(queue_, [&] {
    clock_.advance(10);
    dispatch_suspend(source);
  });
  EXPECT_EQ(after(0), "");
  dispatch_resume(source);
  EXPECT_EQ(after(0), "a");
}

TEST_F(Source, ACancelledTimerFiresNoMoreAndItsCancelHandlerRunsOnce) {
  auto source = timer("a");
  dispatch_source_set_cancel_handler(source, [this] { seen_ += "cancelled"; });
  dispatch_source_set_timer(source, clock_.time(10), 10, 0);
  dispatch_resume(source);
  EXPECT_EQ(after(10), "a");
  EXPECT_EQ(dispatch_source_testcancel(source), 0);
  dispatch_source_cancel(source);
  dispatch_source_cancel(source);
  EXPECT_NE(dispatch_source_testcancel(source), 0);
  EXPECT_EQ(after(100), "cancelled");
  EXPECT_EQ(clock_.armedTimers(), 0U);
  dispatch_source_set_timer(source, clock_.time(1), 0, 0);
  EXPECT_EQ(after(100), "") << "a cancelled source stays so";
}

TEST_F(Source, CancellingOnTheQueueTakesBackWhatHasFired) {
  auto source = timer("a");
  dispatch_source_set_timer(source, clock_.time(10), 0, 0);
  dispatch_resume(source);
  dispatch_sync(queue_, [&] {
    clock_.advance(10);
    dispatch_source_cancel(source);
  });
  EXPECT_EQ(after(0), "");
}

TEST_F(Source, TheCancelHandlerOfASuspendedSourceWaitsForTheResume) {
  auto source = timer("a");
  dispatch_source_set_cancel_handler(source, [this] { seen_ += "cancelled"; });
  dispatch_source_cancel(source);
  EXPECT_EQ(after(0), "");
  dispatch_resume(source);
  EXPECT_EQ(after(0), "cancelled");
}

TEST_F(Source, CancellingDestroysTheHandlers) {
  auto held = std::make_shared<int>(1);
  const std::weak_ptr<int> weak = held;
  auto source = timer("a");
  // The handler holds its own source, which is a reference cycle until the source is cancelled.
  dispatch_source_set_event_handler(source, [source, held = std::move(held)] {});
  dispatch_source_set_cancel_handler(source, [source] {});
  dispatch_resume(source);
  EXPECT_FALSE(weak.expired());
  dispatch_source_cancel(source);
  EXPECT_EQ(after(0), "");
  EXPECT_TRUE(weak.expired());
}

TEST_F(Source, AHandlerMayReplaceItselfAndSetItsTimerAgain) {
  auto source = timer("");
  dispatch_source_set_event_handler(source, [&] {
    seen_ += "first";
    dispatch_source_set_event_handler(source, [this] { seen_ += "second"; });
    dispatch_source_set_timer(source, clock_.time(10), 0, 0);
    seen_ += "!";
  });
  dispatch_source_set_timer(source, clock_.time(10), 0, 0);
  dispatch_resume(source);
  EXPECT_EQ(after(10), "first!");
  EXPECT_EQ(after(10), "second");
}

TEST_F(Source, AHandlerThatReplacesItselfLivesUntilItReturns) {
  auto source = timer("");
  auto held = std::make_shared<std::string>("alive");
  const std::weak_ptr<std::string> weak = held;
  dispatch_source_set_event_handler(source, [this, &source, held = std::move(held)] {
    dispatch_source_set_event_handler(source, [this] { seen_ += "second"; });
    dispatch_source_set_event_handler(source, [this] { seen_ += "third"; });
    seen_ += *held;
  });
  dispatch_source_set_timer(source, clock_.time(10), 10, 0);
  dispatch_resume(source);
  EXPECT_EQ(after(10), "alive");
  dispatch_sync(queue_, [] {});
  EXPECT_TRUE(weak.expired());
  EXPECT_EQ(after(10), "third");
}

TEST_F(Source, TimersOfSeveralQueuesThatFireAtOnceKeepTheirOrderOnEach) {
  auto other = dispatch_queue_create("other");
  auto concurrent = dispatch_queue_create(nullptr, DISPATCH_QUEUE_CONCURRENT);
  std::string onOther;
  std::atomic<int> onConcurrent{0};
  std::vector<dispatch_source_t> sources;
  const auto add = [&](const dispatch_queue_t& queue, auto handler) {
    sources.push_back(dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, queue));
    dispatch_source_set_clock(sources.back(), clock_);
    dispatch_source_set_event_handler(sources.back(), handler);
    dispatch_source_set_timer(sources.back(), clock_.time(10), 0, 0);
    dispatch_resume(sources.back());
  };
  for (const char* name : {"a", "b", "c"}) add(queue_, [this, name] { seen_ += name; });
  for (const char* name : {"d", "e"}) add(other, [&onOther, name] { onOther += name; });
  for (int i = 0; i < 3; ++i) add(concurrent, [&onConcurrent] { ++onConcurrent; });
  for (const char* name : {"f", "g"}) add(queue_, [this, name] { seen_ += name; });
  EXPECT_EQ(after(10), "abcfg");
  EXPECT_EQ(dispatch_sync(other, [&] { return onOther; }), "de");
  dispatch_barrier_sync(concurrent, [] {});
  EXPECT_EQ(onConcurrent.load(), 3);
}

TEST_F(Source, ThousandsOfTimersThatAreDueAtOnceFireOnceEachInOrder) {
  constexpr int timerCount = 3000;
  std::vector<dispatch_source_t> sources;
  std::vector<int> order;
  for (int i = 0; i < timerCount; ++i) {
    const int slot = i * 7919 % timerCount;
    sources.push_back(dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, queue_));
    dispatch_source_set_clock(sources.back(), clock_);
    dispatch_source_set_event_handler(sources.back(), [&order, slot] { order.push_back(slot); });
    dispatch_source_set_timer(sources.back(), clock_.time(slot), 0, 0);
    dispatch_resume(sources.back());
  }
  clock_.advance(timerCount);
  dispatch_sync(queue_, [] {});
  ASSERT_EQ(order.size(), 3000U);
  for (int i = 0; i < timerCount; ++i) EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST_F(Source, AHandlerMayCancelTheNextOneThatIsDueAtTheSameTime) {
  auto a = timer("");
  auto b = timer("b");
  auto c = timer("c");
  dispatch_source_set_event_handler(a, [&] {
    seen_ += "a";
    dispatch_source_cancel(b);
  });
  for (const auto& source : {a, b, c}) {
    dispatch_source_set_timer(source, clock_.time(10), 0, 0);
    dispatch_resume(source);
  }
  EXPECT_EQ(after(10), "ac");
}

TEST_F(Source, AHandlerMayCancelItsSourceAndDropTheLastHandle) {
  auto source = timer("");
  dispatch_source_set_event_handler(source, [&] {
    seen_ += "a";
    dispatch_source_cancel(source);
    source = nullptr;
    seen_ += "b";
  });
  dispatch_source_set_timer(source, clock_.time(10), 10, 0);
  dispatch_resume(source);
  EXPECT_EQ(after(10), "ab");
  EXPECT_EQ(after(100), "");
}

TEST_F(Source, WithItsLastHandleASourceIsCancelled) {
  auto held = std::make_shared<int>(1);
  const std::weak_ptr<int> weak = held;
  {
    auto source = timer("a");
    dispatch_source_set_event_handler(source, [this, held = std::move(held)] { seen_ += "a"; });
    dispatch_source_set_cancel_handler(source, [this] { seen_ += "cancelled"; });
    dispatch_source_set_timer(source, clock_.time(10), 10, 0);
    dispatch_resume(source);
    EXPECT_EQ(after(10), "a");
  }
  EXPECT_EQ(after(100), "cancelled");
  EXPECT_TRUE(weak.expired());
  EXPECT_EQ(clock_.armedTimers(), 0U);
}

TEST_F(Source, HandlersOfOneSourceNeverOverlapOnAConcurrentQueue) {
  auto queue = dispatch_queue_create(nullptr, DISPATCH_QUEUE_CONCURRENT);
  auto source = dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, queue);
  dispatch_source_set_clock(source, clock_);
  std::atomic<int> inside{0};
  std::atomic<int> overlaps{0};
  std::atomic<std::uint64_t> fired{0};
  dispatch_source_set_event_handler(source, [&] {
    if (inside.fetch_add(1) != 0) ++overlaps;
    fired += dispatch_source_get_data(source);
    std::this_thread::yield();
    --inside;
  });
  dispatch_source_set_timer(source, clock_.time(1), 1, 0);
  dispatch_resume(source);
  for (int i = 0; i < 2000; ++i) clock_.advance(1);
  while (fired < 2000) std::this_thread::yield();
  EXPECT_EQ(fired.load(), 2000U) << "no period is lost";
  EXPECT_EQ(overlaps.load(), 0);
  auto done = dispatch_semaphore_create(0);
  dispatch_source_set_cancel_handler(source, [&] { dispatch_semaphore_signal(done); });
  dispatch_source_cancel(source);
  dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
}

TEST_F(Source, AnEmptyQueueIsTheGlobalOne) {
  auto source = dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, nullptr);
  auto done = dispatch_semaphore_create(0);
  std::string label;
  dispatch_source_set_event_handler(source, [&] {
    label = dispatch_queue_get_label(DISPATCH_CURRENT_QUEUE_LABEL);
    dispatch_semaphore_signal(done);
  });
  dispatch_source_set_timer(source, DISPATCH_TIME_NOW, 0, 0);
  dispatch_resume(source);
  dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
  EXPECT_EQ(label, "com.norvik.global-queue");
}

TEST_F(Source, ByTheRealClockTimersFireInOrderAndNeverEarly) {
  using Clock = std::chrono::steady_clock;
  constexpr int timerCount = 200;
  std::vector<dispatch_source_t> sources;
  std::vector<Clock::time_point> due(timerCount);
  std::vector<int> order;
  std::atomic<int> early{0};
  auto done = dispatch_semaphore_create(0);
  const auto base = Clock::now() + std::chrono::milliseconds(200);  // later than the last timer is set
  for (int i = 0; i < timerCount; ++i) {
    const int slot = (i * 37) % timerCount;  // set in a mixed order
    const auto at = base + std::chrono::microseconds(100 * slot);
    auto source = dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, queue_);
    dispatch_source_set_event_handler(source, [&, slot, at] {
      if (Clock::now() < at) ++early;
      order.push_back(slot);
      if (order.size() == timerCount) dispatch_semaphore_signal(done);
    });
    dispatch_source_set_timer(source, static_cast<dispatch_time_t>(at.time_since_epoch().count()), 0, 0);
    dispatch_resume(source);
    sources.push_back(source);
  }
  dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
  EXPECT_EQ(early.load(), 0);
  for (int i = 0; i < timerCount; ++i) EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST_F(Source, ATimerOfTheWallClockFollowsItWhenItIsSet) {
  static std::atomic<std::uint64_t> wall{1'000'000'000'000};
  detail::SystemTimerClock::shared().setWallClock([]() noexcept { return wall.load(); });
  const auto source = [&](const char* name, dispatch_time_t start) {
    auto made = dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, queue_);
    dispatch_source_set_event_handler(made, [this, name] { seen_ += name; });
    dispatch_source_set_timer(made, start, 0, 0);
    dispatch_resume(made);
    return made;
  };
  const std::timespec inAnHour{1000 + 3600, 0};
  auto byTheWall = source("wall", dispatch_walltime(&inAnHour, 0));
  auto monotonic = source("monotonic", dispatch_time(DISPATCH_TIME_NOW, 3600 * NSEC_PER_SEC));
  EXPECT_EQ(dispatch_sync(queue_, [this] { return seen_; }), "");
  wall = 4'600'000'000'000;  // the wall clock is set an hour ahead
  detail::SystemTimerClock::shared().setWallClock([]() noexcept { return wall.load(); });
  while (dispatch_sync(queue_, [this] { return seen_; }).empty()) std::this_thread::yield();
  EXPECT_EQ(dispatch_sync(queue_, [this] { return seen_; }), "wall");
}

TEST_F(Source, TheTimerThreadEndsWhenThereAreNoTimersAndStartsAgain) {
  auto& clock = detail::SystemTimerClock::shared();
  clock.setIdleTime(1'000'000);
  for (int round = 0; round < 3; ++round) {
    auto done = dispatch_semaphore_create(0);
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, NSEC_PER_MSEC), queue_, [&] { dispatch_semaphore_signal(done); });
    EXPECT_TRUE(clock.threadRuns());
    EXPECT_EQ(dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER), 0);
    while (clock.threadRuns()) std::this_thread::yield();
  }
}

TEST_F(Source, SourcesMaySetCancelledAndDroppedFromManyThreadsWhileTheyFire) {
  std::vector<std::thread> threads;
  std::atomic<int> fired{0};
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 300; ++i) {
        auto source = dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, queue_);
        dispatch_source_set_event_handler(source, [&] { ++fired; });
        dispatch_source_set_timer(source, DISPATCH_TIME_NOW, 1000, 0);
        dispatch_resume(source);
        dispatch_suspend(source);
        dispatch_source_set_timer(source, dispatch_time(DISPATCH_TIME_NOW, 1000), 1000, 0);
        dispatch_resume(source);
        if (i % 2 == 0) dispatch_source_cancel(source);
      }
    });
  }
  for (auto& thread : threads) thread.join();
  // The last deliveries may still be on the queue; they use `fired`.
  detail::SystemTimerClock::shared().setIdleTime(1'000'000);
  while (detail::SystemTimerClock::shared().threadRuns()) std::this_thread::yield();
  dispatch_sync(queue_, [] {});
  dispatch_sync(queue_, [] {});
  EXPECT_GE(fired.load(), 0);
}

TEST_F(Source, AnEmptyHandleRaises) {
  const dispatch_source_t none;
  EXPECT_THROW(dispatch_resume(none), NSException);
  EXPECT_THROW(dispatch_suspend(none), NSException);
  EXPECT_THROW(dispatch_source_cancel(none), NSException);
  EXPECT_THROW(dispatch_source_set_timer(none, DISPATCH_TIME_NOW, 0, 0), NSException);
  EXPECT_THROW(dispatch_source_set_event_handler(none, [] {}), NSException);
}

class SourceDeathTest : public test::WatchedDeathTest {};

TEST_F(SourceDeathTest, OneResumeTooManyAborts) {
  EXPECT_DEATH(
      {
        auto source = dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, nullptr);
        dispatch_resume(source);
        dispatch_resume(source);
      },
      "BUG: dispatch_resume");
}

}  // namespace
}  // namespace norvik
