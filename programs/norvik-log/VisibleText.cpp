#include "VisibleText.h"

#include <cstddef>

namespace norvik_log {
namespace {

constexpr char digits[] = "0123456789abcdef";

struct Character {
  char32_t point = 0;
  std::size_t size = 0;  // 0: the first byte is not UTF-8
};

/// Rejects overlong forms, surrogate halves and characters beyond U+10FFFF.
Character characterAt(std::string_view text) noexcept {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte(0);
  if (first < 0x80) return {first, 1};
  const std::size_t size = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  if (first < 0xc2 || first > 0xf4 || text.size() < size) return {};
  char32_t point = first & (0xffu >> (size + 1));
  for (std::size_t i = 1; i < size; ++i) {
    if ((byte(i) & 0xc0) != 0x80) return {};
    point = point << 6 | (byte(i) & 0x3fu);
  }
  const bool isOverlong = (size == 3 && point < 0x800) || (size == 4 && point < 0x10000);
  if (isOverlong || point > 0x10ffff || (point >= 0xd800 && point <= 0xdfff)) return {};
  return {point, size};
}

bool isPlainAscii(char c) noexcept { return c >= ' ' && c < '\x7f'; }

bool isEscaped(char32_t point, LineFeeds lineFeeds) noexcept {
  if (point == '\n') return lineFeeds == LineFeeds::Escaped;
  if (point == '\t') return false;
  return point < ' ' || (point >= 0x7f && point <= 0x9f) || (point >= 0x2028 && point <= 0x202e) ||
         (point >= 0x2066 && point <= 0x2069);
}

void appendEscape(std::string& result, char32_t point) {
  if (point >= 0x100) {
    result += {'\\', 'u', digits[point >> 12 & 15], digits[point >> 8 & 15]};
  } else {
    result += "\\x";
  }
  result += {digits[point >> 4 & 15], digits[point & 15]};
}

}  // namespace

void appendVisible(std::string& result, std::string_view text, LineFeeds lineFeeds) {
  while (!text.empty()) {
    std::size_t plain = 0;
    while (plain < text.size() && isPlainAscii(text[plain])) ++plain;
    result += text.substr(0, plain);
    text.remove_prefix(plain);
    if (text.empty()) return;
    const Character character = characterAt(text);
    const std::size_t size = character.size == 0 ? 1 : character.size;
    if (character.size == 0) {
      appendEscape(result, static_cast<unsigned char>(text[0]));
    } else if (isEscaped(character.point, lineFeeds)) {
      appendEscape(result, character.point);
    } else {
      result += text.substr(0, size);
    }
    text.remove_prefix(size);
  }
}

void appendValidUtf8(std::string& result, std::string_view text) {
  while (!text.empty()) {
    std::size_t plain = 0;
    while (plain < text.size() && static_cast<unsigned char>(text[plain]) < 0x80) ++plain;
    result += text.substr(0, plain);
    text.remove_prefix(plain);
    if (text.empty()) return;
    const std::size_t size = characterAt(text).size;
    result += size == 0 ? std::string_view("\xef\xbf\xbd") : text.substr(0, size);
    text.remove_prefix(size == 0 ? 1 : size);
  }
}

}  // namespace norvik_log
