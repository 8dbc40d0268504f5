#include "NorvikCore/formatters/NKPercentageTermDecimalNumberFormatter.h"

#include "NorvikCore/formatters/internal/DecimalTerms.h"

namespace norvik {
namespace {

detail::DecimalTerms& percentageTerms() {
  static auto& terms = *new detail::DecimalTerms;
  return terms;
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
