// NorvikCore/platform/foundation/internal/PlainNumberPattern.h - formats decimals by patterns such as "#,##0.00##"
// without ICU.
//
// A plain pattern groups its digits in threes or not at all and uses ASCII digits. Around them are a minus sign and
// fixed texts, such as "%" or a currency's sign. The result is the same, to the byte, as ICU's for the same settings,
// if ICU writes no sign before zero.
#pragma once

#include "NorvikCore/platform/values/Decimal.h"

#include <array>
#include <string>
#include <string_view>

namespace norvik::detail {

struct PlainNumberPattern {
  enum class Rounding { Ceiling, Floor, Down, Up, HalfEven, HalfUp };

  int minimumInteger = 1, maximumInteger = 309;
  int minimumFraction = 0, maximumFraction = 3;
  bool isGrouped = false;
  int minimumGrouping = 1;  ///< the number of digits that the first group must have before a separator is written
  int power = 0;            ///< the power of ten by which numbers are multiplied: 2 in percentages
  Rounding rounding = Rounding::HalfEven;
  std::string decimalSeparator = ".", groupingSeparator = ",";
  /// The texts around a number. `negative` is used if the number is negative and its text is not zero.
  struct {
    std::string before, after;
  } positive, negative{"-", ""};

  /// False for not-a-number and for numbers so large that the multiplication would overflow: not to be given to
  /// append().
  [[nodiscard]] bool covers(const Decimal& number) const noexcept {
    return !number.isNaN() && number.exponent() + power <= Decimal::maximumExponent;
  }

  void append(std::string& text, const Decimal& number) const;

  static constexpr int mostShortDigits = 18;
  static constexpr std::size_t mostShortText = 64;
  /// Room for a whole part and a fraction with separators, and the texts around them.
  using ShortText = std::array<char, 2 * mostShortDigits + 4 * (mostShortDigits / 3 + 1) + mostShortText>;
  /// True if shortText() may be called; it depends on the settings only.
  [[nodiscard]] bool isShort() const noexcept;
  /// The fast path for numbers of up to 18 digits that need no rounding; the text is at the end of `room`. Empty for
  /// other numbers, which append() writes.
  [[nodiscard]] std::string_view shortText(ShortText& room, const Decimal& number) const noexcept;
};

}  // namespace norvik::detail
