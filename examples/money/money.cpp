// examples/money/money.cpp - the code of docs/money.md.
#include "NorvikCore/platform/foundation/NSLocale.h"
#include "NorvikCore/platform/foundation/NSNumberFormatter.h"
#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/DecimalSum.h"
#include "NorvikCore/platform/values/Decimal_fmt.h"
#include "NorvikCore/platform/values/Format.h"

#include <iostream>

using namespace norvik;

int main() {
  const Decimal gross = 2500.00_dec, rate = 0.0765_dec;
  const Decimal contribution = (gross * rate).round(2);
  std::cout << contribution << " of " << gross << "\n";

  // Twelve equal parts that sum to the whole: the last one takes what is left.
  const Decimal part = (gross / 12).round(2, NSRoundDown);
  std::cout << part << " eleven times, then " << gross - 11 * part << "\n";

  // Constants are computed by the compiler.
  constexpr Decimal basicRate = 0.20_dec, higherRate = basicRate * 2;
  static_assert(higherRate == 0.4_dec && basicRate < higherRate);

  // In a format of the library (DDLogInfo and NSLog take the same), and in one of {fmt}.
  std::cout << stringWithFormat("%10.2f|%@", gross / 12, gross) << "\n";
  std::cout << fmt::format("{:>14,.2f}|", 1234567.5_dec) << "\n";

  DecimalSum sum;
  for (const Decimal& amount : {12.50_dec, 0.005_dec, -3_dec}) sum += amount;
  std::cout << sum.value() << "\n";

  auto formatter = make<NSNumberFormatter>();
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  formatter->setGeneratesDecimalNumbers(true);
  formatter->setFormat("\u00A4#,##0.00");
  std::cout << formatter->stringFromNumber(1234567.5_dec) << "\n";
  if (const auto typed = formatter->numberFromString("\u00A31,234.50")) std::cout << typed->decimalValue() << "\n";
  if (!Decimal::parse("12.5O")) std::cout << "12.5O is no number\n";
}
