#include "NorvikCore/dispatch/TSKDispatchQueue.h"

#include "NorvikCore/platform/foundation/NSBundle.h"
#include "NorvikCore/platform/object/Class.h"
#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/dispatch/Wrappers.h"
#include "tests/support/ExpectRaises.h"
#include "tests/support/InChild.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <latch>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace norvik {
namespace {

using test::concurrent;
using test::flush;
using test::serial;
using test::Wrapper;

class TSKDispatchQueueTest : public test::WatchedTest {};
class TSKDispatchQueueDeathTest : public test::WatchedDeathTest {};

TEST_F(TSKDispatchQueueTest, HeaderExample) {
  std::string seen;
  Ref<TSKDispatchQueue> payroll = TSKDispatchQueue::dispatchQueueWithLabel("payroll");
  payroll->dispatchAsynchronously([&] { seen += "read "; });
  payroll->dispatchSynchronously([&] { payroll->dispatchSynchronously([&] { seen += "sum"; }); });
  EXPECT_EQ(seen, "read sum");
  const Decimal net = payroll->dispatchSynchronously([] { return Decimal(5); }).value();
  EXPECT_EQ(net, Decimal(5));
  std::latch saved(1);
  payroll->scheduleTimerWithName("save", 0.002, TSKTimerRestart, [&] { saved.count_down(); });
  saved.wait();
  flush(payroll);
}

TEST_F(TSKDispatchQueueTest, ASynchronousBlockReturnsItsResult) {
  for (const Wrapper& wrapper : {serial("serial"), concurrent()}) {
    int count = 3;
    const std::optional<int> value = wrapper->dispatchSynchronously([&] { return count; });
    EXPECT_EQ(value, 3);
    int* const referred = wrapper->dispatchSynchronously([&]() -> int& { return count; });
    EXPECT_EQ(referred, &count);
    const int* const constant = wrapper->dispatchSynchronously([&]() -> const int& { return count; });
    EXPECT_EQ(constant, &count);
    std::optional<std::unique_ptr<int>> moved = wrapper->dispatchSynchronously([] { return std::make_unique<int>(4); });
    EXPECT_EQ(**moved, 4);
    const std::optional<std::string> taken = wrapper->dispatchSynchronously(
        [text = std::string("moved")]() mutable -> std::string&& { return std::move(text); });
    EXPECT_EQ(taken, "moved");
    const std::optional<std::optional<int>> nested =
        wrapper->dispatchSynchronously([] { return std::optional<int>(); });
    EXPECT_EQ(nested, std::optional<std::optional<int>>(std::optional<int>()));
    static_assert(std::is_void_v<decltype(wrapper->dispatchSynchronously([] {}))>);
    EXPECT_EQ(wrapper->dispatchSynchronously(Block<int()>([] { return 5; })), 5);
    EXPECT_THROW(wrapper->dispatchSynchronously([]() -> int { throw std::runtime_error("no result"); }),
                 std::runtime_error);
  }
}

TEST_F(TSKDispatchQueueTest, ABarrierBlockReturnsItsResultItself) {
  const Wrapper wrapper = concurrent();
  int count = 3;
  EXPECT_EQ(wrapper->dispatchBarrierSynchronously([&] { return count; }), 3);
  wrapper->dispatchBarrierSynchronously([&]() -> int& { return count; }) = 4;
  EXPECT_EQ(count, 4);
  const std::unique_ptr<int> moved = wrapper->dispatchBarrierSynchronously([] { return std::make_unique<int>(5); });
  EXPECT_EQ(*moved, 5);
  static_assert(std::is_void_v<decltype(wrapper->dispatchBarrierSynchronously([] {}))>);
}

TEST_F(TSKDispatchQueueTest, BehavioursAndTimersHaveTheirNumbers) {
  const struct {
    std::int64_t value, expected;
  } rows[] = {{TSKDeadlockExecuteInline, 0}, {TSKDeadlockSkip, 1},    {TSKDeadlockSkipAndLog, 2},
              {TSKDeadlockReserved, 3},      {TSKDeadlockNoCheck, 4}, {TSKTimerKeepEarliest, 0},
              {TSKTimerRestart, 1},          {TSKTimerThrottle, 2}};
  for (const auto& row : rows) EXPECT_EQ(row.value, row.expected);
}

TEST_F(TSKDispatchQueueTest, ALabelledQueueIsSerialAndItsBareQueueHasTheLabelToo) {
  const Wrapper wrapper = TSKDispatchQueue::dispatchQueueWithLabel("L\u00F6hne");
  EXPECT_EQ(wrapper->label(), NSString("L\u00F6hne"));
  EXPECT_STREQ(dispatch_queue_get_label(wrapper->queue()), "L\u00F6hne");
  EXPECT_EQ(wrapper->deadlockBehavior(), TSKDeadlockExecuteInline);
  EXPECT_FALSE(wrapper->concurrent());
  EXPECT_EQ(wrapper->timerCount(), 0U);
  EXPECT_EQ(wrapper->timers(), nullptr);
  EXPECT_EQ(serial("a", TSKDeadlockSkip)->deadlockBehavior(), TSKDeadlockSkip);
  std::vector<int> seen;
  for (int i = 0; i < 1000; ++i) wrapper->dispatchAsynchronously([&seen, i] { seen.push_back(i); });
  flush(wrapper);
  ASSERT_EQ(seen.size(), 1000U);
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(seen[static_cast<std::size_t>(i)], i);
}

TEST_F(TSKDispatchQueueTest, WithoutALabelItIsCalledAfterItsClass) {
  const Wrapper wrapper = TSKDispatchQueue::dispatchQueueWithLabel(std::nullopt);
  EXPECT_EQ(wrapper->label(), NSString("TSKDispatchQueue"));
  EXPECT_STREQ(dispatch_queue_get_label(wrapper->queue()), "");
  char expected[100];
  std::snprintf(expected, sizeof expected, "<TSKDispatchQueue:%p>[TSKDispatchQueue]",
                static_cast<void*>(wrapper.get()));
  EXPECT_EQ(wrapper->description(), NSString(expected));
}

TEST_F(TSKDispatchQueueTest, AWrapperOfAQueueHasNoLabel) {
  const auto queue = dispatch_queue_create("bare");
  const Wrapper wrapper = TSKDispatchQueue::dispatchQueueWithGCDQueue(queue, TSKDeadlockSkipAndLog);
  EXPECT_EQ(wrapper->label(), std::nullopt);
  EXPECT_EQ(wrapper->queue(), queue);
  EXPECT_EQ(wrapper->deadlockBehavior(), TSKDeadlockSkipAndLog);
  EXPECT_FALSE(wrapper->concurrent());
  EXPECT_TRUE(wrapper->description().hasSuffix(">[(null)]"));
  EXPECT_RAISES(static_cast<void>(TSKDispatchQueue::dispatchQueueWithGCDQueue(nullptr, TSKDeadlockSkip)),
                "NSInvalidArgumentException");
}

TEST_F(TSKDispatchQueueTest, TheSharedWrappersAreOneEach) {
  const struct {
    const Ref<TSKDispatchQueue>& wrapper;
    const dispatch_queue_t queue;
    TSKDeadlockBehavior behavior;
    const char* label;
    bool concurrent;
  } rows[] = {
      {TSKDispatchQueue::globalDispatchQueue(), dispatch_get_global_queue(), TSKDeadlockNoCheck,
       "com.norvik.global-queue", true},
      {TSKDispatchQueue::mainDispatchQueue(), dispatch_get_main_queue(), TSKDeadlockExecuteInline,
       "com.norvik.main-thread", false},
      {TSKDispatchQueue::sharedConcurrentQueue(), TSKDispatchQueue::sharedConcurrentQueue()->queue(),
       TSKDeadlockNoCheck, "TSKSharedConcurrentQueue", true},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.wrapper->queue(), row.queue) << row.label;
    EXPECT_EQ(row.wrapper->deadlockBehavior(), row.behavior) << row.label;
    EXPECT_EQ(row.wrapper->label(), NSString(row.label));
    EXPECT_EQ(row.wrapper->concurrent(), row.concurrent) << row.label;
    EXPECT_EQ(dispatch_queue_get_specific(row.queue, TSKIsCurrentKey), row.wrapper.get()) << row.label;
  }
  EXPECT_EQ(TSKDispatchQueue::mainDispatchQueue(), TSKDispatchQueue::mainDispatchQueue());
  EXPECT_STREQ(dispatch_queue_get_label(TSKDispatchQueue::sharedConcurrentQueue()->queue()),
               "TSKSharedConcurrentQueue");
}

TEST_F(TSKDispatchQueueTest, TheSharedWrappersAreMadeOnceThoughManyThreadsAskAtOnce) {
  std::latch together(8);
  std::vector<const TSKDispatchQueue*> seen(24);
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < 8; ++i) {
    threads.emplace_back([&, i] {
      together.arrive_and_wait();
      seen[i] = TSKDispatchQueue::globalDispatchQueue().get();
      seen[8 + i] = TSKDispatchQueue::mainDispatchQueue().get();
      seen[16 + i] = TSKDispatchQueue::sharedConcurrentQueue().get();
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (std::size_t i = 0; i < 24; ++i) EXPECT_EQ(seen[i], seen[i / 8 * 8]) << i;
}

TEST_F(TSKDispatchQueueTest, TheSharedConcurrentQueueRunsBlocksAtOnce) {
  std::latch both(2);
  std::latch over(2);
  for (int i = 0; i < 2; ++i) {
    TSKDispatchQueue::sharedConcurrentQueue()->dispatchAsynchronously([&] {
      both.arrive_and_wait();
      over.count_down();
    });
  }
  over.wait();
}

TEST_F(TSKDispatchQueueTest, TheBundlesIdentifierComesBeforeALabel) {
  RUN_IN_CHILD({
    unsetenv("NORVIK_BUNDLE_IDENTIFIER");
    EXPECT_EQ(TSKDispatchQueue::labelByPrependingBundleIdentifierToString("import"), std::nullopt);
    NSBundle::mainBundle().setObject_forInfoDictionaryKey("uk.co.norvik.payroll", "CFBundleIdentifier");
    EXPECT_EQ(TSKDispatchQueue::labelByPrependingBundleIdentifierToString("import"),
              NSString("uk.co.norvik.payroll.import"));
    EXPECT_EQ(TSKDispatchQueue::labelByPrependingBundleIdentifierToString(""), NSString("uk.co.norvik.payroll."));
  });
}

TEST_F(TSKDispatchQueueTest, ABlockKnowsItsQueue) {
  const Wrapper a = serial("a");
  const Wrapper b = serial("b");
  EXPECT_FALSE(a->isCurrentQueue());
  a->dispatchSynchronously([&] {
    EXPECT_TRUE(a->isCurrentQueue());
    b->dispatchSynchronously([&] {
      EXPECT_TRUE(b->isCurrentQueue());
      EXPECT_FALSE(a->isCurrentQueue()) << "what waits is not what runs";
    });
    EXPECT_TRUE(a->isCurrentQueue());
  });
  bool seen = false;
  dispatch_async(a->queue(), [&] { seen = a->isCurrentQueue(); });
  flush(a);
  EXPECT_TRUE(seen) << "a block that came through the bare queue is the queue's too";
}

TEST_F(TSKDispatchQueueTest, ABlockOfAQueueThatTargetsAWrappedOneIsCurrentThere) {
  const Wrapper wrapper = serial("target");
  const auto bare = dispatch_queue_create(nullptr, DISPATCH_QUEUE_SERIAL, wrapper->queue());
  EXPECT_TRUE(dispatch_sync(bare, [&] { return wrapper->isCurrentQueue(); }));
  const Wrapper own = TSKDispatchQueue::dispatchQueueWithGCDQueue(bare, TSKDeadlockSkip);
  EXPECT_FALSE(dispatch_sync(bare, [&] { return wrapper->isCurrentQueue(); })) << "the nearest wrapper counts";
  EXPECT_TRUE(dispatch_sync(bare, [&] { return own->isCurrentQueue(); }));
}

TEST_F(TSKDispatchQueueTest, TheMainThreadIsOnTheMainQueueWhileItIsOnNoOther) {
  const Wrapper& main = TSKDispatchQueue::mainDispatchQueue();
  EXPECT_TRUE(main->isCurrentQueue());
  const Wrapper other = serial("other");
  other->dispatchSynchronously([&] { EXPECT_FALSE(main->isCurrentQueue()); });
  bool elsewhere = true;
  std::thread([&] { elsewhere = main->isCurrentQueue(); }).join();
  EXPECT_FALSE(elsewhere);
}

TEST_F(TSKDispatchQueueTest, TheLastWrapperOfAQueueIsTheCurrentOneUntilItGoes) {
  const auto queue = dispatch_queue_create(nullptr);
  const Wrapper first = TSKDispatchQueue::dispatchQueueWithGCDQueue(queue, TSKDeadlockSkip);
  Wrapper second = TSKDispatchQueue::dispatchQueueWithGCDQueue(queue, TSKDeadlockSkip);
  EXPECT_FALSE(dispatch_sync(queue, [&] { return first->isCurrentQueue(); }));
  EXPECT_TRUE(dispatch_sync(queue, [&] { return second->isCurrentQueue(); }));
  second = nullptr;
  EXPECT_EQ(dispatch_queue_get_specific(queue, TSKIsCurrentKey), nullptr) << "no wrapper that is gone";
  Wrapper third = TSKDispatchQueue::dispatchQueueWithGCDQueue(queue, TSKDeadlockSkip);
  const Wrapper fourth = TSKDispatchQueue::dispatchQueueWithGCDQueue(queue, TSKDeadlockSkip);
  third = nullptr;
  EXPECT_EQ(dispatch_queue_get_specific(queue, TSKIsCurrentKey), fourth.get()) << "the value of another stays";
}

TEST_F(TSKDispatchQueueTest, BlocksMayBeAnyCallable) {
  const Wrapper wrapper = serial("a");
  auto owned = std::make_unique<int>(7);
  int seen = 0;
  wrapper->dispatchAsynchronously([owned = std::move(owned), &seen] { seen += *owned; });
  const Block<void()> block = [&seen] { ++seen; };
  wrapper->dispatchAsynchronously(block);
  wrapper->dispatchSynchronously(block);
  EXPECT_EQ(seen, 9);
  struct Counter {
    int calls = 0;
    void operator()() { ++calls; }
  } counter;
  wrapper->dispatchSynchronously(counter);
  wrapper->dispatchBarrierSynchronously(counter);
  EXPECT_EQ(counter.calls, 2) << "called in place, not copied";
}

TEST_F(TSKDispatchQueueTest, AnAbsentBlockRaises) {
  const Wrapper wrapper = serial("a");
  const Block<void()> none;
  EXPECT_RAISES(wrapper->dispatchSynchronously(none), "NSInvalidArgumentException");
  EXPECT_RAISES(wrapper->dispatchAsynchronously(none), "NSInvalidArgumentException");
  EXPECT_RAISES(wrapper->dispatchBarrierSynchronously(none), "NSInvalidArgumentException");
  EXPECT_RAISES(wrapper->dispatchBarrierAsynchronously(none), "NSInvalidArgumentException");
  EXPECT_RAISES(wrapper->scheduleTimerWithName("a", 1, TSKTimerRestart, none), "NSInvalidArgumentException");
}

TEST_F(TSKDispatchQueueTest, AnExceptionReachesTheCallerAndLeavesTheStackInOrder) {
  const Wrapper a = serial("a");
  const Wrapper b = serial("b");
  a->dispatchSynchronously([&] {
    EXPECT_THROW(b->dispatchSynchronously([] { throw std::runtime_error("no"); }), std::runtime_error);
    EXPECT_TRUE(a->isInCurrentQueueStack());
    EXPECT_FALSE(b->isInCurrentQueueStack());
    EXPECT_THROW(a->dispatchSynchronously([] { throw std::runtime_error("in place"); }), std::runtime_error);
  });
  EXPECT_FALSE(a->isInCurrentQueueStack());
  bool ran = false;
  b->dispatchSynchronously([&] { ran = true; });
  EXPECT_TRUE(ran);
}

TEST_F(TSKDispatchQueueDeathTest, AnExceptionThatLeavesAnAsynchronousBlockEndsTheProcess) {
  EXPECT_DEATH(
      {
        const Wrapper wrapper = serial("payroll");
        wrapper->dispatchAsynchronously([] { throw std::runtime_error("lost"); });
        flush(wrapper);
      },
      "an exception left an asynchronous block of the queue \"payroll\": lost");
}

TEST_F(TSKDispatchQueueTest, BlocksThatWaitKeepTheWrapper) {
  Wrapper wrapper = serial("a");
  const Weak<TSKDispatchQueue> watched = wrapper;
  const auto queue = wrapper->queue();
  std::latch go(1);
  bool seen = false;
  wrapper->dispatchAsynchronously([&] { go.wait(); });
  wrapper->dispatchAsynchronously([&, raw = wrapper.get()] { seen = raw->isInCurrentQueueStack(); });
  wrapper = nullptr;
  EXPECT_TRUE(watched.lock());
  go.count_down();
  dispatch_sync(queue, [] {});
  EXPECT_TRUE(seen);
  EXPECT_FALSE(watched.lock());
}

TEST_F(TSKDispatchQueueTest, TheLastOfManyThreadsBlocksDestroysAReleasedWrapper) {
  for (const auto attribute : {DISPATCH_QUEUE_SERIAL, DISPATCH_QUEUE_CONCURRENT}) {
    for (int round = 0; round < 200; ++round) {
      const auto queue = dispatch_queue_create(nullptr, attribute);
      Wrapper wrapper = TSKDispatchQueue::dispatchQueueWithGCDQueue(queue, TSKDeadlockExecuteInline);
      const Weak<TSKDispatchQueue> watched = wrapper;
      std::atomic<int> runs{0};
      std::vector<std::thread> threads;
      for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&runs, own = wrapper]() mutable {
          for (int block = 0; block < 5; ++block) own->dispatchAsynchronously([&runs] { ++runs; });
          own = nullptr;
        });
      }
      wrapper = nullptr;
      for (auto& thread : threads) thread.join();
      dispatch_barrier_sync(queue, [] {});
      EXPECT_EQ(runs.load(), 15);
      EXPECT_FALSE(watched.lock());
    }
  }
}

TEST_F(TSKDispatchQueueTest, ABlockThatIsDestroyedMayUseTheWrapperItWaitedOn) {
  Wrapper wrapper = serial("a");
  const auto queue = wrapper->queue();
  std::optional<NSString> label;
  const auto atEnd = [&label, raw = wrapper.get()](const int* held) {
    label = raw->label();
    delete held;
  };
  wrapper->dispatchAsynchronously([held = std::unique_ptr<const int, decltype(atEnd)>(new int, atEnd)] {});
  wrapper = nullptr;
  dispatch_sync(queue, [] {});
  EXPECT_EQ(label, NSString("a"));
}

TEST_F(TSKDispatchQueueTest, ABlockThatCannotBeCopiedDoesNotRetainTheWrapper) {
  struct Unwilling {
    Unwilling() = default;
    Unwilling(const Unwilling&) { throw std::runtime_error("no copies"); }
    void operator()() const { ADD_FAILURE() << "it was not enqueued"; }
  };
  for (const auto attribute : {DISPATCH_QUEUE_SERIAL, DISPATCH_QUEUE_CONCURRENT}) {
    Wrapper wrapper =
        TSKDispatchQueue::dispatchQueueWithGCDQueue(dispatch_queue_create(nullptr, attribute), TSKDeadlockNoCheck);
    const Weak<TSKDispatchQueue> watched = wrapper;
    const Unwilling block;
    EXPECT_THROW(wrapper->dispatchAsynchronously(block), std::runtime_error);
    flush(wrapper);
    wrapper = nullptr;
    EXPECT_FALSE(watched.lock());
  }
}

TEST_F(TSKDispatchQueueTest, ASynchronousBlockMayLetGoOfTheWrapper) {
  Wrapper wrapper = serial("a");
  const Weak<TSKDispatchQueue> watched = wrapper;
  TSKDispatchQueue& queue = *wrapper;
  queue.dispatchSynchronously([&] {
    wrapper = nullptr;
    EXPECT_TRUE(queue.isInCurrentQueueStack());
  });
  EXPECT_FALSE(watched.lock());
}

TEST_F(TSKDispatchQueueTest, ABarrierBlockMayLetGoOfTheWrapper) {
  for (const bool isConcurrent : {false, true}) {
    Wrapper wrapper = isConcurrent ? concurrent() : serial("a");
    const Weak<TSKDispatchQueue> watched = wrapper;
    wrapper->dispatchBarrierSynchronously([&] { wrapper = nullptr; });
    EXPECT_FALSE(watched.lock()) << isConcurrent;
  }
}

TEST_F(TSKDispatchQueueTest, BlocksThatWaitOnAConcurrentWrapperOrAsBarriersKeepTheQueueAlone) {
  for (const bool isConcurrent : {false, true}) {
    Wrapper wrapper = isConcurrent ? concurrent() : serial("a");
    const Weak<TSKDispatchQueue> watched = wrapper;
    std::latch go(1);
    std::latch ran(2);
    dispatch_barrier_async(wrapper->queue(), [&] { go.wait(); });
    const auto block = [&] {
      EXPECT_EQ(dispatch_get_specific(TSKIsCurrentKey), nullptr) << "no wrapper that is gone";
      ran.count_down();
    };
    isConcurrent ? wrapper->dispatchAsynchronously(block) : wrapper->dispatchBarrierAsynchronously(block);
    wrapper->dispatchBarrierAsynchronously(block);
    wrapper = nullptr;
    EXPECT_FALSE(watched.lock()) << isConcurrent;
    go.count_down();
    ran.wait();
  }
}

TEST_F(TSKDispatchQueueTest, OperationsArePerformedByName) {
  const Wrapper wrapper = serial("a");
  int runs = 0;
  const Block<void()> block = [&runs] { ++runs; };
  wrapper->performSelector("dispatchSynchronously:", block);
  wrapper->performSelector("dispatchAsynchronously:", block);
  wrapper->performSelector("dispatchBarrierAsynchronously:", block);
  wrapper->performSelector("dispatchBarrierSynchronously:", block);
  EXPECT_EQ(runs, 4);
  EXPECT_EQ(wrapper->valueForKey("label"), Value("a"));
  EXPECT_EQ(wrapper->valueForKey("deadlockBehavior"), Value(0));
  EXPECT_EQ(wrapper->valueForKey("concurrent"), Value(false));
  EXPECT_EQ(wrapper->valueForKey("timerCount"), Value(0));
  EXPECT_EQ(wrapper->valueForKey("isInCurrentQueueStack"), Value(false));
  EXPECT_TRUE(wrapper->valueForKey("timers").isAbsent());
  EXPECT_TRUE(wrapper->respondsToSelector("scheduleTimerWithName:timeInterval:behavior:block:"));
  const Value arguments[] = {"b", 2};
  const auto made =
      TSKDispatchQueue::staticClass().performClassOperation("dispatchQueueWithLabel:behavior:", arguments);
  EXPECT_EQ(made.as<Wrapper>()->label(), NSString("b"));
  EXPECT_EQ(made.as<Wrapper>()->deadlockBehavior(), TSKDeadlockSkipAndLog);
}

}  // namespace
}  // namespace norvik
