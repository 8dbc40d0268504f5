// NorvikCore/formatters/NKMonetaryTermDecimalNumberFormatter.h - the formatter of money fields: "1,234.50".
//
//   NKMonetaryTermDecimalNumberFormatter::defineMaxDecimalTerm(999999, 0);     // once, before fields are made
//   auto formatter = make<NKMonetaryTermDecimalNumberFormatter>();
//   NKMonetaryTermDecimalNumberFormatter::nk_stringFromNumber(1234.5_dec);     // "1,234.50"
//
// Two to four fraction digits, grouped in threes; the value read is a Decimal. A formatter takes the class's bounds
// when it is created; defining other bounds later does not change existing formatters.
#pragma once

#include "NorvikCore/formatters/NKDecimalFormatter.h"

namespace norvik {

class NK_EXPORT NKMonetaryTermDecimalNumberFormatter : public NKDecimalFormatter {
  NK_OBJECT(NKMonetaryTermDecimalNumberFormatter, NKDecimalFormatter)
  NK_CODING
  ~NKMonetaryTermDecimalNumberFormatter() override;

  /// Sets the bounds of all formatters created from now on; absent means no bound. Any thread.
  static void defineMaxDecimalTerm(std::optional<Decimal> maximum, std::optional<Decimal> minDecimalTerm);

  /// The number as a money amount in the library's default locale, whatever the user's locale. Any thread. The main
  /// thread keeps one formatter, with the bounds of its first call, and reuses it. Other threads use the bounds that
  /// are defined at the time of the call; each keeps a formatter until other bounds are defined or the thread ends, and
  /// its first call takes some tens of microseconds. If a maximum is defined, a number with more integer digits than
  /// the maximum's text has characters loses its first digits (9999 shows four, 9999.99 seven), which the console
  /// reports once for each formatter. Define a maximum that is above every amount that is shown, also totals.
  [[nodiscard]] static NSString nk_stringFromNumber(const NSNumber& number);

  void setup() override;
};

}  // namespace norvik
