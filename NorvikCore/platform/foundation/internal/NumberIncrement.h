// NorvikCore/platform/foundation/internal/NumberIncrement.h - numbers rounded to multiples of an increment, as patterns
// such as "#,##0.25" ask for.
//
//   roundedToIncrement(NumberDigits::of(Decimal::parse("1.3").value()), 0, Decimal::parse("0.25").value(),
//                      NSNumberFormatterRoundHalfEven)
//       // "125E-2"
#pragma once

#include "NorvikCore/platform/foundation/NSNumberFormatter.h"
#include "NorvikCore/platform/values/Decimal.h"

#include <string>

namespace norvik::detail {

/// A number: its digits, and the power of ten of the last one. The double is finite; its digits are the fewest that
/// name it.
struct NumberDigits {
  static NumberDigits of(const Decimal& number);
  static NumberDigits of(double number);

  std::string text;
  int exponent = 0;
  bool isNegative = false;
};

/// The multiple of the increment nearest to number * 10^power, times 10^-power, with as many digits as it takes: a
/// decimal number does not hold them all. The increment has 36 digits at most and is above zero.
[[nodiscard]] std::string roundedToIncrement(const NumberDigits& number, int power, const Decimal& increment,
                                             NSNumberFormatterRoundingMode mode);

}  // namespace norvik::detail
