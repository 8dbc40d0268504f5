#include "NorvikCore/platform/dispatch/MainQueue.h"

#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "tests/platform/dispatch/Watchdog.h"
#include "tests/support/InChild.h"
#include "tests/support/Sanitizers.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace norvik {
namespace {

bool readable() {
  pollfd ready{dispatch_main_queue_descriptor(), POLLIN, 0};
  return poll(&ready, 1, 0) == 1;
}

class MainQueue : public test::WatchedTest {
 protected:
  const dispatch_queue_t main_ = dispatch_get_main_queue();

  static void waitUntilReadable() {
    pollfd ready{dispatch_main_queue_descriptor(), POLLIN, 0};
    ASSERT_EQ(poll(&ready, 1, -1), 1);
  }
};

TEST_F(MainQueue, HeaderExample) {
  bool running = true;
  dispatch_async(dispatch_get_main_queue(), [&] { running = false; });
  pollfd ready{dispatch_main_queue_descriptor(), POLLIN, 0};
  while (running) {
    poll(&ready, 1, -1);
    dispatch_main_queue_drain();
  }
  EXPECT_FALSE(running);
}

TEST_F(MainQueue, BlocksRunOnTheMainThreadOnlyWhenItIsDrained) {
  std::thread::id ran;
  std::thread([&] { dispatch_async(main_, [&] { ran = std::this_thread::get_id(); }); }).join();
  EXPECT_EQ(ran, std::thread::id());
  EXPECT_EQ(dispatch_main_queue_drain(), 1U);
  EXPECT_EQ(ran, std::this_thread::get_id());
}

TEST_F(MainQueue, ADrainRunsWhatWasQueuedBeforeItBegan) {
  std::string seen;
  dispatch_async(main_, [&] {
    seen += "a";
    dispatch_async(main_, [&] { seen += "c"; });
  });
  dispatch_async(main_, [&] { seen += "b"; });
  EXPECT_EQ(dispatch_main_queue_drain(), 2U);
  EXPECT_EQ(seen, "ab");
  EXPECT_EQ(dispatch_main_queue_drain(), 1U);
  EXPECT_EQ(seen, "abc");
  EXPECT_EQ(dispatch_main_queue_drain(), 0U);
}

TEST_F(MainQueue, ADrainRunsNoMoreThanItsLimit) {
  std::string seen;
  for (const char* letter : {"a", "b", "c"}) dispatch_async(main_, [&seen, letter] { seen += letter; });
  EXPECT_EQ(dispatch_main_queue_drain(2), 2U);
  EXPECT_EQ(seen, "ab");
  dispatch_async(main_, [&] { seen += "d"; });
  EXPECT_TRUE(readable());
  EXPECT_EQ(dispatch_main_queue_drain(2), 2U);
  EXPECT_EQ(seen, "abcd");
}

TEST_F(MainQueue, TheDescriptorIsReadableWhileBlocksWait) {
  EXPECT_FALSE(readable());
  dispatch_async(main_, [] {});
  dispatch_async(main_, [] {});
  EXPECT_TRUE(readable());
  dispatch_main_queue_drain(1);
  EXPECT_TRUE(readable());
  dispatch_main_queue_drain();
  EXPECT_FALSE(readable());
}

TEST_F(MainQueue, ASyncBlockFromAnotherThreadRunsInTheDrainAndGivesItsResult) {
  std::thread::id ran;
  int result = 0;
  std::string label;
  std::thread caller([&] {
    result = dispatch_sync(main_, [&] {
      ran = std::this_thread::get_id();
      label = dispatch_queue_get_label(DISPATCH_CURRENT_QUEUE_LABEL);
      return 42;
    });
  });
  waitUntilReadable();
  dispatch_main_queue_drain();
  caller.join();
  EXPECT_EQ(ran, std::this_thread::get_id());
  EXPECT_EQ(result, 42);
  EXPECT_EQ(label, "com.norvik.main-thread");
}

TEST_F(MainQueue, AnExceptionOfASyncBlockReachesTheThreadThatWaits) {
  std::string message;
  std::thread caller([&] {
    try {
      dispatch_sync(main_, [] { throw std::runtime_error("refused"); });
    } catch (const std::runtime_error& error) {
      message = error.what();
    }
  });
  waitUntilReadable();
  dispatch_main_queue_drain();
  caller.join();
  EXPECT_EQ(message, "refused");
}

TEST_F(MainQueue, OnTheMainThreadASyncBlockRunsInPlaceAfterWhatWasQueued) {
  std::string seen;
  dispatch_sync(main_, [&] { seen += "a"; });
  dispatch_async(main_, [&] { seen += "b"; });
  dispatch_sync(main_, [&] { seen += "c"; });
  EXPECT_EQ(seen, "abc");
  EXPECT_EQ(dispatch_main_queue_drain(), 0U);
}

TEST_F(MainQueue, AQueueThatTargetsTheMainQueueRunsOnTheMainThread) {
  static const char key = 0;
  int value = 0;
  auto queue = dispatch_queue_create("view", DISPATCH_QUEUE_SERIAL, main_);
  dispatch_queue_set_specific(queue, &key, &value);
  std::vector<std::thread::id> ran;
  dispatch_async(queue, [&] { ran.push_back(std::this_thread::get_id()); });
  void* specific = nullptr;
  auto done = dispatch_semaphore_create(0);
  std::thread caller([&] {
    dispatch_sync(queue, [&] {
      ran.push_back(std::this_thread::get_id());
      specific = dispatch_get_specific(&key);
    });
    dispatch_semaphore_signal(done);
  });
  while (dispatch_semaphore_wait(done, DISPATCH_TIME_NOW) != 0) dispatch_main_queue_drain();
  caller.join();
  EXPECT_EQ(ran, (std::vector<std::thread::id>{std::this_thread::get_id(), std::this_thread::get_id()}));
  EXPECT_EQ(specific, &value);
}

TEST_F(MainQueue, TheMainThreadCanWaitForAQueueThatTargetsTheMainQueue) {
  auto queue = dispatch_queue_create("view", DISPATCH_QUEUE_SERIAL, main_);
  std::string seen;
  dispatch_async(queue, [&] { seen += "a"; });
  dispatch_async(queue, [&] { seen += "b"; });
  dispatch_sync(queue, [&] { seen += "c"; });
  EXPECT_EQ(seen, "abc");
  dispatch_main_queue_drain();
}

TEST_F(MainQueue, WhatTheMainThreadWaitsForIsHeldInTheBlockItWaitsFor) {
  bool held = false;
  dispatch_async(main_, [&] {
    auto queue = dispatch_queue_create("worker");
    dispatch_sync(queue, [&] { held = dispatch_queue_is_held(main_); });
  });
  dispatch_main_queue_drain();
  EXPECT_TRUE(held);
  EXPECT_FALSE(dispatch_queue_is_held(main_));
}

class MainQueueDeathTest : public test::WatchedDeathTest {};

TEST_F(MainQueueDeathTest, DispatchMainRunsBlocksUntilTheProcessExits) {
  EXPECT_EXIT(
      {
        std::thread([] {
          for (int i = 0; i < 100; ++i) dispatch_sync(dispatch_get_main_queue(), [] {});
          dispatch_async(dispatch_get_main_queue(), [] { std::exit(7); });
        }).detach();
        dispatch_main();
      },
      ::testing::ExitedWithCode(7), "");
}

TEST_F(MainQueueDeathTest, WithoutADescriptorBlocksRunAndTheReasonIsReportedOnceUntilThereIsOne) {
#ifdef NK_TEST_ADDRESS_SANITIZER
  GTEST_SKIP() << "the undefined behaviour sanitizer checks the kind of an object through a pipe of its own";
#endif
  RUN_IN_CHILD({
    const kernel::SystemLogCapture console;
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const int next = dup(STDIN_FILENO);
    close(next);
    const rlimit none{static_cast<rlim_t>(next), before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    EXPECT_STREQ(dispatch_queue_get_label(DISPATCH_CURRENT_QUEUE_LABEL), "com.norvik.main-thread");
    EXPECT_TRUE(console.lines().empty());  // the descriptor was not requested
    int runs = 0;
    dispatch_async(dispatch_get_main_queue(), [&] { ++runs; });
    for (int i = 0; i < 3; ++i) EXPECT_EQ(dispatch_main_queue_descriptor(), -1);
    EXPECT_EQ(dispatch_main_queue_drain(), 1U);
    ASSERT_EQ(console.lines().size(), 1U);
    EXPECT_EQ(console.lines()[0],
              "dispatch: no descriptor for the main queue: Too many open files; the next call for it tries again");
    dispatch_async(dispatch_get_main_queue(), [&] { ++runs; });
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_TRUE(readable());  // because of the block that was enqueued before
    EXPECT_EQ(dispatch_main_queue_drain(), 1U);
    EXPECT_FALSE(readable());
    EXPECT_EQ(runs, 2);
  });
}

TEST_F(MainQueueDeathTest, TheMainLoopNeedsNoDescriptor) {
#ifdef NK_TEST_ADDRESS_SANITIZER
  GTEST_SKIP() << "the undefined behaviour sanitizer checks the kind of an object through a pipe of its own";
#endif
  RUN_IN_CHILD({
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const int next = dup(STDIN_FILENO);
    close(next);
    const rlimit none{static_cast<rlim_t>(next), before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    std::thread([] {
      while (dispatch_main_queue_descriptor() >= 0) std::this_thread::yield();
      dispatch_sync(dispatch_get_main_queue(), [] {});
      dispatch_async(dispatch_get_main_queue(), [] { std::_Exit(testing::Test::HasFailure() ? 1 : 0); });
    }).detach();
    dispatch_main();
  });
}

TEST_F(MainQueueDeathTest, ASyncBlockForTheMainQueueWithinADrainAborts) {
  EXPECT_DEATH(
      {
        dispatch_async(dispatch_get_main_queue(), [] { dispatch_sync(dispatch_get_main_queue(), [] {}); });
        dispatch_main_queue_drain();
      },
      "BUG: .*\"com.norvik.main-thread\"");
}

TEST_F(MainQueueDeathTest, ABlockThatAnotherThreadWaitsForCannotWaitForThatThreadsQueue) {
  EXPECT_DEATH(
      {
        auto queue = dispatch_queue_create("import");
        dispatch_async(queue, [&] { dispatch_sync(dispatch_get_main_queue(), [&] { dispatch_sync(queue, [] {}); }); });
        for (;;) dispatch_main_queue_drain();
      },
      "BUG: .*\"import\"");
}

TEST_F(MainQueueDeathTest, OnlyTheMainThreadMayDrain) {
  EXPECT_DEATH(std::thread([] { dispatch_main_queue_drain(); }).join(), "BUG: .*another thread");
}

TEST_F(MainQueueDeathTest, ADrainWithinADrainAborts) {
  EXPECT_DEATH(
      {
        dispatch_async(dispatch_get_main_queue(), [] { dispatch_main_queue_drain(); });
        dispatch_main_queue_drain();
      },
      "BUG: .*within one of its blocks");
}

}  // namespace
}  // namespace norvik
