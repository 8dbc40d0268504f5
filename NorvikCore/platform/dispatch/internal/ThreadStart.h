// NorvikCore/platform/dispatch/internal/ThreadStart.h - starts the library's threads: the workers and the timer thread.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstdint>

namespace norvik::detail {

/// Starts a detached thread. It blocks all signals except those of faults and profiling, because the others are for the
/// application's own threads. Returns 0, or the error of the system.
[[nodiscard]] int startThread(void* (*threadMain)(void*), void* argument) noexcept;

/// For tests: while an object of this class lives, no thread can be started, as at a process limit.
class NK_EXPORT_FOR_TESTS ThreadStartsFail {
 public:
  ThreadStartsFail() noexcept;
  ~ThreadStartsFail();
  ThreadStartsFail(const ThreadStartsFail&) = delete;
  ThreadStartsFail& operator=(const ThreadStartsFail&) = delete;

  /// How many starts in this process have failed because of such an object.
  [[nodiscard]] static std::uint64_t attempts() noexcept;
};

}  // namespace norvik::detail
