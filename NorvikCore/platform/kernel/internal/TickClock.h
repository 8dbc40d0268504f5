// NorvikCore/platform/kernel/internal/TickClock.h - the wall clock for code that notes the time now and needs to know
// it later: noting costs a third of reading the clock.
//
//   TickClock clock;                              // before the first note
//   const std::uint64_t note = clock.now();       // any thread
//   ...
//   clock.read();                                 // one thread, now and then
//   clock.wallNanoseconds(note);                  // right to a microsecond for what was noted since the last readings
//
// A note is the processor's counter where the kernel itself keeps time by it, else the wall clock. A note is converted
// by its distance from the last reading: if the wall clock is set in between, it comes out on the new time.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/Clock.h"

#include <cstdint>

#if defined(__x86_64__)
#include <x86intrin.h>
#endif

namespace norvik::kernel {

class NK_EXPORT TickClock {
 public:
  TickClock() noexcept;

  [[nodiscard]] std::uint64_t now() const noexcept {
#if defined(__x86_64__)
    if (isCounted_) [[likely]]
      return __rdtsc();
#endif
    return static_cast<std::uint64_t>(kernel::wallNanoseconds());
  }
  /// So many ticks are a second at most, and a fifth of one or more.
  static constexpr std::uint64_t briefly = 1'000'000'000;

  /// Reads the clocks. By one thread at a time, as is the following.
  void read() noexcept;
  [[nodiscard]] std::int64_t wallNanoseconds(std::uint64_t note) const noexcept {
    if (!isCounted_) return static_cast<std::int64_t>(note);
    const auto age = static_cast<std::int64_t>(last_.ticks - note);
    return last_.wall - static_cast<std::int64_t>(static_cast<double>(age) * nanosecondsPerTick_);
  }

 private:
  struct Reading {
    std::uint64_t ticks;  // when `wall` was read
    std::int64_t wall;
    std::uint64_t monotonicTicks;  // when `monotonic` was
    std::int64_t monotonic;
  };
  [[nodiscard]] Reading reading() const noexcept;

  const bool isCounted_;
  double nanosecondsPerTick_ = 1;
  // The rate is taken over a second or two, so that neither the time of a reading counts nor what happened long ago.
  Reading from_, next_, last_;
};

}  // namespace norvik::kernel
