// NorvikCore/platform/values/internal/NumberMixing.h - the hash of numbers of any kind.
//
// It depends only on the numeric value: trailing zeros of the mantissa become part of the exponent. It is in a header
// because queries hash a number for each element.
#pragma once

#include <cstddef>
#include <cstdint>

namespace norvik::detail {

/// For a mantissa without trailing zeros: its low 64 bits and the bits above.
[[nodiscard]] inline std::size_t mixNumber(std::uint64_t high, std::uint64_t low, int exponent,
                                           bool isNegative) noexcept {
  std::uint64_t mixed = (low ^ high * 0xff51afd7ed558ccdu) * 0x9e3779b97f4a7c15u;
  mixed ^= mixed >> 32;
  mixed += static_cast<std::uint64_t>(2 * (exponent + 1024) + (isNegative ? 1 : 0)) * 0xc2b2ae3d27d4eb4fu;
  mixed = (mixed ^ mixed >> 29) * 0xd6e8feb86659fd93u;
  return mixed ^ mixed >> 32;
}

/// For a mantissa of 64 bits.
[[nodiscard]] inline std::size_t hashNumber(std::uint64_t mantissa, int exponent, bool isNegative) noexcept {
  if (mantissa == 0) return 0;
  if (mantissa % 10 == 0) [[unlikely]] {
    for (; mantissa % 100 == 0; mantissa /= 100) exponent += 2;
    if (mantissa % 10 == 0) {
      mantissa /= 10;
      ++exponent;
    }
  }
  return mixNumber(0, mantissa, exponent, isNegative);
}

[[nodiscard]] inline std::size_t hashInteger(std::int64_t integer) noexcept {
  const auto bits = static_cast<std::uint64_t>(integer);
  return hashNumber(integer < 0 ? 0 - bits : bits, 0, integer < 0);
}

}  // namespace norvik::detail
