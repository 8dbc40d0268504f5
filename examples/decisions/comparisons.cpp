// examples/decisions/comparisons.cpp - docs/decisions/comparisons.md: an absent value compares as equal; values of
// different kinds have no order.
#include "NorvikCore/Categories/NSDate+Norvik.h"
#include "NorvikCore/Categories/NSDecimalNumber+Norvik.h"
#include "NorvikCore/platform/object/Value.h"
#include "NorvikCore/platform/values/NSException.h"

#include <iostream>
#include <optional>

using namespace norvik;

int main() {
  std::cout << std::boolalpha;
  const std::optional<Decimal> limit;                           // not set
  std::cout << nk_isLessThan(100_dec, limit) << "\n";           // "equal", so not less
  std::cout << nk_isLessThanOrEqualTo(100_dec, limit) << "\n";  // "equal", so true
  std::cout << (limit && 100_dec <= *limit) << "\n";            // says what is meant

  std::cout << (Value(5) == Value(5.00_dec)) << "\n";  // all kinds of number are one kind
  std::cout << (Value(5) == Value("5")) << "\n";       // a text is never equal to a number
  try {
    (void)Value(5).compare(Value("5"));  // and neither is before the other
  } catch (const NSException& e) {
    std::cout << e.what() << "\n";
  }
}
