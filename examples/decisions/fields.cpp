// The program of docs/decisions/fields.md.
#include "NorvikCore/Categories/NSDecimalNumber+Norvik.h"
#include "NorvikCore/formatters/NKMonetaryTermDecimalNumberFormatter.h"
#include "NorvikCore/platform/foundation/NSLocale.h"

#include <iostream>

using namespace norvik;

int main() {
  NKMonetaryTermDecimalNumberFormatter::defineMaxDecimalTerm(9999_dec, 0);  // the most that a field of pay accepts
  const auto field = make<NKMonetaryTermDecimalNumberFormatter>();
  field->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));  // else that of the user
  std::cout << field->numberFromString("14,00")->decimalValue() << "\n";
  field->setLenient(false);
  std::cout << (field->numberFromString("14,00") ? "read" : "refused") << std::endl;

  // The maximum limits the digits that are shown, here and in nk_currencyStyleString().
  const Decimal total = 1234567.8925_dec;
  std::cout << nk_currencyStyleString(total) << "\n";
  const auto totals = make<NKMonetaryTermDecimalNumberFormatter>();
  totals->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  totals->setMaximum(1000000000000_dec);  // greater than every total
  std::cout << totals->stringFromNumber(total) << "\n";
  std::cout << totals->stringFromNumber(total.round(2)) << "\n";
}
