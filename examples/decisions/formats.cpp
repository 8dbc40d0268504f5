// examples/decisions/formats.cpp - docs/decisions/formats.md: a format is a literal, and its arguments are checked.
#include "NorvikCore/Categories/NSAttributedString+Norvik.h"
#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/Format.h"

#include <iostream>

using namespace norvik;

int main() {
  const NSString name = "Sian", typed = "100 % of %@";
  std::cout << stringWithFormat("%@ works %d hours for %@", name, 38, 2500.00_dec) << "\n";
  std::cout << stringWithFormat("%@", typed) << "\n";                         // a text is an argument
  std::cout << stringWithFormat(runtimeFormat("%@ %d"), name, name) << "\n";  // a pattern from a file: no check before

  // Attributed text has %@ and %% only.
  std::cout << nk_stringWithFormat_attributes("%@ works %d hours", nullptr, name, 38)->string() << "\n";
  std::cout << nk_stringWithFormat_attributes("%@ works %@ hours", nullptr, name, 38)->string() << "\n";
}
