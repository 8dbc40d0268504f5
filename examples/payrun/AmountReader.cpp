#include "AmountReader.h"

#include <string>

#include "NorvikCore/Categories/NSDecimalNumber+Norvik.h"
#include "NorvikCore/Categories/NSLocale+Norvik.h"

namespace payrun {

using namespace norvik;

AmountReader::AmountReader() : formatter_(make<NKMonetaryTermDecimalNumberFormatter>()) {
  formatter_->setLocale(nk_defaultLocale());
}

namespace {

bool isTooLarge(const NSNumber& number) {
  constexpr auto largest = 999'999'999.99_dec;
  const Decimal amount = number.decimalValue();
  return amount > largest || amount < -largest;
}

/// Removes the digits of each run of digits that exceed the number of digits of a Decimal.
std::string withShortNumbers(std::string_view text) {
  std::string result;
  int digits = 0;
  for (const char c : text) {
    digits = '0' <= c && c <= '9' ? digits + 1 : 0;
    if (digits <= Decimal::maximumDigits) result += c;
  }
  return result;
}

}  // namespace

std::optional<Decimal> AmountReader::read(std::string_view text, Problem& problem) const {
  std::optional<NSNumber> number = formatter_->numberFromString(text);
  if (number && !isTooLarge(*number)) {
    return number->decimalValue().decimalNumberByRoundingAccordingToBehavior(nk_scaleBehavior(2));
  }
  if (!number) number = formatter_->numberFromString(withShortNumbers(text));
  problem = number && isTooLarge(*number) ? Problem::TooLarge : Problem::NoAmount;
  return std::nullopt;
}

}  // namespace payrun
