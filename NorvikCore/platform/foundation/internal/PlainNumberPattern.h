// NorvikCore/platform/foundation/internal/PlainNumberPattern.h - decimals in patterns such as "#,##0.00##", without
// ICU.
//
// A plain pattern groups its digits in threes or not at all and counts in ASCII digits. Around them stand a minus sign
// and fixed texts, such as "%" or a currency's sign. It gives what ICU gives for the same settings, to the byte.
#pragma once

#include "NorvikCore/platform/values/Decimal.h"

#include <optional>
#include <string>
#include <string_view>

namespace norvik::detail {

struct PlainNumberPattern {
  enum class Rounding { Ceiling, Floor, Down, Up, HalfEven, HalfUp };

  int minimumInteger = 1, maximumInteger = 309;
  int minimumFraction = 0, maximumFraction = 3;
  bool isGrouped = false;
  int minimumGrouping = 1;  ///< how many digits the first group must have before any separator is written
  int power = 0;            ///< the power of ten that numbers are multiplied by: 2 in percentages
  Rounding rounding = Rounding::HalfEven;
  std::string decimalSeparator = ".", groupingSeparator = ",", minusSign = "-";
  /// What stands around a number that is not negative, and around a negative one.
  struct {
    std::string before, after;
  } positive, negative{"-", ""};

  /// Nothing stands around the digits but the minus sign.
  [[nodiscard]] bool isBare() const noexcept {
    return power == 0 && positive.before.empty() && positive.after.empty() && negative.before == minusSign &&
           negative.after.empty();
  }
  /// Numbers so great that multiplying them would overflow are not for append().
  [[nodiscard]] bool covers(const Decimal& number) const noexcept {
    return !number.isNaN() && number.exponent() + power <= Decimal::maximumExponent;
  }

  void append(std::string& text, const Decimal& number) const;

  struct Reading {
    Decimal number;
    bool hasFraction = false;  ///< a decimal separator was written
  };
  /// The whole text of a bare pattern, or nothing. Lenient reading takes white space around the number and separators
  /// anywhere between two digits, typed as any space or an ASCII apostrophe where they are of that kind.
  [[nodiscard]] std::optional<Reading> read(std::string_view text, bool isLenient) const;
  /// A text such as append() writes, whatever the pattern. Nothing may still be a number to someone more lenient.
  [[nodiscard]] std::optional<Decimal> readOwn(std::string_view text) const;
};

}  // namespace norvik::detail
