// NorvikCore/platform/kernel/internal/Futex.h - sleeps until a word changes, and wakes threads that sleep on it.
#pragma once

#include "NorvikCore/platform/kernel/AtomicWord.h"
#include "NorvikCore/platform/kernel/Clock.h"

#include <atomic>
#include <cstdint>

namespace norvik::detail {

/// A deadline that never comes, in nanoseconds of the monotonic clock.
inline constexpr std::uint64_t noDeadline = ~std::uint64_t{0};

/// The monotonic clock in the unit of deadlines.
[[nodiscard]] inline std::uint64_t monotonicNanoseconds() noexcept {
  return static_cast<std::uint64_t>(kernel::monotonicNanoseconds());
}

/// Sleeps while `word` is `expected`, until woken, until the deadline, or until a spurious wake-up, so the caller must
/// check again. False if the deadline passed.
bool futexWait(const std::atomic<std::uint32_t>& word, std::uint32_t expected,
               std::uint64_t monotonicDeadline = noDeadline) noexcept;

/// Wakes up to `count` threads that sleep on the word. It uses only the address; the word may already be destroyed.
void futexWake(const std::atomic<std::uint32_t>* word, int count) noexcept;

/// The same for an AtomicWord, as used in headers: without a deadline, and for one sleeper.
void futexWait(const AtomicWord<std::uint32_t>& word, std::uint32_t expected) noexcept;
void futexWake(const AtomicWord<std::uint32_t>& word) noexcept;

/// Tells the processor that this is a spin loop.
inline void spinPause() noexcept {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  __asm__ __volatile__("yield");
#endif
}

}  // namespace norvik::detail
