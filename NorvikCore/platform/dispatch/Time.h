// NorvikCore/platform/dispatch/Time.h - points in time for timers and for waits with a timeout.
//
// A dispatch_time_t is a point of the monotonic clock, or of the wall clock, which jumps when it is set.
//
//   dispatch_time_t inTwoSeconds = dispatch_time(DISPATCH_TIME_NOW, 2 * NSEC_PER_SEC);
//   dispatch_time_t later = dispatch_time(inTwoSeconds, 500 * NSEC_PER_MSEC);
//   dispatch_time_t inAMinute = dispatch_time(DISPATCH_TIME_NOW, 1min);             // any duration of std::chrono
//   dispatch_time_t noonByTheWall = dispatch_walltime(&noon, 0);
//   dispatch_time_t noonOfPayday = dispatch_walltime(payday + 12h);                 // a Date, or a time of std::chrono
//
// The values are plain numbers. Every function is safe on any thread and allocates nothing.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/TimeInterval.h"

#include <cstdint>
#include <ctime>
#include <type_traits>

namespace norvik {

class Date;

using dispatch_time_t = std::uint64_t;

inline constexpr dispatch_time_t DISPATCH_TIME_NOW = 0;
inline constexpr dispatch_time_t DISPATCH_TIME_FOREVER = ~std::uint64_t{0};

inline constexpr std::int64_t NSEC_PER_SEC = 1'000'000'000;
inline constexpr std::int64_t NSEC_PER_MSEC = 1'000'000;
inline constexpr std::int64_t NSEC_PER_USEC = 1'000;
inline constexpr std::int64_t USEC_PER_SEC = 1'000'000;
inline constexpr std::int64_t MSEC_PER_SEC = 1'000;

/// `when` moved by `delta` nanoseconds, on the clock of `when`. DISPATCH_TIME_NOW is the present of the monotonic
/// clock. A result before the start of the clock becomes that start; one that is too far ahead becomes
/// DISPATCH_TIME_FOREVER.
[[nodiscard]] NK_EXPORT dispatch_time_t dispatch_time(dispatch_time_t when, std::int64_t delta) noexcept;

template <detail::ChronoDuration Duration>
[[nodiscard]] dispatch_time_t dispatch_time(dispatch_time_t when, const Duration& delta) noexcept {
  return dispatch_time(when, detail::inNanoseconds(delta));
}

/// A point of the wall clock: `when` (seconds and nanoseconds since 1970-01-01 UTC; null: the present) moved by `delta`
/// nanoseconds. A timer with such a start follows the wall clock when that clock is set.
[[nodiscard]] NK_EXPORT dispatch_time_t dispatch_walltime(const std::timespec* when, std::int64_t delta) noexcept;
/// A time of std::chrono's system clock. A time before 1970 becomes 1970.
template <detail::SystemTimePoint Point>
[[nodiscard]] dispatch_time_t dispatch_walltime(const Point& when) noexcept {
  const std::timespec start{};
  return dispatch_walltime(&start, detail::inNanoseconds(when.time_since_epoch()));
}
/// A date. A date before 1970, or that is not a number, becomes 1970.
[[nodiscard]] NK_EXPORT dispatch_time_t dispatch_walltime(Date when) noexcept;

namespace detail {

/// A number that is no dispatch_time_t. A caller that passes one means seconds.
template <class T>
concept PlainNumber = std::is_arithmetic_v<T> && !(std::is_unsigned_v<T> && sizeof(T) == sizeof(dispatch_time_t));

/// An instant of the wall clock that is no dispatch_time_t.
template <class T>
concept WallInstant = SystemTimePoint<T> || std::is_same_v<T, Date>;

enum class ClockKind : std::uint8_t { monotonic, wall };

/// The parts of a dispatch_time_t: a clock, and nanoseconds of that clock.
struct ClockPoint {
  ClockKind clock;
  std::uint64_t nanoseconds;
};

/// The parts of `when`; DISPATCH_TIME_NOW is `monotonicNow`. Not for DISPATCH_TIME_FOREVER.
[[nodiscard]] ClockPoint clockPoint(dispatch_time_t when, std::uint64_t monotonicNow) noexcept;

[[nodiscard]] std::uint64_t wallNanoseconds() noexcept;

/// The deadline of a wait on the monotonic clock. A point of the wall clock is converted once, here; a later change of
/// the wall clock does not move the deadline.
[[nodiscard]] std::uint64_t monotonicDeadline(dispatch_time_t when) noexcept;

}  // namespace detail
}  // namespace norvik
