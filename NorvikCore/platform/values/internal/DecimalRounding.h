// NorvikCore/platform/values/internal/DecimalRounding.h - from an exact result to a decimal number: one rounding, and
// the faults.
#pragma once

#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/internal/DecimalWide.h"

#include <type_traits>

namespace norvik::detail {

/// What lies between a cut number and the exact one, as a part of the last digit kept.
enum class Tail : std::uint8_t { none, belowHalf, half, aboveHalf };

/// The tail after a division that left `remainder` of `divisor`, when `tail` lay below that division's dividend. Counts
/// comparisons instead of branching on digits that are as good as random.
template <class Word>
inline Tail tailOf(Word remainder, std::type_identity_t<Word> divisor, Tail tail) noexcept {
  const Word rest = divisor - remainder;
  const bool more = tail != Tail::none;
  const int beyondNone = (remainder != 0) | more, beyondBelow = remainder >= rest,
            beyondHalf = (remainder > rest) | ((remainder == rest) & more);
  return static_cast<Tail>(beyondNone + beyondBelow + beyondHalf);
}

/// Whether a magnitude with that tail becomes the next greater magnitude.
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

/// The number of magnitude (mantissa + tail) * 10^exponent, rounded once as the behaviour says. A mantissa of 0 has no
/// tail. A mantissa with a tail has 38 digits at least, so that the digits cut are within the tail's reach.
Decimal settle(UInt128 mantissa, Tail tail, int exponent, bool negative, const NSDecimalNumberHandler& behavior);
Decimal settle(const UInt256& mantissa, Tail tail, int exponent, bool negative, const NSDecimalNumberHandler& behavior);

/// What a division by zero gives.
Decimal dividedByZero(const NSDecimalNumberHandler& behavior);

}  // namespace norvik::detail
