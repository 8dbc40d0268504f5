// NorvikCore/platform/foundation/internal/NumberReader.h - reads decimals from text, for every pattern, locale and kind
// of digits.
//
// Reading succeeds only if the whole text is a number. Digits are the locale's own or ASCII, but not both in one
// number; separators are the locale's only. A number has one sign at most.
#pragma once

#include "NorvikCore/platform/values/Decimal.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace norvik::detail {

class NumberReader {
 public:
  /// The texts that the formatter writes before and after a number.
  struct Form {
    std::string before, after;
    bool isNegative = false;
    friend bool operator==(const Form&, const Form&) = default;
  };

  /// Where a text is filled up: around the text before the number, or around the one after it.
  enum class PadPosition { beforePrefix, afterPrefix, beforeSuffix, afterSuffix };

  struct Settings {
    std::array<std::string, 10> digits;
    std::string decimalSeparator, groupingSeparator, minusSign, plusSign;
    std::string exponentSign;  ///< written before a power of ten; empty if the pattern has none
    std::string padding;       ///< fills the text up to the width of the pattern; empty if it has none
    PadPosition padPosition = PadPosition::beforePrefix;
    std::size_t width = 0;  ///< of texts with padding, in characters
    bool isGrouped = false;
    int lastGroup = 3, otherGroups = 3;  ///< the number of digits; 12,34,567 has two in the other groups
    int power = 0;                       ///< the power of ten by which numbers are multiplied: 2 in percentages
    std::vector<Form> forms;
    std::string currencySymbol, currencyCode;  ///< lenient reading accepts each instead of the other
  };

  explicit NumberReader(Settings settings);

  struct Reading {
    Decimal number;
    bool hasFraction = false;
  };
  /// Strict reading accepts the formatter's own texts, with any number of digits. Lenient reading gives the same number
  /// for them, because it tries strict reading first, also for the text without white space around it. It also accepts
  /// white space and marks of direction anywhere but between digits, another minus sign, "+", a number without one or
  /// both of the texts around it, and grouping separators anywhere between two digits. If the separators are spaces or
  /// apostrophes, it accepts any space or the ASCII apostrophe for them.
  [[nodiscard]] std::optional<Reading> read(std::string_view text, bool isLenient) const;

 private:
  /// A form as lenient reading searches for it: without signs, and without spaces at the ends.
  struct LooseForm {
    std::string before, after;
    bool impliesMinus = false;  ///< as brackets do
    bool signFollows = false;
    friend bool operator==(const LooseForm&, const LooseForm&) = default;
  };

  class Digits;

  /// True if the texts around negative numbers are a part of those around other numbers, such as "5 CR" for 5, "5" for
  /// -5. Such a form is tried first, because the other one accepts its numbers too.
  [[nodiscard]] static bool isWithinAnother(const LooseForm& form, const std::vector<LooseForm>& forms);
  [[nodiscard]] LooseForm withoutSign(const Form& form) const;
  /// A plus or minus sign in a form is removed only if numbers of the other sign have the same texts around them
  /// without it. Otherwise it is a part of the text, such as the hyphen of "A-5".
  [[nodiscard]] LooseForm looseForm(const Form& form, const std::vector<Form>& all) const;
  [[nodiscard]] std::string_view withoutPadding(std::string_view text) const noexcept;
  /// Without the padding on the outer side of the form's texts, which may themselves begin or end as the padding does.
  [[nodiscard]] std::string_view withoutOuterPadding(std::string_view text, const Form& form) const noexcept;
  [[nodiscard]] std::string_view withoutInnerPadding(std::string_view number) const noexcept;
  /// False only if no text of the form begins with `first`. Refuses most lenient texts before they are read strictly.
  [[nodiscard]] bool mayBegin(char first, const Form& form) const noexcept;
  bool takeSign(std::string_view& text, bool& isNegative) const noexcept;
  bool takeGroupingSeparator(std::string_view& text, bool isLenient) const noexcept;
  /// Takes the digits at the beginning of the text, as ASCII, and returns their number. The first one sets the kind.
  enum class Kind { Any, Ascii, Own };
  std::size_t takeRun(std::string_view& text, Kind& kind, Digits& digits) const;
  std::size_t takeOwnRun(std::string_view& text, Kind& kind, Digits& digits) const;
  bool takeDigits(std::string_view& text, bool isLenient, Digits& digits, bool& hasPoint) const;
  bool takeExponent(std::string_view& text, bool isLenient, Digits& digits) const;
  [[nodiscard]] std::optional<Reading> readStrictly(std::string_view text) const;
  [[nodiscard]] std::optional<Reading> readStrictly(std::string_view text, const Form& form) const;
  [[nodiscard]] std::optional<Reading> readLoosely(std::string_view text, const LooseForm& form) const;
  [[nodiscard]] std::optional<Reading> reading(std::string_view digits, bool hasPoint) const;

  Settings settings_;
  std::vector<LooseForm> looseForms_;
  std::string minusCore_, plusCore_;  ///< the signs without marks of direction
  bool hasOwnDigits_, isBare_;
};

}  // namespace norvik::detail
