// NorvikCore/platform/values/internal/DecimalPower.h - powers, computed with 76 digits.
#pragma once

#include "NorvikCore/platform/values/internal/DecimalWide.h"

namespace norvik::detail {

/// mantissa * 10^exponent. Exact; or at least 76 digits, truncated and never rounded up.
struct Power {
  UInt256 mantissa;
  int exponent;
  bool exact;
};

/// If the power is outside the range of decimal numbers, the result may be any number outside it on the same side.
Power raiseToPower(UInt128 mantissa, int exponent, std::uint64_t power) noexcept;

}  // namespace norvik::detail
