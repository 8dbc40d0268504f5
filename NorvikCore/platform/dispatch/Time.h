// NorvikCore/platform/dispatch/Time.h - points in time for timers and for waits that give up.
//
// A dispatch_time_t is a point of the monotonic clock, or of the wall clock (which jumps when somebody sets it).
//
//   dispatch_time_t inTwoSeconds = dispatch_time(DISPATCH_TIME_NOW, 2 * NSEC_PER_SEC);
//   dispatch_time_t later = dispatch_time(inTwoSeconds, 500 * NSEC_PER_MSEC);
//   dispatch_time_t inAMinute = dispatch_time(DISPATCH_TIME_NOW, 1min);             // any duration of std::chrono
//   dispatch_time_t noonByTheWall = dispatch_walltime(&noon, 0);
//
// Plain numbers; every function is safe on any thread and allocates nothing.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/TimeInterval.h"

#include <cstdint>
#include <ctime>

namespace norvik {

using dispatch_time_t = std::uint64_t;

inline constexpr dispatch_time_t DISPATCH_TIME_NOW = 0;
inline constexpr dispatch_time_t DISPATCH_TIME_FOREVER = ~std::uint64_t{0};

inline constexpr std::int64_t NSEC_PER_SEC = 1'000'000'000;
inline constexpr std::int64_t NSEC_PER_MSEC = 1'000'000;
inline constexpr std::int64_t NSEC_PER_USEC = 1'000;
inline constexpr std::int64_t USEC_PER_SEC = 1'000'000;
inline constexpr std::int64_t MSEC_PER_SEC = 1'000;

/// `when` moved by `delta` nanoseconds, on the clock of `when`; DISPATCH_TIME_NOW is the monotonic clock's present.
/// What would lie before the clock's start is its start, what would lie too far ahead is DISPATCH_TIME_FOREVER.
[[nodiscard]] NK_EXPORT dispatch_time_t dispatch_time(dispatch_time_t when, std::int64_t delta) noexcept;

template <detail::ChronoDuration Duration>
[[nodiscard]] dispatch_time_t dispatch_time(dispatch_time_t when, const Duration& delta) noexcept {
  return dispatch_time(when, detail::inNanoseconds(delta));
}

/// A point of the wall clock: `when` (seconds and nanoseconds since 1970-01-01 UTC; null: the present) moved by `delta`
/// nanoseconds. A timer that starts there follows the wall clock when it is set.
[[nodiscard]] NK_EXPORT dispatch_time_t dispatch_walltime(const std::timespec* when, std::int64_t delta) noexcept;

namespace detail {

enum class ClockKind : std::uint8_t { monotonic, wall };

/// A dispatch_time_t taken apart: nanoseconds of one of the two clocks.
struct ClockPoint {
  ClockKind clock;
  std::uint64_t nanoseconds;
};

/// What `when` means; DISPATCH_TIME_NOW is `monotonicNow`. Not for DISPATCH_TIME_FOREVER.
[[nodiscard]] ClockPoint clockPoint(dispatch_time_t when, std::uint64_t monotonicNow) noexcept;

[[nodiscard]] std::uint64_t wallNanoseconds() noexcept;

/// The deadline of a wait on the monotonic clock. A point of the wall clock is turned into a distance once, here.
[[nodiscard]] std::uint64_t monotonicDeadline(dispatch_time_t when) noexcept;

}  // namespace detail
}  // namespace norvik
