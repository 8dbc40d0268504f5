#include "NorvikCore/formatters/NKPercentageTermDecimalNumberFormatter.h"

#include "NorvikCore/formatters/internal/DecimalTerms.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"

namespace norvik {
namespace {

detail::DecimalTerms& percentageTerms() {
  return kernel::madeOnce([] { return new detail::DecimalTerms; });
}

}  // namespace

NKPercentageTermDecimalNumberFormatter::~NKPercentageTermDecimalNumberFormatter() = default;

void NKPercentageTermDecimalNumberFormatter::defineMaxDecimalTerm(std::optional<Decimal> maximum,
                                                                  std::optional<Decimal> minDecimalTerm) {
  percentageTerms().define(maximum, minDecimalTerm);
}

void NKPercentageTermDecimalNumberFormatter::setup() {
  Super::setup();
  percentageTerms().applyTo(*this, "#,##0.0###");
}

}  // namespace norvik
