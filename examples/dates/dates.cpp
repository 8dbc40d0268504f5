// examples/dates/dates.cpp - the code of docs/dates.md.
#include "NorvikCore/Categories/NSDate+Norvik.h"
#include "NorvikCore/platform/foundation/NSDateFormatter.h"
#include "NorvikCore/platform/foundation/NSLocale.h"
#include "NorvikCore/platform/foundation/NSTimeZone.h"
#include "NorvikCore/platform/values/Date_chrono.h"
#include "NorvikCore/platform/values/Date_fmt.h"
#include "NorvikCore/platform/values/Date_literals.h"

#include <chrono>
#include <iostream>

using namespace norvik;
using namespace norvik::literals;

int main() {
  const Date start = nk_dateWithYear(2024, 1, 31);
  for (int month = 0; month < 3; ++month) std::cout << nk_addMonths(start, month) << "\n";

  const Date payday = "2024-03-28"_date, endOfTaxYear = "2024-04-05"_date;
  std::cout << nk_daysBetween(payday, endOfTaxYear) << " days, " << (endOfTaxYear - payday) / 3600 << " hours\n";
  std::cout << payday + std::chrono::minutes(90) << "\n";

  // Every time of the system clock is a date, also as an argument; and back.
  using namespace std::chrono;
  std::cout << nk_addMonths(sys_days{2024y / February / 29}, 12) << "\n";
  std::cout << (system_clock::now() > payday) << " " << (sysDays(payday) == sys_days{2024y / March / 28}) << "\n";

  // In {fmt}, the fields in UTC.
  std::cout << fmt::format("{:%d/%m/%Y %H:%M}, week {:%V}", payday, payday) << "\n";

  auto formatter = make<NSDateFormatter>();
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  formatter->setTimeZone(NSTimeZone::timeZoneWithName("Europe/London"));
  formatter->setDateFormat("EEEE d MMMM yyyy HH:mm");
  std::cout << formatter->stringFromDate("2024-07-01 12:00:00 +0000"_date) << "\n";
}
