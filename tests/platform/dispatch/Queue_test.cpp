#include "NorvikCore/platform/dispatch/Queue.h"

#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/runtime/NSException.h"
#include "tests/platform/dispatch/Watchdog.h"

#include <gtest/gtest.h>

#include <atomic>
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
  constexpr int kProducers = 8;
  constexpr int kBlocks = 5000;
  std::vector<std::vector<int>> seen(kProducers);
  std::vector<std::thread> producers;
  std::latch start(kProducers);
  for (std::size_t p = 0; p < kProducers; ++p) {
    producers.emplace_back([&, p] {
      start.arrive_and_wait();
      for (int i = 0; i < kBlocks; ++i) {
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
    ASSERT_EQ(list.size(), static_cast<std::size_t>(kBlocks));
    for (int i = 0; i < kBlocks; ++i) ASSERT_EQ(list[static_cast<std::size_t>(i)], i);
  }
}

TEST_F(Queue, OnAnIdleQueueASyncBlockRunsOnTheCallersThread) {
  auto queue = dispatch_queue_create(nullptr);
  EXPECT_EQ(dispatch_sync(queue, [] { return std::this_thread::get_id(); }), std::this_thread::get_id());
}

TEST_F(Queue, TwoHundredSerialQueuesThatWaitForOneAnotherInAChainFinish) {
  constexpr std::size_t kQueues = 200;
  std::vector<dispatch_queue_t> queues;
  for (std::size_t i = 0; i < kQueues; ++i) queues.push_back(dispatch_queue_create(nullptr));
  auto done = dispatch_semaphore_create(0);
  std::atomic<int> finished{0};
  std::latch queued(1);
  // Each queue's block waits for the block of the next queue, which is on its way already.
  for (std::size_t i = 0; i < kQueues; ++i) {
    dispatch_async(queues[i], [&, i] {
      queued.wait();
      if (i + 1 < kQueues) dispatch_sync(queues[i + 1], [] {});
      if (finished.fetch_add(1) + 1 == static_cast<int>(kQueues)) dispatch_semaphore_signal(done);
    });
  }
  queued.count_down();
  EXPECT_EQ(dispatch_semaphore_wait(done, dispatch_time(DISPATCH_TIME_NOW, 50 * NSEC_PER_SEC)), 0);
  EXPECT_EQ(finished.load(), 200);
}

}  // namespace
}  // namespace norvik
