// NorvikCore/platform/values/internal/DecimalAlignment.h - aligns numbers of 64 bits to one exponent, in 128 bits.
#pragma once

#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/internal/DecimalDivisor.h"

namespace norvik::detail {

inline constexpr int longestAlignment = 18;  // 2^64 * 10^18 + 2^64 is below 10^38, and below 2^126

/// True if both numbers have 64 bits and 128 bits can hold their sum in units of the smaller exponent.
inline bool alignable(const Decimal& a, const Decimal& b) noexcept {
  const int shift = a.exponent() - b.exponent();
  return (high64(DecimalAccess::mantissa(a)) | high64(DecimalAccess::mantissa(b))) == 0 &&
         static_cast<unsigned>(shift + longestAlignment) <= 2u * longestAlignment;
}

inline Int128 withSign(UInt128 magnitude, bool negative) noexcept {
  const UInt128 mask = 0 - static_cast<UInt128>(negative);
  return static_cast<Int128>((magnitude ^ mask) - mask);
}

/// The signed mantissa of a number of 64 bits, in units `shift` powers of ten below its own; a negative shift counts as
/// 0.
inline Int128 alignedMantissa(const Decimal& d, int shift) noexcept {
  return withSign(wideProduct(DecimalAccess::lowMantissa(d), powerOfTen64(shift > 0 ? shift : 0)), d.isNegative());
}

inline Decimal fromSigned(Int128 mantissa, int exponent) noexcept {
  const bool negative = mantissa < 0;
  return DecimalAccess::make(static_cast<UInt128>(withSign(static_cast<UInt128>(mantissa), negative)), exponent,
                             negative);
}

/// The sum of two alignable numbers, computed in 64 bits if they suffice.
inline Decimal addAlignable(const Decimal& a, const Decimal& b) noexcept {
  const int shift = a.exponent() - b.exponent();
  const Decimal& upper = shift > 0 ? a : b;
  const Decimal& lower = shift > 0 ? b : a;
  const UInt128 x = wideProduct(DecimalAccess::lowMantissa(upper), powerOfTen64(shift > 0 ? shift : -shift));
  const std::uint64_t y = DecimalAccess::lowMantissa(lower);
  if ((high64(x) | (low64(x) | y) >> 62) == 0) [[likely]] {
    const auto signX = -static_cast<std::int64_t>(upper.isNegative()),
               signY = -static_cast<std::int64_t>(lower.isNegative());
    const std::int64_t sum =
        ((static_cast<std::int64_t>(low64(x)) ^ signX) - signX) + ((static_cast<std::int64_t>(y) ^ signY) - signY);
    const std::int64_t sign = sum >> 63;
    return DecimalAccess::make(static_cast<std::uint64_t>((sum ^ sign) - sign), lower.exponent(), sign != 0);
  }
  return fromSigned(withSign(x, upper.isNegative()) + withSign(y, lower.isNegative()), lower.exponent());
}

}  // namespace norvik::detail
