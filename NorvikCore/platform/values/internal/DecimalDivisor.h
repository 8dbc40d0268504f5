// NorvikCore/platform/values/internal/DecimalDivisor.h - division of 128 bits by 64, and by powers of ten, without the
// machine's instruction, which takes 35 times as long as a multiplication on some processors.
//
// N. Moeller and T. Granlund, "Improved division by invariant integers": a division by a number with a known reciprocal
// is two multiplications. The reciprocal of a power of ten is exact enough for one multiplication and shifts.
#pragma once

#include "NorvikCore/platform/values/Decimal.h"

#include <array>
#include <bit>
#include <cstdint>

namespace norvik::detail {

inline constexpr std::uint64_t low64(UInt128 n) noexcept { return static_cast<std::uint64_t>(n); }
inline constexpr std::uint64_t high64(UInt128 n) noexcept { return static_cast<std::uint64_t>(n >> 64); }
inline constexpr UInt128 join(std::uint64_t high, std::uint64_t low) noexcept {
  return static_cast<UInt128>(high) << 64 | low;
}
inline constexpr UInt128 wideProduct(std::uint64_t a, std::uint64_t b) noexcept { return static_cast<UInt128>(a) * b; }

/// The upper half of a product.
inline constexpr std::uint64_t highProduct(std::uint64_t a, std::uint64_t b) noexcept {
  return high64(wideProduct(a, b));
}
inline constexpr UInt128 highProduct(UInt128 a, UInt128 b) noexcept {
  const UInt128 lh = wideProduct(low64(a), high64(b)), hl = wideProduct(high64(a), low64(b));
  const UInt128 middle = static_cast<UInt128>(highProduct(low64(a), low64(b))) + low64(lh) + low64(hl);
  return wideProduct(high64(a), high64(b)) + high64(lh) + high64(hl) + high64(middle);
}

/// 2^19 / d for the upper nine bits of a divisor: the start of the approximation of its reciprocal.
inline constexpr auto firstReciprocals = [] {
  std::array<std::uint16_t, 256> table{};
  for (unsigned i = 0; i < 256; ++i) table[i] = static_cast<std::uint16_t>((0x80000u - 0x300u) / (i + 256u));
  return table;
}();

/// (2^128 - 1) / d - 2^64 for a d with its top bit set: algorithm 2 of the paper, in steps that double the known bits.
inline constexpr std::uint64_t reciprocalOf(std::uint64_t d) noexcept {
  const std::uint64_t odd = d & 1, upper40 = (d >> 24) + 1, half = (d >> 1) + odd;
  const std::uint64_t v0 = firstReciprocals[(d >> 55) - 256];
  const std::uint64_t v1 = (v0 << 11) - (v0 * v0 * upper40 >> 40) - 1;
  const std::uint64_t v2 = (v1 << 13) + (v1 * ((std::uint64_t{1} << 60) - v1 * upper40) >> 47);
  const std::uint64_t error = (v2 >> 1 & (0 - odd)) - v2 * half;
  const std::uint64_t v3 = (v2 << 31) + (high64(wideProduct(v2, error)) >> 1);
  const UInt128 product = wideProduct(v3, d);
  return v3 - (high64(product) + (low64(product) + d < d ? 1 : 0)) - d;
}

/// A divisor other than zero, with its reciprocal.
class Divisor {
 public:
  explicit constexpr Divisor(std::uint64_t divisor) noexcept
      : shift_(std::countl_zero(divisor)), normal_(divisor << shift_), reciprocal_(reciprocalOf(normal_)) {}

  /// How far the divisor is shifted left to set its top bit.
  [[nodiscard]] constexpr int shift() const noexcept { return shift_; }
  /// The shifted divisor.
  [[nodiscard]] constexpr std::uint64_t normal() const noexcept { return normal_; }

  /// {high, low} / the shifted divisor, for `high` below it. The remainder is also that of the shifted divisor.
  [[nodiscard]] constexpr std::uint64_t divideShifted(std::uint64_t high, std::uint64_t low,
                                                      std::uint64_t& remainder) const noexcept {
    const UInt128 estimate = wideProduct(reciprocal_, high) + join(high, low);
    std::uint64_t quotient = high64(estimate) + 1;
    remainder = low - quotient * normal_;
    // Both outcomes are equally likely, so this selects a value; a branch would be mispredicted half of the time.
    const std::uint64_t more = remainder + normal_;
    const bool isTooGreat = __builtin_expect_with_probability(remainder > low64(estimate), 1, 0.5);
    quotient -= isTooGreat;
    remainder = isTooGreat ? more : remainder;
    if (remainder >= normal_) [[unlikely]] {
      ++quotient;
      remainder -= normal_;
    }
    return quotient;
  }

  /// {high, low} / the divisor, for `high` below it.
  [[nodiscard]] constexpr std::uint64_t divide(std::uint64_t high, std::uint64_t low,
                                               std::uint64_t& remainder) const noexcept {
    const UInt128 shifted = join(high, low) << shift_;
    const std::uint64_t quotient = divideShifted(high64(shifted), low64(shifted), remainder);
    remainder >>= shift_;
    return quotient;
  }

 private:
  int shift_;
  std::uint64_t normal_, reciprocal_;
};

inline constexpr auto powersOfTen64 = [] {
  std::array<std::uint64_t, 20> powers{1};
  for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10;
  return powers;
}();

/// Divisors for the powers of ten below 2^64.
inline constexpr auto tenDivisors = []<std::size_t... n>(std::index_sequence<n...>) {
  return std::array{Divisor(powersOfTen64[n])...};
}
(std::make_index_sequence<20>{});

inline std::uint64_t powerOfTen64(int n) noexcept { return powersOfTen64[static_cast<std::size_t>(n)]; }
inline const Divisor& tenDivisor(int n) noexcept { return tenDivisors[static_cast<std::size_t>(n)]; }

inline constexpr int bitLength(std::uint64_t n) noexcept { return 64 - std::countl_zero(n); }
inline constexpr int bitLength(UInt128 n) noexcept {
  return high64(n) != 0 ? 64 + bitLength(high64(n)) : bitLength(low64(n));
}

/// 2^(width of Word - 1 + bitLength(d)) / d, for a d that is no power of two: bit by bit, for tables.
template <class Word>
constexpr Word tableReciprocal(Word d) noexcept {
  Word quotient = 0, rest = Word{1} << (bitLength(d) - 1);
  for (std::size_t i = 0; i < 8 * sizeof(Word); ++i) {
    const bool more = rest >= d - rest;
    quotient = quotient << 1 | (more ? 1u : 0u);
    rest = more ? rest - (d - rest) : rest + rest;
  }
  return quotient;
}

/// Division of a 64-bit or 128-bit Word by 10^n, for n from 1.
template <class Word>
class TenDivisor {
 public:
  explicit constexpr TenDivisor(int n) noexcept : n_(n) {
    Word five = 1;
    for (int i = 0; i < n; ++i) {
      power_ *= 10;
      five *= 5;
    }
    reciprocal_ = tableReciprocal(five) + 1;
    shift_ = bitLength(five) - 1;
  }

  /// 10^n is 2^n * 5^n, so the division begins with a shift by n bits, which leaves a number below 2^(width - n). The
  /// reciprocal is 2^(width + shift) / 5^n, rounded up by less than 1. The product with that number is too great by
  /// less than 2^(width - n). The distance to the next quotient is 2^(width + shift) / 5^n at least, which is more,
  /// because 5^n is below 2^(shift + 1). So the quotient is exact.
  [[nodiscard]] constexpr Word divide(Word number, Word& remainder) const noexcept {
    const Word quotient = highProduct(number >> n_, reciprocal_) >> shift_;
    remainder = number - quotient * power_;
    return quotient;
  }

 private:
  Word reciprocal_ = 0, power_ = 1;
  int n_, shift_ = 0;
};

template <class Word, std::size_t count>
inline constexpr auto tenDivisorsOf = []<std::size_t... n>(std::index_sequence<n...>) {
  return std::array{TenDivisor<Word>(static_cast<int>(n) + 1)...};
}
(std::make_index_sequence<count>{});

/// number / 10^power, for a power from 1 to 19.
inline std::uint64_t divideByPowerOfTen(std::uint64_t number, int power, std::uint64_t& remainder) noexcept {
  return tenDivisorsOf<std::uint64_t, 19>[static_cast<std::size_t>(power - 1)].divide(number, remainder);
}
/// number / 10^power, for a power from 1 to 38.
inline UInt128 divideByPowerOfTen(UInt128 number, int power, UInt128& remainder) noexcept {
  return tenDivisorsOf<UInt128, 38>[static_cast<std::size_t>(power - 1)].divide(number, remainder);
}

/// How many decimal digits n has; 0 for 0. The bit length times log10(2), corrected by one comparison with a power of
/// ten.
inline int digitCount(std::uint64_t n) noexcept {
  const int digits = ((63 ^ std::countl_zero(n | 1)) + 1) * 1233 >> 12;  // the bit avoids a branch for 0
  return digits + (n >= powerOfTen64(digits) ? 1 : 0);
}

}  // namespace norvik::detail
