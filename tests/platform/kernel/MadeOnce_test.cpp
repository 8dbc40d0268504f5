#include "NorvikCore/platform/kernel/MadeOnce.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <stdexcept>
#include <thread>

namespace norvik::kernel {
namespace {

std::atomic<bool> isMaking{false};

/// Makes its object slowly.
const int& slowlyMade() {
  return madeOnce([] {
    isMaking = true;
    for (int i = 0; i < 1000; ++i) std::this_thread::yield();
    return new int(42);
  });
}

struct Registry {
  int entries = 0;
};

Registry& registry() {
  return kernel::madeOnce([] { return new Registry; });
}

TEST(MadeOnce, HeaderExample) {
  ++registry().entries;
  ++registry().entries;
  EXPECT_EQ(registry().entries, 2);
}

TEST(MadeOnce, AForkWaitsForTheThreadThatIsMakingTheObject) {
  // Detached, because the thread sanitizer would report a joinable thread in the child.
  std::thread([] { EXPECT_EQ(slowlyMade(), 42); }).detach();
  while (!isMaking) std::this_thread::yield();
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    alarm(10);
    _exit(slowlyMade() == 42 ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status)) << "ended by the signal " << WTERMSIG(status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(slowlyMade(), 42);
}

TEST(MadeOnce, MakesOneObjectForAllThreadsAndOneForEachLambda) {
  static std::atomic<int> made{0};
  const auto shared = []() -> int& { return madeOnce([] { return new int(++made); }); };
  const int* seen[4] = {};
  std::thread threads[4];
  for (int i = 0; i < 4; ++i) threads[i] = std::thread([&, i] { seen[i] = &shared(); });
  for (std::thread& thread : threads) thread.join();
  for (const int* one : seen) EXPECT_EQ(one, &shared());
  EXPECT_EQ(made, 1);
  EXPECT_NE(&madeOnce([] { return new int(7); }), &shared());
}

TEST(MadeOnce, WhatTheMakingRaisesPassesAndTheNextCallMakesIt) {
  static int calls = 0;
  const auto shared = []() -> int& {
    return madeOnce([] {
      if (++calls == 1) throw std::runtime_error("no");
      return new int(calls);
    });
  };
  EXPECT_THROW(static_cast<void>(shared()), std::runtime_error);
  EXPECT_EQ(shared(), 2);
  EXPECT_EQ(shared(), 2);
}

}  // namespace
}  // namespace norvik::kernel
