// NorvikCore/platform/kernel/Clock.h - the wall clock, which may jump, and the monotonic clock, which may not.
//
//   double now = kernel::wallSeconds();                    // seconds since 2001-01-01 00:00:00 UTC
//   std::int64_t start = kernel::monotonicNanoseconds();
//   ...
//   std::int64_t spent = kernel::monotonicNanoseconds() - start;
//
// The functions always read the machine's clocks, even if a program replaces the current date. They do not enter the
// kernel (20 to 30 ns), and are safe on any thread and in a signal handler. Code that must be tested across a jump of
// the clock takes a ClockSource.
#pragma once  // include time: <atomic>: any thread may move and read a manual clock

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/ReferenceDate.h"

#include <atomic>
#include <cstdint>

namespace norvik::kernel {

/// The wall clock in nanoseconds since 1970-01-01 00:00:00 UTC; valid until the year 2262.
[[nodiscard]] NK_EXPORT std::int64_t wallNanoseconds() noexcept;

/// The wall clock in seconds since 2001-01-01 00:00:00 UTC, negative before; resolution about 0.1 microseconds.
[[nodiscard]] NK_EXPORT double wallSeconds() noexcept;

/// Nanoseconds since an unspecified moment; never decreases, and does not count the time in which the machine sleeps.
[[nodiscard]] NK_EXPORT std::int64_t monotonicNanoseconds() noexcept;

/// The two clocks as an object that a test can replace. Synchronised.
class NK_EXPORT ClockSource {
 public:
  ClockSource() = default;
  ClockSource(const ClockSource&) = delete;
  ClockSource& operator=(const ClockSource&) = delete;
  virtual ~ClockSource();

  /// In the units of the functions of the same names.
  [[nodiscard]] virtual std::int64_t wallNanoseconds() const noexcept = 0;
  [[nodiscard]] virtual std::int64_t monotonicNanoseconds() const noexcept = 0;
};

/// The machine's clocks. Lives as long as the process.
[[nodiscard]] NK_EXPORT const ClockSource& systemClock() noexcept;

/// Clocks that advance only on request: advance() moves both, jumpWallClock() only the wall clock.
class NK_EXPORT ManualClock final : public ClockSource {
 public:
  ManualClock(std::int64_t wall, std::int64_t monotonic) noexcept;
  ~ManualClock() override;

  [[nodiscard]] std::int64_t wallNanoseconds() const noexcept override;
  [[nodiscard]] std::int64_t monotonicNanoseconds() const noexcept override;

  void advance(std::int64_t nanoseconds) noexcept;
  /// Like setting the clock: `nanoseconds` may be negative; the monotonic clock does not change.
  void jumpWallClock(std::int64_t nanoseconds) noexcept;

 private:
  std::atomic<std::int64_t> wall_, monotonic_;
};

}  // namespace norvik::kernel
