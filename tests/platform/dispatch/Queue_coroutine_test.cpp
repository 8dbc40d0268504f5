#include "NorvikCore/platform/dispatch/Queue_coroutine.h"

#include "NorvikCore/platform/dispatch/Group.h"
#include "NorvikCore/platform/dispatch/MainQueue.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/platform/dispatch/Job.h"
#include "tests/platform/dispatch/Watchdog.h"
#include "tests/support/QuietFork.h"
#include "tests/support/Sanitizers.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <latch>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace norvik {
namespace {

using test::Job;

class QueueCoroutine : public test::WatchedTest {};
class QueueCoroutineDeathTest : public test::WatchedDeathTest {};

std::string currentLabel() { return dispatch_queue_get_label(DISPATCH_CURRENT_QUEUE_LABEL); }

TEST_F(QueueCoroutine, HeaderExample) {
  const auto disk = dispatch_queue_create("disk");
  std::vector<std::string> seen;
  bool isShown = false;
  const auto saveHours = [](dispatch_queue_t queue, std::vector<std::string>& labels, bool& shown) -> Job {
    co_await queue;
    labels.push_back(currentLabel());
    co_await dispatch_get_main_queue();
    labels.push_back(currentLabel());
    shown = true;
  };
  saveHours(disk, seen, isShown);
  pollfd ready{dispatch_main_queue_descriptor(), POLLIN, 0};
  while (!isShown) {
    poll(&ready, 1, -1);
    dispatch_main_queue_drain();
  }
  EXPECT_EQ(seen, (std::vector<std::string>{"disk", "com.norvik.main-thread"}));
}

TEST_F(QueueCoroutine, ContinuesBehindTheBlocksThatWaitAlready) {
  const auto queue = dispatch_queue_create(nullptr);
  std::string seen;
  const auto job = [](dispatch_queue_t on, std::string& order) -> Job {
    order += "1 ";
    co_await on;
    order += "4 ";
    dispatch_async(on, [&order] { order += "5 "; });
    co_await on;  // behind that block, although it runs on the queue
    order += "6";
  };
  dispatch_suspend(queue);
  dispatch_async(queue, [&] { seen += "3 "; });
  job(queue, seen);
  seen += "2 ";  // the caller continues at once
  dispatch_resume(queue);
  dispatch_sync(queue, [] {});
  dispatch_sync(queue, [] {});
  EXPECT_EQ(seen, "1 2 3 4 5 6");
}

TEST_F(QueueCoroutine, AQueueWithoutOtherHandlesLivesUntilTheCoroutineHasContinued) {
  auto queue = dispatch_queue_create("short lived");
  std::latch hasContinued(1);
  std::string label;
  const auto job = [](dispatch_queue_t on, std::string& seen, std::latch& continued) -> Job {
    co_await std::move(on);
    seen = currentLabel();
    continued.count_down();
  };
  dispatch_suspend(queue);  // released with the last handle, which resumes the queue
  job(std::move(queue), label, hasContinued);
  hasContinued.wait();
  EXPECT_EQ(label, "short lived");
}

TEST_F(QueueCoroutine, AnEmptyHandleRaisesInTheCoroutine) {
  std::string seen;
  const auto job = [](std::string& text) -> Job {
    try {
      co_await dispatch_queue_t();
    } catch (const NSException& problem) {
      text = problem.name().str() + ": " + problem.reason().str();
    }
  };
  job(seen);
  EXPECT_EQ(seen, "NSInvalidArgumentException: co_await: the queue is nil");
}

TEST_F(QueueCoroutine, ACoroutineCatchesItsOwnExceptions) {
  const auto queue = dispatch_queue_create(nullptr);
  std::string seen;
  const auto job = [](dispatch_queue_t on, std::string& text) -> Job {
    try {
      co_await on;
      throw std::runtime_error("no such employee");
    } catch (const std::exception& problem) {
      text = problem.what();
    }
  };
  job(queue, seen);
  dispatch_sync(queue, [] {});
  EXPECT_EQ(seen, "no such employee");
}

TEST_F(QueueCoroutineDeathTest, AnExceptionThatLeavesTheCoroutineEndsTheProcessAndSaysWhatAndWhere) {
  const auto job = [](dispatch_queue_t on) -> Job {
    co_await on;
    throw std::runtime_error("line 7: no such employee");
  };
  EXPECT_DEATH(
      {
        auto queue = dispatch_queue_create("pay.run");
        job(queue);
        dispatch_sync(queue, [] {});
      },
      "exception left an asynchronous block of the queue \"pay.run\": line 7: no such employee");
}

TEST_F(QueueCoroutine, LeavesASerialQueueWhenItIsSuspended) {
  const auto a = dispatch_queue_create("a"), b = dispatch_queue_create("b");
  std::latch hasLeft(1), mayEnd(1);
  std::atomic<bool> isHeld{true};
  const auto job = [](dispatch_queue_t first, dispatch_queue_t second, std::latch& left, std::latch& may,
                      std::atomic<bool>& held) -> Job {
    co_await first;
    co_await second;
    held = dispatch_queue_is_held(first);
    dispatch_sync(first, [] {});  // another queue, so this cannot deadlock
    left.count_down();
    may.wait();
  };
  job(a, b, hasLeft, mayEnd, isHeld);
  hasLeft.wait();
  dispatch_sync(a, [] {});
  EXPECT_FALSE(isHeld);
  mayEnd.count_down();
  dispatch_sync(b, [] {});
}

TEST_F(QueueCoroutine, ALocalVariableIsDestroyedOnTheQueueWhereTheCoroutineEnds) {
  struct Witness {
    std::string& seen;
    ~Witness() { seen = currentLabel(); }
  };
  const auto queue = dispatch_queue_create("last");
  std::string seen;
  const auto job = [](dispatch_queue_t on, std::string& text) -> Job {
    const Witness witness{text};
    co_await on;
  };
  job(queue, seen);
  dispatch_sync(queue, [] {});
  EXPECT_EQ(seen, "last");
}

// Without the order of the queues the thread sanitizer finds the unguarded counters.
TEST_F(QueueCoroutine, CoroutinesOfManyThreadsTakeTurnsOnSerialQueues) {
  const auto a = dispatch_queue_create("a"), b = dispatch_queue_create("b");
  const auto all = dispatch_get_global_queue();
  struct Counters {
    int a = 0, b = 0;
    std::atomic<int> all{0};
  } counters;
  const auto group = dispatch_group_create();
  const auto job = [](dispatch_queue_t first, dispatch_queue_t second, dispatch_queue_t third, Counters& count,
                      dispatch_group_t jobs) -> Job {
    for (int round = 0; round < 20; ++round) {
      co_await first;
      ++count.a;
      co_await third;
      ++count.all;
      co_await second;
      ++count.b;
    }
    dispatch_group_leave(jobs);
  };
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&] {
        for (int n = 0; n < 25; ++n) {
          dispatch_group_enter(group);
          job(a, b, all, counters, group);
        }
      });
    }
  }
  dispatch_group_wait(group, DISPATCH_TIME_FOREVER);
  dispatch_sync(a, [&] { EXPECT_EQ(counters.a, 2000); });
  dispatch_sync(b, [&] { EXPECT_EQ(counters.b, 2000); });
  EXPECT_EQ(counters.all, 2000);
}

#if !defined(NK_TEST_THREAD_SANITIZER)  // which starts no threads in a forked child
TEST_F(QueueCoroutine, AWaitingCoroutineStaysInTheParentOfAFork) {
  const auto queue = dispatch_queue_create(nullptr);
  bool hasContinued = false;
  const auto job = [](dispatch_queue_t on, bool& continued) -> Job {
    co_await on;
    continued = true;
  };
  dispatch_suspend(queue);
  job(queue, hasContinued);
  test::quietBeforeFork();
  const pid_t child = fork();
  if (child == 0) {
    alarm(20);  // ends a child that hangs
    dispatch_resume(queue);
    dispatch_sync(queue, [] {});
    _exit(hasContinued ? 1 : 0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  dispatch_resume(queue);
  dispatch_sync(queue, [] {});
  EXPECT_TRUE(hasContinued);
}
#endif

}  // namespace
}  // namespace norvik
