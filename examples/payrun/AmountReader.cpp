#include "AmountReader.h"

#include "NorvikCore/Categories/NSDecimalNumber+Norvik.h"
#include "NorvikCore/Categories/NSLocale+Norvik.h"

namespace payrun {

using namespace norvik;

AmountReader::AmountReader() : formatter_(make<NKMonetaryTermDecimalNumberFormatter>()) {
  formatter_->setLocale(nk_defaultLocale());
  const Decimal largest = 999'999'999.99_dec;
  formatter_->setMaximum(NSNumber(largest));
  formatter_->setMinimum(NSNumber(-largest));
}

std::optional<Decimal> AmountReader::read(std::string_view text) const {
  const std::optional<NSNumber> number = formatter_->numberFromString(text);
  if (!number) return std::nullopt;
  return number->decimalValue().decimalNumberByRoundingAccordingToBehavior(nk_scaleBehavior(2));
}

}  // namespace payrun
