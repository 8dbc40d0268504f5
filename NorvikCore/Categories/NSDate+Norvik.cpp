#include "NorvikCore/Categories/NSDate+Norvik.h"

#include "NorvikCore/Categories/internal/AbsentArgument.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/foundation/NSCalendar.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/values/CivilDate.h"
#include "NorvikCore/platform/values/NSException.h"

namespace norvik {
namespace {

/// The date `days` later at the same time of day; for 0 the date itself. Otherwise a date out of range is first
/// replaced by the nearest end of the range.
Date daysLater(Date date, NSInteger days) noexcept {
  if (days == 0) return date;
  const std::int64_t day = referenceDay(date);
  const double seconds = detail::instantInRange(date.timeIntervalSinceReferenceDate());
  const double timeOfDay = seconds - static_cast<double>(day * detail::secondsPerDay);
  return dateFromReferenceDay(detail::saturatedSum(day, days)).dateByAddingTimeInterval(timeOfDay);
}

NSInteger product(NSInteger a, NSInteger b) noexcept {
  NSInteger result = 0;
  return __builtin_mul_overflow(a, b, &result) ? ((a < 0) == (b < 0) ? INT64_MAX : INT64_MIN) : result;
}

/// Compares the dates. An absent `other` logs the warning and compares as equal.
NSComparisonResult compared(Date date, const std::optional<Date>& other, const char* operation, int line) {
  if (other) [[likely]]
    return date.compare(*other);
  detail::warnOfAbsentArgument("NSDate", "Categories/NSDate+Norvik", operation, line);
  return NSOrderedSame;
}

NSComparisonResult compared(const std::optional<Date>& a, const std::optional<Date>& b, const char* operation,
                            int line) {
  if (!b) detail::warnOfAbsentArgument("NSDate", "Categories/NSDate+Norvik", operation, line);
  return a && b ? a->compare(*b) : NSOrderedSame;
}

}  // namespace

Date nk_dateWithYear(NSInteger year, NSInteger month, NSInteger day) noexcept {
  return dateFromReferenceDay(normalizedReferenceDay(year, month, day));
}

Date nk_dateWithDay(NSInteger day, NSInteger month, NSInteger year) noexcept {
  return nk_dateWithYear(year, month, day);
}

Date nk_today() {
  const std::optional<Date> now = NSDate::date();
  if (!now) NSException::raise(NSInternalInconsistencyException, "there is no current date");
  return nk_startOfDay(*now);
}

Date nk_tomorrow() { return nk_addDays(nk_today(), 1); }

Date nk_startOfNextTaxMonth() {
  constexpr int mostSteps = 30;  // from the 7th of a month of 31 days; needed because the last date has no next day
  Date day = nk_today();
  for (int step = 0; step < mostSteps && nk_day(day) != 6; ++step) day = nk_addDays(day, 1);
  return day;
}

Date nk_todayOrStartOfPayrollCalendar(Date startOfPayrollCalendar) {
  const Date today = nk_today();
  return nk_isLessThan(today, startOfPayrollCalendar) ? nk_startOfDay(startOfPayrollCalendar) : today;
}

bool nk_isLocalCalendarToday(Date date) { return NSCalendar::currentCalendar()->isDateInToday(date); }

const Ref<NSArray>& nk_weekDayNames() {
  return kernel::madeOnce([] {
    return new Ref<NSArray>(
        NSArray::arrayWithObjects("Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"));
  });
}

Date nk_addHours(Date date, NSInteger hours) noexcept {
  if (hours == 0) return date;
  return date.dateByAddingTimeInterval(static_cast<double>(hours) * 3600);
}

Date nk_addDays(Date date, NSInteger days) noexcept { return daysLater(date, days); }

Date nk_addWeeks(Date date, NSInteger weeks) noexcept { return daysLater(date, product(weeks, 7)); }

Date nk_addMonths(Date date, NSInteger months) noexcept {
  const std::int64_t day = referenceDay(date);
  return daysLater(date, addMonths(day, months) - day);
}

Date nk_addYears(Date date, NSInteger years) noexcept { return nk_addMonths(date, product(years, 12)); }

// The difference of two doubles may be rounded, so subtracting it again would not give `other` exactly.
Date nk_subtractDate(Date, Date other) noexcept { return other; }

Date nk_startOfDay(Date date) noexcept { return dateFromReferenceDay(referenceDay(date)); }

Date nk_startOfFirstDayOfMonth(Date date) noexcept {
  const std::int64_t day = referenceDay(date);
  return dateFromReferenceDay(day - civilDate(day).day + 1);
}

Date nk_startOfLastDayOfMonth(Date date) noexcept {
  const std::int64_t day = referenceDay(date);
  const CivilDate fields = civilDate(day);
  return dateFromReferenceDay(day - fields.day + daysInMonth(fields.year, fields.month));
}

Date nk_startOfFirstDayOfYear(Date date) noexcept { return nk_dateWithYear(nk_year(date), 1, 1); }

Date nk_startOfLastDayOfYear(Date date) noexcept { return nk_dateWithYear(nk_year(date), 12, 31); }

NSInteger nk_year(Date date) noexcept { return civilDate(date).year; }

NSInteger nk_month(Date date) noexcept { return civilDate(date).month; }

NSInteger nk_day(Date date) noexcept { return civilDate(date).day; }

NSInteger nk_dayOfYear(Date date) noexcept { return dayOfYear(referenceDay(date)); }

NSInteger nk_weekday(Date date) noexcept { return weekday(referenceDay(date)); }

NSInteger nk_weekOfYear(Date date) noexcept { return isoWeek(referenceDay(date)).week; }

NSInteger nk_week(Date date) noexcept { return nk_weekOfYear(date); }

NSInteger nk_numberOfDaysInMonth(Date date) noexcept {
  const CivilDate fields = civilDate(date);
  return daysInMonth(fields.year, fields.month);
}

NSInteger nk_daysInYear(Date date) noexcept { return nk_isYearLeapYear(date) ? 366 : 365; }

bool nk_isYearLeapYear(Date date) noexcept { return isLeapYear(civilDate(date).year); }

NSInteger nk_daysBetween(Date date, Date other) noexcept { return referenceDay(other) - referenceDay(date); }

NSInteger nk_daysWithinEraFromDate(Date fromDate, Date toDate) noexcept { return nk_daysBetween(fromDate, toDate); }

bool nk_dateIsSameDay(Date date, Date other) noexcept { return referenceDay(date) == referenceDay(other); }

bool nk_isLessThan(Date date, std::optional<Date> other) {
  return compared(date, other, "nk_isLessThan:", __LINE__) == NSOrderedAscending;
}

bool nk_isLessThanOrEqualTo(Date date, std::optional<Date> other) {
  return compared(date, other, "nk_isLessThanOrEqualTo:", __LINE__) != NSOrderedDescending;
}

bool nk_isGreaterThan(Date date, std::optional<Date> other) {
  return compared(date, other, "nk_isGreaterThan:", __LINE__) == NSOrderedDescending;
}

bool nk_isGreaterThanOrEqualTo(Date date, std::optional<Date> other) {
  return compared(date, other, "nk_isGreaterThanOrEqualTo:", __LINE__) != NSOrderedAscending;
}

Date nk_max(Date date, std::optional<Date> other) { return nk_isGreaterThanOrEqualTo(date, other) ? date : *other; }

Date nk_min(Date date, std::optional<Date> other) { return nk_isLessThanOrEqualTo(date, other) ? date : *other; }

std::optional<Date> nk_MinDate(std::optional<Date> a, std::optional<Date> b) {
  return compared(a, b, "nk_MinDate", __LINE__) == NSOrderedAscending ? a : b;
}

std::optional<Date> nk_MaxDate(std::optional<Date> a, std::optional<Date> b) {
  return compared(a, b, "nk_MaxDate", __LINE__) != NSOrderedAscending ? a : b;
}

}  // namespace norvik
