// NorvikCore/platform/values/Date.h - an instant: seconds since 2001-01-01 00:00:00 UTC, as one double.
//
// The text form is "2021-05-10 00:00:00 +0000", always in UTC, in one Gregorian calendar for all times (also before
// 1582).
//
//   std::optional<Date> payday = Date::dateWithString("2021-05-10 00:00:00 +0000");
//   (*payday + 86400).description();                            // "2021-05-11 00:00:00 +0000"
//   *payday + std::chrono::hours(8);                              // or any other duration
//   *payday - Date::dateWithTimeIntervalSince1970(0);           // 1620604800 seconds
//   Date now = std::chrono::system_clock::now();                  // any time of the system clock is a date
//   *payday < std::chrono::sys_days{2024y / 4 / 30};              // true
//
// A value: eight bytes, copied freely, safe on any thread. The order is total: not-a-number, the instant of a failed
// computation, equals itself and is earlier than every other date. Calendar fields are in CivilDate.h, compile-time
// literals in Date_literals.h, conversions to std::chrono in Date_chrono.h, {fmt} support in Date_fmt.h.
#pragma once  // include time: <string>, <string_view> and <optional> are in its operations

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/ReferenceDate.h"
#include "NorvikCore/platform/values/NSComparisonResult.h"
#include "NorvikCore/platform/values/TimeInterval.h"

#include <compare>
#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace norvik {

/// Seconds, fractions included.
using NSTimeInterval = double;

/// From 1970-01-01 to 2001-01-01, both 00:00:00 UTC, in seconds.
inline constexpr NSTimeInterval NSTimeIntervalSince1970 = kernel::referenceDateInUnixSeconds;

class Date {
 public:
  /// Returns the current date, or nothing if there is none.
  using CurrentDateSource = std::optional<Date> (*)();

  /// The reference date, 2001-01-01 00:00:00 UTC.
  constexpr Date() noexcept = default;
  /// A time of std::chrono::system_clock, of any precision; std::chrono::sys_days gives 00:00:00 UTC.
  template <detail::SystemTimePoint Point>
  constexpr Date(const Point& point) noexcept  // NOLINT(google-explicit-constructor): both are instants
      : seconds_(detail::inSecondsWithOffset(point.time_since_epoch(), -kernel::referenceDateInUnixSeconds)) {}

  [[nodiscard]] static constexpr Date fromReferenceSeconds(NSTimeInterval seconds) noexcept { return Date(seconds); }
  [[nodiscard]] static constexpr Date dateWithTimeIntervalSinceReferenceDate(NSTimeInterval seconds) noexcept {
    return Date(seconds);
  }
  template <detail::ChronoDuration Duration>
  [[nodiscard]] static constexpr Date dateWithTimeIntervalSinceReferenceDate(const Duration& duration) noexcept {
    return Date(detail::inSecondsWithOffset(duration, 0));
  }
  [[nodiscard]] static constexpr Date dateWithTimeIntervalSince1970(NSTimeInterval seconds) noexcept {
    return Date(seconds - NSTimeIntervalSince1970);
  }
  template <detail::ChronoDuration Duration>
  [[nodiscard]] static constexpr Date dateWithTimeIntervalSince1970(const Duration& duration) noexcept {
    return Date(detail::inSecondsWithOffset(duration, -kernel::referenceDateInUnixSeconds));
  }

  /// The current date: from the source that setCurrentDateSource() set, which may return nothing, else the system's
  /// clock.
  [[nodiscard]] NK_EXPORT static std::optional<Date> date();
  /// The system's clock, even if setCurrentDateSource() has replaced the current date.
  [[nodiscard]] NK_EXPORT static Date systemDate() noexcept;
  /// Replaces the source of date() and returns the previous one; nullptr restores the system's clock. Any thread.
  NK_EXPORT static CurrentDateSource setCurrentDateSource(CurrentDateSource source) noexcept;

  /// 0001-01-01 and 4001-01-01, 00:00:00 UTC: earlier and later than any date of an application.
  [[nodiscard]] static constexpr Date distantPast() noexcept { return Date(-63113904000.0); }
  [[nodiscard]] static constexpr Date distantFuture() noexcept { return Date(63113904000.0); }

  /// Reads "2021-05-10 01:00:00 +0100" and the ISO 8601 forms "2021-05-10", "2021-05-10T01:00", "2021-05-10T01:00:00Z",
  /// "2021-05-10T01:00:00.250+01:00". Without an offset the time is UTC. The whole text must be an existing date; for
  /// any other text, including one with surrounding spaces, the result is empty.
  [[nodiscard]] NK_EXPORT static std::optional<Date> dateWithString(std::string_view text) noexcept;

  [[nodiscard]] constexpr NSTimeInterval timeIntervalSinceReferenceDate() const noexcept { return seconds_; }
  [[nodiscard]] constexpr NSTimeInterval timeIntervalSince1970() const noexcept {
    return seconds_ + NSTimeIntervalSince1970;
  }
  /// Positive if this date is the later one.
  [[nodiscard]] constexpr NSTimeInterval timeIntervalSinceDate(Date other) const noexcept {
    return seconds_ - other.seconds_;
  }
  [[nodiscard]] constexpr Date dateByAddingTimeInterval(NSTimeInterval seconds) const noexcept {
    return Date(seconds_ + seconds);
  }
  template <detail::ChronoDuration Duration>
  [[nodiscard]] constexpr Date dateByAddingTimeInterval(const Duration& duration) const noexcept {
    return Date(seconds_ + detail::inSeconds(duration));
  }

  [[nodiscard]] constexpr NSComparisonResult compare(Date other) const noexcept {
    return comparisonResult(*this <=> other);
  }
  [[nodiscard]] constexpr bool isEqualToDate(Date other) const noexcept { return *this == other; }
  [[nodiscard]] constexpr Date earlierDate(Date other) const noexcept { return other < *this ? other : *this; }
  [[nodiscard]] constexpr Date laterDate(Date other) const noexcept { return other > *this ? other : *this; }

  /// "2021-05-10 00:00:00 +0000": UTC, without fractions of a second. Years have at least four digits; year 0 is 1 BC,
  /// and earlier years are negative. dateWithString() reads this form. A date beyond the range of CivilDate.h shows as
  /// the end of that range.
  [[nodiscard]] NK_EXPORT std::string description() const;

  friend constexpr bool operator==(Date a, Date b) noexcept {
    return a.seconds_ == b.seconds_ || (a.seconds_ != a.seconds_ && b.seconds_ != b.seconds_);
  }
  friend constexpr std::strong_ordering operator<=>(Date a, Date b) noexcept {
    if (a.seconds_ < b.seconds_) return std::strong_ordering::less;
    if (a.seconds_ > b.seconds_) return std::strong_ordering::greater;
    if (a.seconds_ == b.seconds_) [[likely]]
      return std::strong_ordering::equal;
    return (b.seconds_ != b.seconds_) <=> (a.seconds_ != a.seconds_);
  }

  /// Like timeIntervalSinceDate() and dateByAddingTimeInterval(), in seconds. An interval is a number of seconds or a
  /// duration of std::chrono; a calendar's days and months are in Categories/NSDate+Norvik.h.
  [[nodiscard]] friend constexpr NSTimeInterval operator-(Date a, Date b) noexcept { return a.seconds_ - b.seconds_; }
  template <detail::TimeInterval Interval>
  [[nodiscard]] friend constexpr Date operator+(Date date, Interval interval) noexcept {
    return Date(date.seconds_ + detail::inSeconds(interval));
  }
  template <detail::TimeInterval Interval>
  [[nodiscard]] friend constexpr Date operator+(Interval interval, Date date) noexcept {
    return date + interval;
  }
  template <detail::TimeInterval Interval>
  [[nodiscard]] friend constexpr Date operator-(Date date, Interval interval) noexcept {
    return Date(date.seconds_ - detail::inSeconds(interval));
  }
  template <detail::TimeInterval Interval>
  constexpr Date& operator+=(Interval interval) noexcept {
    return *this = *this + interval;
  }
  template <detail::TimeInterval Interval>
  constexpr Date& operator-=(Interval interval) noexcept {
    return *this = *this - interval;
  }

  /// Writes description(). There is no >> because a date's text contains spaces: read a line or a field and pass it to
  /// dateWithString().
  NK_EXPORT friend std::ostream& operator<<(std::ostream& out, Date date);

  /// Equal dates have equal hashes.
  [[nodiscard]] NK_EXPORT std::size_t hash() const noexcept;

 private:
  constexpr explicit Date(NSTimeInterval seconds) noexcept : seconds_(seconds) {}

  NSTimeInterval seconds_ = 0;
};

using NSDate = Date;

}  // namespace norvik

template <>
struct std::hash<norvik::Date> {
  std::size_t operator()(norvik::Date date) const noexcept { return date.hash(); }
};
