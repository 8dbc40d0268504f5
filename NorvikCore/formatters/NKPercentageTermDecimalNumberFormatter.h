// NorvikCore/formatters/NKPercentageTermDecimalNumberFormatter.h - the formatter of rate fields: "12.5".
//
//   NKPercentageTermDecimalNumberFormatter::defineMaxDecimalTerm(100, 0);      // once, before fields are made
//   auto formatter = make<NKPercentageTermDecimalNumberFormatter>();
//   formatter->stringFromNumber(12.125_dec);        // "12.125" in a British locale
//
// One to four fraction digits, grouped in threes; what is read is a Decimal. The bounds are the class's at the time
// when a formatter is made; defining others later changes no formatter that exists.
#pragma once

#include "NorvikCore/formatters/NKDecimalFormatter.h"

namespace norvik {

class NK_EXPORT NKPercentageTermDecimalNumberFormatter : public NKDecimalFormatter {
  NK_OBJECT(NKPercentageTermDecimalNumberFormatter, NKDecimalFormatter)
  NK_CODING
  ~NKPercentageTermDecimalNumberFormatter() override;

  /// The bounds of all formatters made from now on; absent is none. Any thread.
  static void defineMaxDecimalTerm(std::optional<Decimal> maximum, std::optional<Decimal> minDecimalTerm);

  void setup() override;
};

}  // namespace norvik
