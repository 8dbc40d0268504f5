// examples/decisions/overview.cpp - docs/decisions/README.md: one line for each of five decisions.
#include "NorvikCore/Categories/NSDecimalNumber+Norvik.h"
#include "NorvikCore/linq/LINQ.h"
#include "NorvikCore/platform/values/Date_literals.h"

#include <iostream>

using namespace norvik;
using namespace norvik::literals;

int main() {
  const Ref<NSArray> names = NSArray::arrayWithObjects("Sian", "Ann");
  std::cout << floor(2.75_dec) << "\n";                          // keeps the fraction
  std::cout << nk_isLessThanOrEqualTo(5, std::nullopt) << "\n";  // absent compares as equal
  std::cout << "2024-07-01"_date
            << "\n";                                   // an instant, in UTC
  std::cout << linq_take(*names, 2)->count() << "\n";  // all of them: none
  std::cout << NSString("\U0001F600").size() << "\n";  // units, not characters
}
