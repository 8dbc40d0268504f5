#include "NorvikCore/platform/dispatch/Queue.h"

#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/kernel/Thread.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/platform/dispatch/Watchdog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <latch>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <unordered_set>
#include <vector>

namespace norvik {
namespace {

class Queue : public test::WatchedTest {};

TEST_F(Queue, HeaderExample) {
  std::vector<std::string> employees;
  auto queue = dispatch_queue_create("payroll.import", DISPATCH_QUEUE_SERIAL);
  dispatch_async(queue, [&] { employees = {"Ann", "Ben"}; });
  auto count = dispatch_sync(queue, [&] { return employees.size(); });
  EXPECT_EQ(count, 2U);
}

TEST_F(Queue, HandlesAreEqualWhenTheyStandForTheSameQueue) {
  auto queue = dispatch_queue_create("a");
  const dispatch_queue_t same = queue;
  auto other = dispatch_queue_create("a");
  EXPECT_EQ(queue, same);
  EXPECT_NE(queue, other);
  EXPECT_EQ(dispatch_queue_t(), nullptr);
  EXPECT_FALSE(dispatch_queue_t());
  EXPECT_EQ((std::unordered_set<dispatch_queue_t>{queue, same, other}.size()), 2U);
}

TEST_F(Queue, SerialBlocksRunInTheOrderInWhichTheyWereQueued) {
  auto queue = dispatch_queue_create(nullptr);
  std::vector<int> seen;
  for (int i = 0; i < 10000; ++i) dispatch_async(queue, [&seen, i] { seen.push_back(i); });
  dispatch_sync(queue, [] {});
  ASSERT_EQ(seen.size(), 10000U);
  for (int i = 0; i < 10000; ++i) ASSERT_EQ(seen[static_cast<std::size_t>(i)], i);
}

TEST_F(Queue, SerialBlocksOfManyProducersExcludeEachOtherAndKeepEachProducersOrder) {
  auto queue = dispatch_queue_create(nullptr);
  constexpr int producerCount = 8;
  constexpr int blockCount = 5000;
  std::vector<std::vector<int>> seen(producerCount);
  std::vector<std::thread> producers;
  std::latch start(producerCount);
  for (std::size_t p = 0; p < producerCount; ++p) {
    producers.emplace_back([&, p] {
      start.arrive_and_wait();
      for (int i = 0; i < blockCount; ++i) {
        if (i % 100 == 99) {
          dispatch_sync(queue, [&] { seen[p].push_back(i); });
        } else if (i % 2 == 0) {
          dispatch_async_relaxed(queue, [&seen, p, i] { seen[p].push_back(i); });
        } else {
          dispatch_async(queue, [&seen, p, i] { seen[p].push_back(i); });
        }
      }
    });
  }
  for (auto& producer : producers) producer.join();
  dispatch_sync(queue, [] {});
  for (const auto& list : seen) {
    ASSERT_EQ(list.size(), static_cast<std::size_t>(blockCount));
    for (int i = 0; i < blockCount; ++i) ASSERT_EQ(list[static_cast<std::size_t>(i)], i);
  }
}

TEST_F(Queue, OnAnIdleQueueASyncBlockRunsOnTheCallersThread) {
  auto queue = dispatch_queue_create(nullptr);
  EXPECT_EQ(dispatch_sync(queue, [] { return std::this_thread::get_id(); }), std::this_thread::get_id());
}

TEST_F(Queue, TwoHundredSerialQueuesThatWaitForOneAnotherInAChainFinish) {
  constexpr std::size_t queueCount = 200;
  std::vector<dispatch_queue_t> queues;
  for (std::size_t i = 0; i < queueCount; ++i) queues.push_back(dispatch_queue_create(nullptr));
  auto done = dispatch_semaphore_create(0);
  std::atomic<int> finished{0};
  std::latch queued(1);
  // Each queue's block waits for the block of the next queue, which is already enqueued.
  for (std::size_t i = 0; i < queueCount; ++i) {
    dispatch_async(queues[i], [&, i] {
      queued.wait();
      if (i + 1 < queueCount) dispatch_sync(queues[i + 1], [] {});
      if (finished.fetch_add(1) + 1 == static_cast<int>(queueCount)) dispatch_semaphore_signal(done);
    });
  }
  queued.count_down();
  EXPECT_EQ(dispatch_semaphore_wait(done, dispatch_time(DISPATCH_TIME_NOW, 50 * NSEC_PER_SEC)), 0);
  EXPECT_EQ(finished.load(), 200);
}

TEST_F(Queue, ABlockMayBeAnyMovableCallable) {
  auto queue = dispatch_queue_create(nullptr);
  auto owned = std::make_unique<int>(7);
  int seen = 0;
  dispatch_async(queue, [owned = std::move(owned), &seen] { seen = *owned; });
  dispatch_sync(queue, [] {});
  EXPECT_EQ(seen, 7);
}

TEST_F(Queue, ABlockOfAnySizeAndAlignmentIsStoredAsItIs) {
  struct alignas(64) Wide {
    double amounts[40] = {1.5};
  };
  auto queue = dispatch_queue_create(nullptr);
  bool aligned = false;
  double first = 0;
  dispatch_async(queue, [wide = Wide(), &aligned, &first] {
    aligned = reinterpret_cast<std::uintptr_t>(&wide) % 64 == 0;
    first = wide.amounts[0];
  });
  dispatch_sync(queue, [] {});
  EXPECT_TRUE(aligned);
  EXPECT_EQ(first, 1.5);
}

TEST_F(Queue, ABlockIsDestroyedRightAfterItHasRun) {
  auto queue = dispatch_queue_create(nullptr);
  auto held = std::make_shared<int>(1);
  std::weak_ptr<int> weak = held;
  dispatch_async(queue, [held = std::move(held)] {});
  EXPECT_TRUE(dispatch_sync(queue, [&] { return weak.expired(); }));
}

TEST_F(Queue, ASyncBlockGivesItsResult) {
  auto queue = dispatch_queue_create(nullptr);
  int total = 5;
  EXPECT_EQ(dispatch_sync(queue, [] { return std::make_unique<int>(3); }) != nullptr, true);
  int& reference = dispatch_sync(queue, [&]() -> int& { return total; });
  EXPECT_EQ(&reference, &total);
}

TEST_F(Queue, AnExceptionOfASyncBlockReachesTheCallerAndTheQueueGoesOn) {
  auto queue = dispatch_queue_create("pay");
  int runs = 0;
  EXPECT_THROW(dispatch_sync(queue, [] { throw std::runtime_error("no such employee"); }), std::runtime_error);
  EXPECT_THROW(dispatch_barrier_sync(queue, [] { throw 5; }), int);
  EXPECT_FALSE(dispatch_queue_is_held(queue));
  EXPECT_STRNE(dispatch_queue_get_label(DISPATCH_CURRENT_QUEUE_LABEL), "pay");
  dispatch_async(queue, [&] { ++runs; });
  dispatch_sync(queue, [&] { ++runs; });
  EXPECT_EQ(runs, 2);
}

TEST_F(Queue, WhatIsQueuedWhileASyncBlockRunsIsRunAfterIt) {
  auto queue = dispatch_queue_create(nullptr);
  std::vector<int> seen;
  dispatch_sync(queue, [&] {
    dispatch_async(queue, [&] { seen.push_back(2); });
    dispatch_async_relaxed(queue, [&] { seen.push_back(3); });
    seen.push_back(1);
  });
  dispatch_sync(queue, [] {});
  EXPECT_EQ(seen, (std::vector<int>{1, 2, 3}));
}

TEST_F(Queue, RelaxedAndPromptBlocksKeepOneOrder) {
  auto queue = dispatch_queue_create(nullptr);
  std::vector<int> seen;
  for (int i = 0; i < 1000; i += 2) {
    dispatch_async_relaxed(queue, [&seen, i] { seen.push_back(i); });
    dispatch_async(queue, [&seen, i] { seen.push_back(i + 1); });
  }
  dispatch_sync(queue, [] {});
  ASSERT_EQ(seen.size(), 1000U);
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(seen[static_cast<std::size_t>(i)], i);
}

TEST_F(Queue, AQueueWhoseHandlesAreGoneStillRunsItsBlocks) {
  auto done = dispatch_semaphore_create(0);
  {
    auto queue = dispatch_queue_create(nullptr);
    dispatch_async(queue, [&] { dispatch_semaphore_signal(done); });
    dispatch_async(queue, [&] { dispatch_semaphore_signal(done); });
  }
  EXPECT_EQ(dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER), 0);
  EXPECT_EQ(dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER), 0);
}

TEST_F(Queue, TheGlobalQueueRunsBlocksAtTheSameTime) {
  auto first = dispatch_semaphore_create(0);
  auto second = dispatch_semaphore_create(0);
  auto done = dispatch_semaphore_create(0);
  dispatch_async(dispatch_get_global_queue(), [&] {
    dispatch_semaphore_signal(first);
    dispatch_semaphore_wait(second, DISPATCH_TIME_FOREVER);
    dispatch_semaphore_signal(done);
  });
  dispatch_async(dispatch_get_global_queue(), [&] {
    dispatch_semaphore_wait(first, DISPATCH_TIME_FOREVER);
    dispatch_semaphore_signal(second);
  });
  EXPECT_EQ(dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER), 0);
  EXPECT_EQ(dispatch_sync(dispatch_get_global_queue(), [] { return 4; }), 4);
}

TEST_F(Queue, TheCurrentLabelIsThatOfTheRunningBlocksQueue) {
  auto outer = dispatch_queue_create("outer");
  auto inner = dispatch_queue_create("inner");
  std::string labels;
  const auto current = [] { return std::string(dispatch_queue_get_label(DISPATCH_CURRENT_QUEUE_LABEL)) + " "; };
  dispatch_sync(outer, [&] {
    labels += current();
    dispatch_sync(inner, [&] { labels += current(); });
    labels += current();
  });
  EXPECT_EQ(labels, "outer inner outer ");
  dispatch_async(inner, [&] { labels = current(); });
  dispatch_sync(inner, [] {});
  EXPECT_EQ(labels, "inner ");
}

TEST_F(Queue, OffAnyQueueTheCurrentLabelIsTheMainThreadsOrTheThreadsName) {
  EXPECT_STREQ(dispatch_queue_get_label(DISPATCH_CURRENT_QUEUE_LABEL), "com.norvik.main-thread");
  std::string label;
  std::thread([&] {
    kernel::setCurrentThreadName("the clerk of the payroll office");
    label = dispatch_queue_get_label(DISPATCH_CURRENT_QUEUE_LABEL);
  }).join();
  EXPECT_EQ(label, "the clerk of the payroll office");
}

TEST_F(Queue, LabelsAreCopiedAndMayBeAbsent) {
  std::string text = "payslips";
  auto queue = dispatch_queue_create(text.c_str());
  text = "changed!";
  EXPECT_STREQ(dispatch_queue_get_label(queue), "payslips");
  EXPECT_STREQ(dispatch_queue_get_label(dispatch_queue_create(nullptr)), "");
  EXPECT_STREQ(dispatch_queue_get_label(dispatch_get_global_queue()), "com.norvik.global-queue");
}

TEST_F(Queue, DispatchAfterRunsTheBlockAtItsTimeAndNotBefore) {
  auto queue = dispatch_queue_create(nullptr);
  auto done = dispatch_semaphore_create(0);
  const auto start = std::chrono::steady_clock::now();
  auto end = start;
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, 20 * NSEC_PER_MSEC), queue, [&] {
    end = std::chrono::steady_clock::now();
    dispatch_semaphore_signal(done);
  });
  dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
  EXPECT_GE(end - start, std::chrono::milliseconds(20));
  dispatch_after(DISPATCH_TIME_NOW, queue, [&] { dispatch_semaphore_signal(done); });
  EXPECT_EQ(dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER), 0);
}

TEST_F(Queue, ALaterBlockRunsAfterADuration) {
  auto queue = dispatch_queue_create("later");
  auto done = dispatch_semaphore_create(0);
  const auto start = std::chrono::steady_clock::now();
  dispatch_after(std::chrono::milliseconds(20), queue, [&] { dispatch_semaphore_signal(done); });
  EXPECT_EQ(dispatch_semaphore_wait(done, std::chrono::minutes(5)), 0);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
  dispatch_after(std::chrono::seconds(-1), queue, [&] { dispatch_semaphore_signal(done); });
  EXPECT_EQ(dispatch_semaphore_wait(done, std::chrono::minutes(5)), 0);
  EXPECT_THROW(dispatch_after(std::chrono::seconds(1), nullptr, [] {}), NSException);
}

TEST_F(Queue, AnEmptyHandleRaises) {
  EXPECT_THROW(dispatch_async(nullptr, [] {}), NSException);
  EXPECT_THROW(dispatch_async_relaxed(nullptr, [] {}), NSException);
  EXPECT_THROW(dispatch_sync(nullptr, [] {}), NSException);
  EXPECT_THROW(dispatch_barrier_async(nullptr, [] {}), NSException);
  EXPECT_THROW(dispatch_barrier_sync(nullptr, [] {}), NSException);
  EXPECT_THROW(dispatch_after(DISPATCH_TIME_NOW, nullptr, [] {}), NSException);
  EXPECT_THROW(static_cast<void>(dispatch_queue_get_label(dispatch_queue_t())), NSException);
}

class QueueDeathTest : public test::WatchedDeathTest {};

TEST_F(QueueDeathTest, AnExceptionThatLeavesAnAsyncBlockEndsTheProcessAndSaysWhatAndWhere) {
  EXPECT_DEATH(
      {
        auto queue = dispatch_queue_create("pay.run");
        dispatch_async(queue, [] { throw std::runtime_error("line 7: no such employee"); });
        dispatch_sync(queue, [] {});
      },
      "exception left an asynchronous block of the queue \"pay.run\": line 7: no such employee");
}

TEST_F(QueueDeathTest, AnythingElseThatIsThrownEndsTheProcessToo) {
  EXPECT_DEATH(
      {
        dispatch_async(dispatch_get_global_queue(), [] { throw 5; });
        std::this_thread::sleep_for(std::chrono::seconds(50));
      },
      "of the queue \"com.norvik.global-queue\": not a std::exception");
}

TEST_F(QueueDeathTest, ASyncBlockForTheQueueThatIsBeingDrainedAborts) {
  EXPECT_DEATH(
      {
        auto queue = dispatch_queue_create("pay.run");
        dispatch_sync(queue, [&] { dispatch_sync(queue, [] {}); });
      },
      "BUG: .*\"pay.run\"");
  EXPECT_DEATH(
      {
        auto queue = dispatch_queue_create("pay.run");
        auto other = dispatch_queue_create("other");
        dispatch_async(queue, [&] { dispatch_sync(other, [&] { dispatch_sync(queue, [] {}); }); });
        std::this_thread::sleep_for(std::chrono::seconds(50));
      },
      "BUG: .*\"pay.run\"");
}

}  // namespace
}  // namespace norvik
