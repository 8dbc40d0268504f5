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

/// For a count of at least digitCount(mantissa) - 38, and at least 1.
UInt128 cut(UInt256 mantissa, int count, Tail& tail) noexcept {
  UInt128 remainder;
  for (; count > 38; count -= 38) {
    if (mantissa.isZero()) break;
    mantissa = divide(mantissa, powerOfTen(38), remainder);
    tail = tailOf(remainder, powerOfTen(38), tail);
  }
  const int last = std::min(count, 38);
  const UInt128 quotient = divideByPowerOfTen(mantissa, last, remainder);
  tail = tailOf(remainder, powerOfTen(last), tail);
  return quotient;
}

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
    const UInt128 kept = cut(exact, forced, beyond);
    if (kept == firstBeyondMantissa - 1 && beyond != Tail::none) return overflow(behavior);
  }
  if (behavior.raiseOnExactness()) [[unlikely]] {
    Tail lost = tail;
    cut(exact, forced, lost);
    if (lost != Tail::none)
      NSException::raise(NSDecimalNumberExactnessException, "the exact result needs more than 38 digits");
  }
  const int count = std::max(forced, asked);
  UInt128 mantissa = cut(exact, count, tail);
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
  // The usual case: 38 digits, plain, and an exponent that no error and no carry can take out of range. A half or more
  // rounds up whatever the tail is. Only powers have more than 76 digits.
  const int count = digitCount(mantissa) - Decimal::maximumDigits, kept = exponent + count;
  if (behavior.roundingMode() == NSRoundPlain && behavior.scale() == NSDecimalNoScale && !behavior.raiseOnExactness() &&
      count <= 38 && kept >= Decimal::minimumExponent && kept < Decimal::maximumExponent) [[likely]] {
    UInt128 remainder;
    UInt128 rounded = divideByPowerOfTen(mantissa, count, remainder);
    if (remainder >= powerOfTen(count) - remainder) ++rounded;
    if (rounded == firstBeyondMantissa) [[unlikely]]
      return DecimalAccess::make(powerOfTen(37), kept + 1, negative);
    return DecimalAccess::make(rounded, kept, negative);
  }
  return settleAny(mantissa, tail, exponent, negative, behavior);
}

Decimal dividedByZero(const NSDecimalNumberHandler& behavior) {
  return fault(behavior.raiseOnDivideByZero(), NSDecimalNumberDivideByZeroException, "division by zero");
}

}  // namespace norvik::detail
