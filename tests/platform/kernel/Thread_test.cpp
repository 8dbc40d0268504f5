#include "NorvikCore/platform/kernel/Thread.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <thread>

#include "NorvikCore/platform/kernel/Clock.h"

namespace norvik {
namespace {

std::string nameInKernel() {
  char name[16] = {};
  prctl(PR_GET_NAME, name);
  return name;
}

// Runs `body` in a forked child; true if it returned true.
template <class Body>
bool holdsInChild(const Body& body) {
  const pid_t child = fork();
  if (child == 0) _exit(body() ? 0 : 1);
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

template <class Body>
void onThread(const Body& body) {
  std::thread(body).join();
}

TEST(Thread, HeaderExample) {
  onThread([] {
    kernel::setCurrentThreadName("Pay run of Norvik Engineering");
    EXPECT_EQ(kernel::currentThreadName(), "Pay run of Norvik Engineering");
    EXPECT_EQ(kernel::currentThreadId(), static_cast<std::uint32_t>(syscall(SYS_gettid)));
  });
}

TEST(Thread, TheIdIsTheKernelsOnEveryThread) {
  EXPECT_EQ(kernel::currentThreadId(), static_cast<std::uint32_t>(getpid()));
  onThread([] {
    EXPECT_EQ(kernel::currentThreadId(), static_cast<std::uint32_t>(syscall(SYS_gettid)));
    EXPECT_EQ(kernel::currentThreadId(), static_cast<std::uint32_t>(syscall(SYS_gettid)));
  });
}

TEST(Thread, OnlyTheThreadWithTheProcessIdIsTheMainThread) {
  EXPECT_TRUE(kernel::isMainThread());
  onThread([] { EXPECT_FALSE(kernel::isMainThread()); });
}

TEST(Thread, AForkedChildHasItsOwnIdAndItsThreadIsTheMainThread) {
  onThread([] {
    ASSERT_FALSE(kernel::isMainThread());  // called first, so that a cached answer would be detected
    EXPECT_TRUE(holdsInChild([] { return kernel::currentThreadId() == static_cast<std::uint32_t>(getpid()); }));
    EXPECT_TRUE(holdsInChild([] { return kernel::isMainThread(); }));
    EXPECT_FALSE(kernel::isMainThread());
  });
}

TEST(Thread, TheKernelGetsTheBeginningOfALongName) {
  onThread([] {
    kernel::setCurrentThreadName("0123456789abcdefghij");
    EXPECT_EQ(nameInKernel(), "0123456789abcde");
    EXPECT_EQ(kernel::currentThreadName(), "0123456789abcdefghij");
  });
}

TEST(Thread, TheKernelsNameDoesNotEndInsideACharacter) {
  onThread([] {
    kernel::setCurrentThreadName("Zahlungslauf \u20AC\u20AC");  // 13 bytes, then 3 for each sign
    EXPECT_EQ(nameInKernel(), "Zahlungslauf ");
    kernel::setCurrentThreadName("Zahlungslauf\u20AC!");  // 12 and 3: the sign fits exactly
    EXPECT_EQ(nameInKernel(), "Zahlungslauf\u20AC");
  });
}

TEST(Thread, AThreadWithoutANameHasTheKernels) {
  onThread([] {
    ASSERT_EQ(pthread_setname_np(pthread_self(), "from outside"), 0);
    EXPECT_EQ(kernel::currentThreadName(), "from outside");
  });
}

TEST(Thread, ANameGivenThroughTheKernelShowsSoon) {
  onThread([] {
    ASSERT_EQ(pthread_setname_np(pthread_self(), "first"), 0);
    ASSERT_EQ(kernel::currentThreadName(), "first");
    ASSERT_EQ(pthread_setname_np(pthread_self(), "second"), 0);
    const std::int64_t start = kernel::monotonicNanoseconds();
    while (kernel::currentThreadName() != "second" && kernel::monotonicNanoseconds() - start < 10'000'000'000) {
    }
    EXPECT_EQ(kernel::currentThreadName(), "second");
  });
}

TEST(Thread, AnEmptyNameBringsTheFormerOneBack) {
  onThread([] {
    ASSERT_EQ(pthread_setname_np(pthread_self(), "former"), 0);
    kernel::setCurrentThreadName("Importer of bank files");
    kernel::setCurrentThreadName("Importer of old bank files");
    kernel::setCurrentThreadName("");
    EXPECT_EQ(kernel::currentThreadName(), "former");
    EXPECT_EQ(nameInKernel(), "former");
  });
}

TEST(Thread, AThreadMayBeNamedByItsOwnName) {
  onThread([] {
    kernel::setCurrentThreadName("A name that is longer than any small text buffer");
    kernel::setCurrentThreadName(kernel::currentThreadName());
    EXPECT_EQ(kernel::currentThreadName(), "A name that is longer than any small text buffer");
  });
}

TEST(Thread, ThreadsKeepTheirNamesApart) {
  onThread([] {
    kernel::setCurrentThreadName("Outer thread of two");
    onThread([] {
      kernel::setCurrentThreadName("Inner thread of two");
      EXPECT_EQ(kernel::currentThreadName(), "Inner thread of two");
    });
    EXPECT_EQ(kernel::currentThreadName(), "Outer thread of two");
  });
}

std::string nameSeenLast;
struct ReadsItsThreadsNameAtTheEnd {
  ~ReadsItsThreadsNameAtTheEnd() { nameSeenLast = kernel::currentThreadName(); }
  int touched = 0;
};

TEST(Thread, TheNameIsThereInDestructorsOfThreadLocalObjects) {
  onThread([] {
    thread_local ReadsItsThreadsNameAtTheEnd last;
    last.touched = 1;
    kernel::setCurrentThreadName("A thread that is about to end");
  });
  EXPECT_EQ(nameSeenLast, "A thread that is about to end");
}

}  // namespace
}  // namespace norvik
