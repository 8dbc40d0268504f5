#include "NorvikCore/platform/values/DecimalSum.h"

#include "NorvikCore/platform/values/internal/DecimalAlignment.h"

namespace norvik {

Decimal DecimalSum::value() const noexcept {
  return exponent_ == noExponent ? wide_ : detail::fromSigned(total_, exponent_);
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
