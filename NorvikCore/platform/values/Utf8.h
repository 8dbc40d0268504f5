// NorvikCore/platform/values/Utf8.h - the bytes of UTF-8 and the units of UTF-16, one character at a time.
//
//   utf8::validSequence("\xC2\xA3")                  // 2: one character of two bytes
//   utf8::unitCount("\xF0\x9F\x92\xB7")              // 2: a pair of surrogate halves
//
// A lone surrogate half is written as the three bytes of its number. That is not UTF-8, so `validSequence` rejects it;
// `decode` and `encode` accept it. Every function is pure and safe on any thread.
#pragma once

#include <cstddef>
#include <string_view>

namespace norvik::utf8 {

[[nodiscard]] constexpr bool isHighHalf(char32_t unit) noexcept { return unit >= 0xD800 && unit <= 0xDBFF; }
[[nodiscard]] constexpr bool isLowHalf(char32_t unit) noexcept { return unit >= 0xDC00 && unit <= 0xDFFF; }
[[nodiscard]] constexpr bool isHalf(char32_t unit) noexcept { return unit >= 0xD800 && unit <= 0xDFFF; }

[[nodiscard]] constexpr char32_t joinHalves(char32_t high, char32_t low) noexcept {
  return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}
[[nodiscard]] constexpr char16_t highHalf(char32_t point) noexcept {
  return static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10));
}
[[nodiscard]] constexpr char16_t lowHalf(char32_t point) noexcept {
  return static_cast<char16_t>(0xDC00 + ((point - 0x10000) & 0x3FF));
}

[[nodiscard]] constexpr unsigned char byteAt(const char* text) noexcept { return static_cast<unsigned char>(*text); }

[[nodiscard]] constexpr bool isContinuation(char byte) noexcept { return (byteAt(&byte) & 0xC0) == 0x80; }

/// The number of bytes of the first character of `text` if it is UTF-8: 1 to 4; otherwise, and for empty text, 0.
/// Surrogate halves, overlong forms and numbers above U+10FFFF are not UTF-8.
[[nodiscard]] constexpr std::size_t validSequence(std::string_view text) noexcept {
  if (text.empty()) return 0;
  const unsigned char lead = byteAt(text.data());
  if (lead < 0x80) return 1;
  const std::size_t size = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
  if (size == 0 || text.size() < size) return 0;
  const unsigned char second = byteAt(text.data() + 1);
  const unsigned char from = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const unsigned char to = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  if (second < from || second > to) return 0;
  for (std::size_t i = 2; i < size; ++i) {
    if (!isContinuation(text[i])) return 0;
  }
  return size;
}

/// A character and the number of bytes that it takes.
struct Character {
  char32_t point;
  std::size_t size;  // in bytes
};

/// The first character of text that is UTF-8, except that lone halves are allowed. The text is not checked: it must
/// contain the whole character.
[[nodiscard]] constexpr Character decode(const char* text) noexcept {
  const char32_t lead = byteAt(text);
  const auto bits = [text](std::size_t i) { return static_cast<char32_t>(byteAt(text + i) & 0x3F); };
  if (lead < 0x80) return {lead, 1};
  if (lead < 0xE0) return {(lead & 0x1F) << 6 | bits(1), 2};
  if (lead < 0xF0) return {(lead & 0x0F) << 12 | bits(1) << 6 | bits(2), 3};
  return {(lead & 0x07) << 18 | bits(1) << 12 | bits(2) << 6 | bits(3), 4};
}

/// The bytes of one character.
struct Encoded {
  char bytes[4];
  std::size_t size;
  [[nodiscard]] constexpr std::string_view view() const noexcept { return {bytes, size}; }
};

/// `point` is at most U+10FFFF. A surrogate half becomes the three bytes of its number.
[[nodiscard]] constexpr Encoded encode(char32_t point) noexcept {
  const auto tail = [point](int shift) { return static_cast<char>(0x80 | (point >> shift & 0x3F)); };
  if (point < 0x80) return {{static_cast<char>(point)}, 1};
  if (point < 0x800) return {{static_cast<char>(0xC0 | point >> 6), tail(0)}, 2};
  if (point < 0x10000) return {{static_cast<char>(0xE0 | point >> 12), tail(6), tail(0)}, 3};
  return {{static_cast<char>(0xF0 | point >> 18), tail(12), tail(6), tail(0)}, 4};
}

/// The number of UTF-16 units of text that is UTF-8, except that lone halves are allowed.
[[nodiscard]] constexpr std::size_t unitCount(std::string_view text) noexcept {
  std::size_t units = 0;
  for (const char byte : text) {
    units += static_cast<std::size_t>(!isContinuation(byte)) + static_cast<std::size_t>(byteAt(&byte) >= 0xF0);
  }
  return units;
}

[[nodiscard]] constexpr bool isAscii(std::string_view text) noexcept {
  unsigned char all = 0;
  for (const char byte : text) all |= byteAt(&byte);
  return all < 0x80;
}

[[nodiscard]] constexpr bool isValid(std::string_view text) noexcept {
  while (!text.empty()) {
    const std::size_t size = validSequence(text);
    if (size == 0) return false;
    text.remove_prefix(size);
  }
  return true;
}

}  // namespace norvik::utf8
