// Arithmetic on decimal numbers beyond what the header does in 64 bits.

#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/internal/DecimalPower.h"
#include "NorvikCore/platform/values/internal/DecimalRounding.h"
#include "NorvikCore/platform/values/internal/DecimalWide.h"

#include <algorithm>

namespace norvik {
namespace {

using detail::DecimalAccess;
using detail::powerOfTen;
using detail::Tail;
using detail::UInt128;
using detail::UInt256;

constexpr int wideDigits = 76;  // what an aligned sum may need before it is rounded

const NSDecimalNumberHandler& plain() { return NSDecimalNumberHandler::defaultDecimalNumberHandler(); }

/// mantissa * 10^shift, of 76 digits at most.
UInt256 scaled(UInt128 mantissa, int shift) noexcept {
  const int first = std::max(0, shift - 38);
  return detail::multiply(mantissa * powerOfTen(first), powerOfTen(shift - first));
}

/// a - b or a + b by sign; the sign of the result in `negative`.
template <class Wide>
Wide combine(const Wide& a, bool aNegative, const Wide& b, bool bNegative, bool& negative) noexcept {
  negative = aNegative;
  if (aNegative == bNegative) return a + b;
  if (a >= b) return a - b;
  negative = bNegative;
  return b - a;
}

Decimal add(const Decimal& a, const Decimal& b, const NSDecimalNumberHandler& behavior) {
  if (a.isNaN() || b.isNaN()) return Decimal::notANumber();
  const Decimal& upper = a.exponent() >= b.exponent() ? a : b;
  const Decimal& lower = a.exponent() >= b.exponent() ? b : a;
  const UInt128 x = DecimalAccess::mantissa(upper), y = DecimalAccess::mantissa(lower);
  if (x == 0) return detail::settle(y, Tail::none, lower.exponent(), lower.isNegative(), behavior);

  const int shift = upper.exponent() - lower.exponent(), digits = detail::digitCount(x);
  bool negative = false;
  if (digits + shift <= Decimal::maximumDigits) {
    const UInt128 sum = combine(x * powerOfTen(shift), upper.isNegative(), y, lower.isNegative(), negative);
    return detail::settle(sum, Tail::none, lower.exponent(), negative, behavior);
  }
  if (digits + shift <= wideDigits) {
    const UInt256 sum = combine(scaled(x, shift), upper.isNegative(), UInt256(y), lower.isNegative(), negative);
    return detail::settle(sum, Tail::none, lower.exponent(), negative, behavior);
  }
  // The lower number reaches below the 76 digits that are computed. What is cut of it only decides between below, at
  // and above a half, 37 digits further up: that it is not zero is all that counts.
  const int room = wideDigits - digits, below = shift - room;
  UInt128 cut = y;
  const UInt128 kept = below > 38 ? 0 : detail::divide(y, powerOfTen(below), cut);
  UInt256 sum = combine(scaled(x, room), upper.isNegative(), UInt256(kept), lower.isNegative(), negative);
  if (cut != 0 && upper.isNegative() != lower.isNegative()) sum = sum - UInt256(1);
  return detail::settle(sum, cut != 0 ? Tail::belowHalf : Tail::none, upper.exponent() - room, negative, behavior);
}

Decimal multiply(const Decimal& a, const Decimal& b, const NSDecimalNumberHandler& behavior) {
  if (a.isNaN() || b.isNaN()) return Decimal::notANumber();
  return detail::settle(detail::multiply(DecimalAccess::mantissa(a), DecimalAccess::mantissa(b)), Tail::none,
                        a.exponent() + b.exponent(), a.isNegative() != b.isNegative(), behavior);
}

/// A quotient: the digits asked for, or all of an exact one.
struct Quotient {
  UInt128 mantissa;
  Tail tail;
  int digitsAdded;  // the mantissa is the operands' quotient times 10 to this power
};

/// Takes up to `limit` trailing zeros off.
void strip(UInt128& mantissa, int& limit) noexcept {
  for (int step = 16; step > 0; step /= 2) {
    while (step <= limit) {
      UInt128 remainder;
      const UInt128 shorter = detail::divide(mantissa, powerOfTen(step), remainder);
      if (remainder != 0) break;
      mantissa = shorter;
      limit -= step;
    }
  }
}

/// Both operands below 2^64: the whole part, then up to 19 digits by each machine division, ending at remainder 0.
Quotient divideSmall(std::uint64_t a, std::uint64_t b) noexcept {
  std::uint64_t remainder = a % b;
  std::uint64_t first = a / b;
  if (remainder == 0) return {first, Tail::none, 0};
  int added = 0;
  if (first == 0) {
    added = std::max(0, detail::digitCount(b) - detail::digitCount(a));
    UInt128 aligned = a * static_cast<UInt128>(detail::powersOfTen64[added]);
    if (aligned < b) {
      aligned *= 10;
      ++added;
    }
    first = detail::divide128by64(detail::high64(aligned), detail::low64(aligned), b, remainder);
  }
  UInt128 mantissa = first;
  int missing = Decimal::maximumDigits - detail::digitCount(first);
  while (remainder != 0 && missing > 0) {
    const int step = std::min(missing, 19);
    const UInt128 dividend = static_cast<UInt128>(remainder) * detail::powersOfTen64[step];
    const std::uint64_t digits = detail::divide128by64(detail::high64(dividend), detail::low64(dividend), b, remainder);
    mantissa = mantissa * detail::powersOfTen64[step] + digits;
    added += step;
    missing -= step;
  }
  if (remainder == 0) strip(mantissa, added);
  return {mantissa, detail::tailOf(remainder, b, Tail::none), added};
}

/// 38 digits by one division of 256 by 128 bits.
Quotient divideWide(UInt128 a, UInt128 b) noexcept {
  const int digitsA = detail::digitCount(a), digitsB = detail::digitCount(b);
  const bool less = digitsA >= digitsB ? a < b * powerOfTen(digitsA - digitsB) : a * powerOfTen(digitsB - digitsA) < b;
  int added = Decimal::maximumDigits - 1 + digitsB - digitsA + (less ? 1 : 0);
  const int first = std::min(added, Decimal::maximumDigits - digitsA);
  UInt128 remainder;
  UInt128 mantissa =
      detail::divide(detail::multiply(a * powerOfTen(first), powerOfTen(added - first)), b, remainder).low();
  if (remainder == 0) strip(mantissa, added);
  return {mantissa, detail::tailOf(remainder, b, Tail::none), added};
}

Decimal divideBy(const Decimal& a, const Decimal& b, const NSDecimalNumberHandler& behavior) {
  if (a.isNaN() || b.isNaN()) return Decimal::notANumber();
  if (b.isZero()) return detail::dividedByZero(behavior);
  const UInt128 x = DecimalAccess::mantissa(a), y = DecimalAccess::mantissa(b);
  const int exponent = a.exponent() - b.exponent();
  if (x == 0) return detail::settle(x, Tail::none, exponent, false, behavior);
  const bool small = (detail::high64(x) | detail::high64(y)) == 0;
  const Quotient quotient = small ? divideSmall(detail::low64(x), detail::low64(y)) : divideWide(x, y);
  return detail::settle(quotient.mantissa, quotient.tail, exponent - quotient.digitsAdded,
                        a.isNegative() != b.isNegative(), behavior);
}

}  // namespace

Decimal Decimal::addWide(const Decimal& a, const Decimal& b) { return add(a, b, plain()); }
Decimal Decimal::multiplyWide(const Decimal& a, const Decimal& b) { return multiply(a, b, plain()); }
Decimal Decimal::divide(const Decimal& a, const Decimal& b) { return divideBy(a, b, plain()); }

Decimal Decimal::decimalNumberByAdding(const Decimal& other, const NSDecimalNumberHandler& behavior) const {
  Decimal sum;
  if (addSmall(*this, other, sum)) return sum.decimalNumberByRoundingAccordingToBehavior(behavior);
  return add(*this, other, behavior);
}

Decimal Decimal::decimalNumberBySubtracting(const Decimal& other, const NSDecimalNumberHandler& behavior) const {
  return decimalNumberByAdding(-other, behavior);
}

Decimal Decimal::decimalNumberByMultiplyingBy(const Decimal& other, const NSDecimalNumberHandler& behavior) const {
  Decimal product;
  if (multiplySmall(*this, other, product)) return product.decimalNumberByRoundingAccordingToBehavior(behavior);
  return multiply(*this, other, behavior);
}

Decimal Decimal::decimalNumberByDividingBy(const Decimal& other, const NSDecimalNumberHandler& behavior) const {
  return divideBy(*this, other, behavior);
}

Decimal Decimal::decimalNumberByMultiplyingByPowerOf10(std::int16_t power,
                                                       const NSDecimalNumberHandler& behavior) const {
  if (isNaN()) return *this;
  return detail::settle(DecimalAccess::mantissa(*this), Tail::none, exponent_ + power, negative_, behavior);
}

Decimal Decimal::decimalNumberByRaisingToPower(std::uint64_t power, const NSDecimalNumberHandler& behavior) const {
  if (isNaN()) return *this;
  if (power == 0) return one().decimalNumberByRoundingAccordingToBehavior(behavior);
  const detail::Power result = detail::raiseToPower(DecimalAccess::mantissa(*this), exponent_, power);
  return detail::settle(result.mantissa, result.exact ? Tail::none : Tail::belowHalf, result.exponent,
                        negative_ && power % 2 != 0, behavior);
}

Decimal Decimal::decimalNumberByRoundingAccordingToBehavior(const NSDecimalNumberHandler& behavior) const {
  const int scale = behavior.scale();
  const int drop = -scale - exponent_;
  if (scale == NSDecimalNoScale || drop <= 0 || isNaN()) return *this;
  if (high_ == 0 && drop <= 19 && -scale <= maximumExponent) [[likely]] {
    const std::uint64_t divisor = detail::powersOfTen64[drop];
    std::uint64_t kept = low_ / divisor;
    const std::uint64_t remainder = low_ % divisor;
    const Tail tail = remainder > divisor - remainder    ? Tail::aboveHalf
                      : remainder == divisor - remainder ? Tail::half
                      : remainder == 0                   ? Tail::none
                                                         : Tail::belowHalf;
    kept += detail::roundsAway(behavior.roundingMode(), tail, negative_, (kept & 1) != 0) ? 1u : 0u;
    return Decimal(0, kept, -scale, negative_ && kept != 0);
  }
  return detail::settle(DecimalAccess::mantissa(*this), Tail::none, exponent_, negative_, behavior);
}

}  // namespace norvik
