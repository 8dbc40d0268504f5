#include "NorvikCore/dispatch/TSKDispatchQueue.h"

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/dispatch/Source.h"
#include "NorvikCore/platform/object/Weak.h"
#include "tests/dispatch/Wrappers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <latch>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace norvik {
namespace {

using test::concurrent;
using test::flush;
using test::serial;
using test::Wrapper;

/// Named timers on a manual clock that starts at one second. The names of fired timers are recorded as text.
class NamedTimers : public test::WatchedTest {
 protected:
  NamedTimers() { queue_->setTimerClock(clock_); }

  Block<void()> note(const char* text) {
    return [this, text] { seen_ += text; };
  }
  void schedule(const char* name, double seconds, TSKTimerBehavior behavior) {
    queue_->scheduleTimerWithName(name, seconds, behavior, note(name));
    flush(queue_);
  }
  /// Advances the clock by that many seconds and returns the timers that fired.
  std::string after(double seconds) {
    clock_.advance(static_cast<std::uint64_t>(std::llround(seconds * 1e9)));
    return dispatch_sync(queue_->queue(), [this] { return std::exchange(seen_, std::string()); });
  }
  static std::optional<double> dateOf(const Wrapper& queue, const char* name) {
    const Value entry = queue->timers()->objectForKey(name);
    if (entry.isAbsent()) return std::nullopt;
    return entry.as<Ref<NSDictionary>>()->objectForKey("DateValue").as<double>();
  }
  static bool isLive(const Wrapper& queue, const char* name) {
    return !queue->timers()->objectForKey(name).as<Ref<NSDictionary>>()->objectForKey("TimerValue").isAbsent();
  }

  dispatch_manual_clock clock_;
  const Wrapper queue_ = serial("timers");
  std::string seen_;
};

class NamedTimersDeathTest : public test::WatchedDeathTest {};

TEST_F(NamedTimers, FireOnceAtTheirTime) {
  schedule("a", 10, TSKTimerKeepEarliest);
  EXPECT_EQ(after(9.999999999), "");
  EXPECT_EQ(after(0.000000001), "a");
  EXPECT_EQ(after(1000), "");
}

TEST_F(NamedTimers, AnIntervalMayBeAWholeNumberOrADuration) {
  using namespace std::chrono_literals;
  queue_->scheduleTimerWithName("a", 2, TSKTimerRestart, note("a"));
  queue_->scheduleTimerWithName("b", 1500ms, TSKTimerRestart, note("b"));
  queue_->scheduleTimerWithName("c", 0.5f, TSKTimerRestart, note("c"));
  flush(queue_);
  EXPECT_EQ(after(0.499999999), "");
  EXPECT_EQ(after(1.5), "cb");
  EXPECT_EQ(after(0.000000001), "a");
}

TEST_F(NamedTimers, RestartFiresOneIntervalAfterTheLastCall) {
  schedule("a", 10, TSKTimerRestart);
  EXPECT_EQ(after(4), "");
  schedule("a", 10, TSKTimerRestart);
  EXPECT_EQ(after(4), "");
  schedule("a", 10, TSKTimerRestart);
  EXPECT_EQ(after(9.999999999), "");
  EXPECT_EQ(after(0.000000001), "a");
  EXPECT_EQ(after(1000), "");
}

TEST_F(NamedTimers, RestartMayAlsoComeEarlier) {
  schedule("a", 10, TSKTimerRestart);
  schedule("a", 3, TSKTimerRestart);
  EXPECT_EQ(after(3), "a");
  EXPECT_EQ(after(1000), "");
}

TEST_F(NamedTimers, KeepEarliestFiresOneIntervalAfterTheFirstCall) {
  schedule("a", 10, TSKTimerKeepEarliest);
  EXPECT_EQ(after(3), "");
  schedule("a", 10, TSKTimerKeepEarliest);
  EXPECT_EQ(after(3), "");
  schedule("a", 10, TSKTimerKeepEarliest);
  EXPECT_EQ(after(3.999999999), "");
  EXPECT_EQ(after(0.000000001), "a");
  EXPECT_EQ(after(1000), "");
}

TEST_F(NamedTimers, KeepEarliestGoesToAnEarlierTime) {
  schedule("a", 10, TSKTimerKeepEarliest);
  EXPECT_EQ(after(1), "");
  schedule("a", 3, TSKTimerKeepEarliest);
  EXPECT_EQ(after(2.999999999), "");
  EXPECT_EQ(after(0.000000001), "a");
  EXPECT_EQ(after(1000), "");
}

TEST_F(NamedTimers, ThrottleFiresAtOnceAndThenNotWithinAnInterval) {
  schedule("a", 10, TSKTimerThrottle);
  EXPECT_EQ(dateOf(queue_, "a"), 1.0);
  EXPECT_EQ(after(0.000000001), "a") << "a nanosecond later";
  schedule("a", 10, TSKTimerThrottle);
  EXPECT_EQ(dateOf(queue_, "a"), 11.0) << "an interval after the time that was planned";
  EXPECT_EQ(after(9.9), "");
  EXPECT_EQ(after(0.1), "a");
  EXPECT_EQ(after(9.5), "");
  schedule("a", 10, TSKTimerThrottle);
  EXPECT_EQ(dateOf(queue_, "a"), 21.0);
  EXPECT_EQ(after(0.4), "");
  EXPECT_EQ(after(0.2), "a");
}

TEST_F(NamedTimers, ThrottleFiresAtOnceWhenTheIntervalHasPassed) {
  schedule("a", 10, TSKTimerThrottle);
  EXPECT_EQ(after(10), "a");
  schedule("a", 10, TSKTimerThrottle);
  EXPECT_EQ(dateOf(queue_, "a"), 11.0);
  EXPECT_EQ(after(0.000000001), "a");
}

TEST_F(NamedTimers, ThrottleOfAPendingTimerChangesNothingButTheBlock) {
  schedule("a", 10, TSKTimerThrottle);
  EXPECT_EQ(after(0.000000001), "a");
  schedule("a", 10, TSKTimerThrottle);
  EXPECT_EQ(after(5), "");
  queue_->scheduleTimerWithName("a", 10, TSKTimerThrottle, note("second"));
  queue_->scheduleTimerWithName("a", 100, TSKTimerThrottle, note("third"));
  flush(queue_);
  EXPECT_EQ(dateOf(queue_, "a"), 11.0);
  EXPECT_EQ(after(5), "third");
  EXPECT_EQ(after(1000), "");
}

TEST_F(NamedTimers, ThrottleGoesByTheLastTimePlannedInWhateverWay) {
  schedule("a", 10, TSKTimerRestart);
  EXPECT_EQ(after(10), "a");
  schedule("a", 4, TSKTimerThrottle);
  EXPECT_EQ(after(3.9), "");
  EXPECT_EQ(after(0.2), "a");
}

TEST_F(NamedTimers, ACancelledTimersTimeCountsForThrottleToo) {
  schedule("a", 10, TSKTimerRestart);
  queue_->cancelTimerWithName("a");
  schedule("a", 4, TSKTimerThrottle);
  EXPECT_EQ(dateOf(queue_, "a"), 15.0) << "4 s after the time that was planned, though it did not fire";
  EXPECT_EQ(after(13.9), "");
  EXPECT_EQ(after(0.2), "a");
}

TEST_F(NamedTimers, OtherBehavioursIgnoreTheTimeOfATimerThatIsNotPending) {
  schedule("a", 10, TSKTimerRestart);
  queue_->cancelTimerWithName("a");
  schedule("a", 20, TSKTimerKeepEarliest);
  EXPECT_EQ(after(19.9), "") << "the cancelled 10 s do not come back";
  EXPECT_EQ(after(0.2), "a");
}

TEST_F(NamedTimers, TheLatestBlockIsTheOneThatRuns) {
  queue_->scheduleTimerWithName("a", 10, TSKTimerKeepEarliest, note("first"));
  queue_->scheduleTimerWithName("a", 10, TSKTimerKeepEarliest, note("second"));
  flush(queue_);
  EXPECT_EQ(after(10), "second");
}

TEST_F(NamedTimers, NamesAreIndependent) {
  schedule("b", 2, TSKTimerRestart);
  schedule("a", 1, TSKTimerRestart);
  schedule("c", 2, TSKTimerRestart);
  EXPECT_EQ(queue_->timerCount(), 3U);
  EXPECT_EQ(after(1), "a");
  EXPECT_EQ(queue_->timerCount(), 2U);
  EXPECT_EQ(after(1), "bc");
  EXPECT_EQ(queue_->timerCount(), 0U);
}

TEST_F(NamedTimers, AThousandNamesAreCountedThroughAllTheirChanges) {
  std::vector<NSString> names;
  for (int i = 0; i < 1000; ++i) names.push_back(NSString(std::to_string(i)));
  for (const NSString& name : names) queue_->scheduleTimerWithName(name, 10, TSKTimerRestart, note("."));
  for (const NSString& name : names) queue_->scheduleTimerWithName(name, 20, TSKTimerKeepEarliest, note("."));
  flush(queue_);
  EXPECT_EQ(queue_->timerCount(), 1000U);
  for (std::size_t i = 0; i < 300; ++i) queue_->cancelTimerWithName(names[i]);
  for (std::size_t i = 0; i < 300; ++i) queue_->cancelTimerWithName(names[i]);
  flush(queue_);
  EXPECT_EQ(queue_->timerCount(), 700U);
  EXPECT_EQ(after(10), std::string(700, '.'));
  EXPECT_EQ(queue_->timerCount(), 0U);
  queue_->cancelAllTimers();
  queue_->scheduleTimerWithName(names[0], 10, TSKTimerRestart, note("."));
  flush(queue_);
  EXPECT_EQ(queue_->timerCount(), 1U);
}

TEST_F(NamedTimers, TimeSpentOnTheWayToTheQueueCounts) {
  const struct {
    double busy;
    const char* atOnce;
    double rest;
    const char* then;
  } rows[] = {{4, "", 6, "a"}, {10, "a", 0, ""}, {15, "a", 0, ""}};
  for (const auto& row : rows) {
    for (const TSKTimerBehavior behavior : {TSKTimerKeepEarliest, TSKTimerRestart}) {
      std::latch go(1);
      queue_->dispatchAsynchronously([&] { go.wait(); });
      queue_->scheduleTimerWithName("a", 10, behavior, note("a"));
      clock_.advance(static_cast<std::uint64_t>(row.busy * 1e9));
      go.count_down();
      flush(queue_);
      EXPECT_EQ(after(0), row.atOnce) << row.busy;
      EXPECT_EQ(after(row.rest), row.then) << row.busy;
    }
  }
}

TEST_F(NamedTimers, TimeSpentOnTheWayDoesNotCountForThrottle) {
  schedule("a", 10, TSKTimerThrottle);
  EXPECT_EQ(after(0.000000001), "a");  // planned for one second
  std::latch go(1);
  queue_->dispatchAsynchronously([&] { go.wait(); });
  queue_->scheduleTimerWithName("a", 10, TSKTimerThrottle, note("a"));
  clock_.advance(4'000'000'000);
  go.count_down();
  flush(queue_);
  EXPECT_EQ(dateOf(queue_, "a"), 11.0) << "an interval as it was given after the planned time";
  EXPECT_EQ(after(5.9), "");
  EXPECT_EQ(after(0.1), "a");
}

TEST_F(NamedTimers, PartsOfANanosecondAreCutOff) {
  schedule("a", 1.9e-9, TSKTimerRestart);
  EXPECT_EQ(after(0.000000001), "a");
}

TEST_F(NamedTimers, RequestsReturnBeforeAnythingHasChanged) {
  dispatch_sync(queue_->queue(), [&] {
    queue_->scheduleTimerWithName("a", 10, TSKTimerRestart, note("a"));
    EXPECT_EQ(queue_->timers(), nullptr);
    EXPECT_EQ(queue_->timerCount(), 0U);
  });
  flush(queue_);
  EXPECT_EQ(queue_->timerCount(), 1U);
  dispatch_sync(queue_->queue(), [&] {
    queue_->cancelTimerWithName("a");
    EXPECT_TRUE(isLive(queue_, "a"));
    EXPECT_EQ(queue_->timerCount(), 1U);
  });
  flush(queue_);
  EXPECT_FALSE(isLive(queue_, "a"));
  EXPECT_EQ(queue_->timerCount(), 0U);
}

TEST_F(NamedTimers, IntervalsThatAreNoDistanceAhead) {
  const double never = std::numeric_limits<double>::infinity();
  const struct {
    double seconds;
    const char* atOnce;
  } rows[] = {{0, "a"}, {-5, "a"}, {never, ""}, {-never, "a"}, {1e300, ""}, {std::nan(""), "a"}};
  for (const auto& row : rows) {
    schedule("a", row.seconds, TSKTimerRestart);
    EXPECT_EQ(after(0), row.atOnce) << row.seconds;
    EXPECT_EQ(after(1e9), "") << row.seconds;
    queue_->cancelTimerWithName("a");
  }
}

// The table of timers, and the two cases in which it differs from the actual timers.

TEST_F(NamedTimers, ThereIsNoTableBeforeTheFirst) {
  EXPECT_EQ(queue_->timers(), nullptr);
  queue_->cancelTimerWithName("a");
  queue_->cancelAllTimers();
  flush(queue_);
  EXPECT_EQ(queue_->timers(), nullptr);
  EXPECT_EQ(queue_->timerCount(), 0U);
}

TEST_F(NamedTimers, AnEntryKeepsItsTimeForEver) {
  schedule("a", 10, TSKTimerRestart);
  EXPECT_EQ(dateOf(queue_, "a"), 11.0);
  EXPECT_TRUE(isLive(queue_, "a"));
  EXPECT_EQ(after(10), "a");
  EXPECT_EQ(dateOf(queue_, "a"), 11.0);
  EXPECT_FALSE(isLive(queue_, "a"));
  schedule("a", 5, TSKTimerRestart);
  queue_->cancelTimerWithName("a");
  flush(queue_);
  EXPECT_EQ(dateOf(queue_, "a"), 16.0);
  EXPECT_FALSE(isLive(queue_, "a"));
}

TEST_F(NamedTimers, TheTableIsACopy) {
  schedule("a", 10, TSKTimerRestart);
  const Ref<NSDictionary> before = queue_->timers();
  schedule("b", 10, TSKTimerRestart);
  EXPECT_EQ(before->count(), 1U);
  EXPECT_EQ(queue_->timers()->count(), 2U);
}

TEST_F(NamedTimers, KeepEarliestNotesTheTimeThatWasAskedForThoughTheTimerStays) {
  schedule("a", 10, TSKTimerKeepEarliest);
  EXPECT_EQ(after(4), "");
  schedule("a", 10, TSKTimerKeepEarliest);
  EXPECT_EQ(dateOf(queue_, "a"), 15.0) << "noted";
  EXPECT_EQ(after(6), "a") << "kept: 10 s after the first call, which is 11 s on the clock";
}

TEST_F(NamedTimers, SoAThirdRequestBetweenBothTimesMovesTheTimerToALaterOne) {
  schedule("a", 10, TSKTimerKeepEarliest);  // fires at 11
  EXPECT_EQ(after(4), "");
  schedule("a", 10, TSKTimerKeepEarliest);  // still fires at 11, but the table has 15
  schedule("a", 8, TSKTimerKeepEarliest);   // fires at 13, because that is earlier than 15
  EXPECT_EQ(after(7.9), "");
  EXPECT_EQ(after(0.1), "a");
}

TEST_F(NamedTimers, AfterCancelAllTheCountIsThatOfTheNamesUntilItIsTakenAgain) {
  schedule("a", 10, TSKTimerRestart);
  schedule("b", 10, TSKTimerRestart);
  queue_->cancelAllTimers();
  flush(queue_);
  EXPECT_EQ(queue_->timerCount(), 2U);
  EXPECT_EQ(after(1000), "") << "none of them is pending";
  EXPECT_EQ(queue_->timerCount(), 2U);
  queue_->cancelTimerWithName("a");
  flush(queue_);
  EXPECT_EQ(queue_->timerCount(), 2U) << "there was nothing to cancel, so nothing to count";
  schedule("c", 10, TSKTimerRestart);
  EXPECT_EQ(queue_->timerCount(), 1U);
  queue_->cancelAllTimers();
  flush(queue_);
  EXPECT_EQ(queue_->timerCount(), 3U) << "names that are long dormant count too";
}

TEST_F(NamedTimers, ACancelledTimerDoesNotFire) {
  schedule("a", 10, TSKTimerRestart);
  queue_->cancelTimerWithName("a");
  queue_->cancelTimerWithName("unknown");
  flush(queue_);
  EXPECT_EQ(queue_->timerCount(), 0U);
  EXPECT_EQ(clock_.armedTimers(), 0U);
  EXPECT_EQ(after(1000), "");
  schedule("a", 10, TSKTimerRestart);
  EXPECT_EQ(after(10), "a") << "its name can be used again";
}

TEST_F(NamedTimers, OfASuspendedQueueWaitUntilItGoesOn) {
  schedule("a", 10, TSKTimerRestart);
  dispatch_suspend(queue_->queue());
  clock_.advance(20'000'000'000);
  queue_->scheduleTimerWithName("b", 10, TSKTimerRestart, note("b"));
  EXPECT_EQ(queue_->timerCount(), 1U) << "requests wait too";
  clock_.advance(4'000'000'000);
  dispatch_resume(queue_->queue());
  flush(queue_);
  EXPECT_EQ(after(0), "a");
  EXPECT_EQ(after(5.9), "") << "10 s after it was asked for";
  EXPECT_EQ(after(0.1), "b");
}

TEST_F(NamedTimers, ATimerThatIsDueIsCancelledWhileTheQueueIsBusy) {
  schedule("a", 10, TSKTimerRestart);
  dispatch_sync(queue_->queue(), [&] {
    queue_->cancelTimerWithName("a");
    clock_.advance(11'000'000'000);  // the timer is due, but the cancel was requested earlier
  });
  EXPECT_EQ(after(0), "");
}

// Inside a timer's block.

TEST_F(NamedTimers, TheBlockRunsOnTheQueueInsideItsStack) {
  bool current = false;
  bool inStack = false;
  queue_->scheduleTimerWithName("a", 1, TSKTimerRestart, [&] {
    current = queue_->isCurrentQueue();
    inStack = queue_->isInCurrentQueueStack();
  });
  flush(queue_);
  after(1);
  EXPECT_TRUE(current);
  EXPECT_TRUE(inStack);
  EXPECT_FALSE(dispatch_sync(queue_->queue(), [&] { return queue_->isInCurrentQueueStack(); })) << "and is left again";
}

TEST_F(NamedTimers, TheTimerCountsUntilItsBlockHasRun) {
  std::uint64_t during = 0;
  queue_->scheduleTimerWithName("a", 1, TSKTimerRestart, [&] { during = queue_->timerCount(); });
  flush(queue_);
  after(1);
  EXPECT_EQ(during, 1U);
  EXPECT_EQ(queue_->timerCount(), 0U);
}

TEST_F(NamedTimers, ABlockMayScheduleItsNameAgain) {
  for (const TSKTimerBehavior behavior : {TSKTimerKeepEarliest, TSKTimerRestart, TSKTimerThrottle}) {
    queue_->scheduleTimerWithName("a", 1, TSKTimerRestart, [this, behavior] {
      seen_ += "a";
      queue_->scheduleTimerWithName("a", 1, behavior, note("again"));
    });
    flush(queue_);
    EXPECT_EQ(after(1), "a");
    EXPECT_EQ(after(0.5), "");
    EXPECT_EQ(after(0.5), "again") << behavior;
    EXPECT_EQ(after(1000), "");
  }
}

TEST_F(NamedTimers, ABlockMayCancelItself) {
  queue_->scheduleTimerWithName("a", 1, TSKTimerRestart, [this] {
    seen_ += "a";
    queue_->cancelTimerWithName("a");
    queue_->cancelAllTimers();
  });
  flush(queue_);
  EXPECT_EQ(after(1), "a");
  schedule("a", 1, TSKTimerRestart);
  EXPECT_EQ(after(1), "a");
}

TEST_F(NamedTimersDeathTest, AnExceptionThatLeavesTheBlockEndsTheProcess) {
  EXPECT_DEATH(
      {
        const Wrapper wrapper = serial("payroll");
        wrapper->scheduleTimerWithName("a", 0, TSKTimerRestart, [] { throw std::runtime_error("lost"); });
        std::latch(1).wait();
      },
      "an exception left an asynchronous block of the queue \"payroll\": lost");
}

// Concurrent wrappers.

TEST_F(NamedTimers, OfAConcurrentWrapperRunOutsideAnyStack) {
  const Wrapper many = concurrent();
  many->setTimerClock(clock_);
  bool current = false;
  bool inStack = true;
  many->scheduleTimerWithName("a", 1, TSKTimerRestart, [&] {
    current = many->isCurrentQueue();
    inStack = dispatch_get_specific(TSKQueueStackKey) != nullptr;
  });
  flush(many);
  clock_.advance(1'000'000'000);
  flush(many);
  EXPECT_TRUE(current);
  EXPECT_FALSE(inStack);
  EXPECT_EQ(many->timerCount(), 0U);
}

TEST_F(NamedTimers, RequestsToAConcurrentQueueTakeEffectInTheirOrder) {
  for (const bool isStated : {true, false}) {
    const Wrapper many = concurrent();
    many->setConcurrent(isStated);
    many->setTimerClock(clock_);
    for (int i = 0; i < 500; ++i) {
      const NSString name(std::to_string(i % 7));
      many->scheduleTimerWithName(name, 1, TSKTimerRestart, [] { FAIL(); });
      many->cancelTimerWithName(name);
    }
    flush(many);
    EXPECT_EQ(many->timerCount(), 0U);
    EXPECT_EQ(clock_.armedTimers(), 0U);
    clock_.advance(2'000'000'000);
    flush(many);
  }
}

TEST_F(NamedTimers, AConcurrentTimerThatIsScheduledWhileItsBlockRunsFiresAgain) {
  for (const TSKTimerBehavior behavior : {TSKTimerKeepEarliest, TSKTimerRestart, TSKTimerThrottle}) {
    const Wrapper many = concurrent();
    many->setTimerClock(clock_);
    std::latch running(1);
    std::latch scheduled(1);
    std::latch again(1);
    many->scheduleTimerWithName("a", 1, TSKTimerRestart, [&] {
      running.count_down();
      scheduled.wait();
    });
    flush(many);
    clock_.advance(1'000'000'000);
    running.wait();
    std::latch carriedOut(1);
    many->scheduleTimerWithName("a", 1, behavior, [&] { again.count_down(); });
    // No barrier is used, because a barrier would wait for the block. The next request is carried out after the one
    // above.
    many->scheduleTimerWithName("other", 0, TSKTimerRestart, [&] { carriedOut.count_down(); });
    while (!carriedOut.try_wait()) clock_.advance(0);
    scheduled.count_down();
    flush(many);
    EXPECT_TRUE(isLive(many, "a")) << behavior;
    clock_.advance(1'000'000'000);
    again.wait();
  }
}

// The end of a wrapper.

TEST_F(NamedTimers, APendingTimerEndsWithItsWrapper) {
  Wrapper wrapper = serial("short");
  wrapper->setTimerClock(clock_);
  auto held = std::make_shared<int>(1);
  const std::weak_ptr<int> watched = held;
  wrapper->scheduleTimerWithName("a", 1, TSKTimerRestart, [held = std::move(held)] { FAIL(); });
  flush(wrapper);
  EXPECT_EQ(clock_.armedTimers(), 1U);
  const Weak<TSKDispatchQueue> gone = wrapper;
  wrapper = nullptr;
  EXPECT_FALSE(gone.lock()) << "the timer does not keep it";
  EXPECT_TRUE(watched.expired()) << "the block is destroyed right there";
  EXPECT_EQ(clock_.armedTimers(), 0U);
  clock_.advance(2'000'000'000);
}

TEST_F(NamedTimers, ATimerThatIsDueAndHasNotBegunEndsWithItsWrapper) {
  Wrapper wrapper = serial("short");
  wrapper->setTimerClock(clock_);
  wrapper->scheduleTimerWithName("a", 1, TSKTimerRestart, [] { FAIL(); });
  flush(wrapper);
  const auto queue = wrapper->queue();
  dispatch_sync(queue, [&] {
    clock_.advance(1'000'000'000);  // the timer's handler waits for this block
    wrapper = nullptr;
  });
  dispatch_sync(queue, [] {});
}

TEST_F(NamedTimers, ARequestKeepsTheWrapperUntilItIsCarriedOut) {
  Wrapper wrapper = serial("short");
  wrapper->setTimerClock(clock_);
  const Weak<TSKDispatchQueue> watched = wrapper;
  const auto queue = wrapper->queue();
  dispatch_sync(queue, [&] {
    wrapper->scheduleTimerWithName("a", 1, TSKTimerRestart, [] { FAIL(); });
    wrapper = nullptr;
    EXPECT_TRUE(watched.lock());
  });
  dispatch_sync(queue, [] {});
  EXPECT_FALSE(watched.lock()) << "and then it is gone, and the timer with it";
  clock_.advance(2'000'000'000);
  dispatch_sync(queue, [] {});
}

TEST_F(NamedTimers, ARunningBlockKeepsTheWrapper) {
  Wrapper wrapper = serial("short");
  wrapper->setTimerClock(clock_);
  const Weak<TSKDispatchQueue> watched = wrapper;
  const auto queue = wrapper->queue();
  std::latch running(1);
  std::latch dropped(1);
  bool inStack = false;
  wrapper->scheduleTimerWithName("a", 1, TSKTimerRestart, [&, raw = wrapper.get()] {
    running.count_down();
    dropped.wait();
    inStack = raw->isInCurrentQueueStack();
  });
  wrapper->scheduleTimerWithName("b", 2, TSKTimerRestart, [] { FAIL(); });
  flush(wrapper);
  clock_.advance(1'000'000'000);
  running.wait();
  wrapper = nullptr;
  EXPECT_TRUE(watched.lock());
  dropped.count_down();
  dispatch_sync(queue, [] {});
  EXPECT_TRUE(inStack);
  EXPECT_FALSE(watched.lock());
  EXPECT_EQ(clock_.armedTimers(), 0U);
}

TEST_F(NamedTimers, ABlockMayLetGoOfTheWrapperItRunsFor) {
  for (const bool isConcurrent : {false, true}) {
    Wrapper wrapper = isConcurrent ? concurrent() : serial("short");
    wrapper->setTimerClock(clock_);
    const Weak<TSKDispatchQueue> watched = wrapper;
    const auto queue = wrapper->queue();
    wrapper->scheduleTimerWithName("a", 1, TSKTimerRestart, [&] { wrapper = nullptr; });
    flush(wrapper);
    clock_.advance(1'000'000'000);
    dispatch_barrier_sync(queue, [] {});
    EXPECT_EQ(wrapper, nullptr);
    EXPECT_FALSE(watched.lock());
  }
}

TEST_F(NamedTimers, ABlocksOwnEndMayUseTheTimers) {
  struct SchedulesAtItsEnd {
    const Wrapper& queue;
    const Block<void()> block;
    ~SchedulesAtItsEnd() {
      EXPECT_NE(queue->timers(), nullptr);
      queue->scheduleTimerWithName("last", 1, TSKTimerRestart, block);
    }
  };
  auto held = std::shared_ptr<SchedulesAtItsEnd>(new SchedulesAtItsEnd{queue_, note("last")});
  queue_->scheduleTimerWithName("a", 1, TSKTimerRestart, [held = std::move(held)] {});
  flush(queue_);
  queue_->scheduleTimerWithName("a", 1, TSKTimerRestart, [] {});  // replaces the block, which is destroyed
  flush(queue_);
  flush(queue_);
  EXPECT_EQ(after(1), "last");
}

TEST_F(NamedTimers, AnOwnerThatCancelsAllAndWaitsIsNotUsedAfterItsEnd) {
  for (int i = 0; i < 300; ++i) {
    const Wrapper wrapper = i % 2 == 0 ? serial("short") : concurrent();
    auto owner = std::make_unique<std::atomic<int>>(0);
    for (int timer = 0; timer < 4; ++timer) {
      wrapper->scheduleTimerWithName(NSString(std::to_string(timer)), 1e-6 * timer, TSKTimerRestart,
                                     [used = owner.get()] { ++*used; });
    }
    wrapper->cancelAllTimers();
    wrapper->dispatchBarrierSynchronously([] {});
    owner = nullptr;
  }
}

TEST_F(NamedTimers, WrappersGoWhileTheirTimersFire) {
  std::atomic<int> runs{0};
  for (int i = 0; i < 300; ++i) {
    Wrapper wrapper = i % 2 == 0 ? serial("short") : concurrent();
    auto alive = std::make_shared<std::atomic<bool>>(true);
    for (int timer = 0; timer < 4; ++timer) {
      wrapper->scheduleTimerWithName(NSString(std::to_string(timer)), 1e-6 * timer, TSKTimerRestart,
                                     [&runs, alive] { runs += *alive ? 1 : 1000000; });
    }
    flush(wrapper);
    const auto queue = wrapper->queue();
    wrapper = nullptr;
    dispatch_barrier_sync(queue, [] {});  // all running blocks have ended, and no block starts any more
    *alive = false;
  }
  EXPECT_LE(runs.load(), 1200);
}

// On the system's clock.

using Clock = std::chrono::steady_clock;

TEST(NamedTimersOnTheRealClock, FireInTime) {
  const test::Watchdog watchdog;
  const struct {
    TSKTimerBehavior behavior;
    double seconds, least;
  } rows[] = {{TSKTimerKeepEarliest, 0.02, 0.02}, {TSKTimerRestart, 0.02, 0.02}, {TSKTimerThrottle, 5, 0}};
  for (const auto& row : rows) {
    const Wrapper queue = serial("timers");
    const auto fired = dispatch_semaphore_create(0);
    std::atomic<int> count{0};
    const auto start = Clock::now();
    for (int i = 0; i < 3; ++i) {
      queue->scheduleTimerWithName("a", row.seconds, row.behavior, [&] {
        ++count;
        dispatch_semaphore_signal(fired);
      });
    }
    dispatch_semaphore_wait(fired, DISPATCH_TIME_FOREVER);
    const double passed = std::chrono::duration<double>(Clock::now() - start).count();
    EXPECT_GE(passed, row.least) << row.behavior;
    EXPECT_LT(passed, 4.0) << row.behavior;
    queue->cancelAllTimers();
    flush(queue);
    EXPECT_EQ(count.load(), 1) << row.behavior;
  }
}

TEST(NamedTimersOnTheRealClock, ThrottleHoldsASecondFiringBack) {
  const test::Watchdog watchdog;
  const Wrapper queue = serial("timers");
  const auto fired = dispatch_semaphore_create(0);
  std::vector<Clock::time_point> times;
  const auto note = [&] {
    times.push_back(Clock::now());
    dispatch_semaphore_signal(fired);
  };
  const auto start = Clock::now();
  queue->scheduleTimerWithName("a", 0.03, TSKTimerThrottle, note);
  dispatch_semaphore_wait(fired, DISPATCH_TIME_FOREVER);
  queue->scheduleTimerWithName("a", 0.03, TSKTimerThrottle, note);
  dispatch_semaphore_wait(fired, DISPATCH_TIME_FOREVER);
  EXPECT_GE(times[1] - start, std::chrono::milliseconds(30));
}

TEST(NamedTimersOnTheRealClock, NotedTimesAreSecondsOfTheMonotonicClock) {
  const test::Watchdog watchdog;
  const Wrapper queue = serial("timers");
  const double before = std::chrono::duration<double>(Clock::now().time_since_epoch()).count();
  queue->scheduleTimerWithName("a", 1000, TSKTimerRestart, [] {});
  flush(queue);
  const double after = std::chrono::duration<double>(Clock::now().time_since_epoch()).count();
  const double date =
      queue->timers()->objectForKey("a").as<Ref<NSDictionary>>()->objectForKey("DateValue").as<double>();
  EXPECT_GE(date, before + 1000 - 1e-6);
  EXPECT_LE(date, after + 1000 + 1e-6);
}

TEST(NamedTimersOnTheRealClock, OfTheMainQueueFireWhenItIsDrained) {
  const test::Watchdog watchdog;
  std::thread::id ran;
  TSKDispatchQueue::mainDispatchQueue()->scheduleTimerWithName("a", 0, TSKTimerRestart,
                                                               [&] { ran = std::this_thread::get_id(); });
  pollfd ready{dispatch_main_queue_descriptor(), POLLIN, 0};
  while (ran == std::thread::id()) {
    poll(&ready, 1, -1);
    dispatch_main_queue_drain();
  }
  EXPECT_EQ(ran, std::this_thread::get_id());
}

}  // namespace
}  // namespace norvik
