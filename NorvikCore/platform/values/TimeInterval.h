// NorvikCore/platform/values/TimeInterval.h - times as arguments: an interval is a number of seconds or any duration of
// std::chrono, an instant is a Date or any time of std::chrono's system clock.
//
//   logger->setRollingFrequency(24h);
//   Date reminder = payday - std::chrono::days{3};
//   dispatch_after(500ms, queue, [] { NSLog("later"); });
//   nk_startOfDay(std::chrono::system_clock::now());
//
// This header does not include <chrono>: any type with the members of a duration or of such a time is accepted.
#pragma once

#include "NorvikCore/platform/values/NSInteger.h"

#include <concepts>
#include <cstdint>

namespace norvik::detail {

template <class T>
concept ChronoDuration = requires(const T& duration) {
  typename T::rep;
  duration.count();
  T::period::num;
  T::period::den;
};

/// A time of std::chrono::system_clock, of any precision: the only clock that converts to std::time_t.
template <class T>
concept SystemTimePoint = requires(const T& point) {
  &T::clock::to_time_t;
  requires ChronoDuration<decltype(point.time_since_epoch())>;
};

/// std::chrono's months and years are average lengths, 30.4 and 365.2 days, which no calendar date is apart.
template <class T>
inline constexpr bool isCalendarUnit = T::period::den == 1 &&
                                       (T::period::num == 2'629'746 || T::period::num == 31'556'952);

/// A length of time. Character and boolean types are excluded.
template <class T>
concept TimeInterval = std::floating_point<T> || WholeNumber<T> || ChronoDuration<T>;

template <TimeInterval T>
[[nodiscard]] constexpr double inSeconds(const T& time) noexcept {
  if constexpr (ChronoDuration<T>) {
    static_assert(!isCalendarUnit<T>, "months and years differ in length: use nk_addMonths() or nk_addYears()");
    return static_cast<double>(time.count()) * static_cast<double>(T::period::num) /
           static_cast<double>(T::period::den);
  } else {
    return static_cast<double>(time);
  }
}

/// inSeconds() of `time` + `offset`, which is added before a fraction of a second is rounded to a double.
template <ChronoDuration T>
[[nodiscard]] constexpr double inSecondsWithOffset(const T& time, std::int64_t offset) noexcept {
  if constexpr (std::integral<typename T::rep>) {
    __extension__ using Wide = __int128;
    const Wide parts = Wide{time.count()} * T::period::num;
    return static_cast<double>(parts / T::period::den + offset) +
           static_cast<double>(parts % T::period::den) / static_cast<double>(T::period::den);
  } else {
    return inSeconds(time) + static_cast<double>(offset);
  }
}

/// The nearest limit if the result does not fit 64 bits; 0 for not-a-number.
template <ChronoDuration T>
[[nodiscard]] constexpr std::int64_t inNanoseconds(const T& time) noexcept {
  constexpr std::int64_t perSecond = 1'000'000'000;
  if constexpr (std::integral<typename T::rep>) {
    __extension__ using Wide = __int128;
    constexpr Wide numerator = Wide{perSecond} * T::period::num;
    if constexpr (numerator % T::period::den == 0 && numerator / T::period::den <= INT64_MAX) {
      const Wide exact = Wide{time.count()} * (numerator / T::period::den);
      return exact > INT64_MAX ? INT64_MAX : exact < INT64_MIN ? INT64_MIN : static_cast<std::int64_t>(exact);
    }
  }
  const double nanoseconds = inSeconds(time) * perSecond;
  if (nanoseconds != nanoseconds) return 0;
  return nanoseconds >= 0x1p63 ? INT64_MAX : nanoseconds < -0x1p63 ? INT64_MIN : static_cast<std::int64_t>(nanoseconds);
}

}  // namespace norvik::detail
