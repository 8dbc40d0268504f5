// Arithmetic on decimal numbers that the header's 64-bit paths do not cover.

#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/internal/DecimalAlignment.h"
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

constexpr int wideDigits = 76;  // the most digits that an aligned sum keeps before rounding

const NSDecimalNumberHandler& plain() { return NSDecimalNumberHandler::defaultDecimalNumberHandler(); }

/// mantissa * 10^shift, of 76 digits at most.
UInt256 scaled(UInt128 mantissa, int shift) noexcept {
  const int first = std::max(0, shift - 38);
  return detail::multiply(mantissa * powerOfTen(first), powerOfTen(shift - first));
}

/// a - b or a + b, depending on the signs; `negative` receives the sign of the result.
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
  // The lower number reaches below the 76 digits that are computed. The part that is cut only decides whether the rest
  // is below, at or above a half, 37 digits further up. So it only matters whether that part is zero.
  const int room = wideDigits - digits, below = shift - room;
  UInt128 cut = y;
  const UInt128 kept = below > 38 ? 0 : detail::divideByPowerOfTen(y, below, cut);
  UInt256 sum = combine(scaled(x, room), upper.isNegative(), UInt256(kept), lower.isNegative(), negative);
  if (cut != 0 && upper.isNegative() != lower.isNegative()) sum = sum - UInt256(1);
  return detail::settle(sum, cut != 0 ? Tail::belowHalf : Tail::none, upper.exponent() - room, negative, behavior);
}

Decimal multiply(const Decimal& a, const Decimal& b, const NSDecimalNumberHandler& behavior) {
  if (a.isNaN() || b.isNaN()) return Decimal::notANumber();
  return detail::settle(detail::multiply(DecimalAccess::mantissa(a), DecimalAccess::mantissa(b)), Tail::none,
                        a.exponent() + b.exponent(), a.isNegative() != b.isNegative(), behavior);
}

/// A quotient: the requested digits, or all digits of an exact quotient.
struct Quotient {
  UInt128 mantissa;
  Tail tail;
  int digitsAdded;  // the mantissa is the operands' quotient times 10 to this power
};

/// Removes up to `limit` trailing zeros; reduces `limit` by the number removed.
[[gnu::noinline]] void strip(UInt128& mantissa, int& limit) noexcept {
  for (int step = 16; step > 0; step /= 2) {
    while (step <= limit) {
      UInt128 remainder;
      const UInt128 shorter = detail::divideByPowerOfTen(mantissa, step, remainder);
      if (remainder != 0) break;
      mantissa = shorter;
      limit -= step;
    }
  }
}

constexpr std::uint64_t firstBeyondSmall = detail::powersOfTen64[19];

/// The result of two division steps of 19 digits each; the second step is taken only if the first leaves a remainder.
struct SmallQuotient {
  UInt128 mantissa;
  int digitsAdded;
  std::uint64_t remainder, divisor;  // both shifted by the same number of bits
};

/// For operands from 1 to below 10^19.
[[gnu::always_inline]] inline SmallQuotient divideSmall(std::uint64_t a, std::uint64_t b) noexcept {
  const detail::Divisor divisor(b);  // takes longest, and does not depend on the next lines
  // After both are scaled to equally many digits, the quotient is between 0.1 and 10; below 1 it needs one more zero.
  const int added = 18 + detail::digitCount(b) - detail::digitCount(a);
  UInt128 dividend = added < 20 ? detail::wideProduct(a, detail::powerOfTen64(added)) : a * detail::powerOfTen(added);
  const bool less = dividend < detail::wideProduct(b, detail::powersOfTen64[18]);
  dividend *= 1 + 9 * static_cast<unsigned>(less);  // a branch would be mispredicted half of the time
  dividend <<= divisor.shift();

  std::uint64_t remainder;
  const std::uint64_t first = divisor.divideShifted(detail::high64(dividend), detail::low64(dividend), remainder);
  if (remainder == 0) [[unlikely]]
    return {first, added + static_cast<int>(less), 0, divisor.normal()};
  const UInt128 next = detail::wideProduct(remainder, firstBeyondSmall);
  const std::uint64_t second = divisor.divideShifted(detail::high64(next), detail::low64(next), remainder);
  return {detail::wideProduct(first, firstBeyondSmall) + second, added + static_cast<int>(less) + 19, remainder,
          divisor.normal()};
}

/// 38 digits, by one division of 256 by 128 bits.
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

Quotient quotientOf(UInt128 a, UInt128 b) noexcept {
  if (a >= firstBeyondSmall || b >= firstBeyondSmall) return divideWide(a, b);
  const SmallQuotient small = divideSmall(detail::low64(a), detail::low64(b));
  Quotient quotient{small.mantissa, detail::tailOf(small.remainder, small.divisor, Tail::none), small.digitsAdded};
  if (small.remainder == 0) strip(quotient.mantissa, quotient.digitsAdded);
  return quotient;
}

Decimal divideBy(const Decimal& a, const Decimal& b, const NSDecimalNumberHandler& behavior) {
  if (a.isNaN() || b.isNaN()) return Decimal::notANumber();
  if (b.isZero()) return detail::dividedByZero(behavior);
  const int exponent = a.exponent() - b.exponent();
  if (a.isZero()) return detail::settle(UInt128{0}, Tail::none, exponent, false, behavior);
  const Quotient quotient = quotientOf(DecimalAccess::mantissa(a), DecimalAccess::mantissa(b));
  return detail::settle(quotient.mantissa, quotient.tail, exponent - quotient.digitsAdded,
                        a.isNegative() != b.isNegative(), behavior);
}

// The rarer paths of division and rounding, not inlined so that the common ones use few registers.

[[gnu::noinline]] Decimal divideBySlowly(const Decimal& a, const Decimal& b) { return divideBy(a, b, plain()); }

[[gnu::noinline]] Decimal settleSmall(const SmallQuotient& quotient, int exponent, bool negative) {
  UInt128 mantissa = quotient.mantissa;
  if (quotient.remainder != 0) {
    return detail::settle(mantissa, detail::tailOf(quotient.remainder, quotient.divisor, Tail::none), exponent,
                          negative, plain());
  }
  const int added = quotient.digitsAdded;
  int left = added;
  strip(mantissa, left);
  return detail::settle(mantissa, Tail::none, exponent + added - left, negative, plain());
}

template <class Word>
Decimal rounded(Word mantissa, int drop, const Decimal& number, const NSDecimalNumberHandler& behavior) noexcept {
  Word remainder;
  Word kept = detail::divideByPowerOfTen(mantissa, drop, remainder);
  const auto divisor = static_cast<Word>(powerOfTen(drop));
  if (behavior.roundingMode() == NSRoundPlain) {
    kept += static_cast<Word>(remainder >= divisor - remainder);
  } else {
    const Tail tail = detail::tailOf(remainder, divisor, Tail::none);
    kept += detail::roundsAway(behavior.roundingMode(), tail, number.isNegative(), (kept & 1) != 0) ? 1u : 0u;
  }
  return DecimalAccess::make(kept, -behavior.scale(), number.isNegative() && kept != 0);
}

[[gnu::noinline]] Decimal roundSlowly(const Decimal& number, const NSDecimalNumberHandler& behavior) {
  const int scale = behavior.scale(), drop = -scale - number.exponent();
  if (scale == NSDecimalNoScale || drop <= 0 || number.isNaN()) return number;
  const UInt128 mantissa = DecimalAccess::mantissa(number);
  if (drop > Decimal::maximumDigits || scale < -Decimal::maximumExponent) {
    return detail::settle(mantissa, Tail::none, number.exponent(), number.isNegative(), behavior);
  }
  if (detail::high64(mantissa) == 0 && drop <= 19) return rounded(detail::low64(mantissa), drop, number, behavior);
  return rounded(mantissa, drop, number, behavior);
}

}  // namespace

Decimal Decimal::addWide(const Decimal& a, const Decimal& b) {
  if (detail::alignable(a, b)) [[likely]]
    return detail::addAlignable(a, b);
  return add(a, b, plain());
}
Decimal Decimal::multiplyWide(const Decimal& a, const Decimal& b) { return multiply(a, b, plain()); }

Decimal Decimal::divide(const Decimal& a, const Decimal& b) {
  const auto isSmall = [](const Decimal& d) { return d.high_ == 0 && d.low_ - 1 < firstBeyondSmall - 1; };
  if (!isSmall(a) || !isSmall(b)) [[unlikely]]
    return divideBySlowly(a, b);
  const SmallQuotient quotient = divideSmall(a.low_, b.low_);
  const int exponent = a.exponent() - b.exponent() - quotient.digitsAdded;
  if (quotient.remainder == 0 || exponent < minimumExponent || exponent > maximumExponent) [[unlikely]]
    return settleSmall(quotient, exponent, a.isNegative() != b.isNegative());
  // An inexact quotient of two numbers of 19 digits differs from the next power of ten by at least 10^-20 of it. So
  // rounding to 38 digits never adds a digit.
  const bool roundsUp = quotient.remainder >= quotient.divisor - quotient.remainder;
  return DecimalAccess::make(quotient.mantissa + (roundsUp ? 1u : 0u), exponent, a.isNegative() != b.isNegative());
}

Decimal Decimal::decimalNumberByAdding(const Decimal& other, const NSDecimalNumberHandler& behavior) const {
  if (detail::alignable(*this, other)) [[likely]]
    return detail::addAlignable(*this, other).decimalNumberByRoundingAccordingToBehavior(behavior);
  return add(*this, other, behavior);
}

Decimal Decimal::decimalNumberBySubtracting(const Decimal& other, const NSDecimalNumberHandler& behavior) const {
  return decimalNumberByAdding(-other, behavior);
}

Decimal Decimal::decimalNumberByMultiplyingBy(const Decimal& other, const NSDecimalNumberHandler& behavior) const {
  return multiply(*this, other, behavior);
}

Decimal Decimal::decimalNumberByDividingBy(const Decimal& other, const NSDecimalNumberHandler& behavior) const {
  return divideBy(*this, other, behavior);
}

Decimal Decimal::decimalNumberByMultiplyingByPowerOf10(std::int16_t power,
                                                       const NSDecimalNumberHandler& behavior) const {
  if (isNaN()) return *this;
  return detail::settle(DecimalAccess::mantissa(*this), Tail::none, exponent() + power, isNegative(), behavior);
}

Decimal Decimal::decimalNumberByRaisingToPower(std::uint64_t power, const NSDecimalNumberHandler& behavior) const {
  if (isNaN()) return *this;
  if (power == 0) return one().decimalNumberByRoundingAccordingToBehavior(behavior);
  const detail::Power result = detail::raiseToPower(DecimalAccess::mantissa(*this), exponent(), power);
  return detail::settle(result.mantissa, result.exact ? Tail::none : Tail::belowHalf, result.exponent,
                        isNegative() && power % 2 != 0, behavior);
}

Decimal Decimal::decimalNumberByRoundingAccordingToBehavior(const NSDecimalNumberHandler& behavior) const {
  const int scale = behavior.scale(), drop = -scale - exponent();
  if (high_ != 0 || static_cast<unsigned>(drop - 1) >= 19u || scale < -maximumExponent ||
      behavior.roundingMode() != NSRoundPlain) [[unlikely]]
    return roundSlowly(*this, behavior);
  std::uint64_t remainder;
  std::uint64_t kept = detail::divideByPowerOfTen(low_, drop, remainder);
  kept += static_cast<std::uint64_t>(remainder >= detail::powerOfTen64(drop) - remainder);  // a branch would mispredict
  return Decimal(0, kept, static_cast<std::uint32_t>(-scale) | (signAndExponent_ & (kept != 0 ? signBit : 0)));
}

Decimal Decimal::round(int places, NSRoundingMode mode) const {
  constexpr int most = maximumExponent + maximumDigits;  // rounding further gives zero or overflows
  if (places >= -minimumExponent) return *this;
  const auto scale = static_cast<std::int16_t>(std::max(places, -most - 1));
  return decimalNumberByRoundingAccordingToBehavior(NSDecimalNumberHandler({.roundingMode = mode, .scale = scale}));
}

Decimal Decimal::remainder(const Decimal& a, const Decimal& b) {
  if (a.isNaN() || b.isNaN()) return notANumber();
  if (b.isZero()) return a / b;
  UInt128 rest = DecimalAccess::mantissa(a), divisor = DecimalAccess::mantissa(b);
  int shift = a.exponent() - b.exponent();
  const int exponent = std::min(a.exponent(), b.exponent());
  // Scales the divisor to units of the smaller exponent. If it is then longer than any mantissa, the remainder is `a`.
  if (shift < 0) {
    if (-shift + detail::digitCount(divisor) > maximumDigits) return a;
    divisor *= detail::powerOfTen(-shift);
  }
  detail::divide(rest, divisor, rest);
  while (shift > 0 && rest != 0) {
    const int step = std::min(shift, maximumDigits);
    detail::divide(detail::multiply(rest, detail::powerOfTen(step)), divisor, rest);
    shift -= step;
  }
  return DecimalAccess::make(rest, exponent, a.isNegative() && rest != 0);
}

}  // namespace norvik
