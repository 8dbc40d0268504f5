// NorvikCore/platform/values/CivilDate.h - years, months, days and weeks of instants, in UTC, by integer arithmetic.
//
// One Gregorian calendar for all times, also before 1582. Years are numbered without a gap: year 0 is 1 BC, -1 is 2 BC.
// A reference day counts days from 2001-01-01, a Monday, which is day 0.
//
//   CivilDate day = civilDate(*Date::dateWithString("2021-01-31"));         // {2021, 1, 31}
//   civilDate(addMonths(referenceDay(day.year, day.month, day.day), 1));    // {2021, 2, 28}
//
// Every function is pure, takes constant time, allocates nothing and works at compile time. Instants and days beyond
// maximalReferenceDay (95 million years either way) count as that day; an instant that is not a number counts as day 0.
// The functions that take a day are exact within that range.
#pragma once

#include "NorvikCore/platform/values/Date.h"

#include <compare>
#include <cstdint>

namespace norvik {

/// A day of the calendar.
struct CivilDate {
  std::int64_t year = 2001;
  std::int32_t month = 1;  ///< 1 to 12
  std::int32_t day = 1;    ///< 1 to 31

  friend constexpr auto operator<=>(const CivilDate&, const CivilDate&) noexcept = default;
};

/// A time of day.
struct CivilTime {
  std::int32_t hour = 0;        ///< 0 to 23
  std::int32_t minute = 0;      ///< 0 to 59
  std::int32_t second = 0;      ///< 0 to 59: a day has 86,400 seconds
  std::int32_t nanosecond = 0;  ///< 0 to 999,999,999

  friend constexpr auto operator<=>(const CivilTime&, const CivilTime&) noexcept = default;
};

/// A day and a time of that day.
struct CivilDateTime {
  CivilDate date;
  CivilTime time;

  friend constexpr auto operator<=>(const CivilDateTime&, const CivilDateTime&) noexcept = default;
};

/// A week of the calendar: it starts on Monday, and the first of a year has at least four days in that year.
struct CivilWeek {
  std::int64_t year = 2001;  ///< the year that the week belongs to; it may differ from the year of the day
  std::int32_t week = 1;     ///< 1 to 53

  friend constexpr auto operator<=>(const CivilWeek&, const CivilWeek&) noexcept = default;
};

/// The last day of the range; its negative is the first.
inline constexpr std::int64_t maximalReferenceDay = 34'722'222'222;

namespace detail {

inline constexpr std::int64_t secondsPerDay = 86'400;
inline constexpr std::int64_t daysPerCycle = 146'097;  // 400 years
inline constexpr double maximalInstant = static_cast<double>(maximalReferenceDay * secondsPerDay);

constexpr std::int64_t floorDivide(std::int64_t a, std::int64_t b) noexcept { return a / b - (a % b < 0); }
constexpr std::int64_t floorModulo(std::int64_t a, std::int64_t b) noexcept { return a % b + (a % b < 0 ? b : 0); }

constexpr std::int64_t clamped(std::int64_t value, std::int64_t bound) noexcept {
  if (value <= bound && value >= -bound) [[likely]]
    return value;
  return value > bound ? bound : -bound;
}

/// The sum; if it overflows, the end of the type's range.
constexpr std::int64_t saturatedSum(std::int64_t a, std::int64_t b) noexcept {
  if (b > 0 && a > INT64_MAX - b) return INT64_MAX;
  if (b < 0 && a < INT64_MIN - b) return INT64_MIN;
  return a + b;
}

constexpr double instantInRange(double seconds) noexcept {
  if (seconds >= -maximalInstant && seconds <= maximalInstant) [[likely]]
    return seconds;
  return seconds > 0 ? maximalInstant : seconds < 0 ? -maximalInstant : 0.0;
}

/// Whole seconds since the reference date, rounded towards the past.
constexpr std::int64_t wholeSeconds(Date date) noexcept {
  const double seconds = instantInRange(date.timeIntervalSinceReferenceDate());
  const auto whole = static_cast<std::int64_t>(seconds);
  return whole - (static_cast<double>(whole) > seconds);
}

/// The day of a second within the range. The dividend is shifted to be positive, so that the division rounds down.
constexpr std::int64_t dayOfSecond(std::int64_t second) noexcept {
  constexpr std::int64_t offset = maximalReferenceDay * secondsPerDay;
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(second + offset) / secondsPerDay) - maximalReferenceDay;
}

__extension__ typedef unsigned __int128 UInt128;

constexpr std::uint64_t upperHalf(UInt128 product) noexcept { return static_cast<std::uint64_t>(product >> 64); }

/// The date of a day that is counted from 0000-03-01 and is below 2^30. The year starts in March, so that the leap day
/// is its last day. After B. Joffe, the days are counted backwards from the last day of a February: then the century
/// and the year of a day are quotients without a correction, and multiplications with reciprocals find them. The lower
/// half of the year's product is the fraction of the year, here in parts of which 2048 are an average month. All 2^30
/// results have been compared with a calendar that goes on from day to day.
constexpr CivilDate dateFromShiftedDay(std::uint32_t shiftedDay, std::int64_t yearOffset) noexcept {
  constexpr std::uint64_t cycles = 7'350, partsPerMonth = 2'048;
  constexpr UInt128 perCentury = 505'054'698'555'331;   // 2^64 / 36524.25
  constexpr UInt128 perYear = 50'504'432'782'230'121;   // 2^64 / 365.25
  constexpr UInt128 perPart = 275'839'163'718'701'312;  // 2^64 / 66.875, the parts of a day
  const std::uint64_t daysBack = cycles * daysPerCycle - 1 - shiftedDay;
  const std::uint64_t centuries = upperHalf(perCentury * daysBack);
  const UInt128 years = perYear * (daysBack + centuries - centuries / 4);  // as if every fourth year were a leap year
  const std::uint64_t year = 400 * cycles - 1 - upperHalf(years);
  const auto partsBack = static_cast<std::uint32_t>(upperHalf(UInt128{24'451} * static_cast<std::uint64_t>(years)));
  const bool isNextYear = partsBack < 3'952;  // January or February
  const std::uint32_t parts = static_cast<std::uint32_t>(year % 4) * 16 + (isNextYear ? 5'980 : 30'556) - partsBack;
  return {static_cast<std::int64_t>(year + isNextYear) + yearOffset, static_cast<std::int32_t>(parts / partsPerMonth),
          static_cast<std::int32_t>(upperHalf(perPart * (parts % partsPerMonth))) + 1};
}

inline constexpr std::int64_t dayOfYearZeroMarch = -730'791;  // 0000-03-01 as a reference day
inline constexpr std::int64_t fastCycles = 3'000;             // 1.2 million years either way take the fast path

}  // namespace detail

[[nodiscard]] constexpr bool isLeapYear(std::int64_t year) noexcept {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

/// 28 to 31; `month` is 1 to 12.
[[nodiscard]] constexpr std::int32_t daysInMonth(std::int64_t year, std::int32_t month) noexcept {
  if (month == 2) return isLeapYear(year) ? 29 : 28;
  return 30 | (month ^ (month >> 3));
}

[[nodiscard]] constexpr CivilDate civilDate(std::int64_t referenceDay) noexcept {
  constexpr std::int64_t shift = detail::fastCycles * detail::daysPerCycle - detail::dayOfYearZeroMarch;
  const std::uint64_t shifted = static_cast<std::uint64_t>(referenceDay) + static_cast<std::uint64_t>(shift);
  if (shifted < (std::uint64_t{1} << 30)) [[likely]]
    return detail::dateFromShiftedDay(static_cast<std::uint32_t>(shifted), -400 * detail::fastCycles);
  const std::int64_t fromMarch = detail::clamped(referenceDay, maximalReferenceDay) - detail::dayOfYearZeroMarch;
  const std::int64_t cycle = detail::floorDivide(fromMarch, detail::daysPerCycle);
  return detail::dateFromShiftedDay(static_cast<std::uint32_t>(fromMarch - cycle * detail::daysPerCycle), 400 * cycle);
}

/// The day that `date` falls on in UTC.
[[nodiscard]] constexpr std::int64_t referenceDay(Date date) noexcept {
  const double seconds = detail::instantInRange(date.timeIntervalSinceReferenceDate());
  const auto whole = static_cast<std::int64_t>(seconds);  // rounded towards 0, which is right except before a midnight
  const std::int64_t day = detail::dayOfSecond(whole);
  if ((whole == day * detail::secondsPerDay) & (seconds < static_cast<double>(whole))) [[unlikely]]
    return day - 1;
  return day;
}

/// The day of an existing date; the year is within 95 million.
[[nodiscard]] constexpr std::int64_t referenceDay(std::int64_t year, std::int32_t month, std::int32_t day) noexcept {
  constexpr std::int64_t offset = 400 * 250'000;  // makes every year positive, so that division rounds down
  const bool endsYear = month <= 2;
  const auto marchYear = static_cast<std::uint32_t>(year + offset - endsYear);
  const auto marchMonth = static_cast<std::uint32_t>(month + 12 * endsYear);
  const std::uint32_t century = marchYear / 100;
  const std::uint64_t days =
      std::uint64_t{1461} * marchYear / 4 - century + century / 4 + (979 * marchMonth - 2919) / 32;
  return static_cast<std::int64_t>(days) + day - 1 - (offset / 400 * detail::daysPerCycle - detail::dayOfYearZeroMarch);
}

namespace detail {

/// The first day of a month. Months out of range carry into the year, which is limited to a value beyond the range of
/// days.
constexpr CivilDate normalizedMonth(std::int64_t year, std::int64_t month) noexcept {
  const std::int64_t monthIndex = saturatedSum(month, -1);
  return {clamped(saturatedSum(year, floorDivide(monthIndex, 12)), 96'000'000),
          static_cast<std::int32_t>(floorModulo(monthIndex, 12)) + 1, 1};
}

}  // namespace detail

/// The day of a date whose parts may be out of range. They carry over: month 13 is January of the next year, day 0 the
/// last day of the month before. A result beyond the range becomes the end of the range.
[[nodiscard]] constexpr std::int64_t normalizedReferenceDay(std::int64_t year, std::int64_t month,
                                                            std::int64_t day) noexcept {
  const CivilDate first = detail::normalizedMonth(year, month);
  const std::int64_t dayBefore = referenceDay(first.year, first.month, 1) - 1;
  return detail::clamped(detail::saturatedSum(dayBefore, day), maximalReferenceDay);
}

/// 00:00:00 UTC of the day.
[[nodiscard]] constexpr Date dateFromReferenceDay(std::int64_t referenceDay) noexcept {
  return Date::fromReferenceSeconds(
      static_cast<double>(detail::clamped(referenceDay, maximalReferenceDay) * detail::secondsPerDay));
}

/// The fields of `date` in UTC, without the time.
[[nodiscard]] constexpr CivilDate civilDate(Date date) noexcept { return civilDate(referenceDay(date)); }

/// The fields of `date` in UTC. The nanosecond is that of the double, rounded down; doubles are about 100 ns apart in
/// this century.
[[nodiscard]] constexpr CivilDateTime civilDateTime(Date date) noexcept {
  const double instant = detail::instantInRange(date.timeIntervalSinceReferenceDate());
  const std::int64_t seconds = detail::wholeSeconds(date);
  const std::int64_t day = detail::dayOfSecond(seconds);
  const auto secondOfDay = static_cast<std::int32_t>(seconds - day * detail::secondsPerDay);
  const double fraction = (instant - static_cast<double>(seconds)) * 1e9;
  return {civilDate(day),
          {secondOfDay / 3600, secondOfDay / 60 % 60, secondOfDay % 60,
           fraction < 999'999'999.0 ? static_cast<std::int32_t>(fraction) : 999'999'999}};
}

/// The instant of the given fields in UTC; fields out of range carry over.
[[nodiscard]] constexpr Date dateFromCivil(const CivilDateTime& fields) noexcept {
  const std::int64_t day = normalizedReferenceDay(fields.date.year, fields.date.month, fields.date.day);
  const std::int64_t seconds = day * detail::secondsPerDay + std::int64_t{fields.time.hour} * 3600 +
                               std::int64_t{fields.time.minute} * 60 + fields.time.second;
  return Date::fromReferenceSeconds(static_cast<double>(seconds) + static_cast<double>(fields.time.nanosecond) / 1e9);
}

/// The day `months` later (earlier if negative), with the same day of the month, or the last day of a shorter month.
[[nodiscard]] constexpr std::int64_t addMonths(std::int64_t day, std::int64_t months) noexcept {
  const CivilDate from = civilDate(day);
  const CivilDate to = detail::normalizedMonth(from.year, detail::saturatedSum(from.month, months));
  const std::int32_t length = daysInMonth(to.year, to.month);
  return detail::clamped(referenceDay(to.year, to.month, from.day < length ? from.day : length), maximalReferenceDay);
}

/// 1 is Sunday, 2 Monday ... 7 Saturday.
[[nodiscard]] constexpr std::int32_t weekday(std::int64_t referenceDay) noexcept {
  return static_cast<std::int32_t>(detail::floorModulo(detail::clamped(referenceDay, maximalReferenceDay) + 1, 7)) + 1;
}

/// 1 is 1 January; at most 366.
[[nodiscard]] constexpr std::int32_t dayOfYear(std::int64_t day) noexcept {
  const CivilDate date = civilDate(day);
  return static_cast<std::int32_t>(referenceDay(date.year, date.month, date.day) - referenceDay(date.year, 1, 1)) + 1;
}

/// The week of the year for weeks that start on `firstWeekday` (1 is Sunday), of which the first has at least
/// `minimumDays` days (1 to 7) in the year.
[[nodiscard]] constexpr CivilWeek weekOfYear(std::int64_t day, std::int32_t firstWeekday,
                                             std::int32_t minimumDays) noexcept {
  const std::int64_t start =
      detail::clamped(day, maximalReferenceDay) - detail::floorModulo(weekday(day) - firstWeekday, 7);
  // The week belongs to the year of the first day that a shorter beginning of that year could not contain.
  const std::int64_t year = civilDate(start + 7 - minimumDays).year;
  return {year, static_cast<std::int32_t>((start + 7 - minimumDays - referenceDay(year, 1, 1)) / 7) + 1};
}

/// Weeks from Monday; the first week has at least four days in the year: ISO 8601, as used in Britain.
[[nodiscard]] constexpr CivilWeek isoWeek(std::int64_t referenceDay) noexcept { return weekOfYear(referenceDay, 2, 4); }

}  // namespace norvik
