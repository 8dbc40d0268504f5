// tests/support/QuietFork.h - what a test does before it forks while other threads are about.
//
//   quietBeforeFork();
//   const pid_t child = fork();
//
// The address sanitizer does not free the locks of its own heap in a forked child: where another thread holds one at
// that moment - it has just been started, and allocates what the sanitizer notes of it - the child's first allocation
// on another thread never returns. Under that sanitizer a test therefore forks once all other threads sleep; elsewhere
// it forks at any moment.
#pragma once

#include <sched.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define NK_TEST_ADDRESS_SANITIZER 1
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define NK_TEST_ADDRESS_SANITIZER 1
#endif

namespace norvik::test {

/// True when the kernel says that all threads but this one wait for something.
inline bool otherThreadsSleep() {
  const std::string self = std::to_string(gettid());
  std::error_code error;
  for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task", error)) {
    if (thread.path().filename() == self) continue;
    std::string line;
    std::getline(std::ifstream(thread.path() / "stat"), line);
    const std::size_t nameEnd = line.rfind(')');
    if (nameEnd != std::string::npos && line.compare(nameEnd + 1, 2, " S") != 0) return false;  // no line: it has ended
  }
  return !error;
}

inline void quietBeforeFork() {
#ifdef NK_TEST_ADDRESS_SANITIZER
  while (!otherThreadsSleep()) sched_yield();
#endif
}

}  // namespace norvik::test
