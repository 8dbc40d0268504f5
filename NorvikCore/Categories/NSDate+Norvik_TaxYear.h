// NorvikCore/Categories/NSDate+Norvik_TaxYear.h - the tax year, tax month and tax week of a payroll date.
//
// The tax year of the United Kingdom begins on 6 April. Its months begin on the 6th of each calendar month, its weeks
// on 6 April and every seventh day after it; week 53 has the last day, or the last two days of a year with 29 February.
//
//   Date payday = nk_dateWithYear(2024, 7, 5);
//   nk_taxYear(payday);                                       // 2024, which is 2024-25
//   nk_taxYearName(payday);                                   // "2024-25"
//   nk_taxMonth(payday);                                      // 3: 6 June to 5 July
//   nk_taxWeek(payday);                                       // 13
//   nk_startOfTaxMonth(payday);                               // 2024-06-06
//   nk_startOfLastDayOfTaxMonth(payday);                      // 2024-07-05
//
// Days are those of the default calendar (UTC), as in NSDate+Norvik.h. Every function is pure, takes constant time and
// is safe on any thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/Date.h"
#include "NorvikCore/platform/values/NSInteger.h"
#include "NorvikCore/platform/values/NSString.h"

namespace norvik {

/// The year in which the tax year of the date begins.
[[nodiscard]] NK_EXPORT NSInteger nk_taxYear(Date date) noexcept;
/// "2024-25": the year in which the tax year begins, and the last two digits of the next one.
[[nodiscard]] NK_EXPORT NSString nk_taxYearName(Date date);
[[nodiscard]] NK_EXPORT NSInteger nk_taxMonth(Date date) noexcept;  ///< 1 to 12
[[nodiscard]] NK_EXPORT NSInteger nk_taxWeek(Date date) noexcept;   ///< 1 to 53

// 00:00:00 UTC of the first day.
[[nodiscard]] NK_EXPORT Date nk_startOfTaxYear(Date date) noexcept;
[[nodiscard]] NK_EXPORT Date nk_startOfTaxMonth(Date date) noexcept;
[[nodiscard]] NK_EXPORT Date nk_startOfTaxWeek(Date date) noexcept;

// 00:00:00 UTC of the last day. Week 53 ends with the tax year, after one or two days.
[[nodiscard]] NK_EXPORT Date nk_startOfLastDayOfTaxYear(Date date) noexcept;
[[nodiscard]] NK_EXPORT Date nk_startOfLastDayOfTaxMonth(Date date) noexcept;
[[nodiscard]] NK_EXPORT Date nk_startOfLastDayOfTaxWeek(Date date) noexcept;

}  // namespace norvik
