#include <iostream>

#include "NorvikCore/Categories/NSDate+Norvik.h"
#include "NorvikCore/Categories/NSDate+Norvik_Formatting.h"
#include "NorvikCore/Categories/NSDecimalNumber+Norvik.h"

using namespace norvik;

int main() {
  const Decimal gross = 2500.00_dec, tax = gross * 0.20_dec;
  const Date payday = nk_addMonths(nk_dateWithYear(2024, 3, 31), 1);
  std::cout << nk_utcDateStringWithFormat(payday, "d MMMM yyyy") << ": " << nk_currencyStyleString(gross - tax) << "\n";
}  // 30 April 2024: 2,000.00
