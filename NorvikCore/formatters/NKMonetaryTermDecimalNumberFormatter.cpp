#include "NorvikCore/formatters/NKMonetaryTermDecimalNumberFormatter.h"

#include "NorvikCore/formatters/internal/DecimalTerms.h"
#include "NorvikCore/formatters/internal/PayrollCalendars.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Thread.h"

namespace norvik {
namespace {

detail::DecimalTerms& moneyTerms() {
  return kernel::madeOnce([] { return new detail::DecimalTerms; });
}

Ref<NKMonetaryTermDecimalNumberFormatter> formatterInDefaultLocale() {
  auto formatter = make<NKMonetaryTermDecimalNumberFormatter>();
  formatter->setLocale(detail::defaultLocale());
  return formatter;
}

}  // namespace

NKMonetaryTermDecimalNumberFormatter::~NKMonetaryTermDecimalNumberFormatter() = default;

void NKMonetaryTermDecimalNumberFormatter::defineMaxDecimalTerm(std::optional<Decimal> maximum,
                                                                std::optional<Decimal> minDecimalTerm) {
  moneyTerms().define(maximum, minDecimalTerm);
}

void NKMonetaryTermDecimalNumberFormatter::setup() {
  Super::setup();
  moneyTerms().applyTo(*this, "#,##0.00##");
}

NSString NKMonetaryTermDecimalNumberFormatter::nk_stringFromNumber(const NSNumber& number) {
  if (!kernel::isMainThread()) return formatterInDefaultLocale()->stringFromNumber(number);
  const auto& kept =
      kernel::madeOnce([] { return new Ref<NKMonetaryTermDecimalNumberFormatter>(formatterInDefaultLocale()); });
  return kept->stringFromNumber(number);
}

}  // namespace norvik
