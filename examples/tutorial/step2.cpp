// examples/tutorial/step2.cpp - docs/tutorial.md: amounts that are rounded once, a payday and text for people.
#include "NorvikCore/Categories/NSDate+Norvik.h"
#include "NorvikCore/Categories/NSDate+Norvik_Formatting.h"
#include "NorvikCore/Categories/NSDecimalNumber+Norvik.h"

#include <iostream>

using namespace norvik;

int main() {
  const Decimal gross = 2345.55_dec;
  const Decimal exact = gross * 0.05_dec;
  const Decimal pension = exact.round(2);
  std::cout << exact << " is rounded to " << pension << "\n";
  std::cout << "net " << nk_currencyStyleString(gross - pension) << "\n";

  // A yearly amount in twelve parts. The last part is what the others leave, so nothing is lost.
  const Decimal bonus = 1000.00_dec;
  const Decimal part = (bonus / 12).round(2, NSRoundDown);
  std::cout << "11 parts of " << part << ", then " << bonus - 11 * part << "\n";

  const Date payday = nk_dateWithYear(2024, 1, 31);
  for (int month = 0; month < 3; ++month)
    std::cout << nk_utcDateStringWithFormat(nk_addMonths(payday, month), "d MMMM yyyy") << "\n";
}
