// NorvikCore/platform/foundation/internal/PlainNumberPattern.h - decimals in patterns such as "#,##0.00##", without
// ICU.
//
// A plain pattern groups its digits in threes or not at all and counts in ASCII digits. Around them stand a minus sign
// and fixed texts, such as "%" or a currency's sign. It gives what ICU gives for the same settings, to the byte, where
// ICU is asked to write no sign before zero.
#pragma once

#include "NorvikCore/platform/values/Decimal.h"

#include <string>

namespace norvik::detail {

struct PlainNumberPattern {
  enum class Rounding { Ceiling, Floor, Down, Up, HalfEven, HalfUp };

  int minimumInteger = 1, maximumInteger = 309;
  int minimumFraction = 0, maximumFraction = 3;
  bool isGrouped = false;
  int minimumGrouping = 1;  ///< how many digits the first group must have before any separator is written
  int power = 0;            ///< the power of ten that numbers are multiplied by: 2 in percentages
  Rounding rounding = Rounding::HalfEven;
  std::string decimalSeparator = ".", groupingSeparator = ",";
  /// The texts around a number, and around one that is negative and not zero as it is written.
  struct {
    std::string before, after;
  } positive, negative{"-", ""};

  /// Numbers so great that multiplying them would overflow are not for append().
  [[nodiscard]] bool covers(const Decimal& number) const noexcept {
    return !number.isNaN() && number.exponent() + power <= Decimal::maximumExponent;
  }

  void append(std::string& text, const Decimal& number) const;
};

}  // namespace norvik::detail
