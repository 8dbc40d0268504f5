// NorvikCore/formatters/NKMonetaryTermDecimalNumberFormatter.h - the formatter of money fields: "1,234.50".
//
//   NKMonetaryTermDecimalNumberFormatter::defineMaxDecimalTerm(999999, 0);     // once, before fields are made
//   auto formatter = make<NKMonetaryTermDecimalNumberFormatter>();
//   NKMonetaryTermDecimalNumberFormatter::nk_stringFromNumber(1234.5_dec);     // "1,234.50"
//
// Two to four fraction digits, grouped in threes; what is read is a Decimal. The bounds are the class's at the time
// when a formatter is made; defining others later changes no formatter that exists.
#pragma once

#include "NorvikCore/formatters/NKDecimalFormatter.h"

namespace norvik {

class NK_EXPORT NKMonetaryTermDecimalNumberFormatter : public NKDecimalFormatter {
  NK_OBJECT(NKMonetaryTermDecimalNumberFormatter, NKDecimalFormatter)
  NK_CODING
  ~NKMonetaryTermDecimalNumberFormatter() override;

  /// The bounds of all formatters made from now on; absent is none. Any thread.
  static void defineMaxDecimalTerm(std::optional<Decimal> maximum, std::optional<Decimal> minDecimalTerm);

  /// The number as a money amount in the library's default locale, whatever the user's. Any thread: the main thread
  /// keeps one formatter, with the bounds of its first call, and uses it again; elsewhere each call makes one, some
  /// tens of microseconds. Where a maximum is defined, a number with more integer digits than its text has characters
  /// loses the first ones: define bounds that hold for totals too.
  [[nodiscard]] static NSString nk_stringFromNumber(const NSNumber& number);

  void setup() override;
};

}  // namespace norvik
