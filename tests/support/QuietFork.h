// tests/support/QuietFork.h - the wait of a test before it forks while other threads exist.
//
//   quietBeforeFork();
//   const pid_t child = fork();
//
// In a forked child, the address sanitizer does not release the locks of its own heap. Another thread may hold such a
// lock at the fork, for example a new thread that allocates the sanitizer's data about itself. Then the child's first
// allocation on another thread never returns. Under that sanitizer, a test therefore forks when all other threads
// sleep. Otherwise it forks at any time.
#pragma once

#include "tests/support/Sanitizers.h"

#include <sched.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

/// At the start of a test that forks at any time and whose child starts threads.
#if defined(NK_TEST_ADDRESS_SANITIZER)
#define NK_SKIP_WHERE_A_BUSY_FORK_IS_NOT_SUPPORTED() \
  GTEST_SKIP() << "the address sanitizer's own heap may be locked for ever in a child of a busy process"
#elif defined(NK_TEST_THREAD_SANITIZER)
#define NK_SKIP_WHERE_A_BUSY_FORK_IS_NOT_SUPPORTED() \
  GTEST_SKIP() << "the thread sanitizer starts no threads in a forked child"
#else
#define NK_SKIP_WHERE_A_BUSY_FORK_IS_NOT_SUPPORTED() static_cast<void>(0)
#endif

namespace norvik::test {

/// True if the kernel reports that all other threads are waiting.
inline bool otherThreadsSleep() {
  const std::string self = std::to_string(gettid());
  std::error_code error;
  for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task", error)) {
    if (thread.path().filename() == self) continue;
    std::string line;
    std::getline(std::ifstream(thread.path() / "stat"), line);
    const std::size_t nameEnd = line.rfind(')');
    if (nameEnd != std::string::npos && line.compare(nameEnd + 1, 2, " S") != 0) return false;  // no line: ended
  }
  return !error;
}

inline void quietBeforeFork() {
#ifdef NK_TEST_ADDRESS_SANITIZER
  while (!otherThreadsSleep()) sched_yield();
#endif
}

}  // namespace norvik::test
