#include "NorvikCore/platform/values/DecimalSum.h"

#include "NorvikCore/platform/values/internal/DecimalAlignment.h"

namespace norvik {

Decimal DecimalSum::valueOf(detail::Int128 total, Decimal wide, int exponent) noexcept {
  return exponent == noExponent ? wide : detail::fromSigned(total, exponent);
}

DecimalSum DecimalSum::sumOf(detail::Int128 total, Decimal wide, int exponent, const Decimal& number) {
  DecimalSum sum;
  sum.total_ = total;
  sum.wide_ = wide;
  sum.exponent_ = exponent;
  sum.addWide(number);
  return sum;
}

void DecimalSum::addWide(const Decimal& number) {
  const int shift = number.exponent() - exponent_;
  if (number.high_ == 0 && exponent_ != noExponent && shift >= 0 && shift <= detail::longestAlignment) {
    const detail::Int128 sum = total_ + detail::alignedMantissa(number, shift);
    if (fits(sum)) {
      total_ = sum;
      return;
    }
  }
  const Decimal sum = value() + number;
  const auto magnitude = static_cast<detail::Int128>(detail::DecimalAccess::mantissa(sum));
  if (!sum.isNaN() && fits(magnitude)) {
    total_ = sum.isNegative() ? -magnitude : magnitude;
    exponent_ = sum.exponent();
  } else {
    wide_ = sum;
    exponent_ = noExponent;
  }
}

}  // namespace norvik
