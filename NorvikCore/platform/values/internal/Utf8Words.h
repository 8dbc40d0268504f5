// NorvikCore/platform/values/internal/Utf8Words.h - utf8::isAscii, isValid and unitCount, eight bytes at a time.
//
//   isAsciiByWords("payslip 40 written")             // true
//   isValidByWords("payslip of Zo\xC3\xAB written")    // true: non-ASCII is checked one character at a time
//   unitCountByWords("payslip of Zo\xC3\xAB written")  // 22
//
// Pure and safe on any thread. At compile time use the functions of Utf8.h.
#pragma once

#include "NorvikCore/platform/values/Utf8.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace norvik::detail {

/// True if the eight bytes at `text` are ASCII.
[[nodiscard]] inline bool isAsciiWord(const char* text) noexcept {
  std::uint64_t word;
  std::memcpy(&word, text, sizeof word);
  return (word & 0x8080808080808080u) == 0;
}

/// The same for thirty-two bytes.
[[nodiscard]] inline bool isAsciiBlock(const char* text) noexcept {
  std::uint64_t words[4];
  std::memcpy(words, text, sizeof words);
  return ((words[0] | words[1] | words[2] | words[3]) & 0x8080808080808080u) == 0;
}

[[nodiscard]] inline bool isAsciiByWords(std::string_view text) noexcept {
  if (text.size() < 8) return utf8::isAscii(text);
  const char* const last = text.data() + text.size() - 8;
  const char* at = text.data();
  for (; last - at >= 24; at += 32) {
    if (!isAsciiBlock(at)) return false;
  }
  for (; at < last; at += 8) {
    if (!isAsciiWord(at)) return false;
  }
  return isAsciiWord(last);
}

/// Copies the text, of one byte or more, and returns whether it is ASCII. For texts of a line or less, which it reads
/// only once, it is faster than a copy after a check.
[[nodiscard]] inline bool copyingIsAscii(char* to, std::string_view text) noexcept {
  std::uint64_t all = 0;
  const auto copyWord = [&]<class Word>(std::size_t at, Word word) {
    std::memcpy(&word, text.data() + at, sizeof word);
    std::memcpy(to + at, &word, sizeof word);
    all |= word;
  };
  const auto copyEnds = [&](auto word) {  // which may overlap
    copyWord(0, word);
    copyWord(text.size() - sizeof word, word);
  };
  if (text.size() >= 8) [[likely]] {
    copyEnds(std::uint64_t{});
    for (std::size_t at = 8; at + 8 < text.size(); at += 8) copyWord(at, std::uint64_t{});
  } else if (text.size() >= 4) {
    copyEnds(std::uint32_t{});
  } else {
    copyEnds(std::uint8_t{});
    copyWord(text.size() / 2, std::uint8_t{});
  }
  return (all & 0x8080808080808080u) == 0;
}

[[nodiscard]] inline bool isValidByWords(std::string_view text) noexcept {
  if (text.size() < 8) return utf8::isValid(text);
  const char* const last = text.data() + text.size() - 8;
  while (text.size() >= 8) {
    if (isAsciiWord(text.data())) {
      text.remove_prefix(8);
      while (text.size() >= 32 && isAsciiBlock(text.data())) text.remove_prefix(32);
    } else {
      const std::size_t size = utf8::validSequence(text);
      if (size == 0) return false;
      text.remove_prefix(size);
    }
  }
  return isAsciiWord(last) || utf8::isValid(text);
}

inline constexpr std::uint64_t oneInEachByte = 0x0101010101010101u;

/// The UTF-16 units of each of the word's bytes: 0 for a continuation byte, 2 for the first of four bytes, else 1.
[[nodiscard]] inline std::uint64_t unitsOfBytes(std::uint64_t word) noexcept {
  const std::uint64_t continuations = word >> 7 & ~word >> 6 & oneInEachByte;
  const std::uint64_t pairs = word >> 7 & word >> 6 & word >> 5 & word >> 4 & oneInEachByte;
  return oneInEachByte - continuations + pairs;
}

[[nodiscard]] inline std::size_t unitCountByWords(std::string_view text) noexcept {
  std::size_t units = 0;
  for (; text.size() >= 8; text.remove_prefix(8)) {
    std::uint64_t word;
    std::memcpy(&word, text.data(), sizeof word);
    units += (unitsOfBytes(word) * oneInEachByte) >> 56;
  }
  return units + utf8::unitCount(text);
}

/// For each of the eight bytes at `text`, how many UTF-16 units begin in the bytes up to and including it. The first
/// byte's number is in the lowest eight bits, the last one's in the highest.
[[nodiscard]] inline std::uint64_t unitsReachedInWord(const char* text) noexcept {
  std::uint64_t word;
  std::memcpy(&word, text, sizeof word);
  if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
  return unitsOfBytes(word) * oneInEachByte;  // the product's bytes are the sums from the lowest byte on
}

/// The first byte up to which more than `units` units begin. There must be one.
[[nodiscard]] inline std::size_t firstByteBeyond(std::uint64_t reached, std::size_t units) noexcept {
  // No byte overflows, because eight bytes begin nine units at most.
  const std::uint64_t beyond = (reached + (127 - units) * oneInEachByte) & (oneInEachByte << 7);
  return static_cast<std::size_t>(std::countr_zero(beyond)) / 8;
}

/// How many units begin before that byte.
[[nodiscard]] inline std::size_t unitsBefore(std::uint64_t reached, std::size_t byte) noexcept {
  return (reached << 8) >> (8 * byte) & 0xFF;
}

}  // namespace norvik::detail
