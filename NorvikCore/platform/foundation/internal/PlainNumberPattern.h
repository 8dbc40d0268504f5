// NorvikCore/platform/foundation/internal/PlainNumberPattern.h - decimals in patterns such as "#,##0.00##", without
// ICU.
//
// A plain pattern has nothing around its digits but a minus sign, groups them in threes or not at all, and counts in
// ASCII digits. It gives what ICU gives for the same settings, to the byte.
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
  Rounding rounding = Rounding::HalfEven;
  std::string decimalSeparator = ".", groupingSeparator = ",", minusSign = "-";

  void append(std::string& text, const Decimal& number) const;

  struct Reading {
    Decimal number;
    bool hasFraction = false;  ///< a decimal separator was written
  };
  /// The whole text, or nothing. Lenient reading takes white space around the number and separators anywhere between
  /// two digits.
  [[nodiscard]] std::optional<Reading> read(std::string_view text, bool isLenient) const;
};

}  // namespace norvik::detail
