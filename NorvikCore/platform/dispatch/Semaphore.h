// NorvikCore/platform/dispatch/Semaphore.h - a counting semaphore.
//
//   auto permits = dispatch_semaphore_create(1000);
//   dispatch_semaphore_wait(permits, DISPATCH_TIME_FOREVER);   // takes one; waits while there is none
//   dispatch_semaphore_wait(permits, 100ms);                   // waits at most that long
//   dispatch_semaphore_signal(permits);                        // gives one back, from any thread
//
// Synchronised. While permits are available both calls cost one atomic operation. A worker that waits counts as
// blocked, so other workers take its place. A child made by fork() keeps the count that the parent had.
#pragma once

#include "NorvikCore/platform/dispatch/Handle.h"
#include "NorvikCore/platform/dispatch/Time.h"
#include "NorvikCore/platform/export.h"

#include <cstdint>

namespace norvik {

namespace detail {
class SemaphoreCore;
NK_EXPORT void retainCore(SemaphoreCore* semaphore) noexcept;
NK_EXPORT void releaseCore(SemaphoreCore* semaphore) noexcept;
}  // namespace detail

using dispatch_semaphore_t = detail::Handle<detail::SemaphoreCore>;

/// A semaphore with that many permits, 0 to 2,147,483,647; empty for any other value.
[[nodiscard]] NK_EXPORT dispatch_semaphore_t dispatch_semaphore_create(std::intptr_t value);

/// Takes a permit. Returns 0, or another value if `timeout` passed first. If no thread can be started, a wait attempts
/// to start one from time to time. It runs no blocks itself, because it cannot know which block would signal.
NK_EXPORT std::intptr_t dispatch_semaphore_wait(const dispatch_semaphore_t& semaphore, dispatch_time_t timeout);
/// Waits at most that long.
template <detail::ChronoDuration Duration>
std::intptr_t dispatch_semaphore_wait(const dispatch_semaphore_t& semaphore, const Duration& timeout) {
  return dispatch_semaphore_wait(semaphore, dispatch_time(DISPATCH_TIME_NOW, timeout));
}
/// Waits until a Date, or until a time of std::chrono's system clock, at most.
template <detail::WallInstant Instant>
std::intptr_t dispatch_semaphore_wait(const dispatch_semaphore_t& semaphore, const Instant& deadline) {
  return dispatch_semaphore_wait(semaphore, dispatch_walltime(deadline));
}
template <detail::PlainNumber Number>
std::intptr_t dispatch_semaphore_wait(const dispatch_semaphore_t&, Number) {
  static_assert(!sizeof(Number), "a plain number is no time: write a duration, such as 2s");
  return 0;
}

/// Gives a permit. The result is not 0 if a thread was asleep in a wait for it.
NK_EXPORT std::intptr_t dispatch_semaphore_signal(const dispatch_semaphore_t& semaphore);

}  // namespace norvik
