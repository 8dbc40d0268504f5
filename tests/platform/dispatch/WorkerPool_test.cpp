#include "NorvikCore/platform/dispatch/internal/WorkerPool.h"

#include "NorvikCore/platform/dispatch/Group.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/dispatch/internal/ThreadStart.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "tests/platform/dispatch/Watchdog.h"
#include "tests/support/InChild.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <thread>
#include <vector>

namespace norvik {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class WorkerPool : public test::WatchedTest {
 protected:
  detail::WorkerPool& pool_ = detail::WorkerPool::shared();

  /// Runs a block on a worker, and returns when that worker is the lookout.
  void wakeUp() {
    auto done = dispatch_semaphore_create(0);
    dispatch_async(dispatch_get_global_queue(), [&] { dispatch_semaphore_signal(done); });
    dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
    const std::uint64_t looks = pool_.lookCount();
    while (pool_.lookCount() < looks + 2) std::this_thread::yield();
  }
};

TEST_F(WorkerPool, WorkersEndWhenTheyHaveHadNothingToDoForAWhile) {
  pool_.setIdleTime(1'000'000);
  auto group = dispatch_group_create();
  auto arrived = dispatch_semaphore_create(0);
  auto go = dispatch_semaphore_create(0);
  for (int i = 0; i < 20; ++i) {
    dispatch_group_async(group, dispatch_get_global_queue(), [&] {
      dispatch_semaphore_signal(arrived);
      dispatch_semaphore_wait(go, DISPATCH_TIME_FOREVER);
    });
  }
  for (int i = 0; i < 20; ++i) dispatch_semaphore_wait(arrived, DISPATCH_TIME_FOREVER);
  EXPECT_GE(pool_.workerCount(), 20U) << "blocked workers do not count";
  for (int i = 0; i < 20; ++i) dispatch_semaphore_signal(go);
  dispatch_group_wait(group, DISPATCH_TIME_FOREVER);
  while (pool_.workerCount() > 0) std::this_thread::yield();
  int runs = 0;
  auto queue = dispatch_queue_create(nullptr);
  dispatch_async(queue, [&] { ++runs; });
  dispatch_sync(queue, [] {});
  EXPECT_EQ(runs, 1) << "and start again";
}

TEST_F(WorkerPool, WhereNoWorkerCanBeStartedThatIsSaidAndTheNextBlockTriesAgain) {
  RUN_IN_CHILD({
    const kernel::SystemLogCapture console;
    std::atomic<int> runs{0};
    const auto queueBlock = [&] { dispatch_async(dispatch_queue_create(nullptr), [&] { ++runs; }); };
    {
      const detail::ThreadStartsFail limit;
      queueBlock();
      queueBlock();
      EXPECT_THAT(console.lines(), ElementsAre(HasSubstr("no worker thread is free and none can be started")));
    }
    while (runs < 2) {
      queueBlock();
      std::this_thread::yield();
    }
    EXPECT_EQ(console.lines().size(), 1U);
  });
}

TEST_F(WorkerPool, WhereTheOnlyWorkerWaitsForABlockThatNoOtherCanRunThatIsSaid) {
  RUN_IN_CHILD({
    const kernel::SystemLogCapture console;
    auto limited = dispatch_semaphore_create(0);
    auto ran = dispatch_semaphore_create(0);
    auto group = dispatch_group_create();
    std::atomic<bool> run{false};
    dispatch_group_async(group, dispatch_queue_create("first"), [&] {
      dispatch_semaphore_wait(limited, DISPATCH_TIME_FOREVER);
      dispatch_async(dispatch_queue_create("second"), [&] {
        run = true;
        dispatch_semaphore_signal(ran);
      });
      dispatch_semaphore_wait(ran, DISPATCH_TIME_FOREVER);
    });
    {
      const detail::ThreadStartsFail limit;
      dispatch_semaphore_signal(limited);
      while (console.lines().empty()) std::this_thread::yield();
      EXPECT_THAT(console.lines(), ElementsAre(HasSubstr("no worker thread is free and none can be started")));
      EXPECT_FALSE(run);
    }
    dispatch_group_wait(group, DISPATCH_TIME_FOREVER);
    EXPECT_TRUE(run);
  });
}

TEST_F(WorkerPool, AWorkerIsReadyWhereWorkIsAnnounced) {
  RUN_IN_CHILD({
    pool_.prepare();
    EXPECT_EQ(pool_.workerCount(), 1U);
    while (pool_.lookCount() == 0) std::this_thread::yield();
    pool_.prepare();
    EXPECT_EQ(pool_.workerCount(), 1U) << "one is enough";
  });
}

TEST_F(WorkerPool, WorkersThatAreBlockedInWaysNobodyKnowsOfGetHelp) {
  std::atomic<bool> release{false};
  std::atomic<int> blocked{0};
  constexpr int blockCount = 8;
  auto group = dispatch_group_create();
  for (int i = 0; i < blockCount; ++i) {
    dispatch_group_async(group, dispatch_get_global_queue(), [&] {
      ++blocked;
      release.wait(false);  // the library cannot distinguish this from work
    });
  }
  int ran = 0;
  dispatch_group_async(group, dispatch_get_global_queue(), [&] {
    ran = 1;
    release = true;
    release.notify_all();
  });
  EXPECT_EQ(dispatch_group_wait(group, DISPATCH_TIME_FOREVER), 0);
  EXPECT_EQ(blocked.load(), blockCount);
  EXPECT_EQ(ran, 1);
}

TEST_F(WorkerPool, ARelaxedBlockWakesNobodyWhileAWorkerLooksOut) {
  // On a busy machine the test may not run again before the lookout sleeps; one quiet moment in fifty is sufficient.
  bool quiet = false;
  for (int attempt = 0; attempt < 50 && !quiet; ++attempt) {
    wakeUp();
    auto queue = dispatch_queue_create(nullptr);
    auto done = dispatch_semaphore_create(0);
    const std::uint64_t wakes = pool_.wakeCount();
    dispatch_async_relaxed(queue, [&] { dispatch_semaphore_signal(done); });
    quiet = pool_.wakeCount() == wakes;
    dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
  }
  EXPECT_TRUE(quiet);
}

TEST_F(WorkerPool, ARelaxedBlockRunsEvenWhenEveryWorkerSleepsOrHasEnded) {
  for (const bool ended : {false, true}) {
    if (ended) {
      pool_.setIdleTime(1'000'000);
      wakeUp();
      while (pool_.workerCount() > 0) std::this_thread::yield();
    } else {
      wakeUp();
      std::uint64_t looks = 0;
      do {  // until it stops checking
        looks = pool_.lookCount();
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
      } while (looks != pool_.lookCount());
    }
    auto done = dispatch_semaphore_create(0);
    dispatch_async_relaxed(dispatch_queue_create(nullptr), [&] { dispatch_semaphore_signal(done); });
    EXPECT_EQ(dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER), 0);
  }
}

TEST_F(WorkerPool, APromptBlockWakesTheLookout) {
  bool woken = false;
  for (int attempt = 0; attempt < 50 && !woken; ++attempt) {
    wakeUp();
    const std::uint64_t wakes = pool_.wakeCount();
    auto done = dispatch_semaphore_create(0);
    dispatch_async(dispatch_get_global_queue(), [&] { dispatch_semaphore_signal(done); });
    woken = pool_.wakeCount() != wakes;
    dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
  }
  EXPECT_TRUE(woken);
}

TEST_F(WorkerPool, WhoIsInAHurryDoesNotWaitForARelaxedDrain) {
  bool woken = false;
  for (int attempt = 0; attempt < 50 && !woken; ++attempt) {
    wakeUp();
    auto queue = dispatch_queue_create(nullptr);
    auto done = dispatch_semaphore_create(0);
    dispatch_async_relaxed(queue, [] {});
    const std::uint64_t wakes = pool_.wakeCount();
    dispatch_async(queue, [&] { dispatch_semaphore_signal(done); });
    woken = pool_.wakeCount() != wakes;
    dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
  }
  EXPECT_TRUE(woken);
}

TEST_F(WorkerPool, AnIdlePoolStopsLooking) {
  wakeUp();
  std::uint64_t before = 0;
  std::uint64_t after = 1;
  while (before != after) {  // ends after the quiet time; the watchdog ends a pool that never stops
    before = pool_.lookCount();
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    after = pool_.lookCount();
  }
  EXPECT_EQ(before, after);
}

TEST_F(WorkerPool, RelaxedBlocksFromManyThreadsAllRun) {
  constexpr int queueCount = 8;
  std::vector<dispatch_queue_t> queues;
  for (int i = 0; i < queueCount; ++i) queues.push_back(dispatch_queue_create(nullptr));
  std::atomic<int> runs{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 5000; ++i) {
        const auto& queue = queues[static_cast<std::size_t>((i + t) % queueCount)];
        dispatch_async_relaxed(queue, [&] { ++runs; });
        if (i % 500 == 0) std::this_thread::yield();
      }
    });
  }
  for (auto& thread : threads) thread.join();
  while (runs < 20000) std::this_thread::yield();
  EXPECT_EQ(runs.load(), 20000);
}

TEST_F(WorkerPool, WorkersLeaveTheApplicationsSignalsToItsOwnThreads) {
  sigset_t mask;
  auto done = dispatch_semaphore_create(0);
  dispatch_async(dispatch_get_global_queue(), [&] {
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    dispatch_semaphore_signal(done);
  });
  dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
  EXPECT_EQ(sigismember(&mask, SIGTERM), 1);
  EXPECT_EQ(sigismember(&mask, SIGINT), 1);
  EXPECT_EQ(sigismember(&mask, SIGSEGV), 0);
}

}  // namespace
}  // namespace norvik
