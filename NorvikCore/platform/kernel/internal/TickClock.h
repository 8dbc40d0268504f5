// NorvikCore/platform/kernel/internal/TickClock.h - a wall clock for code that records the time now and converts it
// later: recording costs a third of reading the clock.
//
//   TickClock clock;                              // before the first recorded time
//   const std::uint64_t note = clock.now();       // any thread
//   ...
//   clock.read();                                 // one thread, from time to time
//   clock.wallNanoseconds(note);                  // exact to a microsecond for times since the last readings
//
// A recorded time is the value of the processor's counter if the kernel itself uses that as its clock, else the wall
// clock. It is converted by its distance from the last reading. So if the wall clock was set in between, the result is
// in the new time.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/Clock.h"

#include <cstdint>

#if defined(__x86_64__)
#include <x86intrin.h>
#endif

namespace norvik::kernel {

class NK_EXPORT_FOR_TESTS TickClock {
 public:
  TickClock() noexcept;

  [[nodiscard]] std::uint64_t now() const noexcept {
#if defined(__x86_64__)
    if (isCounted_) [[likely]]
      return __rdtsc();
#endif
    return static_cast<std::uint64_t>(kernel::wallNanoseconds());
  }
  /// This many ticks take a second at most, and a fifth of a second at least.
  static constexpr std::uint64_t briefly = 1'000'000'000;

  /// Reads the clocks. Only one thread at a time may call this and wallNanoseconds().
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
    std::uint64_t monotonicTicks;  // when `monotonic` was read
    std::int64_t monotonic;
  };
  [[nodiscard]] Reading reading() const noexcept;

  const bool isCounted_;
  double nanosecondsPerTick_ = 1;
  // The rate is measured over a second or two, so that neither the cost of a reading nor the distant past affects it.
  Reading from_, next_, last_;
};

}  // namespace norvik::kernel
