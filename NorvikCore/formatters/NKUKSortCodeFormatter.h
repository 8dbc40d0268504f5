// NorvikCore/formatters/NKUKSortCodeFormatter.h - the formatter of a text field that holds the sort code of a British
// bank.
//
//   auto formatter = make<NKUKSortCodeFormatter>();
//   formatter->stringForObjectValue("123456");      // "12-34-56"
//   formatter->stringForObjectValue("12 34 5");     // "12 34 5": not six digits, so it stays
//
// What has exactly six of the digits 0 to 9, whatever else there is between them, is shown and stored as three pairs.
// Anything else stays as it was typed: letters are not refused, neither while typing nor at the end. Digits of other
// scripts are no digits. Threads: confined to the thread of its field.
#pragma once

#include "NorvikCore/formatters/NKPlainTextFormatter.h"

namespace norvik {

class NK_EXPORT NKUKSortCodeFormatter : public NKPlainTextFormatter {
  NK_OBJECT(NKUKSortCodeFormatter, NKPlainTextFormatter)
  NK_CODING
  ~NKUKSortCodeFormatter() override;

  /// Sets the greatest length to 8: six digits and two hyphens.
  void setup();

  /// The sort code in pairs, or the text as it is. Absent unless the value is a text.
  [[nodiscard]] Value transformedValue(const Value& value) const;

  /// transformedValue(); the case of letters stays, whatever case is set.
  [[nodiscard]] std::optional<NSString> stringForObjectValue(const Value& value) const override;
  [[nodiscard]] bool getObjectValue_forString_errorDescription(Value& value, const NSString& text,
                                                               NSString* error = nullptr) const override;
  /// The superclass's check, and nothing of its own.
  [[nodiscard]] bool isPartialStringValid(NSString& proposed, NSRange& selection, const NSString& original,
                                          NSRange originalSelection, NSString* error = nullptr) const override;
  bool initWithCoder(NSCoder& coder) override;

 protected:
  bool init() override;
};

}  // namespace norvik
