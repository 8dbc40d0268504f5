#include "NorvikCore/platform/dispatch/Group.h"
#include "NorvikCore/platform/dispatch/MainQueue.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/dispatch/Source.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/platform/dispatch/Watchdog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace norvik {
namespace {

class Suspension : public test::WatchedTest {
 protected:
  /// Returns when the target has run everything that the queues above had enqueued on it.
  static void settle(const dispatch_queue_t& target) {
    dispatch_sync(target, [] {});
  }

  dispatch_queue_t target = dispatch_queue_create("target");
  dispatch_queue_t serial = dispatch_queue_create("serial", DISPATCH_QUEUE_SERIAL, target);
  dispatch_queue_t concurrent = dispatch_queue_create("concurrent", DISPATCH_QUEUE_CONCURRENT, target);
};

TEST_F(Suspension, ASuspendedQueueBeginsNoBlockUntilItIsResumed) {
  for (const auto& queue : {serial, concurrent}) {
    std::string ran;  // needs no lock, because the target runs one block at a time
    dispatch_suspend(queue);
    for (const char* text : {"a", "b", "c"}) dispatch_async(queue, [&ran, text] { ran += text; });
    settle(target);
    EXPECT_EQ(dispatch_sync(target, [&] { return ran; }), "") << dispatch_queue_get_label(queue);
    dispatch_resume(queue);
    EXPECT_EQ(dispatch_barrier_sync(queue, [&] { return ran; }), "abc") << dispatch_queue_get_label(queue);
  }
}

TEST_F(Suspension, SuspensionsAreCounted) {
  for (const auto& queue : {serial, concurrent}) {
    std::atomic<bool> ran{false};
    dispatch_suspend(queue);
    dispatch_suspend(queue);
    dispatch_async(queue, [&] { ran = true; });
    dispatch_resume(queue);
    settle(target);
    EXPECT_FALSE(ran) << dispatch_queue_get_label(queue);
    dispatch_resume(queue);
    dispatch_barrier_sync(queue, [] {});
    EXPECT_TRUE(ran) << dispatch_queue_get_label(queue);
  }
}

TEST_F(Suspension, ABlockThatSuspendsItsQueueEndsAndTheNextOneWaits) {
  std::string ran;
  dispatch_async(target, [&] {
    dispatch_async(serial, [&] {
      dispatch_suspend(serial);
      ran += "a";
    });
    dispatch_async(serial, [&] { ran += "b"; });
  });
  settle(target);
  settle(target);
  EXPECT_EQ(dispatch_sync(target, [&] { return ran; }), "a");
  dispatch_async(serial, [&] { ran += "c"; });
  dispatch_resume(serial);
  EXPECT_EQ(dispatch_sync(serial, [&] { return ran; }), "abc");
}

TEST_F(Suspension, ASyncBlockThatSuspendsItsQueueEndsAndTheNextOneWaits) {
  std::string ran;
  dispatch_sync(serial, [&] {
    dispatch_suspend(serial);
    dispatch_async(serial, [&] { ran += "b"; });
    ran += "a";
  });
  EXPECT_EQ(dispatch_sync(target, [&] { return ran; }), "a");
  dispatch_resume(serial);
  EXPECT_EQ(dispatch_sync(serial, [&] { return ran; }), "ab");
}

TEST_F(Suspension, ASyncBlockWaitsForTheResume) {
  for (const auto& queue :
       {dispatch_queue_create("serial"), dispatch_queue_create("concurrent", DISPATCH_QUEUE_CONCURRENT)}) {
    std::atomic<bool> resumed{false};
    bool seen = false;
    dispatch_suspend(queue);
    std::thread caller([&] { seen = dispatch_sync(queue, [&] { return resumed.load(); }); });
    resumed = true;
    dispatch_resume(queue);
    caller.join();
    EXPECT_TRUE(seen) << dispatch_queue_get_label(queue);
  }
}

TEST_F(Suspension, AnAdmittedBlockOfAConcurrentQueueThatHasNotBegunWaitsToo) {
  std::atomic<int> ran{0};
  dispatch_sync(target, [&] {
    for (int i = 0; i < 3; ++i) dispatch_async(concurrent, [&] { ++ran; });
    dispatch_suspend(concurrent);
  });
  settle(target);
  EXPECT_EQ(ran.load(), 0);
  dispatch_resume(concurrent);
  dispatch_barrier_sync(concurrent, [] {});
  EXPECT_EQ(ran.load(), 3);
}

TEST_F(Suspension, ABarrierKeepsItsPlaceAcrossASuspension) {
  std::string ran;
  dispatch_suspend(concurrent);
  dispatch_async(concurrent, [&] { ran += "a"; });
  dispatch_barrier_async(concurrent, [&] { ran += "|"; });
  dispatch_async(concurrent, [&] { ran += "b"; });
  dispatch_resume(concurrent);
  EXPECT_EQ(dispatch_barrier_sync(concurrent, [&] { return ran; }), "a|b");
}

TEST_F(Suspension, AReaderOfASuspendedConcurrentQueueMayReadWithinItsBlock) {
  auto queue = dispatch_queue_create("readers", DISPATCH_QUEUE_CONCURRENT);
  bool ran = false;
  dispatch_sync(queue, [&] {
    dispatch_suspend(queue);
    std::thread([&] { dispatch_resume(queue); }).detach();
    dispatch_sync(queue, [&] { ran = true; });
  });
  EXPECT_TRUE(ran);
}

TEST_F(Suspension, TimersThatFireTogetherStopAtASuspensionAndKeepTheirPlace) {
  dispatch_manual_clock clock;
  std::string seen;
  std::vector<dispatch_source_t> sources;
  for (const char* name : {"a", "b", "c"}) {
    sources.push_back(dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, serial));
    dispatch_source_set_clock(sources.back(), clock);
    dispatch_source_set_event_handler(sources.back(), [&, name] {
      seen += name;
      if (seen == "a") dispatch_suspend(serial);
    });
    dispatch_source_set_timer(sources.back(), clock.time(10), 0, 0);
    dispatch_resume(sources.back());
  }
  clock.advance(10);
  dispatch_async(serial, [&] { seen += "x"; });
  settle(target);
  EXPECT_EQ(dispatch_sync(target, [&] { return seen; }), "a");
  dispatch_resume(serial);
  EXPECT_EQ(dispatch_sync(serial, [&] { return seen; }), "abcx");
}

TEST_F(Suspension, ASuspendedTargetHoldsUpItsQueuesButNotTheOtherWayRound) {
  auto upper = dispatch_queue_create("upper", DISPATCH_QUEUE_SERIAL, serial);
  std::atomic<bool> ran{false};
  dispatch_suspend(serial);
  dispatch_async(upper, [&] { ran = true; });
  settle(target);
  EXPECT_FALSE(ran) << "the target of the suspended queue goes on";
  dispatch_resume(serial);
  dispatch_sync(upper, [] {});
  EXPECT_TRUE(ran);
}

TEST_F(Suspension, AQueueWhoseLastHandleGoesIsResumed) {
  for (const auto attribute : {DISPATCH_QUEUE_SERIAL, DISPATCH_QUEUE_CONCURRENT}) {
    auto group = dispatch_group_create();
    std::atomic<int> ran{0};
    {
      auto queue = dispatch_queue_create(nullptr, attribute);
      dispatch_suspend(queue);
      dispatch_suspend(queue);
      for (int i = 0; i < 3; ++i) dispatch_group_async(group, queue, [&] { ++ran; });
    }
    dispatch_group_wait(group, DISPATCH_TIME_FOREVER);
    EXPECT_EQ(ran.load(), 3);
  }
}

TEST_F(Suspension, ASuspendedQueueWithoutWorkGoesWithItsLastHandle) {
  static const char key = 0;
  for (const auto attribute : {DISPATCH_QUEUE_SERIAL, DISPATCH_QUEUE_CONCURRENT}) {
    std::atomic<int> destroyed{0};
    {
      auto queue = dispatch_queue_create(nullptr, attribute);
      dispatch_queue_set_specific(queue, &key, &destroyed, [](void* value) {
        static_cast<std::atomic<int>*>(value)->fetch_add(1);
        static_cast<std::atomic<int>*>(value)->notify_all();
      });
      dispatch_suspend(queue);
    }
    destroyed.wait(0);
    EXPECT_EQ(destroyed.load(), 1);
  }
}

TEST_F(Suspension, NothingIsLostOrReorderedWhileManyThreadsSuspendAndResume) {
  for (const auto attribute : {DISPATCH_QUEUE_SERIAL, DISPATCH_QUEUE_CONCURRENT}) {
    constexpr int blockCount = 3000;
    auto queue = dispatch_queue_create(nullptr, attribute);
    std::atomic<bool> stop{false};
    int next[2] = {0, 0};
    int wrong = 0;
    std::vector<std::thread> switches;
    for (int i = 0; i < 2; ++i) {
      switches.emplace_back([&] {
        while (!stop) {
          dispatch_suspend(queue);
          dispatch_resume(queue);
        }
      });
    }
    std::vector<std::thread> producers;
    for (int& mine : next) {
      producers.emplace_back([&] {
        for (int i = 0; i < blockCount; ++i) {
          const auto block = [&mine, &wrong, i] { wrong += mine++ == i ? 0 : 1; };
          if (i % 100 == 99) {
            dispatch_barrier_sync(queue, block);
          } else if (attribute == DISPATCH_QUEUE_SERIAL && i % 2 == 0) {
            dispatch_async_relaxed(queue, block);
          } else {
            dispatch_barrier_async(queue, block);
          }
        }
      });
    }
    for (auto& thread : producers) thread.join();
    stop = true;
    for (auto& thread : switches) thread.join();
    dispatch_barrier_sync(queue, [&] {
      EXPECT_EQ(next[0], blockCount);
      EXPECT_EQ(next[1], blockCount);
      EXPECT_EQ(wrong, 0);
    });
  }
}

TEST_F(Suspension, TheQueuesOfEverybodyCannotBeSuspended) {
  for (const auto& queue : {dispatch_get_global_queue(), dispatch_get_main_queue()}) {
    EXPECT_THROW(dispatch_suspend(queue), NSException);
    EXPECT_THROW(dispatch_resume(queue), NSException);
  }
}

TEST_F(Suspension, AnEmptyHandleRaises) {
  const dispatch_queue_t none;
  EXPECT_THROW(dispatch_suspend(none), NSException);
  EXPECT_THROW(dispatch_resume(none), NSException);
}

class SuspensionDeathTest : public test::WatchedDeathTest {};

TEST_F(SuspensionDeathTest, OneResumeTooManyAborts) {
  EXPECT_DEATH(
      {
        auto queue = dispatch_queue_create("import");
        dispatch_suspend(queue);
        dispatch_resume(queue);
        dispatch_resume(queue);
      },
      "BUG: dispatch_resume without dispatch_suspend \\(queue \"import\"\\)");
}

}  // namespace
}  // namespace norvik
