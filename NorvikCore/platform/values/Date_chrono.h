// NorvikCore/platform/values/Date_chrono.h - conversion of dates to std::chrono, and from it by name.
//
//   Date now = std::chrono::system_clock::now();                   // converts without this header
//   std::chrono::year_month_day day{sysDays(now)};
//   Date payday = dateFromSysDays(std::chrono::May / 10 / 2021);    // 2021-05-10 00:00:00 UTC
//   timePoint(payday) + 8h;                                         // a time of the system clock
//   std::chrono::duration<double>(now - payday) > 36h;              // the difference of two dates is in seconds
//
// A time point of the system clock holds nanoseconds from 1677 to 2262: a date outside becomes the nearest one that it
// can hold, and a date that is not a number becomes the reference date. Doubles of this century are about 100 ns apart.
#pragma once  // include time: <chrono> is the purpose of this header

#include "NorvikCore/platform/values/CivilDate.h"
#include "NorvikCore/platform/values/Date.h"

#include <chrono>
#include <cstdint>

namespace norvik {

namespace detail {
inline constexpr std::chrono::sys_days referenceSysDays{std::chrono::days{11'323}};
}  // namespace detail

template <class Duration>
[[nodiscard]] constexpr Date dateFromTimePoint(std::chrono::sys_time<Duration> point) noexcept {
  return point;
}

[[nodiscard]] constexpr std::chrono::system_clock::time_point timePoint(Date date) noexcept {
  using Clock = std::chrono::system_clock;
  constexpr std::int64_t latest = Clock::duration::max() / std::chrono::seconds{1} - 1;
  const std::int64_t seconds = detail::wholeSeconds(date) + kernel::referenceDateInUnixSeconds;
  if (seconds >= latest) return Clock::time_point::max();
  if (seconds <= -latest) return Clock::time_point::min();
  const std::chrono::nanoseconds fraction{civilDateTime(date).time.nanosecond};
  return Clock::time_point{std::chrono::seconds{seconds} + fraction};
}

/// 00:00:00 UTC of the day.
[[nodiscard]] constexpr Date dateFromSysDays(std::chrono::sys_days day) noexcept {
  return dateFromReferenceDay((day - detail::referenceSysDays).count());
}

/// The day that the date falls on in UTC; exact for the years that std::chrono::year can hold.
[[nodiscard]] constexpr std::chrono::sys_days sysDays(Date date) noexcept {
  return detail::referenceSysDays + std::chrono::days{static_cast<int>(detail::clamped(referenceDay(date), 1 << 30))};
}

}  // namespace norvik
