// examples/decisions/rounding.cpp - docs/decisions/rounding.md: two places whatever the scale, and floor() that keeps
// the fraction.
#include "NorvikCore/Categories/NSDecimalNumber+Norvik.h"

#include <iostream>

using namespace norvik;

int main() {
  const Decimal hours = 37.456_dec;
  std::cout << hours.decimalNumberByRoundingAccordingToBehavior(nk_scaleBehavior(0)) << "\n";  // pennies, not whole
  std::cout << floor(hours) << "\n";                                                           // nothing is cut off

  std::cout << hours.round(0) << "\n";                  // the nearest whole number
  std::cout << hours.round(0, NSRoundDown) << "\n";     // not above it
  std::cout << (-hours).round(0, NSRoundDown) << "\n";  // -38, not -37
  std::cout << hours.round(1) << "\n";
  std::cout << integralNumber(hours) << "\n";  // without the fraction, as an integer
}
