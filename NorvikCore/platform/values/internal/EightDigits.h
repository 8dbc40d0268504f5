// NorvikCore/platform/values/internal/EightDigits.h - reads eight decimal digits in one word, and writes eight
// or sixteen.
//
// A word holds one character in each byte, the first in the lowest, whatever the machine's order of bytes is. Three
// multiplications combine neighbours: digits to pairs, pairs to fours, and fours to eight. Writing divides in the
// reverse order.
#pragma once

#include "NorvikCore/platform/values/internal/DecimalDivisor.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace norvik::detail {

template <class Word>
inline constexpr Word everyByteOf = ~Word{0} / 0xFF;  // 1 in every byte
inline constexpr std::uint64_t everyByte = everyByteOf<std::uint64_t>;

inline std::uint64_t inByteOrder(std::uint64_t word) noexcept {
  if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
  return word;
}

inline std::uint64_t readFour(const char* p) noexcept {
  std::uint32_t half = 0;
  std::memcpy(&half, p, 4);
  if constexpr (std::endian::native == std::endian::big) half = __builtin_bswap32(half);
  return half;
}

/// The first `count` characters at p, at most eight; the bytes above them are 0.
inline std::uint64_t readWord(const char* p, std::ptrdiff_t count) noexcept {
  if (count >= 8) return readFour(p) | readFour(p + 4) << 32;
  if (count >= 4) return readFour(p) | readFour(p + count - 4) << 8 * (count - 4);  // they may overlap
  const auto byte = [p](std::ptrdiff_t i) { return static_cast<std::uint64_t>(static_cast<unsigned char>(p[i])); };
  if (count <= 0) return 0;
  return byte(0) | byte(count / 2) << 8 * (count / 2) | byte(count - 1) << 8 * (count - 1);
}

/// Four to eight characters without the '0' of a digit, in the upper bytes of a word above zeros. Characters other than
/// digits become greater than 9.
inline std::uint64_t readDigits(const char* p, std::ptrdiff_t count) noexcept {
  const std::ptrdiff_t empty = 8 * (8 - count);
  const std::uint64_t text = readFour(p) << empty | readFour(p + count - 4) << 32;  // they may overlap
  return text ^ everyByte * '0' << empty;
}

inline void writeWord(char* out, std::uint64_t word) noexcept {
  word = inByteOrder(word);
  std::memcpy(out, &word, 8);
}
inline void writeWord(char* out, UInt128 word) noexcept {
  writeWord(out, low64(word));
  writeWord(out + 8, high64(word));
}

/// The top bit of every byte that is greater than 9. A byte that is not ASCII may also carry into the one above it, so
/// that a 9 there is marked too.
inline std::uint64_t marksOfOthers(std::uint64_t digits) noexcept {
  return ((digits + everyByte * (0x7F - 9)) | digits) & everyByte * 0x80;
}

/// The number of zero bytes below the lowest byte that is not zero.
inline int bytesBelow(std::uint64_t word) noexcept { return std::countr_zero(word) / 8; }
inline int bytesBelow(UInt128 word) noexcept {
  return low64(word) != 0 ? bytesBelow(low64(word)) : 8 + bytesBelow(high64(word));
}
/// The place of the highest byte that is not zero, 0 to 7. The word is not 0.
inline int highestByte(std::uint64_t word) noexcept { return (63 ^ std::countl_zero(word)) / 8; }

/// The number of which a word has the digits.
inline std::uint64_t numberOf(std::uint64_t digits) noexcept {
  digits = (digits * 10 + (digits >> 8)) & 0x00FF'00FF'00FF'00FF;
  digits = (digits * 100 + (digits >> 16)) & 0x0000'FFFF'0000'FFFF;
  return (digits * 10'000 + (digits >> 32)) & 0xFFFF'FFFF;
}

/// The eight digits, with leading zeros, of a number below 10^8.
inline std::uint64_t eightDigits(std::uint64_t number) noexcept {
  const std::uint64_t fours = number / 10'000 | number % 10'000 << 32;
  const std::uint64_t hundreds = fours * 10'486 >> 20 & 0x0000'007F'0000'007F;  // / 100, exact below 10^4
  const std::uint64_t pairs = hundreds | (fours - 100 * hundreds) << 16;
  const std::uint64_t tens = pairs * 103 >> 10 & 0x000F'000F'000F'000F;  // / 10, exact below 100
  return (tens | (pairs - 10 * tens) << 8) + everyByte * '0';
}
inline UInt128 sixteenDigits(std::uint64_t number) noexcept {
  return join(eightDigits(number % 100'000'000), eightDigits(number / 100'000'000));
}

}  // namespace norvik::detail
