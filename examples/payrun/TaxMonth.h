// examples/payrun/TaxMonth.h - tax months, from the 6th to the 5th; the first begins on 6 April.
#pragma once

#include <string>

#include "NorvikCore/platform/values/Date.h"

namespace payrun {

/// The days from first to last, both included.
struct Days {
  norvik::Date first, last;
  [[nodiscard]] bool contains(norvik::Date day) const { return first <= day && day <= last; }
};

/// `year` is the year in which the tax year begins: 2024 is 6 April 2024 to 5 April 2025.
Days taxYear(int year);
/// Month 1 is 6 April to 5 May, month 12 is 6 March to 5 April.
Days taxMonth(int year, int month);
/// "2024-25".
std::string taxYearName(int year);

}  // namespace payrun
