#include "NorvikCore/platform/kernel/Fork.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <latch>
#include <mutex>
#include <string>
#include <thread>

namespace norvik {
namespace {

// Runs `body` in a forked child; true if it returned true. A signal ends a child that hangs.
template <class Body>
bool holdsInChild(const Body& body) {
  const pid_t child = fork();
  if (child == 0) {
    alarm(20);
    _exit(body() ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST(Fork, HeaderExample) {
  std::string zone;
  std::latch isChanging(1);
  bool isWhole = false;
  std::thread forking([&] {
    isChanging.wait();
    isWhole = holdsInChild([&zone] { return zone == "Europe/London"; });
  });
  {
    const kernel::ForkHold hold;  // while this lives, no other thread can fork
    zone = "Europe/";
    isChanging.count_down();
    for (int i = 0; i < 100; ++i) std::this_thread::yield();
    zone += "London";
  }
  forking.join();
  EXPECT_TRUE(isWhole);
}

struct Table {
  std::mutex mutex;
  int first = 0, second = 0;  // equal while no thread holds the mutex
};

Table& table() {
  static auto& made = *new Table;
  return made;
}

TEST(Fork, AHandlerMayTakeALockOfItsOwnWhichTheChildFindsFree) {
  kernel::atFork([] { table().mutex.lock(); }, [] { table().mutex.unlock(); }, [] { table().mutex.unlock(); });
  std::atomic<bool> stop{false};
  std::thread writer([&] {
    while (!stop) {
      const std::lock_guard lock(table().mutex);
      ++table().first;
      ++table().second;
    }
  });
  for (int round = 0; round < 20; ++round) {
    EXPECT_TRUE(holdsInChild([] {
      const std::lock_guard lock(table().mutex);
      return table().first == table().second;
    }));
  }
  stop = true;
  writer.join();
}

std::string calls;  // NOLINT(cert-err58-cpp): a fork handler has no context

// In a process of its own, because handlers stay registered until the process ends.
TEST(Fork, WhatWasRegisteredLastIsPreparedFirstAndEverythingElseGoesInOrder) {
  EXPECT_TRUE(holdsInChild([] {
    kernel::atFork([] { calls += "1"; }, [] { calls += "a"; }, [] { calls += "A"; });
    kernel::atFork([] { calls += "2"; }, [] { calls += "b"; }, [] { calls += "B"; });
    return holdsInChild([] { return calls == "21AB"; }) && calls == "21ab";
  }));
}

TEST(Fork, AnyHandlerMayBeAbsent) {
  EXPECT_TRUE(holdsInChild([] {
    kernel::atFork(nullptr, nullptr, nullptr);
    kernel::atFork([] { calls += "1"; }, nullptr, nullptr);
    kernel::atFork(
        nullptr, [] { calls += "a"; }, nullptr);
    kernel::atFork(nullptr, nullptr, [] { calls += "A"; });
    return holdsInChild([] { return calls == "1A"; }) && calls == "1a";
  }));
}

std::uint32_t generationInHandler = 0;

TEST(Fork, EachForkIsAGenerationThatHandlersOfTheChildSee) {
  const std::uint32_t here = kernel::forkGeneration();
  EXPECT_TRUE(holdsInChild([&] { return kernel::forkGeneration() == here + 1; }));
  EXPECT_TRUE(holdsInChild([&] {
    kernel::atFork(nullptr, nullptr, [] { generationInHandler = kernel::forkGeneration(); });
    return holdsInChild([&] { return kernel::forkGeneration() == here + 2 && generationInHandler == here + 2; });
  }));
  EXPECT_EQ(kernel::forkGeneration(), here);
}

}  // namespace
}  // namespace norvik
