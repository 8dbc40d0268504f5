// NorvikCore/platform/values/internal/DecimalPower.h - powers carried on in 76 digits.
#pragma once

#include "NorvikCore/platform/values/internal/DecimalWide.h"

namespace norvik::detail {

/// mantissa * 10^exponent: exact, or of 76 digits at least and cut, never rounded up.
struct Power {
  UInt256 mantissa;
  int exponent;
  bool exact;
};

/// A power so great or so small that it is out of a decimal number's range may come back as any other such number.
Power raiseToPower(UInt128 mantissa, int exponent, std::uint64_t power) noexcept;

}  // namespace norvik::detail
