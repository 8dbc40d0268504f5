// NorvikCore/platform/values/internal/DecimalWide.h - whole numbers of 128 and 256 bits and their powers of ten.
//
// 10^76 is below 2^253: a product of two 38-digit mantissas and an aligned sum both fit.
#pragma once

#include "NorvikCore/platform/values/Decimal.h"

#include <array>
#include <bit>

namespace norvik::detail {

inline constexpr std::uint64_t low64(UInt128 n) noexcept { return static_cast<std::uint64_t>(n); }
inline constexpr std::uint64_t high64(UInt128 n) noexcept { return static_cast<std::uint64_t>(n >> 64); }
inline constexpr UInt128 join(std::uint64_t high, std::uint64_t low) noexcept {
  return static_cast<UInt128>(high) << 64 | low;
}

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
  constexpr UInt256(UInt128 n) noexcept : word{low64(n), high64(n), 0, 0} {}  // NOLINT(google-explicit-constructor)
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

inline UInt256 multiply(UInt128 a, UInt128 b) noexcept {
  const UInt128 ll = static_cast<UInt128>(low64(a)) * low64(b), lh = static_cast<UInt128>(low64(a)) * high64(b);
  const UInt128 hl = static_cast<UInt128>(high64(a)) * low64(b), hh = static_cast<UInt128>(high64(a)) * high64(b);
  const UInt128 middle = static_cast<UInt128>(high64(ll)) + low64(lh) + low64(hl);
  return {hh + high64(lh) + high64(hl) + high64(middle), join(low64(middle), low64(ll))};
}

/// {high, low} / divisor, where high is below the divisor: one machine division.
inline std::uint64_t divide128by64(std::uint64_t high, std::uint64_t low, std::uint64_t divisor,
                                   std::uint64_t& remainder) noexcept {
#if defined(__x86_64__)
  std::uint64_t quotient;
  __asm__("divq %4" : "=a"(quotient), "=d"(remainder) : "0"(low), "1"(high), "r"(divisor) : "cc");
  return quotient;
#else
  const UInt128 n = join(high, low);
  remainder = low64(n % divisor);
  return low64(n / divisor);
#endif
}

/// n / divisor for a divisor that is not zero.
UInt256 divide(const UInt256& n, UInt128 divisor, UInt128& remainder) noexcept;
UInt128 divide(UInt128 n, UInt128 divisor, UInt128& remainder) noexcept;

/// How many decimal digits n has; 0 for 0. The bit length times log10(2), corrected by one look at a power of ten.
inline int digitCount(UInt128 n) noexcept {
  const int bits = high64(n) != 0 ? 128 - std::countl_zero(high64(n)) : 64 - std::countl_zero(low64(n));
  const int digits = bits * 1233 >> 12;
  return digits + (n >= powerOfTen(digits) ? 1 : 0);
}
/// The same for n below 2^255.
int digitCount(const UInt256& n) noexcept;

}  // namespace norvik::detail
