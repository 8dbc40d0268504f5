#include "NorvikCore/platform/foundation/NSThread.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "NorvikCore/platform/kernel/Thread.h"
#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/platform/values/NSException.h"

// Exported and outside the unnamed namespace, so that its name appears in call stacks.
namespace payroll {
[[gnu::noinline]] NK_EXPORT norvik::Ref<norvik::NSArray> whereAmI() {
  norvik::Ref<norvik::NSArray> symbols = norvik::NSThread::callStackSymbols();
  return symbols->reversedArray()->reversedArray();  // work after the call, so that it is not a tail call
}
}  // namespace payroll

namespace norvik {
namespace {

template <class Body>
void onThread(const Body& body) {
  std::thread(body).join();
}

TEST(NSThread, HeaderExample) {
  onThread([] {
    NSThread::currentThread()->setName("Import of bank files");
    EXPECT_EQ(NSThread::currentThread()->name(), "Import of bank files");
    EXPECT_FALSE(NSThread::isMainThread());
  });
  EXPECT_TRUE(NSThread::isMainThread());
}

TEST(NSThread, AThreadHasOneObject) {
  const Ref<NSThread> here = NSThread::currentThread();
  EXPECT_EQ(NSThread::currentThread(), here);
  EXPECT_EQ(here->threadID(), static_cast<std::uint32_t>(syscall(SYS_gettid)));
  onThread([&] { EXPECT_FALSE(NSThread::currentThread() == here); });
}

TEST(NSThread, TheNameIsTheOneThatTheKernelLevelKnows) {
  onThread([] {
    kernel::setCurrentThreadName("Named below, in full length");
    EXPECT_EQ(NSThread::currentThread()->name(), "Named below, in full length");
    NSThread::currentThread()->setName("Zo\u00EB");
    EXPECT_EQ(kernel::currentThreadName(), "Zo\u00EB");
  });
}

TEST(NSThread, OthersSeeTheNameTooAlsoAfterTheThreadsEnd) {
  Ref<NSThread> named, unnamed;
  onThread([&] {
    named = NSThread::currentThread();
    named->setName("A thread that ends");
  });
  onThread([&] { unnamed = NSThread::currentThread(); });
  EXPECT_EQ(named->name(), "A thread that ends");
  EXPECT_EQ(unnamed->name(), "");
}

TEST(NSThread, OnlyTheThreadItselfMayBeNamed) {
  Ref<NSThread> other;
  onThread([&] { other = NSThread::currentThread(); });
  try {
    other->setName("Mine");
    FAIL() << "nothing was raised";
  } catch (const NSException& exception) {
    EXPECT_EQ(exception.name(), NSInvalidArgumentException);
  }
}

TEST(NSThread, TheObjectGoesWithItsThread) {
  Weak<NSThread> thread;
  onThread([&] { thread = NSThread::currentThread(); });
  EXPECT_FALSE(thread.lock());
}

TEST(NSThread, AForkedChildsThreadIsAnotherOne) {
  const Ref<NSThread> here = NSThread::currentThread();
  const pid_t child = fork();
  if (child == 0) {
    const Ref<NSThread> there = NSThread::currentThread();
    _exit(there != here && there->threadID() == static_cast<std::uint32_t>(getpid()) ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST(NSThread, TheCallStackBeginsWithTheCaller) {
  const Ref<NSArray> symbols = payroll::whereAmI();
  ASSERT_GE(symbols->count(), 2U);
  EXPECT_TRUE(symbols->objectAtIndex(0).as<NSString>().containsString("payroll::whereAmI() + "))
      << symbols->objectAtIndex(0);
}

}  // namespace
}  // namespace norvik
