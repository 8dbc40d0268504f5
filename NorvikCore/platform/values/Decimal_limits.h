// NorvikCore/platform/values/Decimal_limits.h - std::numeric_limits of decimal numbers; Decimal.h includes it.
#pragma once

#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/Decimal_literal.h"

#include <limits>

template <>
class std::numeric_limits<norvik::Decimal> {
  using Decimal = norvik::Decimal;

 public:
  static constexpr bool is_specialized = true;
  static constexpr bool is_signed = true, is_integer = false, is_exact = false;
  static constexpr bool is_bounded = true, is_modulo = false, is_iec559 = false;
  static constexpr bool has_infinity = false, has_quiet_NaN = true, has_signaling_NaN = false;
  static constexpr bool traps = true, tinyness_before = true;
  static constexpr std::float_round_style round_style = std::round_to_nearest;
  static constexpr int radix = 10, digits = 38, digits10 = 38, max_digits10 = 38;
  // The exponents for a mantissa in [0.1, 1), as the standard defines them.
  static constexpr int min_exponent = -127, min_exponent10 = -128, max_exponent = 165, max_exponent10 = 164;

  /// The smallest number above zero, 1E-128.
  static constexpr Decimal min() noexcept { return norvik::detail::DecimalAccess::make(1, -128, false); }
  static constexpr Decimal denorm_min() noexcept { return min(); }
  static constexpr Decimal max() noexcept { return Decimal::maximumDecimalNumber(); }
  static constexpr Decimal lowest() noexcept { return Decimal::minimumDecimalNumber(); }
  /// The distance from 1 to the next number, 1E-37.
  static constexpr Decimal epsilon() noexcept { return norvik::detail::DecimalAccess::make(1, -37, false); }
  static constexpr Decimal round_error() noexcept { return norvik::detail::DecimalAccess::make(5, -1, false); }
  static constexpr Decimal infinity() noexcept { return Decimal::notANumber(); }
  static constexpr Decimal quiet_NaN() noexcept { return Decimal::notANumber(); }
  static constexpr Decimal signaling_NaN() noexcept { return Decimal::notANumber(); }
};
