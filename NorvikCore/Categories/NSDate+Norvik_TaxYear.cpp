#include "NorvikCore/Categories/NSDate+Norvik_TaxYear.h"

#include "NorvikCore/Categories/NSDate+Norvik.h"
#include "NorvikCore/platform/values/Format.h"

#include <algorithm>

namespace norvik {
namespace {

constexpr NSInteger firstMonth = 4, firstDay = 6;

/// The first day of the calendar month in which the tax month of the date begins.
Date calendarMonth(Date date) noexcept { return nk_startOfFirstDayOfMonth(nk_addDays(date, 1 - firstDay)); }

NSInteger dayOfTaxYear(Date date) noexcept { return nk_daysBetween(nk_startOfTaxYear(date), date); }

}  // namespace

NSInteger nk_taxYear(Date date) noexcept {
  const Date month = calendarMonth(date);
  return nk_year(month) - (nk_month(month) < firstMonth ? 1 : 0);
}

NSString nk_taxYearName(Date date) {
  const NSInteger year = nk_taxYear(date);
  return stringWithFormat("%04ld-%02ld", year, ((year + 1) % 100 + 100) % 100);
}

NSInteger nk_taxMonth(Date date) noexcept { return (nk_month(calendarMonth(date)) + 12 - firstMonth) % 12 + 1; }

NSInteger nk_taxWeek(Date date) noexcept { return dayOfTaxYear(date) / 7 + 1; }

Date nk_startOfTaxYear(Date date) noexcept { return nk_dateWithYear(nk_taxYear(date), firstMonth, firstDay); }

Date nk_startOfTaxMonth(Date date) noexcept { return nk_addDays(calendarMonth(date), firstDay - 1); }

Date nk_startOfTaxWeek(Date date) noexcept { return nk_addDays(nk_startOfDay(date), -(dayOfTaxYear(date) % 7)); }

Date nk_startOfLastDayOfTaxYear(Date date) noexcept {
  return nk_dateWithYear(nk_taxYear(date) + 1, firstMonth, firstDay - 1);
}

Date nk_startOfLastDayOfTaxMonth(Date date) noexcept {
  return nk_addDays(nk_addMonths(calendarMonth(date), 1), firstDay - 2);
}

Date nk_startOfLastDayOfTaxWeek(Date date) noexcept {
  return std::min(nk_addDays(nk_startOfTaxWeek(date), 6), nk_startOfLastDayOfTaxYear(date));
}

}  // namespace norvik
