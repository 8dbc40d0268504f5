// NorvikCore/platform/values/internal/Utf8Words.h - utf8::isAscii and utf8::isValid by eight bytes at once.
//
//   isAsciiByWords("payslip 40 written")             // true
//   isValidByWords("payslip of Zo\xC3\xAB written")    // true: beyond ASCII one character at a time
//
// Pure and safe on any thread. At compile time utf8::isAscii and utf8::isValid serve.
#pragma once

#include "NorvikCore/platform/values/Utf8.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace norvik::detail {

/// The eight bytes at `text` are ASCII.
[[nodiscard]] inline bool isAsciiWord(const char* text) noexcept {
  std::uint64_t word;
  std::memcpy(&word, text, sizeof word);
  return (word & 0x8080808080808080u) == 0;
}

[[nodiscard]] inline bool isAsciiByWords(std::string_view text) noexcept {
  if (text.size() < 8) return utf8::isAscii(text);
  const char* const last = text.data() + text.size() - 8;
  for (const char* at = text.data(); at < last; at += 8) {
    if (!isAsciiWord(at)) return false;
  }
  return isAsciiWord(last);
}

[[nodiscard]] inline bool isValidByWords(std::string_view text) noexcept {
  if (text.size() < 8) return utf8::isValid(text);
  const char* const last = text.data() + text.size() - 8;
  while (text.size() >= 8) {
    const std::size_t size = isAsciiWord(text.data()) ? 8 : utf8::validSequence(text);
    if (size == 0) return false;
    text.remove_prefix(size);
  }
  return isAsciiWord(last) || utf8::isValid(text);
}

}  // namespace norvik::detail
