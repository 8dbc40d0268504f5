#include "NorvikCore/platform/values/internal/DecimalRounding.h"

#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>

namespace norvik::detail {
namespace {

Decimal fault(bool raises, const NSString& name, const char* reason) {
  if (raises) NSException::raise(name, reason);
  return Decimal::notANumber();
}

[[gnu::cold]] Decimal overflow(const NSDecimalNumberHandler& behavior) {
  return fault(behavior.raiseOnOverflow(), NSDecimalNumberOverflowException,
               "the result is greater in magnitude than a decimal number can be");
}

[[gnu::cold]] Decimal underflow(const NSDecimalNumberHandler& behavior) {
  return fault(behavior.raiseOnUnderflow(), NSDecimalNumberUnderflowException,
               "the result is not zero, but smaller in magnitude than a decimal number can be");
}

/// mantissa / 10^count; `tail` becomes the part that was cut.
UInt128 cut(UInt128 mantissa, int count, Tail& tail) noexcept {
  if (count > 38) {
    tail = mantissa == 0 && tail == Tail::none ? Tail::none : Tail::belowHalf;
    return 0;
  }
  if (count == 0) return mantissa;
  UInt128 remainder;
  const UInt128 quotient = divideByPowerOfTen(mantissa, count, remainder);
  tail = tailOf(remainder, powerOfTen(count), tail);
  return quotient;
}

UInt256 cut(UInt256 mantissa, int count, Tail& tail) noexcept {
  for (; count > 0 && !mantissa.isZero(); count -= 38) {
    UInt128 remainder;
    const int step = std::min(count, 38);
    mantissa = divideByPowerOfTen(mantissa, step, remainder);
    tail = tailOf(remainder, powerOfTen(step), tail);
  }
  if (count > 0 && tail != Tail::none) tail = Tail::belowHalf;
  return mantissa;
}

UInt128 low128(UInt128 n) noexcept { return n; }
UInt128 low128(const UInt256& n) noexcept { return n.low(); }
bool isZero(UInt128 n) noexcept { return n == 0; }
bool isZero(const UInt256& n) noexcept { return n.isZero(); }

/// The number for a mantissa of at most 38 digits and any exponent; or an overflow.
Decimal fit(UInt128 mantissa, int exponent, bool negative, const NSDecimalNumberHandler& behavior) {
  if (mantissa == 0) return DecimalAccess::make(0, std::clamp(exponent, -128, 127), false);
  if (exponent > Decimal::maximumExponent) {
    const int shift = exponent - Decimal::maximumExponent;
    if (shift + digitCount(mantissa) > Decimal::maximumDigits) return overflow(behavior);
    return DecimalAccess::make(mantissa * powerOfTen(shift), Decimal::maximumExponent, negative);
  }
  return DecimalAccess::make(mantissa, exponent, negative);
}

template <class Wide>
Decimal settleAny(const Wide& exact, Tail tail, int exponent, bool negative, const NSDecimalNumberHandler& behavior) {
  const int asked = behavior.scale() == NSDecimalNoScale ? 0 : std::max(0, -behavior.scale() - exponent);
  if (isZero(exact)) return fit(0, exponent + asked, false, behavior);
  const int digits = digitCount(exact);
  if (digits + exponent <= Decimal::minimumExponent) [[unlikely]]
    return underflow(behavior);
  if (digits + exponent > Decimal::maximumDigits + Decimal::maximumExponent) [[unlikely]]
    return overflow(behavior);
  const int forced = std::max({0, digits - Decimal::maximumDigits, Decimal::minimumExponent - exponent});
  if (digits + exponent == Decimal::maximumDigits + Decimal::maximumExponent) [[unlikely]] {
    Tail beyond = tail;
    const UInt128 kept = low128(cut(exact, forced, beyond));
    if (kept == firstBeyondMantissa - 1 && beyond != Tail::none) return overflow(behavior);
  }
  if (behavior.raiseOnExactness()) [[unlikely]] {
    Tail lost = tail;
    cut(exact, forced, lost);
    if (lost != Tail::none)
      NSException::raise(NSDecimalNumberExactnessException, "the exact result needs more than 38 digits");
  }
  const int count = std::max(forced, asked);
  UInt128 mantissa = low128(cut(exact, count, tail));
  exponent += count;
  if (roundsAway(behavior.roundingMode(), tail, negative, (low64(mantissa) & 1) != 0) &&
      ++mantissa == firstBeyondMantissa) {
    mantissa = powerOfTen(37);
    ++exponent;
  }
  return fit(mantissa, exponent, negative, behavior);
}

}  // namespace

Decimal settle(UInt128 mantissa, Tail tail, int exponent, bool negative, const NSDecimalNumberHandler& behavior) {
  return settleAny(mantissa, tail, exponent, negative, behavior);
}

Decimal settle(const UInt256& mantissa, Tail tail, int exponent, bool negative,
               const NSDecimalNumberHandler& behavior) {
  if (mantissa.high() == 0) return settleAny(mantissa.low(), tail, exponent, negative, behavior);
  return settleAny(mantissa, tail, exponent, negative, behavior);
}

Decimal dividedByZero(const NSDecimalNumberHandler& behavior) {
  return fault(behavior.raiseOnDivideByZero(), NSDecimalNumberDivideByZeroException, "division by zero");
}

}  // namespace norvik::detail
