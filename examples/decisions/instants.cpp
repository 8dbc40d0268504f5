// examples/decisions/instants.cpp - docs/decisions/instants.md: a date is an instant; the calendar gives it a day.
#include "NorvikCore/Categories/NSDate+Norvik.h"
#include "NorvikCore/Categories/NSDate+Norvik_Coercion.h"
#include "NorvikCore/Categories/NSDate+Norvik_Formatting.h"
#include "NorvikCore/formatters/NKUkDateFormatter.h"
#include "NorvikCore/formatters/NKUtcDateFormatter.h"
#include "NorvikCore/platform/values/Date_literals.h"

#include <iostream>

using namespace norvik;
using namespace norvik::literals;

int main() {
  const Date date = "2024-06-30 23:30:00 +0000"_date;
  std::cout << nk_utcDateStringWithFormat(date, "d MMMM HH:mm") << "\n";  // payroll counts in UTC
  std::cout << nk_ukDateStringWithFormat(date, "d MMMM HH:mm") << "\n";   // a clock in London shows summer time
  std::cout << nk_day(date) << "\n";                                      // as payroll counts

  const Date payday = nk_dateWithYear(2024, 7, 1);  // 00:00:00 UTC of its day
  std::cout << payday << "\n";
  std::cout << nk_daysBetween(date, payday) << " day, " << (payday - date) / 3600 << " hours\n";
  std::cout << nk_nearestStartOfDay("2024-06-30 12:59:59"_date) << "\n";  // up to 12:59:59 it is the same day
  std::cout << nk_nearestStartOfDay("2024-06-30 13:00:00"_date) << "\n";

  // A day that a clerk typed.
  const auto utc = make<NKUtcDateFormatter>();
  utc->setDateFormat("dd/MM/yyyy");
  const auto uk = make<NKUkDateFormatter>();
  uk->setDateFormat("dd/MM/yyyy");
  std::cout << *utc->dateFromString("06/07/2024") << "\n";  // the payroll date
  std::cout << *uk->dateFromString("06/07/2024") << "\n";   // midnight in London, which is the day before in UTC
}
