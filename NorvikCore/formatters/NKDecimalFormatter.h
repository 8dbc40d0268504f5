// NorvikCore/formatters/NKDecimalFormatter.h - the formatter of a text field that holds an amount or a rate.
//
//   auto formatter = make<NKDecimalFormatter>();
//   formatter->setMaximum(1000);                  // four integer digits, nine characters at most
//   formatter->stringFromNumber(1234.5_dec);      // "1,234.50" in a British locale
//
// While the user types only the length is limited: an edit that would exceed maxLength() is cut to what still fits.
// Characters, sign and bounds are judged when the field commits, by lenient reading. What is read is an integer or a
// double, and a Decimal wherever a double has other digits ("12345678901234567.89").
//
// Threads: confined to the thread of its field.
#pragma once

#include "NorvikCore/platform/foundation/NSNumberFormatter.h"

#include <cstdint>

namespace norvik {

class NK_EXPORT NKDecimalFormatter : public NSNumberFormatter {
  NK_OBJECT(NKDecimalFormatter, NSNumberFormatter)
  NK_CODING
  /// The greatest number of UTF-16 units the field may hold; 0 or less, as at first, is no limit.
  NK_PROPERTY(std::int64_t, maxLength, setMaxLength)

  NKDecimalFormatter();
  ~NKDecimalFormatter() override;

  /// Configures a new formatter: 10.4 behaviour, decimal style, floats, one integer digit at least, exactly two
  /// fraction digits, grouping, lenient reading. A subclass calls its superclass's setup() first. Locale and rounding
  /// stay the platform's: the user's locale, half to even.
  virtual void setup();

  /// Sets the upper bound. With L the length of the bound's plain text, sign and point included, L becomes the greatest
  /// number of integer digits and L + L / 3 + 4 the maxLength(); without a bound both stay as they are.
  void setMaximum(std::optional<NSNumber> maximum) override;

  /// The platform's decoding, then setup(): what setup() sets is the class's, whatever was encoded.
  bool initWithCoder(NSCoder& coder) override;

  /// The platform's rendering with the formatter's nk_additionalAttributes over it.
  [[nodiscard]] Ref<NSAttributedString> attributedStringForObjectValue_withDefaultAttributes(
      const Value& value, const Ref<NSDictionary>& attributes) const override;
  [[nodiscard]] std::optional<NSString> editingStringForObjectValue(const Value& value) const override;

  /// Accepts while maxLength() holds. Otherwise as many of the inserted characters as still fit take the place of the
  /// selection, the caret goes behind them, and the answer is false. Where the text was too long already, none fits.
  [[nodiscard]] bool isPartialStringValid(NSString& proposed, NSRange& selection, const NSString& original,
                                          NSRange originalSelection, NSString* error = nullptr) const override;

 protected:
  bool init() override;
};

}  // namespace norvik
