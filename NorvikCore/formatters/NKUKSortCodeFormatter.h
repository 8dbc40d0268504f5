// NorvikCore/formatters/NKUKSortCodeFormatter.h - the formatter of a text field that holds the sort code of a British
// bank.
//
//   auto formatter = make<NKUKSortCodeFormatter>();
//   formatter->stringForObjectValue("123456");      // "12-34-56"
//   formatter->stringForObjectValue("12 34 5");     // "12 34 5": not six digits, so it is unchanged
//
// A text with exactly six of the digits 0 to 9, whatever other characters it has, is shown and stored as three pairs.
// Any other text stays as it was typed: letters are never refused, neither during typing nor on commit. Digits of other
// scripts do not count. Threads: confined to the thread of its field.
#pragma once

#include "NorvikCore/formatters/NKPlainTextFormatter.h"

namespace norvik {

class NK_EXPORT NKUKSortCodeFormatter : public NKPlainTextFormatter {
  NK_OBJECT(NKUKSortCodeFormatter, NKPlainTextFormatter)
  NK_CODING
  ~NKUKSortCodeFormatter() override;

  /// Sets maxLength() to 8: six digits and two hyphens.
  void setup();

  /// The sort code in pairs, or the unchanged text. Absent unless the value is a text.
  [[nodiscard]] Value transformedValue(const Value& value) const;

  /// transformedValue(). The case of letters is unchanged, even if upperCase() or lowerCase() is set.
  [[nodiscard]] std::optional<NSString> stringForObjectValue(const Value& value) const override;
  [[nodiscard]] bool getObjectValue_forString_errorDescription(Value& value, const NSString& text,
                                                               NSString* error = nullptr) const override;
  /// The same as the superclass.
  [[nodiscard]] bool isPartialStringValid(NSString& proposed, NSRange& selection, const NSString& original,
                                          NSRange originalSelection, NSString* error = nullptr) const override;
  bool initWithCoder(NSCoder& coder) override;

 protected:
  bool init() override;
};

}  // namespace norvik
