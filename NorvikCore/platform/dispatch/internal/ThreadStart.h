// NorvikCore/platform/dispatch/internal/ThreadStart.h - starts the library's threads: workers, and the one for timers.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstdint>

namespace norvik::detail {

/// Starts a detached thread that takes no signals except those of faults and profiling: all others are for the
/// application's own threads. 0, or the error of the system.
[[nodiscard]] int startThread(void* (*threadMain)(void*), void* argument) noexcept;

/// For tests: while one of these lives, no thread can be started, as at a process limit.
class NK_EXPORT ThreadStartsFail {
 public:
  ThreadStartsFail() noexcept;
  ~ThreadStartsFail();
  ThreadStartsFail(const ThreadStartsFail&) = delete;
  ThreadStartsFail& operator=(const ThreadStartsFail&) = delete;

  /// How often a start has been attempted in the process and has failed because of such an object.
  [[nodiscard]] static std::uint64_t attempts() noexcept;
};

}  // namespace norvik::detail
