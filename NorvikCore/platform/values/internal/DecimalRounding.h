// NorvikCore/platform/values/internal/DecimalRounding.h - from an exact result to a decimal number: one rounding, and
// the errors.
#pragma once

#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/internal/DecimalWide.h"

#include <type_traits>

namespace norvik::detail {

/// The difference between a truncated number and the exact one, relative to the last kept digit.
enum class Tail : std::uint8_t { none, belowHalf, half, aboveHalf };

/// The tail after a division that left `remainder` of `divisor`, if `tail` was below the dividend. It adds up
/// comparisons, because branches on practically random digits would be mispredicted.
template <class Word>
inline Tail tailOf(Word remainder, std::type_identity_t<Word> divisor, Tail tail) noexcept {
  const Word rest = divisor - remainder;
  const bool more = tail != Tail::none;
  const int beyondNone = (remainder != 0) | more, beyondBelow = remainder >= rest,
            beyondHalf = (remainder > rest) | ((remainder == rest) & more);
  return static_cast<Tail>(beyondNone + beyondBelow + beyondHalf);
}

/// True if a magnitude with that tail rounds to the next greater magnitude.
inline bool roundsAway(NSRoundingMode mode, Tail tail, bool negative, bool odd) noexcept {
  switch (mode) {
    case NSRoundPlain:
      return tail >= Tail::half;
    case NSRoundDown:
      return tail != Tail::none && negative;
    case NSRoundUp:
      return tail != Tail::none && !negative;
    case NSRoundBankers:
      return tail == Tail::aboveHalf || (tail == Tail::half && odd);
  }
  return false;
}

/// The number of magnitude (mantissa + tail) * 10^exponent, rounded once according to the behaviour. A mantissa of 0
/// has no tail. A mantissa with a tail has at least 38 digits, so that the tail is below all digits that are kept.
Decimal settle(UInt128 mantissa, Tail tail, int exponent, bool negative, const NSDecimalNumberHandler& behavior);
Decimal settle(const UInt256& mantissa, Tail tail, int exponent, bool negative, const NSDecimalNumberHandler& behavior);

/// The result of a division by zero.
Decimal dividedByZero(const NSDecimalNumberHandler& behavior);

}  // namespace norvik::detail
