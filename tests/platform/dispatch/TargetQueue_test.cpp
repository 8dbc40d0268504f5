#include "NorvikCore/platform/dispatch/MainQueue.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/platform/dispatch/Watchdog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace norvik {
namespace {

class TargetQueue : public test::WatchedTest {};

TEST_F(TargetQueue, QueuesThatShareASerialTargetExcludeEachOther) {
  auto target = dispatch_queue_create("target");
  std::vector<dispatch_queue_t> queues;
  for (int i = 0; i < 4; ++i) {
    queues.push_back(
        dispatch_queue_create(nullptr, i % 2 == 0 ? DISPATCH_QUEUE_SERIAL : DISPATCH_QUEUE_CONCURRENT, target));
  }
  queues.push_back(dispatch_queue_create(nullptr, DISPATCH_QUEUE_SERIAL, queues[0]));
  queues.push_back(target);
  int unguarded = 0;
  std::vector<std::thread> threads;
  for (const auto& queue : queues) {
    threads.emplace_back([&unguarded, queue] {
      for (int i = 0; i < 1000; ++i) {
        dispatch_async(queue, [&unguarded] { ++unguarded; });
        if (i % 10 == 0) dispatch_sync(queue, [&unguarded] { ++unguarded; });
      }
      dispatch_barrier_sync(queue, [] {});
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(unguarded, 6600);
}

TEST_F(TargetQueue, AQueueWithManyBlocksLetsOthersOfItsTargetHaveTheirTurn) {
  auto target = dispatch_queue_create("target");
  auto busy = dispatch_queue_create("busy", DISPATCH_QUEUE_SERIAL, target);
  auto other = dispatch_queue_create("other", DISPATCH_QUEUE_SERIAL, target);
  int busyRuns = 0;
  int busyRunsBeforeOther = -1;
  dispatch_sync(target, [&] {
    for (int i = 0; i < 5000; ++i) dispatch_async(busy, [&] { ++busyRuns; });
    dispatch_async(other, [&] { busyRunsBeforeOther = busyRuns; });
  });
  dispatch_sync(busy, [] {});
  dispatch_sync(other, [] {});
  EXPECT_EQ(busyRuns, 5000);
  EXPECT_GT(busyRunsBeforeOther, 0);
  EXPECT_LT(busyRunsBeforeOther, 5000);
}

TEST_F(TargetQueue, SpecificValuesAreFoundThroughTargets) {
  static const char key = 0;
  int onTarget = 1;
  int onQueue = 2;
  auto target = dispatch_queue_create("target");
  auto middle = dispatch_queue_create("middle", DISPATCH_QUEUE_CONCURRENT, target);
  auto queue = dispatch_queue_create("queue", DISPATCH_QUEUE_SERIAL, middle);
  dispatch_queue_set_specific(target, &key, &onTarget);
  EXPECT_EQ(dispatch_sync(queue, [] { return dispatch_get_specific(&key); }), &onTarget);
  void* seen = nullptr;
  dispatch_async(queue, [&] { seen = dispatch_get_specific(&key); });
  dispatch_sync(queue, [] {});
  EXPECT_EQ(seen, &onTarget);
  dispatch_queue_set_specific(queue, &key, &onQueue);
  EXPECT_EQ(dispatch_sync(queue, [] { return dispatch_get_specific(&key); }), &onQueue) << "the nearest counts";
  EXPECT_EQ(dispatch_sync(middle, [] { return dispatch_get_specific(&key); }), &onTarget);
  EXPECT_EQ(dispatch_queue_get_specific(middle, &key), nullptr) << "the queue itself has none";
}

TEST_F(TargetQueue, SpecificValuesAreNotFoundThroughASynchronousCaller) {
  static const char key = 0;
  int value = 1;
  auto caller = dispatch_queue_create("caller");
  auto callee = dispatch_queue_create("callee");
  dispatch_queue_set_specific(caller, &key, &value);
  EXPECT_EQ(dispatch_sync(caller, [&] { return dispatch_sync(callee, [] { return dispatch_get_specific(&key); }); }),
            nullptr);
  EXPECT_EQ(dispatch_sync(caller,
                          [&] {
                            dispatch_sync(callee, [] {});
                            return dispatch_get_specific(&key);
                          }),
            &value)
      << "back in the caller's block";
}

TEST_F(TargetQueue, AHeldQueueIsKnownAsOneThroughCallersAndTargets) {
  auto target = dispatch_queue_create("target");
  auto caller = dispatch_queue_create("caller");
  auto queue = dispatch_queue_create("queue", DISPATCH_QUEUE_SERIAL, target);
  EXPECT_FALSE(dispatch_queue_is_held(caller));
  dispatch_sync(caller, [&] {
    EXPECT_TRUE(dispatch_queue_is_held(caller));
    EXPECT_FALSE(dispatch_queue_is_held(queue));
    dispatch_sync(queue, [&] {
      EXPECT_TRUE(dispatch_queue_is_held(caller));
      EXPECT_TRUE(dispatch_queue_is_held(queue));
      EXPECT_TRUE(dispatch_queue_is_held(target));
    });
    EXPECT_FALSE(dispatch_queue_is_held(target));
  });
  auto done = dispatch_semaphore_create(0);
  dispatch_sync(caller, [&] {
    dispatch_async(queue, [&] {
      EXPECT_FALSE(dispatch_queue_is_held(caller)) << "nobody waits for an asynchronous block";
      EXPECT_TRUE(dispatch_queue_is_held(target));
      dispatch_semaphore_signal(done);
    });
  });
  dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
}

TEST_F(TargetQueue, AQueueMovesToAnotherTargetWithTheBlocksThatWait) {
  static const char key = 0;
  int first = 1;
  int second = 2;
  auto targetA = dispatch_queue_create("a");
  auto targetB = dispatch_queue_create("b");
  dispatch_queue_set_specific(targetA, &key, &first);
  dispatch_queue_set_specific(targetB, &key, &second);
  auto queue = dispatch_queue_create("queue", DISPATCH_QUEUE_SERIAL, targetA);
  std::vector<void*> seen;
  dispatch_async(queue, [&] { seen.push_back(dispatch_get_specific(&key)); });
  dispatch_set_target_queue(queue, targetB);
  dispatch_async(queue, [&] { seen.push_back(dispatch_get_specific(&key)); });
  dispatch_sync(queue, [&] { seen.push_back(dispatch_get_specific(&key)); });
  dispatch_set_target_queue(queue, nullptr);
  dispatch_sync(queue, [&] { seen.push_back(dispatch_get_specific(&key)); });
  EXPECT_EQ(seen, (std::vector<void*>{&first, &second, &second, nullptr}));
}

TEST_F(TargetQueue, AQueueCannotTargetItself) {
  auto a = dispatch_queue_create("a");
  auto b = dispatch_queue_create("b", DISPATCH_QUEUE_SERIAL, a);
  EXPECT_THROW(dispatch_set_target_queue(a, a), NSException);
  EXPECT_THROW(dispatch_set_target_queue(a, b), NSException);
  EXPECT_THROW(dispatch_set_target_queue(dispatch_get_global_queue(), a), NSException);
  EXPECT_THROW(dispatch_set_target_queue(dispatch_get_main_queue(), a), NSException);
}

TEST_F(TargetQueue, OfTwoQueuesThatAreToTargetEachOtherAtOnceOneIsRefused) {
  for (int round = 0; round < 2000; ++round) {
    auto a = dispatch_queue_create("a");
    auto b = dispatch_queue_create("b");
    std::atomic<int> ready{0}, refused{0};
    const auto target = [&](const dispatch_queue_t& queue, const dispatch_queue_t& above) {
      for (++ready; ready < 2;) std::this_thread::yield();
      try {
        dispatch_set_target_queue(queue, above);
      } catch (const NSException&) {
        ++refused;
      }
    };
    std::thread other([&] { target(a, b); });
    target(b, a);
    other.join();
    ASSERT_EQ(refused, 1) << "in round " << round;
  }
}

TEST_F(TargetQueue, ATargetMayGoWhileAQueueIsTiedToWhatTargetedIt) {
  auto queue = dispatch_queue_create("queue");
  auto middle = dispatch_queue_create("middle");
  std::atomic<bool> done{false};
  std::thread other([&] {
    while (!done) dispatch_set_target_queue(queue, middle);
  });
  for (int round = 0; round < 2000; ++round) {
    dispatch_set_target_queue(middle, dispatch_queue_create("top"));
    dispatch_set_target_queue(middle, nullptr);
  }
  done = true;
  other.join();
  EXPECT_EQ(dispatch_sync(queue, [] { return dispatch_queue_get_label(DISPATCH_CURRENT_QUEUE_LABEL); }),
            std::string("queue"));
}

TEST_F(TargetQueue, ATargetLivesAsLongAsAQueueThatTargetsIt) {
  static const char key = 0;
  std::atomic<int> destroyed{0};
  auto queue = dispatch_queue_create("queue", DISPATCH_QUEUE_SERIAL, dispatch_queue_create("target"));
  {
    auto target = dispatch_queue_create("target");
    dispatch_queue_set_specific(target, &key, &destroyed, [](void* value) {
      static_cast<std::atomic<int>*>(value)->fetch_add(1);
      static_cast<std::atomic<int>*>(value)->notify_all();
    });
    dispatch_set_target_queue(queue, target);
  }
  EXPECT_EQ(dispatch_sync(queue, [] { return dispatch_get_specific(&key); }), &destroyed);
  EXPECT_EQ(destroyed.load(), 0);
  queue = nullptr;
  destroyed.wait(0);
  EXPECT_EQ(destroyed.load(), 1);
}

}  // namespace
}  // namespace norvik
