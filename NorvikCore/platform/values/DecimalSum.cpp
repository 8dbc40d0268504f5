#include "NorvikCore/platform/values/DecimalSum.h"

#include "NorvikCore/platform/values/internal/DecimalWide.h"

namespace norvik {

void DecimalSum::addWide(const Decimal& number) {
  if (number.high_ == 0 && exponent_ != noExponent) {
    const int shift = number.exponent_ - exponent_;
    if (shift > 0 && shift <= Decimal::smallShift) {
      const detail::Int128 sum = total_ + Decimal::aligned(number, shift);
      if (fits(sum)) {
        total_ = sum;
        return;
      }
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
