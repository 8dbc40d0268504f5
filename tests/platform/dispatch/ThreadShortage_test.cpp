// What happens to enqueued work while no thread can be started. Each test runs in a process of its own, which has no
// workers yet.
#include "NorvikCore/platform/dispatch/internal/ThreadShortage.h"

#include "NorvikCore/platform/dispatch/Apply.h"
#include "NorvikCore/platform/dispatch/Group.h"
#include "NorvikCore/platform/dispatch/MainQueue.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/dispatch/Source.h"
#include "NorvikCore/platform/dispatch/internal/ThreadStart.h"
#include "NorvikCore/platform/dispatch/internal/WorkerPool.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "tests/platform/dispatch/Watchdog.h"
#include "tests/support/InChild.h"
#include "tests/support/Sanitizers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace norvik {
namespace {

using detail::ThreadStartsFail;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr const char* report = "no worker thread is free and none can be started";

class ThreadShortage : public test::WatchedTest {
 protected:
  /// Ends the shortage when that many more starts have been attempted.
  class EndsAfterAttempts {
   public:
    explicit EndsAfterAttempts(std::uint64_t attempts) {
      const std::uint64_t wanted = ThreadStartsFail::attempts() + attempts;
      thread_ = std::thread([this, wanted] {
        while (ThreadStartsFail::attempts() < wanted) std::this_thread::yield();
        shortage_.reset();
      });
    }
    ~EndsAfterAttempts() { thread_.join(); }
    EndsAfterAttempts(const EndsAfterAttempts&) = delete;
    EndsAfterAttempts& operator=(const EndsAfterAttempts&) = delete;

   private:
    std::optional<ThreadStartsFail> shortage_{std::in_place};
    std::thread thread_;
  };

  /// Afterwards there is one worker, which is idle.
  static void startWorker() {
    auto done = dispatch_semaphore_create(0);
    dispatch_async(dispatch_get_global_queue(), [&] { dispatch_semaphore_signal(done); });
    dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
  }
};

TEST_F(ThreadShortage, ASynchronousBlockRunsWhatStandsBeforeItAndNothingElse) {
  RUN_IN_CHILD({
    const ThreadStartsFail shortage;
    auto queue = dispatch_queue_create("queue");
    auto other = dispatch_queue_create("other");
    std::string runs;
    const auto caller = std::this_thread::get_id();
    dispatch_async(other, [&] { runs += "x"; });
    dispatch_async(dispatch_get_main_queue(), [&] { runs += "m"; });
    dispatch_async(queue, [&] { runs += "1"; });
    dispatch_async_relaxed(queue, [&] {
      EXPECT_EQ(std::this_thread::get_id(), caller);
      EXPECT_STREQ(dispatch_queue_get_label(DISPATCH_CURRENT_QUEUE_LABEL), "queue");
      EXPECT_TRUE(dispatch_queue_is_held(queue));
      runs += "2";
      dispatch_async(queue, [&] { runs += "4"; });
    });
    dispatch_sync(queue, [&] { runs += "3"; });
    EXPECT_EQ(runs, "123") << "what was queued behind it, or elsewhere, is not what it waits for";
    dispatch_sync(queue, [] {});
    EXPECT_EQ(runs, "1234");
    dispatch_sync(other, [] {});
    EXPECT_EQ(runs, "1234x");
    dispatch_main_queue_drain();
    EXPECT_EQ(runs, "1234xm");
  });
}

TEST_F(ThreadShortage, ABlockOfTheWaitingThreadsOwnQueueIsNotRunForAnother) {
  RUN_IN_CHILD({
    const ThreadStartsFail shortage;
    auto outer = dispatch_queue_create("outer");
    auto inner = dispatch_queue_create("inner");
    std::string runs;
    dispatch_sync(outer, [&] {
      dispatch_async(outer, [&] { runs += "o"; });
      dispatch_async(inner, [&] { runs += "i"; });
      dispatch_sync(inner, [&] { runs += "I"; });
      EXPECT_EQ(runs, "iI");
    });
    dispatch_sync(outer, [&] { runs += "O"; });
    EXPECT_EQ(runs, "iIoO");
  });
}

TEST_F(ThreadShortage, QueuesThatShareATargetRunInItsOrder) {
  RUN_IN_CHILD({
    const ThreadStartsFail shortage;
    auto target = dispatch_queue_create("target");
    auto first = dispatch_queue_create("first", DISPATCH_QUEUE_SERIAL, target);
    auto second = dispatch_queue_create("second", DISPATCH_QUEUE_SERIAL, target);
    auto parallel = dispatch_queue_create("parallel", DISPATCH_QUEUE_CONCURRENT, target);
    std::string runs;
    dispatch_async(target, [&] { runs += "t"; });
    dispatch_async(first, [&] { runs += "1"; });
    dispatch_async(parallel, [&] { runs += "p"; });
    dispatch_async(second, [&] { runs += "2"; });
    dispatch_async(first, [&] { runs += "1"; });
    dispatch_async(target, [&] { runs += "T"; });
    dispatch_sync(second, [&] { runs += "s"; });
    EXPECT_EQ(runs, "t11p2Ts") << "the caller takes the target last, behind what is queued there";
    dispatch_async(target, [&] { runs += "u"; });
    dispatch_sync(target, [] {});
    EXPECT_EQ(runs, "t11p2Tsu");
  });
}

TEST_F(ThreadShortage, ConcurrentQueuesAndBarriersKeepTheirOrder) {
  RUN_IN_CHILD({
    const ThreadStartsFail shortage;
    auto queue = dispatch_queue_create("queue", DISPATCH_QUEUE_CONCURRENT);
    std::string runs;
    for (int i = 0; i < 3; ++i) dispatch_async(queue, [&] { runs += "a"; });
    dispatch_barrier_async(queue, [&] { runs += "B"; });
    for (int i = 0; i < 2; ++i) dispatch_async(queue, [&] { runs += "c"; });
    dispatch_sync(queue, [&] { EXPECT_THAT(runs, HasSubstr("aaaB")) << "a barrier is passed by nobody"; });
    dispatch_barrier_sync(queue, [&] { EXPECT_EQ(runs, "aaaBcc"); });
    dispatch_sync(queue, [&] { runs += "d"; });
    EXPECT_EQ(runs, "aaaBccd");
  });
}

TEST_F(ThreadShortage, WaitingForAGroupRunsItsBlocksAndWhatStandsBeforeThem) {
  RUN_IN_CHILD({
    const ThreadStartsFail shortage;
    auto group = dispatch_group_create();
    auto later = dispatch_group_create();
    auto serial = dispatch_queue_create("serial");
    auto nested = dispatch_queue_create("nested", DISPATCH_QUEUE_SERIAL, serial);
    auto concurrent = dispatch_queue_create("concurrent", DISPATCH_QUEUE_CONCURRENT);
    std::string runs;
    int elsewhere = 0;
    dispatch_async(serial, [&] { runs += "1"; });
    dispatch_group_async(group, serial, [&] { runs += "2"; });
    dispatch_group_async(group, nested, [&] { runs += "3"; });
    dispatch_group_async(later, serial, [&] { runs += "4"; });
    dispatch_group_async(later, dispatch_get_global_queue(), [&] { ++elsewhere; });
    dispatch_group_async(group, dispatch_get_global_queue(), [&] { ++elsewhere; });
    dispatch_group_async(group, concurrent, [&] { ++elsewhere; });
    bool notified = false;
    dispatch_group_notify(group, serial, [&] { notified = true; });
    EXPECT_EQ(dispatch_group_wait(group, DISPATCH_TIME_FOREVER), 0);
    EXPECT_EQ(runs, "123");
    EXPECT_EQ(elsewhere, 2);
    EXPECT_EQ(dispatch_group_wait(later, DISPATCH_TIME_FOREVER), 0);
    EXPECT_EQ(runs, "1234");
    EXPECT_EQ(elsewhere, 3);
    dispatch_sync(serial, [] {});
    EXPECT_TRUE(notified);
  });
}

TEST_F(ThreadShortage, AWaitWithATimeoutRunsNothing) {
  RUN_IN_CHILD({
    const ThreadStartsFail shortage;
    auto group = dispatch_group_create();
    auto queue = dispatch_queue_create("queue");
    bool ran = false;
    dispatch_group_async(group, queue, [&] { ran = true; });
    EXPECT_NE(dispatch_group_wait(group, DISPATCH_TIME_NOW), 0);
    EXPECT_NE(dispatch_group_wait(group, dispatch_time(DISPATCH_TIME_NOW, 30 * NSEC_PER_MSEC)), 0);
    EXPECT_FALSE(ran) << "its caller may hold what the block needs, and give it back after the timeout";
    EXPECT_EQ(dispatch_group_wait(group, DISPATCH_TIME_FOREVER), 0);
    EXPECT_TRUE(ran);
  });
}

TEST_F(ThreadShortage, AThreadThatWaitsForASemaphoreAttemptsToStartAWorker) {
  RUN_IN_CHILD({
    auto done = dispatch_semaphore_create(0);
    auto queue = dispatch_queue_create("queue");
    const EndsAfterAttempts shortage(3);
    dispatch_async(queue, [&] { dispatch_semaphore_signal(done); });
    EXPECT_EQ(dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER), 0);
  });
}

TEST_F(ThreadShortage, SoDoesOneThatWaitsForAGroupThatSomebodyElseLeaves) {
  RUN_IN_CHILD({
    auto group = dispatch_group_create();
    auto queue = dispatch_queue_create("queue");
    const EndsAfterAttempts shortage(3);
    dispatch_group_enter(group);
    dispatch_async(queue, [&] { dispatch_group_leave(group); });
    EXPECT_EQ(dispatch_group_wait(group, DISPATCH_TIME_FOREVER), 0);
  });
}

TEST_F(ThreadShortage, AThreadThatHasBeenAsleepRunsWhatItWaitsFor) {
  RUN_IN_CHILD({
    startWorker();
    auto group = dispatch_group_create();
    auto first = dispatch_queue_create("first");
    auto second = dispatch_queue_create("second");
    auto go = dispatch_semaphore_create(0);
    auto done = dispatch_semaphore_create(0);
    std::atomic<bool> waits{false};
    std::thread::id ranOn;
    dispatch_group_async(group, first, [&] {
      dispatch_semaphore_wait(go, DISPATCH_TIME_FOREVER);
      dispatch_group_async(group, second, [&] {
        ranOn = std::this_thread::get_id();
        dispatch_semaphore_signal(done);
      });
      dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
    });
    std::thread waiting([&] {
      waits = true;
      dispatch_group_wait(group, DISPATCH_TIME_FOREVER);
    });
    const std::thread::id waiter = waiting.get_id();
    auto& pool = detail::WorkerPool::shared();
    pool.setIdleTime(1'000'000);
    while (!waits || pool.workerCount() > 1) std::this_thread::yield();  // a second worker may have been started
    const ThreadStartsFail shortage;
    dispatch_semaphore_signal(go);
    waiting.join();
    EXPECT_EQ(ranOn, waiter);
  });
}

TEST_F(ThreadShortage, AWorkerThatWaitsRunsWhatItWaitsForAlsoWhereThreadsCanBeStarted) {
  RUN_IN_CHILD({
    auto outer = dispatch_queue_create("outer");
    auto inner = dispatch_queue_create("inner");
    auto done = dispatch_semaphore_create(0);
    startWorker();
    const ThreadStartsFail shortage;
    const std::uint64_t attempts = ThreadStartsFail::attempts();
    std::thread::id outerOn;
    std::thread::id innerOn;
    dispatch_async(outer, [&] {
      outerOn = std::this_thread::get_id();
      dispatch_async_relaxed(inner, [&] { innerOn = std::this_thread::get_id(); });
      dispatch_sync(inner, [] {});
      dispatch_semaphore_signal(done);
    });
    dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
    EXPECT_EQ(innerOn, outerOn);
    EXPECT_LE(ThreadStartsFail::attempts(), attempts + 2);
  });
}

TEST_F(ThreadShortage, AChainOfQueuesThatWaitForOneAnotherRunsOnOneThread) {
  RUN_IN_CHILD({
    const ThreadStartsFail shortage;
    std::vector<dispatch_queue_t> queues;
    for (int i = 0; i < 300; ++i) queues.push_back(dispatch_queue_create(nullptr));
    std::size_t depth = 0;
    std::function<void(std::size_t)> descend = [&](std::size_t level) {
      depth = level;
      if (level == queues.size()) return;
      dispatch_async(queues[level], [&, level] { descend(level + 1); });
      dispatch_sync(queues[level], [] {});
    };
    descend(0);
    EXPECT_EQ(depth, 300U);
  });
}

TEST_F(ThreadShortage, ALoopRunsOnItsCaller) {
  RUN_IN_CHILD({
    const ThreadStartsFail shortage;
    auto queue = dispatch_queue_create("queue", DISPATCH_QUEUE_CONCURRENT);
    std::atomic<int> sum{0};
    dispatch_async(queue, [&] { sum += 1000; });
    dispatch_barrier_async(queue, [&] { sum += 1000; });
    dispatch_apply(100, queue, [&](std::size_t i) { sum += static_cast<int>(i); });
    EXPECT_EQ(sum, 2000 + 4950);
  });
}

TEST_F(ThreadShortage, TheConsoleSaysSoOnceAndAttemptsAreRare) {
  RUN_IN_CHILD({
    const kernel::SystemLogCapture console;
    const ThreadStartsFail shortage;
    std::vector<dispatch_queue_t> queues;
    const std::uint64_t begin = detail::monotonicNanoseconds();
    int runs = 0;
    for (int i = 0; i < 1000; ++i) {
      queues.push_back(dispatch_queue_create(nullptr));
      dispatch_async(queues.back(), [&] { ++runs; });
    }
    dispatch_after(DISPATCH_TIME_NOW + 1, queues.front(), [] {});
    dispatch_semaphore_wait(dispatch_semaphore_create(0), dispatch_time(DISPATCH_TIME_NOW, 50 * NSEC_PER_MSEC));
    for (const auto& queue : queues) dispatch_sync(queue, [] {});
    EXPECT_EQ(runs, 1000);
    const std::uint64_t intervals = (detail::monotonicNanoseconds() - begin) / detail::ThreadShortage::interval;
    EXPECT_LE(ThreadStartsFail::attempts(), 2 * (intervals + 2)) << "of workers and of the timers' thread";
    EXPECT_THAT(console.lines(), ElementsAre(HasSubstr(report)));
  });
}

TEST_F(ThreadShortage, AfterItNothingIsLostAndOrderIsKept) {
  RUN_IN_CHILD({
    constexpr int queueCount = 20;
    constexpr int blockCount = 100;
    std::vector<dispatch_queue_t> queues;
    std::vector<std::vector<int>> runs(queueCount);
    std::atomic<int> count{0};
    const auto add = [&](int begin, int end) {
      for (int i = begin; i < end; ++i) {
        for (std::size_t q = 0; q < queueCount; ++q) {
          dispatch_async(queues[q], [&, q, i] {
            runs[q].push_back(i);
            ++count;
          });
        }
      }
    };
    for (int i = 0; i < queueCount; ++i) queues.push_back(dispatch_queue_create(nullptr));
    {
      const ThreadStartsFail shortage;
      add(0, blockCount / 2);
      dispatch_sync(queues[3], [] {});
      dispatch_sync(queues[7], [] {});
      EXPECT_EQ(count, blockCount) << "two queues of " << blockCount / 2;
    }
    add(blockCount / 2, blockCount);
    while (count < queueCount * blockCount) {  // this thread never waits in the library
      dispatch_async(dispatch_get_global_queue(), [] {});
      std::this_thread::yield();
    }
    std::vector<int> expected;
    for (int i = 0; i < blockCount; ++i) expected.push_back(i);
    for (const std::vector<int>& run : runs) EXPECT_EQ(run, expected);
  });
}

TEST_F(ThreadShortage, TimersFireFromWaitingThreadsInTheirOrder) {
  RUN_IN_CHILD({
    const ThreadStartsFail shortage;
    auto queue = dispatch_queue_create("queue");
    auto never = dispatch_semaphore_create(0);
    std::string runs;
    const dispatch_time_t now = dispatch_time(DISPATCH_TIME_NOW, 0);
    dispatch_after(dispatch_time(now, 2 * NSEC_PER_MSEC), queue, [&] { runs += "2"; });
    dispatch_after(dispatch_time(now, 1 * NSEC_PER_MSEC), queue, [&] { runs += "1"; });
    dispatch_after(dispatch_walltime(nullptr, 3 * NSEC_PER_MSEC), queue, [&] { runs += "3"; });
    while (runs.size() < 3) {
      dispatch_semaphore_wait(never, dispatch_time(DISPATCH_TIME_NOW, 1 * NSEC_PER_MSEC));
      dispatch_sync(queue, [] {});
    }
    EXPECT_EQ(runs, "123");
  });
}

TEST_F(ThreadShortage, TimersFireFromAnIdleWorker) {
  RUN_IN_CHILD({
    startWorker();
    const ThreadStartsFail shortage;
    std::atomic<int> runs{0};
    auto queue = dispatch_queue_create("queue");
    auto timer = dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, queue);
    dispatch_source_set_event_handler(timer, [&] { ++runs; });
    dispatch_source_set_timer(timer, DISPATCH_TIME_NOW, NSEC_PER_MSEC, 0);
    dispatch_resume(timer);
    while (runs < 3) std::this_thread::yield();
    dispatch_source_cancel(timer);
    dispatch_sync(queue, [] {});
  });
}

TEST_F(ThreadShortage, TimersGoOnWithAThreadOfTheirOwnAfterIt) {
  RUN_IN_CHILD({
    auto fired = dispatch_semaphore_create(0);
    const EndsAfterAttempts shortage(5);
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, 200 * NSEC_PER_MSEC), dispatch_get_global_queue(),
                   [&] { dispatch_semaphore_signal(fired); });
    EXPECT_EQ(dispatch_semaphore_wait(fired, DISPATCH_TIME_FOREVER), 0);
  });
}

TEST_F(ThreadShortage, AForkedChildWithoutThreadsMayDispatch) {
  RUN_IN_CHILD({
    startWorker();
    const pid_t child = fork();
    if (child == 0) {
      alarm(20);
      const ThreadStartsFail shortage;
      auto queue = dispatch_queue_create("queue");
      auto group = dispatch_group_create();
      int sum = 0;
      dispatch_async(queue, [&] { sum += 1; });
      dispatch_group_async(group, dispatch_get_global_queue(), [&] { sum += 2; });
      dispatch_group_wait(group, DISPATCH_TIME_FOREVER);
      dispatch_sync(queue, [&] { sum += 4; });
      _exit(sum == 7 ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  });
}

TEST_F(ThreadShortage, AChildThatIsForkedAmidTheFirstBlockOfAProcessMayDispatch) {
#ifdef NK_TEST_THREAD_SANITIZER
  GTEST_SKIP() << "the thread sanitizer starts no threads in a child made by fork()";
#endif
  RUN_IN_CHILD({
    // Neither process has used a queue before, so its first worker is still making objects of the first use.
    const auto process = [] {
      auto queue = dispatch_queue_create("queue");
      dispatch_async(queue, [] {});
      const pid_t child = fork();
      if (child == 0) {
        alarm(20);
        const ThreadStartsFail shortage;
        int sum = 0;
        dispatch_async(queue, [&] { sum += 1; });
        dispatch_sync(queue, [&] { sum += 2; });
        _exit(sum == 3 ? 0 : 1);
      }
      int status = 0;
      waitpid(child, &status, 0);
      return status;
    };
    for (int round = 0; round < 200 && !HasFailure(); ++round) {
      const pid_t parent = fork();
      if (parent == 0) _exit(process() == 0 ? 0 : 1);
      int status = 0;
      waitpid(parent, &status, 0);
      EXPECT_EQ(status, 0) << "round " << round;
    }
  });
}

TEST_F(ThreadShortage, ABlockThatAWaitingThreadRunsMayForkAndTheChildGoesOn) {
  RUN_IN_CHILD({
    const ThreadStartsFail shortage;
    auto serial = dispatch_queue_create("serial");
    auto concurrent = dispatch_queue_create("concurrent", DISPATCH_QUEUE_CONCURRENT);
    auto group = dispatch_group_create();
    const auto forkAndCheck = [] {
      const pid_t child = fork();
      if (child == 0) {
        alarm(20);
        return;
      }
      int status = 0;
      waitpid(child, &status, 0);
      EXPECT_EQ(status, 0);
    };
    const pid_t parent = getpid();
    const auto endChild = [&] {
      if (getpid() != parent) _exit(0);
    };
    dispatch_async(serial, [&] { forkAndCheck(); });
    dispatch_sync(serial, [] {});
    endChild();
    dispatch_barrier_async(concurrent, [&] { forkAndCheck(); });
    dispatch_sync(concurrent, [] {});
    endChild();
    dispatch_group_async(group, serial, [&] { forkAndCheck(); });
    dispatch_group_wait(group, DISPATCH_TIME_FOREVER);
    endChild();
  });
}

TEST_F(ThreadShortage, AProcessWhoseUserMayHaveNoMoreThreadsGoesOn) {
#if defined(NK_TEST_ADDRESS_SANITIZER) || defined(NK_TEST_THREAD_SANITIZER)
  GTEST_SKIP() << "the sanitizers start threads in a way of their own";
#endif
  RUN_IN_CHILD({
    rlimit before{};
    getrlimit(RLIMIT_NPROC, &before);
    if (getuid() == 0) {
      ASSERT_EQ(setgid(65534), 0);
      ASSERT_EQ(setuid(65534), 0);
    }
    const rlimit some{0, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NPROC, &some), 0);
    const kernel::SystemLogCapture console;
    auto queue = dispatch_queue_create("queue");
    auto done = dispatch_semaphore_create(0);
    std::string runs;
    dispatch_async(queue, [&] { runs += "1"; });
    EXPECT_THAT(console.lines(), ElementsAre(HasSubstr(report)));
    dispatch_sync(queue, [&] { runs += "2"; });
    EXPECT_EQ(runs, "12");
    dispatch_async(queue, [&] { dispatch_semaphore_signal(done); });
    EXPECT_NE(dispatch_semaphore_wait(done, dispatch_time(DISPATCH_TIME_NOW, 50 * NSEC_PER_MSEC)), 0);
    ASSERT_EQ(setrlimit(RLIMIT_NPROC, &before), 0);
    EXPECT_EQ(dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER), 0) << "it attempts again while it waits";
    EXPECT_EQ(console.lines().size(), 1U);
  });
}

}  // namespace
}  // namespace norvik
