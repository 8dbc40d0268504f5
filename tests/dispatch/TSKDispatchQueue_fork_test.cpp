// Wrapped queues in a child made by fork().
#include "NorvikCore/dispatch/TSKDispatchQueue.h"

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "tests/dispatch/Wrappers.h"
#include "tests/support/QuietFork.h"
#include "tests/support/Sanitizers.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <string>
#include <thread>

#if defined(NK_TEST_THREAD_SANITIZER)
#define NK_SKIP_UNDER_TSAN() GTEST_SKIP() << "the thread sanitizer starts no threads in a forked child"
#else
#define NK_SKIP_UNDER_TSAN() static_cast<void>(0)
#endif

namespace norvik {
namespace {

using test::flush;
using test::serial;
using test::Wrapper;

class ForkedWrapper : public test::WatchedTest {
 protected:
  /// Runs `body` in a child. Returns "" if `body` returned true, otherwise the way in which the child ended.
  template <class F>
  static std::string inChild(F&& body) {
    const pid_t child = makeChild();
    if (child == 0) _exit(body() ? 0 : 1);
    return endOf(child);
  }
  static pid_t makeChild() {
    test::quietBeforeFork();
    const pid_t child = fork();
    if (child == 0) alarm(20);  // the signal ends a child that hangs
    return child;
  }
  static std::string endOf(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status)) return WTERMSIG(status) == SIGALRM ? "the child hangs" : "the child was killed";
    return WEXITSTATUS(status) == 0 ? "" : "the child found something wrong";
  }

  static bool fires(const Wrapper& wrapper, const NSString& name) {
    const auto fired = dispatch_semaphore_create(0);
    wrapper->scheduleTimerWithName(name, 0.001, TSKTimerKeepEarliest, [fired] { dispatch_semaphore_signal(fired); });
    dispatch_semaphore_wait(fired, DISPATCH_TIME_FOREVER);
    flush(wrapper);
    return wrapper->timerCount() == 0 && wrapper->timers()->count() == 1;
  }
};

TEST_F(ForkedWrapper, RefusesAsInTheParent) {
  NK_SKIP_UNDER_TSAN();
  const Wrapper a = serial("a", TSKDeadlockSkip);
  a->dispatchSynchronously([] {});
  EXPECT_EQ(inChild([&] {
              std::string seen;
              a->dispatchSynchronously([&] {
                seen += "once";
                a->dispatchSynchronously([&] { seen += "twice"; });
              });
              return seen == "once";
            }),
            "");
}

TEST_F(ForkedWrapper, BeginsWithoutTheTimersOfItsParent) {
  NK_SKIP_UNDER_TSAN();
  const Wrapper wrapper = serial("a");
  wrapper->scheduleTimerWithName("a", 1000, TSKTimerRestart, [] { FAIL(); });
  flush(wrapper);
  EXPECT_EQ(inChild([&] { return wrapper->timers() == nullptr && fires(wrapper, "a"); }), "");
  EXPECT_EQ(wrapper->timerCount(), 1U) << "the parent's goes on";
  EXPECT_NE(wrapper->timers()->objectForKey("a").as<Ref<NSDictionary>>()->find("TimerValue"), nullptr);
}

TEST_F(ForkedWrapper, CarriesOutNoRequestOfItsParent) {
  NK_SKIP_UNDER_TSAN();
  const Wrapper wrapper = serial("a");
  pid_t child = -1;
  wrapper->dispatchSynchronously([&] {
    wrapper->scheduleTimerWithName("parent", 1000, TSKTimerRestart, [] {});  // waits until this block has run
    wrapper->cancelTimerWithName("parent");
    child = makeChild();
  });
  if (child == 0) _exit(fires(wrapper, "a") ? 0 : 1);
  EXPECT_EQ(endOf(child), "");
  flush(wrapper);
  EXPECT_EQ(wrapper->timers()->count(), 1U);
  EXPECT_EQ(wrapper->timerCount(), 0U);
}

TEST_F(ForkedWrapper, AChildMadeInATimersBlockMaySetTimers) {
  NK_SKIP_UNDER_TSAN();
  const Wrapper wrapper = serial("a");
  pid_t child = -1;
  const auto fired = dispatch_semaphore_create(0);
  wrapper->scheduleTimerWithName("a", 0, TSKTimerRestart, [&] {
    child = makeChild();
    if (child == 0) {
      const auto again = dispatch_semaphore_create(0);
      const Wrapper other = test::concurrent();
      other->scheduleTimerWithName("a", 0.001, TSKTimerThrottle, [again] { dispatch_semaphore_signal(again); });
      dispatch_semaphore_wait(again, DISPATCH_TIME_FOREVER);
      _exit(wrapper->timers() == nullptr ? 0 : 1);
    }
    dispatch_semaphore_signal(fired);
  });
  dispatch_semaphore_wait(fired, DISPATCH_TIME_FOREVER);
  EXPECT_EQ(endOf(child), "");
  flush(wrapper);
  EXPECT_EQ(wrapper->timerCount(), 0U);
}

TEST_F(ForkedWrapper, MayBeMadeWhileOtherThreadsSetTimers) {
  NK_SKIP_UNDER_TSAN();
  const Wrapper wrapper = serial("a");
  std::atomic<bool> over{false};
  std::thread busy([&] {
    while (!over) {
      wrapper->scheduleTimerWithName("b", 1e-5, TSKTimerRestart, [] {});
      wrapper->scheduleTimerWithName("c", 1000, TSKTimerThrottle, [] {});
      wrapper->cancelAllTimers();
      flush(wrapper);
    }
  });
#ifndef NK_TEST_ADDRESS_SANITIZER  // that sanitizer does not support a fork at any time
  for (int i = 0; i < 30; ++i) EXPECT_EQ(inChild([&] { return fires(wrapper, "a"); }), "");
#endif
  over = true;
  busy.join();
}

}  // namespace
}  // namespace norvik
