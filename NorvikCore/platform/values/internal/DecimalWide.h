// NorvikCore/platform/values/internal/DecimalWide.h - whole numbers of 128 and 256 bits and their powers of ten.
//
// 10^76 is below 2^253: a product of two 38-digit mantissas and an aligned sum both fit.
#pragma once

#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/internal/DecimalDivisor.h"

#include <array>
#include <bit>

namespace norvik::detail {

inline constexpr auto powersOfTen128 = [] {
  std::array<UInt128, 39> powers{};
  powers[0] = 1;
  for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10;
  return powers;
}();

inline UInt128 powerOfTen(int n) noexcept { return powersOfTen128[static_cast<std::size_t>(n)]; }
inline constexpr UInt128 firstBeyondMantissa = powersOfTen128[38];

/// A whole number below 2^256, least significant word first.
struct UInt256 {
  std::uint64_t word[4] = {0, 0, 0, 0};

  constexpr UInt256() noexcept = default;
  constexpr UInt256(UInt128 n) noexcept
      : word{low64(n), high64(n), 0, 0} {}  // NOLINT(google-explicit-constructor): widens
  constexpr UInt256(UInt128 high, UInt128 low) noexcept : word{low64(low), high64(low), low64(high), high64(high)} {}

  [[nodiscard]] constexpr UInt128 low() const noexcept { return join(word[1], word[0]); }
  [[nodiscard]] constexpr UInt128 high() const noexcept { return join(word[3], word[2]); }
  [[nodiscard]] constexpr bool isZero() const noexcept { return (word[0] | word[1] | word[2] | word[3]) == 0; }
  friend constexpr std::strong_ordering operator<=>(const UInt256& a, const UInt256& b) noexcept {
    return a.high() != b.high() ? a.high() <=> b.high() : a.low() <=> b.low();
  }
};

inline constexpr UInt256 operator+(const UInt256& a, const UInt256& b) noexcept {
  const UInt128 low = a.low() + b.low();
  return {a.high() + b.high() + (low < a.low() ? 1u : 0u), low};
}
inline constexpr UInt256 operator-(const UInt256& a, const UInt256& b) noexcept {
  return {a.high() - b.high() - (a.low() < b.low() ? 1u : 0u), a.low() - b.low()};
}

inline constexpr UInt256 multiply(UInt128 a, UInt128 b) noexcept {
  const UInt128 ll = static_cast<UInt128>(low64(a)) * low64(b), lh = static_cast<UInt128>(low64(a)) * high64(b);
  const UInt128 hl = static_cast<UInt128>(high64(a)) * low64(b), hh = static_cast<UInt128>(high64(a)) * high64(b);
  const UInt128 middle = static_cast<UInt128>(high64(ll)) + low64(lh) + low64(hl);
  return {hh + high64(lh) + high64(hl) + high64(middle), join(low64(middle), low64(ll))};
}

/// n / divisor for a divisor that is not zero.
UInt256 divide(const UInt256& n, UInt128 divisor, UInt128& remainder) noexcept;
UInt128 divide(UInt128 n, UInt128 divisor, UInt128& remainder) noexcept;

/// The reciprocals of the powers of ten from 10^1 to 10^38, as long as their bits.
inline constexpr auto wideTenReciprocals = [] {
  std::array<UInt128, 38> reciprocals{};
  for (std::size_t i = 0; i < reciprocals.size(); ++i) reciprocals[i] = tableReciprocal(powersOfTen128[i + 1]);
  return reciprocals;
}();

/// n / 10^power for a power from 1 to 38 and a quotient below 2^127.
inline UInt128 divideByPowerOfTen(const UInt256& n, int power, UInt128& remainder) noexcept {
  const UInt128 divisor = powerOfTen(power);
  // Without the bits below the divisor's first bit, the estimate is at most two below the quotient. The remainder then
  // fits in 128 bits, because 3 * 10^38 does.
  const int below = bitLength(divisor) - 1;
  UInt128 quotient = highProduct(n.high() << (128 - below) | n.low() >> below,
                                 wideTenReciprocals[static_cast<std::size_t>(power - 1)]);
  remainder = n.low() - quotient * divisor;
  for (int i = 0; i < 2; ++i) {
    const UInt128 more = 0 - static_cast<UInt128>(remainder >= divisor);  // a branch would often be mispredicted
    quotient -= more;
    remainder -= divisor & more;
  }
  return quotient;
}

/// The same for 128 bits.
inline int digitCount(UInt128 n) noexcept {
  if (high64(n) == 0) return digitCount(low64(n));
  const int digits = (128 - std::countl_zero(high64(n))) * 1233 >> 12;
  return digits + (n >= powerOfTen(digits) ? 1 : 0);
}
/// The same for 256 bits, with n below 2^255.
int digitCount(const UInt256& n) noexcept;

}  // namespace norvik::detail
