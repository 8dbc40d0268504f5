#include "NorvikCore/platform/dispatch/Apply.h"
#include "NorvikCore/platform/dispatch/Group.h"
#include "NorvikCore/platform/dispatch/MainQueue.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/dispatch/Source.h"
#include "tests/platform/dispatch/Watchdog.h"
#include "tests/support/QuietFork.h"
#include "tests/support/Sanitizers.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

#if defined(NK_TEST_THREAD_SANITIZER)
#define NK_SKIP_UNDER_TSAN() GTEST_SKIP() << "the thread sanitizer starts no threads in a forked child"
#else
#define NK_SKIP_UNDER_TSAN() static_cast<void>(0)
#endif

namespace norvik {
namespace {

class Fork : public test::WatchedTest {
 protected:
  /// Runs `body` in a child. Returns "" if it returned true, else a description of how the child ended.
  template <class F>
  static std::string inChild(F&& body) {
    test::quietBeforeFork();
    const pid_t child = fork();
    if (child == 0) {
      alarm(20);  // ends a child that hangs
      _exit(body() ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status)) return WTERMSIG(status) == SIGALRM ? "the child hangs" : "the child was killed";
    return WEXITSTATUS(status) == 0 ? "" : "the child found something wrong";
  }
};

TEST_F(Fork, AChildMayDispatch) {
  NK_SKIP_UNDER_TSAN();
  auto queue = dispatch_queue_create(nullptr);
  dispatch_async(queue, [] {});
  dispatch_sync(queue, [] {});  // workers run in the parent
  EXPECT_EQ(inChild([&] {
              auto done = dispatch_semaphore_create(0);
              int sum = 0;
              dispatch_async(queue, [&] { sum += 1; });
              dispatch_async_relaxed(queue, [&] { sum += 2; });
              dispatch_sync(queue, [&] { sum += 4; });
              auto fresh = dispatch_queue_create(nullptr, DISPATCH_QUEUE_CONCURRENT);
              dispatch_barrier_async(fresh, [&] { dispatch_semaphore_signal(done); });
              return dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER) == 0 && sum == 7;
            }),
            "");
}

TEST_F(Fork, AQueueThatWasBusyIsIdleInTheChildAndItsBlocksAreNotRunThere) {
  NK_SKIP_UNDER_TSAN();
  auto serial = dispatch_queue_create("serial");
  auto concurrent = dispatch_queue_create("concurrent", DISPATCH_QUEUE_CONCURRENT);
  auto started = dispatch_semaphore_create(0);
  auto release = dispatch_semaphore_create(0);
  std::atomic<int> runs{0};
  for (const auto& queue : {serial, concurrent}) {
    dispatch_barrier_async(queue, [&] {
      dispatch_semaphore_signal(started);
      dispatch_semaphore_wait(release, DISPATCH_TIME_FOREVER);
    });
    for (int i = 0; i < 10; ++i) dispatch_async(queue, [&] { ++runs; });
  }
  dispatch_semaphore_wait(started, DISPATCH_TIME_FOREVER);
  dispatch_semaphore_wait(started, DISPATCH_TIME_FOREVER);
  EXPECT_EQ(inChild([&] {
              bool ran = false;
              dispatch_async(serial, [&] { ran = true; });
              dispatch_sync(serial, [] {});
              dispatch_barrier_sync(concurrent, [] {});
              return ran && runs == 0;
            }),
            "");
  dispatch_semaphore_signal(release);
  dispatch_semaphore_signal(release);
  dispatch_sync(serial, [] {});
  dispatch_barrier_sync(concurrent, [] {});
  EXPECT_EQ(runs.load(), 20) << "the parent goes on";
}

TEST_F(Fork, TheQueueWhoseBlockForksStaysHeldInTheChildUntilTheBlockEnds) {
  NK_SKIP_UNDER_TSAN();
  auto queue = dispatch_queue_create(nullptr);
  std::string result = "not run";
  dispatch_sync(queue, [&] {
    dispatch_async(queue, [] {});
    result = inChild([&] {
      bool ran = false;
      dispatch_async(queue, [&] { ran = true; });
      return dispatch_queue_is_held(queue) && !ran;
    });
  });
  EXPECT_EQ(result, "");
}

TEST_F(Fork, ABlockOnAWorkerMayForkAndTheChildMayDispatch) {
  NK_SKIP_UNDER_TSAN();
  auto queue = dispatch_queue_create(nullptr);
  auto other = dispatch_queue_create(nullptr);
  std::string result = "not run";
  dispatch_async(queue, [&] {
    result = inChild([&] {
      int runs = 0;
      dispatch_async(other, [&] { ++runs; });
      dispatch_sync(other, [&] { ++runs; });
      return runs == 2;
    });
  });
  dispatch_sync(queue, [] {});
  EXPECT_EQ(result, "");
}

TEST_F(Fork, GroupsAreEmptyInTheChildAndTimersCanBeSet) {
  NK_SKIP_UNDER_TSAN();
  auto group = dispatch_group_create();
  dispatch_group_enter(group);
  auto queue = dispatch_queue_create(nullptr);
  auto source = dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, queue);
  auto done = dispatch_semaphore_create(0);
  dispatch_source_set_event_handler(source, [&] { dispatch_semaphore_signal(done); });
  dispatch_source_set_timer(source, dispatch_time(DISPATCH_TIME_NOW, 3600 * NSEC_PER_SEC), 0, 0);
  dispatch_resume(source);
  EXPECT_EQ(inChild([&] {
              if (dispatch_group_wait(group, DISPATCH_TIME_FOREVER) != 0) return false;
              dispatch_group_leave(group);  // matches an enter of the parent, and has no effect
              if (dispatch_group_wait(group, DISPATCH_TIME_NOW) != 0) return false;
              dispatch_source_set_timer(source, dispatch_time(DISPATCH_TIME_NOW, NSEC_PER_MSEC), 0, 0);
              return dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER) == 0;
            }),
            "");
  EXPECT_NE(dispatch_group_wait(group, DISPATCH_TIME_NOW), 0);
  dispatch_group_leave(group);
}

TEST_F(Fork, ATimerWhoseHandlerRunsElsewhereCanBeSetInTheChild) {
  NK_SKIP_UNDER_TSAN();
  auto queue = dispatch_queue_create(nullptr);
  auto source = dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, queue);
  auto started = dispatch_semaphore_create(0);
  auto release = dispatch_semaphore_create(0);
  dispatch_source_set_event_handler(source, [&] {
    dispatch_semaphore_signal(started);
    dispatch_semaphore_wait(release, DISPATCH_TIME_FOREVER);
  });
  dispatch_source_set_timer(source, DISPATCH_TIME_NOW, 0, 0);
  dispatch_resume(source);
  dispatch_semaphore_wait(started, DISPATCH_TIME_FOREVER);
  EXPECT_EQ(inChild([&] {
              auto done = dispatch_semaphore_create(0);
              dispatch_source_set_event_handler(source, [&] { dispatch_semaphore_signal(done); });
              dispatch_source_set_timer(source, DISPATCH_TIME_NOW, 0, 0);
              return dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER) == 0;
            }),
            "");
  dispatch_semaphore_signal(release);
  dispatch_sync(queue, [] {});
}

TEST_F(Fork, WhereATimersHandlerForksTheOthersThatAreDueStayTheParents) {
  NK_SKIP_UNDER_TSAN();
  auto queue = dispatch_queue_create(nullptr);
  dispatch_manual_clock clock;
  std::string seen;
  pid_t child = 0;
  std::vector<dispatch_source_t> sources;
  for (const char* name : {"a", "b", "c"}) {
    sources.push_back(dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, queue));
    dispatch_source_set_clock(sources.back(), clock);
    dispatch_source_set_event_handler(sources.back(), [&, name] {
      seen += name;
      if (seen != "a") return;
      test::quietBeforeFork();
      child = fork();
      if (child != 0) return;
      alarm(20);
      dispatch_async(queue, [&] { _exit(seen == "a" ? 0 : 1); });
    });
    dispatch_source_set_timer(sources.back(), clock.time(10), 0, 0);
    dispatch_resume(sources.back());
  }
  clock.advance(10);
  EXPECT_EQ(dispatch_sync(queue, [&] { return seen; }), "abc");
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

TEST_F(Fork, ASuspendedQueueIsSuspendedInTheChildToo) {
  NK_SKIP_UNDER_TSAN();
  auto target = dispatch_queue_create("target");
  auto serial = dispatch_queue_create("serial", DISPATCH_QUEUE_SERIAL, target);
  auto concurrent = dispatch_queue_create("concurrent", DISPATCH_QUEUE_CONCURRENT, target);
  std::atomic<int> old{0};
  for (const auto& queue : {serial, concurrent}) {
    dispatch_suspend(queue);
    dispatch_async(queue, [&] { ++old; });
  }
  EXPECT_EQ(inChild([&] {
              bool right = true;
              for (const auto& queue : {serial, concurrent}) {
                std::atomic<int> ran{0};
                dispatch_async(queue, [&] { ++ran; });
                dispatch_sync(target, [] {});
                right = right && ran == 0;
                dispatch_resume(queue);
                dispatch_barrier_sync(queue, [] {});
                right = right && ran == 1;
              }
              return right && old == 0;
            }),
            "");
  for (const auto& queue : {serial, concurrent}) {
    dispatch_resume(queue);
    dispatch_barrier_sync(queue, [] {});
  }
  EXPECT_EQ(old.load(), 2) << "the parent goes on";
}

TEST_F(Fork, InAChildMadeByARoundTheLoopsCallerGoesOnAlone) {
  NK_SKIP_UNDER_TSAN();
  // The helper's round waits for the fork, so that the caller runs the other round.
  auto forked = dispatch_semaphore_create(0);
  const auto caller = std::this_thread::get_id();
  pid_t child = -1;
  std::atomic<int> ended{0};
  dispatch_apply(2, dispatch_get_global_queue(), [&](std::size_t) {
    if (std::this_thread::get_id() == caller && child == -1) {
      test::quietBeforeFork();
      child = fork();
      if (child == 0) alarm(20);
      if (child > 0) dispatch_semaphore_signal(forked);
    } else if (std::this_thread::get_id() != caller) {
      dispatch_semaphore_wait(forked, DISPATCH_TIME_FOREVER);
    }
    ++ended;
  });
  if (child == 0) _exit(ended >= 1 ? 0 : 1);
  EXPECT_EQ(ended.load(), 2);
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

TEST_F(Fork, TheForkingThreadIsTheChildsMainThread) {
  NK_SKIP_UNDER_TSAN();
  std::string result;
  std::thread([&] {
    result = inChild([] {
      bool ran = false;
      dispatch_async(dispatch_get_main_queue(), [&] { ran = true; });
      return dispatch_main_queue_drain() == 1 && ran;
    });
  }).join();
  EXPECT_EQ(result, "");
}

TEST_F(Fork, AChildOfAProcessThatDispatchesAllTheTimeNeverHangs) {
#ifdef NK_TEST_ADDRESS_SANITIZER
  GTEST_SKIP() << "the address sanitizer's own heap may be locked for ever in a child of a busy process: QuietFork.h";
#endif
  NK_SKIP_UNDER_TSAN();
  auto queue = dispatch_queue_create(nullptr);
  std::atomic<bool> stop{false};
  std::thread producer([&] {
    while (!stop) {
      dispatch_async(queue, [] {});
      dispatch_async_relaxed(queue, [] {});
      dispatch_sync(queue, [] {});
      static_cast<void>(dispatch_queue_create("short-lived"));
    }
  });
  for (int round = 0; round < 30; ++round) {
    ASSERT_EQ(inChild([&] {
                bool ran = false;
                dispatch_async(queue, [&] { ran = true; });
                dispatch_sync(queue, [] {});
                return ran;
              }),
              "");
  }
  stop = true;
  producer.join();
}

}  // namespace
}  // namespace norvik
