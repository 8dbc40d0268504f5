#include "NorvikCore/platform/dispatch/Group.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "tests/platform/dispatch/Watchdog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>
#include <vector>

namespace norvik {
namespace {

class ConcurrentQueue : public test::WatchedTest {
 protected:
  dispatch_queue_t queue_ = dispatch_queue_create("readers", DISPATCH_QUEUE_CONCURRENT);
};

TEST_F(ConcurrentQueue, BlocksRunAtTheSameTime) {
  auto group = dispatch_group_create();
  auto arrived = dispatch_semaphore_create(0);
  auto go = dispatch_semaphore_create(0);
  for (int i = 0; i < 10; ++i) {
    dispatch_group_async(group, queue_, [&] {
      dispatch_semaphore_signal(arrived);
      dispatch_semaphore_wait(go, DISPATCH_TIME_FOREVER);
    });
  }
  for (int i = 0; i < 10; ++i) dispatch_semaphore_wait(arrived, DISPATCH_TIME_FOREVER);  // all ten are in their blocks
  for (int i = 0; i < 10; ++i) dispatch_semaphore_signal(go);
  EXPECT_EQ(dispatch_group_wait(group, DISPATCH_TIME_FOREVER), 0);
}

TEST_F(ConcurrentQueue, ABarrierRunsAloneBetweenWhatCameBeforeAndWhatCameAfter) {
  std::atomic<int> before{0};
  std::atomic<int> after{0};
  std::atomic<int> inside{0};
  int beforeAtBarrier = -1;
  int afterAtBarrier = -1;
  bool alone = false;
  auto group = dispatch_group_create();
  for (int i = 0; i < 50; ++i) {
    dispatch_group_async(group, queue_, [&] {
      ++inside;
      ++before;
      --inside;
    });
  }
  dispatch_barrier_async(queue_, [&] {
    beforeAtBarrier = before;
    afterAtBarrier = after;
    alone = inside == 0;
  });
  for (int i = 0; i < 50; ++i) {
    dispatch_group_async(group, queue_, [&] {
      ++inside;
      ++after;
      --inside;
    });
  }
  dispatch_group_wait(group, DISPATCH_TIME_FOREVER);
  EXPECT_EQ(beforeAtBarrier, 50);
  EXPECT_EQ(afterAtBarrier, 0);
  EXPECT_TRUE(alone);
}

TEST_F(ConcurrentQueue, BarriersGuardWhatTheyWrite) {
  std::vector<int> list;
  std::atomic<int> read{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 300; ++i) {
        dispatch_barrier_async(queue_, [&] { list.push_back(1); });
        dispatch_sync(queue_, [&] { read += list.empty() ? 0 : 1; });
        dispatch_barrier_sync(queue_, [&] { list.push_back(2); });
        dispatch_async(queue_, [&] { read += list.empty() ? 0 : 1; });
      }
    });
  }
  for (auto& thread : threads) thread.join();
  dispatch_barrier_sync(queue_, [&] { EXPECT_EQ(list.size(), 2400U); });
  EXPECT_EQ(read.load(), 2400);
}

TEST_F(ConcurrentQueue, SyncBlocksRunOnTheCallersThreadAndGiveTheirResult) {
  EXPECT_EQ(dispatch_sync(queue_, [] { return std::this_thread::get_id(); }), std::this_thread::get_id());
  EXPECT_EQ(dispatch_barrier_sync(queue_, [] { return std::this_thread::get_id(); }), std::this_thread::get_id());
  EXPECT_THROW(dispatch_sync(queue_, [] { throw 1; }), int);
  EXPECT_EQ(dispatch_barrier_sync(queue_, [] { return 3; }), 3) << "the reader that threw has left";
}

TEST_F(ConcurrentQueue, AReaderMayReadWithinItsBlock) {
  EXPECT_EQ(dispatch_sync(queue_, [&] { return dispatch_sync(queue_, [] { return 8; }); }), 8);
}

TEST_F(ConcurrentQueue, BlocksOfOneBarrierAfterAnotherKeepTheirOrder) {
  std::vector<int> seen;
  for (int i = 0; i < 1000; ++i) dispatch_barrier_async(queue_, [&seen, i] { seen.push_back(i); });
  dispatch_barrier_sync(queue_, [] {});
  ASSERT_EQ(seen.size(), 1000U);
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(seen[static_cast<std::size_t>(i)], i);
}

class ConcurrentQueueDeathTest : public test::WatchedDeathTest {};

TEST_F(ConcurrentQueueDeathTest, ABarrierForTheQueueThatTheCallerHoldsAborts) {
  EXPECT_DEATH(
      {
        auto queue = dispatch_queue_create("readers", DISPATCH_QUEUE_CONCURRENT);
        dispatch_sync(queue, [&] { dispatch_barrier_sync(queue, [] {}); });
      },
      "BUG: .*\"readers\"");
}

}  // namespace
}  // namespace norvik
