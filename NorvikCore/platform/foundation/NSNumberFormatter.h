// NorvikCore/platform/foundation/NSNumberFormatter.h - numbers as text in a locale's manner, and text back to numbers.
//
//   auto money = make<NSNumberFormatter>();
//   money->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
//   money->setFormat("#,##0.00");
//   money->stringFromNumber(1234.5_dec);            // "1,234.50"
//   money->setLenient(true);
//   money->numberFromString(" 1,234.5 ");           // 1234.5
//
// Patterns are those of Unicode's locale data ("#,##0.00;(#,##0.00)"); words and symbols are the locale's. A style or a
// pattern sets the digit limits and the grouping; setters called after it change them again. A number that shows as
// zero has no sign: -0.001 is "0.00", because it reads back as that. Padding by a digit or a separator is read as one.
//
// Reading takes the whole text or nothing. How many digits there are does not count: "1.2345", ".5" and "5." are
// numbers to "0.00" too, and so are digits without separators. Digits are the locale's or ASCII's, of one kind in a
// number; separators are the locale's only, so that "12.50" is no number in Arabic. A number has one sign at most.
// Strict reading wants the formatter's own signs and separators, each in its place. Lenient reading gives the same
// number for such a text. It also takes, in every pattern alike: white space and marks of direction before and after
// the number, its sign and what the pattern puts around it; a number without what the pattern puts around it, brackets
// that mean a minus excepted; "+", "-" and the minus sign; a currency's code for its symbol; and grouping separators
// anywhere between two digits, where any space and an ASCII apostrophe do for the locale's own. Digits behind the point
// are never cut off; beyond 38 digits, or 128 places, the number is rounded. Words are a number below 10^15 and only as
// the language spells it: "twelve twelve" is none, nor are more than 500 units of text.
//
// Threads: confined; a kept formatter may be read by several threads once its settings are done.
// Cost:    the first text after a setting is expensive (tens of microseconds, words half a millisecond); keep one.
//          Formatting a decimal in a decimal, percent or currency pattern takes some tens of nanoseconds, and so does
//          reading in any pattern; significant digits, powers of ten, increments, words, padding and digits other than
//          ASCII's are written by ICU.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSFormatter.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/object/NSCoder.h"
#include "NorvikCore/platform/values/NSNumber.h"

#include <optional>

namespace norvik {

class NSLocale;

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

  /// No style, the user's current locale.
  NSNumberFormatter();
  ~NSNumberFormatter() override;

  /// The number as text. Never absent: not-a-number and infinities have texts of their own, which do not read back.
  [[nodiscard]] NSString stringFromNumber(const NSNumber& number) const;
  /// Absent where the text is not a number, has a fraction and floats are not allowed, or is beyond minimum() or
  /// maximum(). A Decimal where generatesDecimalNumbers() is on; otherwise an integer, or a double where there is a
  /// fraction or a 64-bit integer does not suffice.
  [[nodiscard]] std::optional<NSNumber> numberFromString(const NSString& text) const;

  /// Numbers only; an absent or null value gives the empty text, any other none.
  [[nodiscard]] std::optional<NSString> stringForObjectValue(const Value& value) const override;
  /// The text with the given attributes all over.
  [[nodiscard]] Ref<NSAttributedString> attributedStringForObjectValue_withDefaultAttributes(
      const Value& value, const Ref<NSDictionary>& attributes) const override;
  /// The empty text reads as an absent value.
  [[nodiscard]] bool getObjectValue_forString_errorDescription(Value& value, const NSString& text,
                                                               NSString* error = nullptr) const override;

  [[nodiscard]] NSNumberFormatterStyle numberStyle() const noexcept;
  void setNumberStyle(NSNumberFormatterStyle style);
  [[nodiscard]] Ref<NSLocale> locale() const noexcept;
  /// What was set since the style or the pattern stays. An empty Ref is the user's current locale.
  void setLocale(const Ref<NSLocale>& locale);
  /// The pattern in force.
  [[nodiscard]] NSString format() const;
  /// A malformed pattern raises NSInvalidArgumentException and changes nothing.
  void setFormat(const NSString& pattern);
  /// Kept and given back; this formatter behaves as 10.4 whatever it is.
  [[nodiscard]] NSNumberFormatterBehavior formatterBehavior() const noexcept;
  void setFormatterBehavior(NSNumberFormatterBehavior behavior) noexcept;

  [[nodiscard]] int minimumIntegerDigits() const;
  void setMinimumIntegerDigits(int digits);
  [[nodiscard]] int maximumIntegerDigits() const;
  /// A number with more keeps its last ones: 1234 with a maximum of 2 shows as "34".
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
  /// Bounds for reading, absent for none.
  [[nodiscard]] const std::optional<NSNumber>& maximum() const noexcept;
  virtual void setMaximum(std::optional<NSNumber> maximum);
  [[nodiscard]] const std::optional<NSNumber>& minimum() const noexcept;
  virtual void setMinimum(std::optional<NSNumber> minimum);

  /// All settings. What was damaged raises NSInvalidUnarchiveOperationException.
  void encodeWithCoder(NSCoder& coder) const override;
  bool initWithCoder(NSCoder& coder) override;

 protected:
  /// Whether a number is read as a Decimal wherever a double has other digits. Off at first; not in archives.
  void setKeepsEveryDigit(bool keeps) noexcept;

 private:
  struct Engine;
  detail::Hidden<Engine> engine_;
};

}  // namespace norvik
