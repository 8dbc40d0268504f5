// NorvikCore/platform/foundation/internal/NumberIncrement.h - rounds numbers to multiples of an increment, for patterns
// such as "#,##0.25".
//
//   roundedToIncrement(NumberDigits::of(Decimal::parse("1.3").value()), 0, Decimal::parse("0.25").value(),
//                      NSNumberFormatterRoundHalfEven)
//       // "125E-2"
#pragma once

#include "NorvikCore/platform/foundation/NSNumberFormatter.h"
#include "NorvikCore/platform/values/Decimal.h"

#include <string>

namespace norvik::detail {

/// A number as its digits and the power of ten of the last digit. A double must be finite; its digits are the fewest
/// that identify it.
struct NumberDigits {
  static NumberDigits of(const Decimal& number);
  static NumberDigits of(double number);

  std::string text;
  int exponent = 0;
  bool isNegative = false;
};

/// The multiple of the increment nearest to number * 10^power, times 10^-power, with all its digits, which a decimal
/// number may be unable to hold. The increment has 36 digits at most and is above zero.
[[nodiscard]] std::string roundedToIncrement(const NumberDigits& number, int power, const Decimal& increment,
                                             NSNumberFormatterRoundingMode mode);

}  // namespace norvik::detail
