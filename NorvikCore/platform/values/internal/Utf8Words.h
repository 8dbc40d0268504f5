// NorvikCore/platform/values/internal/Utf8Words.h - utf8::isAscii, isValid and unitCount, eight bytes at a time.
//
//   isAsciiByWords("payslip 40 written")             // true
//   isValidByWords("payslip of Zo\xC3\xAB written")    // true: non-ASCII is checked one character at a time
//   unitCountByWords("payslip of Zo\xC3\xAB written")  // 22
//
// Pure and safe on any thread. At compile time use the functions of Utf8.h.
#pragma once

#include "NorvikCore/platform/values/Utf8.h"

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

[[nodiscard]] inline std::size_t unitCountByWords(std::string_view text) noexcept {
  constexpr std::uint64_t ones = 0x0101010101010101u;
  std::size_t units = 0;
  for (; text.size() >= 8; text.remove_prefix(8)) {
    std::uint64_t word;
    std::memcpy(&word, text.data(), sizeof word);
    // One bit per byte: a continuation byte, which is no unit; the first of four bytes, which are two units.
    const std::uint64_t continuations = word >> 7 & ~word >> 6 & ones;
    const std::uint64_t pairs = word >> 7 & word >> 6 & word >> 5 & word >> 4 & ones;
    units += ((ones - continuations + pairs) * ones) >> 56;
  }
  return units + utf8::unitCount(text);
}

}  // namespace norvik::detail
