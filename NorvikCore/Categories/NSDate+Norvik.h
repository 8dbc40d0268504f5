// NorvikCore/Categories/NSDate+Norvik.h - payroll dates: whole days in the default calendar (UTC).
//
// A payroll date is 00:00:00 UTC of its day. Tax months start on the 6th.
//
//   Date payday = nk_dateWithYear(2021, 1, 31);
//   nk_addMonths(payday, 1);                                  // 2021-02-28: the day is clamped to the shorter month
//   nk_daysBetween(payday, nk_dateWithYear(2021, 4, 6));      // 65
//   nk_isLessThan(payday, nk_dateWithYear(2021, 4, 6));       // true
//
// The results equal those of nk_defaultCalendar(), but come from integer arithmetic. They differ only before year 1:
// these functions count years through zero (0 is 1 BC), the calendar counts them backwards in era 0. The Gregorian
// calendar is used for all times. A date beyond the range of platform/values/CivilDate.h is replaced by the nearest end
// of that range.
//
// Every function is pure, takes constant time, allocates nothing and is safe on any thread, unless it says otherwise.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/Ref.h"
#include "NorvikCore/platform/values/Date.h"
#include "NorvikCore/platform/values/NSInteger.h"

#include <optional>

namespace norvik {

class NSArray;

/// 00:00:00 UTC of the given day. Parts out of range carry over: month 13 is January of the next year, day 0 the last
/// day of the month before.
[[nodiscard]] NK_EXPORT Date nk_dateWithYear(NSInteger year, NSInteger month, NSInteger day) noexcept;
[[nodiscard]] NK_EXPORT Date nk_dateWithDay(NSInteger day, NSInteger month, NSInteger year) noexcept;

// Today is the day of NSDate::date(), which a test can replace. If there is no current date, these functions raise
// NSInternalInconsistencyException.
[[nodiscard]] NK_EXPORT Date nk_today();
[[nodiscard]] NK_EXPORT Date nk_tomorrow();
/// The next 6th of a month; today itself if today is a 6th.
[[nodiscard]] NK_EXPORT Date nk_startOfNextTaxMonth();
/// The later of today and the start of day of `startOfPayrollCalendar`.
[[nodiscard]] NK_EXPORT Date nk_todayOrStartOfPayrollCalendar(Date startOfPayrollCalendar);
/// True if the date falls on today in the user's own calendar and time zone, not in the default calendar. Not cheap.
/// False if there is no current date.
[[nodiscard]] NK_EXPORT bool nk_isLocalCalendarToday(Date date);

/// "Sunday" ... "Saturday": the name of weekday w is at w - 1. Always the same object. Include NSArray.h to read it.
[[nodiscard]] NK_EXPORT const Ref<NSArray>& nk_weekDayNames();

// Counts may be negative. Hours are elapsed time; the other functions keep the time of day.
[[nodiscard]] NK_EXPORT Date nk_addHours(Date date, NSInteger hours) noexcept;
[[nodiscard]] NK_EXPORT Date nk_addDays(Date date, NSInteger days) noexcept;
[[nodiscard]] NK_EXPORT Date nk_addWeeks(Date date, NSInteger weeks) noexcept;
/// A day that the month does not have becomes the last day of the month: 31 January plus one month is 28 or 29
/// February.
[[nodiscard]] NK_EXPORT Date nk_addMonths(Date date, NSInteger months) noexcept;
/// 29 February plus one year is 28 February.
[[nodiscard]] NK_EXPORT Date nk_addYears(Date date, NSInteger years) noexcept;
/// Returns `other` exactly: `date` minus the time from `other` to `date`. Kept because callers exist.
[[nodiscard]] NK_EXPORT Date nk_subtractDate(Date date, Date other) noexcept;

/// 00:00:00 UTC of the day, without the fraction of a second. The next four functions give starts of days too.
[[nodiscard]] NK_EXPORT Date nk_startOfDay(Date date) noexcept;
[[nodiscard]] NK_EXPORT Date nk_startOfFirstDayOfMonth(Date date) noexcept;
[[nodiscard]] NK_EXPORT Date nk_startOfLastDayOfMonth(Date date) noexcept;
[[nodiscard]] NK_EXPORT Date nk_startOfFirstDayOfYear(Date date) noexcept;
[[nodiscard]] NK_EXPORT Date nk_startOfLastDayOfYear(Date date) noexcept;

[[nodiscard]] NK_EXPORT NSInteger nk_year(Date date) noexcept;
[[nodiscard]] NK_EXPORT NSInteger nk_month(Date date) noexcept;      ///< 1 to 12
[[nodiscard]] NK_EXPORT NSInteger nk_day(Date date) noexcept;        ///< 1 to 31
[[nodiscard]] NK_EXPORT NSInteger nk_dayOfYear(Date date) noexcept;  ///< 1 to 366
[[nodiscard]] NK_EXPORT NSInteger nk_weekday(Date date) noexcept;    ///< 1 is Sunday, 2 Monday ... 7 Saturday
/// 1 to 53: weeks start on Monday, and the first has at least four days in the year.
[[nodiscard]] NK_EXPORT NSInteger nk_weekOfYear(Date date) noexcept;
/// nk_weekOfYear() under its old name.
[[nodiscard]] NK_EXPORT NSInteger nk_week(Date date) noexcept;
[[nodiscard]] NK_EXPORT NSInteger nk_numberOfDaysInMonth(Date date) noexcept;
[[nodiscard]] NK_EXPORT NSInteger nk_daysInYear(Date date) noexcept;
[[nodiscard]] NK_EXPORT bool nk_isYearLeapYear(Date date) noexcept;

/// The number of days from the day of `date` to the day of `other`; negative if `other` is earlier. Times of day do not
/// count.
[[nodiscard]] NK_EXPORT NSInteger nk_daysBetween(Date date, Date other) noexcept;
[[nodiscard]] NK_EXPORT NSInteger nk_daysWithinEraFromDate(Date fromDate, Date toDate) noexcept;
[[nodiscard]] NK_EXPORT bool nk_dateIsSameDay(Date date, Date other) noexcept;

// Comparisons. An absent `other` logs a warning with the call stack and compares as equal: less and greater are false,
// the other two are true.
[[nodiscard]] NK_EXPORT bool nk_isLessThan(Date date, std::optional<Date> other);
[[nodiscard]] NK_EXPORT bool nk_isLessThanOrEqualTo(Date date, std::optional<Date> other);
[[nodiscard]] NK_EXPORT bool nk_isGreaterThan(Date date, std::optional<Date> other);
[[nodiscard]] NK_EXPORT bool nk_isGreaterThanOrEqualTo(Date date, std::optional<Date> other);
/// The later or the earlier date; `date` itself if they are equal or `other` is absent. An absent `other` logs a
/// warning.
[[nodiscard]] NK_EXPORT Date nk_max(Date date, std::optional<Date> other);
[[nodiscard]] NK_EXPORT Date nk_min(Date date, std::optional<Date> other);

/// The earlier date; `b` if they are equal or one is absent. An absent `b` logs a warning.
[[nodiscard]] NK_EXPORT std::optional<Date> nk_MinDate(std::optional<Date> a, std::optional<Date> b);
/// The later date; `a` if they are equal or one is absent. An absent `b` logs a warning.
[[nodiscard]] NK_EXPORT std::optional<Date> nk_MaxDate(std::optional<Date> a, std::optional<Date> b);

}  // namespace norvik
