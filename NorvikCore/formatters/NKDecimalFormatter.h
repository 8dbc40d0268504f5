// NorvikCore/formatters/NKDecimalFormatter.h - the formatter of a text field that holds an amount or a rate.
//
//   auto formatter = make<NKDecimalFormatter>();
//   formatter->setMaximum(1000);                  // four integer digits, nine characters at most
//   formatter->stringFromNumber(1234.5_dec);      // "1,234.50" in a British locale
//
// While the user types, only the length is limited: an edit that would exceed maxLength() is cut to the characters that
// still fit. Characters, sign and bounds are checked by lenient reading when the field commits. The result of reading
// is an integer or a double, or a Decimal if a double cannot hold all digits ("12345678901234567.89").
//
// Threads: confined to the thread of its field.
#pragma once

#include "NorvikCore/platform/foundation/NSNumberFormatter.h"

#include <cstdint>

namespace norvik {

class NK_EXPORT NKDecimalFormatter : public NSNumberFormatter {
  NK_OBJECT(NKDecimalFormatter, NSNumberFormatter)
  NK_CODING
  /// The greatest number of UTF-16 units that the field may hold. 0 or less means no limit; the initial value is 0.
  NK_PROPERTY(std::int64_t, maxLength, setMaxLength)

  NKDecimalFormatter();
  ~NKDecimalFormatter() override;

  /// Configures a new formatter: 10.4 behaviour, decimal style, floats, at least one integer digit, exactly two
  /// fraction digits, grouping, lenient reading. An override calls its superclass's setup() first. Locale and rounding
  /// keep the platform's defaults: the user's locale, half to even.
  virtual void setup();

  /// Sets the upper bound, and limits the field to what the bound needs. If L is the length of the bound's plain text,
  /// including sign and point, the greatest number of integer digits becomes L. maxLength() becomes L + L / 3 + 4,
  /// which leaves room for separators, a sign and two fraction digits: 1000 gives 9. An absent bound leaves both
  /// unchanged. A number with more integer digits is shown without its first ones, which the console reports once.
  void setMaximum(std::optional<NSNumber> maximum) override;

  /// Decodes as the platform does, then calls setup(), which overwrites the encoded values of the settings it makes.
  bool initWithCoder(NSCoder& coder) override;

  /// The platform's rendering, with the formatter's nk_additionalAttributes applied to it.
  [[nodiscard]] Ref<NSAttributedString> attributedStringForObjectValue_withDefaultAttributes(
      const Value& value, const Ref<NSDictionary>& attributes) const override;
  [[nodiscard]] std::optional<NSString> editingStringForObjectValue(const Value& value) const override;

  /// Accepts the edit if the text is within maxLength(). Otherwise the selection is replaced by as many of the inserted
  /// characters as still fit, the caret is placed after them, and the result is false. If the text was already too
  /// long, none fits.
  [[nodiscard]] bool isPartialStringValid(NSString& proposed, NSRange& selection, const NSString& original,
                                          NSRange originalSelection, NSString* error = nullptr) const override;

 protected:
  bool init() override;
};

}  // namespace norvik
