// NorvikCore/platform/foundation/NSNumberFormatter.h - formats numbers in a locale's style and reads them back.
//
//   auto money = make<NSNumberFormatter>();
//   money->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
//   money->setFormat("#,##0.00");
//   money->stringFromNumber(1234.5_dec);            // "1,234.50"
//   money->setLenient(true);
//   money->numberFromString(" 1,234.5 ");           // 1234.5
//
// Patterns are those of Unicode's locale data ("#,##0.00;(#,##0.00)"); words and symbols are the locale's. A style or a
// pattern sets the digit limits and the grouping; setters called after it change them again. A number that is shown as
// zero has no sign: -0.001 is "0.00", because it reads back as that. If the padding is a digit or a separator, it is
// read as one.
//
// Reading succeeds only if the whole text is a number. The number of digits does not matter: "1.2345", ".5" and "5."
// are numbers for "0.00" too, and so are digits without separators. Digits are the locale's or ASCII, but not both in
// one number. Separators are the locale's only, so "12.50" is not a number in Arabic. A number has one sign at most.
// Strict reading accepts only the formatter's own signs and separators, each in its place. Lenient reading gives the
// same number for such a text and also accepts, for every pattern:
// - white space and marks of direction before and after the number, its sign and the texts around it;
// - a number without the texts that the pattern puts around it, unless they are brackets that mean a minus;
// - "+", "-" and the minus sign;
// - a currency's code instead of its symbol;
// - grouping separators anywhere between two digits; if the locale's is a space or an apostrophe, any space or the
//   ASCII apostrophe.
// Digits behind the point are never cut off; beyond 38 digits or 128 places the number is rounded. Words must be a
// number below 10^15 in the spelling of the language: "twelve twelve" is refused, and so is a text of more than 500
// UTF-16 units.
//
// Threads: confined; several threads may use a formatter at once if its settings do not change any more.
// Cost:    the first text after a change of settings is expensive (tens of microseconds, for words half a millisecond);
//          keep the formatter. Formatting a decimal in a decimal, percent or currency pattern takes some tens of
//          nanoseconds, and so does reading in any pattern. ICU formats significant digits, powers of ten, increments,
//          words, padding and digits other than ASCII.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSFormatter.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/object/NSCoder.h"
#include "NorvikCore/platform/values/NSNumber.h"

#include <optional>
#include <string_view>
#include <type_traits>

namespace norvik {

class NSLocale;

namespace detail {
/// std::string_view and std::string, but no literal or other text that NSString takes as it is.
template <class T>
concept ViewableText =
    std::is_convertible_v<const T&, std::string_view> && !std::is_convertible_v<const T&, const char*>;
}  // namespace detail

enum NSNumberFormatterStyle : unsigned {
  NSNumberFormatterNoStyle = 0,
  NSNumberFormatterDecimalStyle = 1,
  NSNumberFormatterCurrencyStyle = 2,
  NSNumberFormatterPercentStyle = 3,
  NSNumberFormatterScientificStyle = 4,
  NSNumberFormatterSpellOutStyle = 5
};

enum NSNumberFormatterBehavior : unsigned {
  NSNumberFormatterBehaviorDefault = 0,
  NSNumberFormatterBehavior10_0 = 1000,
  NSNumberFormatterBehavior10_4 = 1040
};

enum NSNumberFormatterRoundingMode : unsigned {
  NSNumberFormatterRoundCeiling = 0,
  NSNumberFormatterRoundFloor = 1,
  NSNumberFormatterRoundDown = 2,      ///< towards zero
  NSNumberFormatterRoundUp = 3,        ///< away from zero
  NSNumberFormatterRoundHalfEven = 4,  ///< the default
  NSNumberFormatterRoundHalfDown = 5,
  NSNumberFormatterRoundHalfUp = 6
};

class NK_EXPORT NSNumberFormatter : public NSFormatter, public NSCoding {
  NK_OBJECT(NSNumberFormatter, NSFormatter)
  NK_CODING

  /// No style; the user's current locale.
  NSNumberFormatter();
  ~NSNumberFormatter() override;

  /// The number as text. Never absent: not-a-number and infinities have texts too, but those do not read back.
  [[nodiscard]] NSString stringFromNumber(const NSNumber& number) const;
  /// Absent if the text is not a number, has a fraction although floats are not allowed, or is beyond minimum() or
  /// maximum(). The result is a Decimal if generatesDecimalNumbers() is on; else an integer, or a double if there is a
  /// fraction or the number does not fit a 64-bit integer.
  [[nodiscard]] std::optional<NSNumber> numberFromString(const NSString& text) const;
  /// The same without a copy of the text, for std::string_view and std::string.
  template <detail::ViewableText Text>
  [[nodiscard]] std::optional<NSNumber> numberFromString(const Text& text) const {
    return numberInView(text);
  }

  /// Accepts numbers only; an absent or null value gives the empty text, any other value gives none.
  [[nodiscard]] std::optional<NSString> stringForObjectValue(const Value& value) const override;
  /// The text with the given attributes for its whole length.
  [[nodiscard]] Ref<NSAttributedString> attributedStringForObjectValue_withDefaultAttributes(
      const Value& value, const Ref<NSDictionary>& attributes) const override;
  /// The empty text reads as an absent value. The error says what is refused and why: no number, a fraction, or a
  /// bound, which is written as the formatter writes it.
  [[nodiscard]] bool getObjectValue_forString_errorDescription(Value& value, const NSString& text,
                                                               NSString* error = nullptr) const override;

  [[nodiscard]] NSNumberFormatterStyle numberStyle() const noexcept;
  void setNumberStyle(NSNumberFormatterStyle style);
  [[nodiscard]] Ref<NSLocale> locale() const noexcept;
  /// Limits and grouping that were set after the style or the pattern stay. An empty Ref means the user's current
  /// locale.
  void setLocale(const Ref<NSLocale>& locale);
  /// The pattern in use.
  [[nodiscard]] NSString format() const;
  /// A malformed pattern raises NSInvalidArgumentException and changes nothing.
  void setFormat(const NSString& pattern);
  /// Stored and returned only: the formatter always behaves as 10.4.
  [[nodiscard]] NSNumberFormatterBehavior formatterBehavior() const noexcept;
  void setFormatterBehavior(NSNumberFormatterBehavior behavior) noexcept;

  [[nodiscard]] int minimumIntegerDigits() const;
  void setMinimumIntegerDigits(int digits);
  [[nodiscard]] int maximumIntegerDigits() const;
  /// A number with more digits shows its last ones: 1234 with a maximum of 2 is "34". The first such number above
  /// maximum() is reported on the system console, because it is probably an amount that the bound forgot.
  void setMaximumIntegerDigits(int digits);
  [[nodiscard]] int minimumFractionDigits() const;
  void setMinimumFractionDigits(int digits);
  [[nodiscard]] int maximumFractionDigits() const;
  void setMaximumFractionDigits(int digits);
  [[nodiscard]] bool hasThousandSeparators() const;
  void setHasThousandSeparators(bool has);
  [[nodiscard]] NSNumberFormatterRoundingMode roundingMode() const noexcept;
  void setRoundingMode(NSNumberFormatterRoundingMode mode);

  [[nodiscard]] bool allowsFloats() const noexcept;
  void setAllowsFloats(bool allows) noexcept;
  [[nodiscard]] bool lenient() const noexcept;
  void setLenient(bool lenient);
  [[nodiscard]] bool generatesDecimalNumbers() const noexcept;
  void setGeneratesDecimalNumbers(bool generates) noexcept;
  /// Bounds for reading; absent for none.
  [[nodiscard]] const std::optional<NSNumber>& maximum() const noexcept;
  virtual void setMaximum(std::optional<NSNumber> maximum);
  [[nodiscard]] const std::optional<NSNumber>& minimum() const noexcept;
  virtual void setMinimum(std::optional<NSNumber> minimum);

  /// All settings. Damaged settings raise NSInvalidUnarchiveOperationException.
  void encodeWithCoder(NSCoder& coder) const override;
  bool initWithCoder(NSCoder& coder) override;

 protected:
  /// Whether a number is read as a Decimal if a double would change its digits. Off by default; not archived.
  void setKeepsEveryDigit(bool keeps) noexcept;

 private:
  [[nodiscard]] std::optional<NSNumber> numberInView(std::string_view text) const;
  [[nodiscard]] NSString reasonToRefuse(const NSString& text) const;

  struct Engine;
  detail::Hidden<Engine> engine_;
};

}  // namespace norvik
