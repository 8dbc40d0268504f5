// NorvikCore/platform/values/internal/EightDigits.h - reads and writes eight or sixteen decimal digits in one word.
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

inline constexpr std::uint64_t everyByte = 0x0101'0101'0101'0101;

inline std::uint64_t inByteOrder(std::uint64_t word) noexcept {
  if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
  return word;
}

template <class Half>
inline Half readHalf(const char* p) noexcept {
  Half half = 0;
  std::memcpy(&half, p, sizeof half);
  if constexpr (std::endian::native == std::endian::big)
    half = sizeof half == 8 ? __builtin_bswap64(half) : __builtin_bswap32(half);
  return half;
}

/// The first `count` characters at p, at most eight; the bytes above them are 0.
inline std::uint64_t readWord(const char* p, std::ptrdiff_t count) noexcept {
  if (count >= 8) return readHalf<std::uint64_t>(p);
  if (count >= 4) {  // two halves, which may overlap
    return readHalf<std::uint32_t>(p) | std::uint64_t{readHalf<std::uint32_t>(p + count - 4)} << 8 * (count - 4);
  }
  const auto byte = [p](std::ptrdiff_t i) { return static_cast<std::uint64_t>(static_cast<unsigned char>(p[i])); };
  if (count <= 0) return 0;
  return byte(0) | byte(count / 2) << 8 * (count / 2) | byte(count - 1) << 8 * (count - 1);
}

/// Characters in the upper bytes of a word, and the character 0 in the bytes below: half of the word's size or more.
template <class Half, class Word>
inline Word readPadded(const char* p, std::ptrdiff_t count) noexcept {
  const auto empty = 8 * (static_cast<std::ptrdiff_t>(sizeof(Word)) - count);
  const Word zeros = ((Word{1} << empty) - 1) & (~Word{0} / 0xFF * '0');
  const auto last = static_cast<Word>(readHalf<Half>(p + count - static_cast<std::ptrdiff_t>(sizeof(Half))));
  return zeros | static_cast<Word>(readHalf<Half>(p)) << empty | last << 8 * sizeof(Half);  // they may overlap
}

inline void writeWord(char* out, std::uint64_t word) noexcept {
  word = inByteOrder(word);
  std::memcpy(out, &word, 8);
}
inline void writeWord(char* out, UInt128 word) noexcept {
  writeWord(out, low64(word));
  writeWord(out + 8, high64(word));
}

/// The top bit of every byte that is no digit.
template <class Word>
inline Word marksOfOthers(Word word) noexcept {
  constexpr Word each = ~Word{0} / 0xFF;
  const Word digits = word ^ each * '0';  // 0 to 9 for digits, and more for all others
  return (((digits & each * 0x7F) + each * (0x7F - 9)) | digits) & each * 0x80;
}

/// How many bytes are below the first mark.
inline int bytesBefore(std::uint64_t marks) noexcept { return std::countr_zero(marks) / 8; }
inline int bytesBefore(UInt128 marks) noexcept {
  return low64(marks) != 0 ? bytesBefore(low64(marks)) : 8 + bytesBefore(high64(marks));
}

/// The number that a word of digits writes.
inline std::uint64_t numberOf(std::uint64_t word) noexcept {
  word &= everyByte * 0x0F;
  word = (word * 10 + (word >> 8)) & 0x00FF'00FF'00FF'00FF;
  word = (word * 100 + (word >> 16)) & 0x0000'FFFF'0000'FFFF;
  return (word * 10'000 + (word >> 32)) & 0xFFFF'FFFF;
}
inline std::uint64_t numberOf(UInt128 word) noexcept {
  return numberOf(low64(word)) * 100'000'000 + numberOf(high64(word));
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
