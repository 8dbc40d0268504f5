// NorvikCore/formatters/NKPercentageTermDecimalNumberFormatter.h - the formatter of rate fields: "12.5".
//
//   NKPercentageTermDecimalNumberFormatter::defineMaxDecimalTerm(100, 0);      // once, before fields are made
//   auto formatter = make<NKPercentageTermDecimalNumberFormatter>();
//   formatter->stringFromNumber(12.125_dec);        // "12.125" in a British locale
//
// One to four fraction digits, grouped in threes; the value read is a Decimal. A formatter takes the class's bounds
// when it is created; defining other bounds later does not change existing formatters.
#pragma once

#include "NorvikCore/formatters/NKDecimalFormatter.h"

namespace norvik {

class NK_EXPORT NKPercentageTermDecimalNumberFormatter : public NKDecimalFormatter {
  NK_OBJECT(NKPercentageTermDecimalNumberFormatter, NKDecimalFormatter)
  NK_CODING
  ~NKPercentageTermDecimalNumberFormatter() override;

  /// Sets the bounds of all formatters created from now on; absent means no bound. Any thread.
  static void defineMaxDecimalTerm(std::optional<Decimal> maximum, std::optional<Decimal> minDecimalTerm);

  void setup() override;
};

}  // namespace norvik
