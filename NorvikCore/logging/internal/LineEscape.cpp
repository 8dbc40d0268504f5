#include "NorvikCore/logging/internal/LineEscape.h"

#include "NorvikCore/platform/values/Utf8.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>

namespace norvik::detail {
namespace {

constexpr char digits[] = "0123456789abcdef";

constexpr bool isPlain(char byte) noexcept { return byte >= ' ' && byte < '\x7f' && byte != '\\'; }

/// Tests whether one of the eight bytes is zero. It may be wrong if it reports a zero; it misses none.
constexpr std::uint64_t anyZero(std::uint64_t word) noexcept { return (word - 0x0101010101010101u) & ~word; }

/// Returns true if one of the eight bytes may not be plain.
bool mayNeedEscape(const char* text) noexcept {
  std::uint64_t word;
  std::memcpy(&word, text, sizeof word);
  const std::uint64_t isControl = word - 0x2020202020202020u;
  const std::uint64_t isDelete = anyZero(word ^ 0x7f7f7f7f7f7f7f7fu);
  const std::uint64_t isBackslash = anyZero(word ^ 0x5c5c5c5c5c5c5c5cu);
  return ((isControl | isDelete | isBackslash | word) & 0x8080808080808080u) != 0;
}

constexpr bool isEscapedPoint(char32_t point) noexcept {
  return (point >= 0x80 && point <= 0x9f) || (point >= 0x2028 && point <= 0x202e) ||
         (point >= 0x2066 && point <= 0x2069) || utf8::isHalf(point);
}

void appendByteEscape(std::string& line, unsigned byte) {
  const char text[] = {'\\', 'x', digits[byte >> 4 & 0xf], digits[byte & 0xf]};
  line.append(text, sizeof text);
}

void appendPointEscape(std::string& line, char32_t point) {
  if (point >= 0xdc80 && point <= 0xdcff) return appendByteEscape(line, static_cast<unsigned>(point - 0xdc00));
  const char text[] = {
      '\\', 'u', digits[point >> 12 & 0xf], digits[point >> 8 & 0xf], digits[point >> 4 & 0xf], digits[point & 0xf]};
  line.append(text, sizeof text);
}

void appendAsciiEscape(std::string& line, char byte) {
  switch (byte) {
    case '\\':
      line += "\\\\";
      break;
    case '\n':
      line += "\\n";
      break;
    case '\r':
      line += "\\r";
      break;
    case '\t':
      line += "\\t";
      break;
    default:
      appendByteEscape(line, static_cast<unsigned char>(byte));
  }
}

/// Removes `count` lower-case hexadecimal digits from the front; absent if there are fewer.
std::optional<unsigned> takeNumber(std::string_view& text, std::size_t count) noexcept {
  if (text.size() < count || text.substr(0, count).find_first_not_of(digits) != text.npos) return std::nullopt;
  unsigned number = 0;
  std::from_chars(text.data(), text.data() + count, number, 16);
  text.remove_prefix(count);
  return number;
}

/// Removes the escape after a backslash from the front; absent if it is not an escape.
std::optional<char16_t> takeEscape(std::string_view& text) noexcept {
  if (text.empty()) return std::nullopt;
  const char kind = text.front();
  text.remove_prefix(1);
  switch (kind) {
    case '\\':
      return u'\\';
    case 'n':
      return u'\n';
    case 'r':
      return u'\r';
    case 't':
      return u'\t';
    case 'x':
      if (const auto byte = takeNumber(text, 2)) return static_cast<char16_t>(*byte < 0x80 ? *byte : 0xdc00 + *byte);
      return std::nullopt;
    case 'u':
      if (const auto unit = takeNumber(text, 4)) return static_cast<char16_t>(*unit);
      return std::nullopt;
    default:
      return std::nullopt;
  }
}

}  // namespace

std::size_t plainPrefix(std::string_view text) noexcept {
  std::size_t at = 0;
  while (at + 8 <= text.size() && !mayNeedEscape(text.data() + at)) at += 8;
  // Test the last eight bytes at once, although some have been tested.
  if (at + 8 > text.size() && text.size() >= 8 && !mayNeedEscape(text.data() + text.size() - 8)) return text.size();
  while (at < text.size() && isPlain(text[at])) ++at;
  return at;
}

void appendEscaped(std::string& line, std::string_view text, char alsoEscaped) {
  std::size_t done = 0, at = 0;
  while (at < text.size()) {
    std::size_t plain = plainPrefix(text.substr(at));
    if (alsoEscaped != '\0') plain = std::min(plain, text.find(alsoEscaped, at) - at);
    at += plain;
    if (at >= text.size()) break;
    const utf8::Character character = utf8::decode(text.data() + at);
    const bool isEscaped = character.point < 0x80 || isEscapedPoint(character.point);
    if (isEscaped) {
      line.append(text.substr(done, at - done));
      done = at + character.size;
      if (character.point >= 0x80) {
        appendPointEscape(line, character.point);
      } else if (text[at] == alsoEscaped) {
        appendByteEscape(line, utf8::byteAt(text.data() + at));
      } else {
        appendAsciiEscape(line, text[at]);
      }
    }
    at += character.size;
  }
  line.append(text.substr(done));
}

std::optional<NSString> unescapedText(const NSString& line) {
  if (!line.isWellFormed()) return std::nullopt;
  std::u16string units;
  std::string_view rest = line.view();
  for (;;) {
    const std::size_t plain = std::min(rest.find('\\'), rest.size());
    units += NSString(rest.substr(0, plain)).toUtf16();
    rest.remove_prefix(plain);
    if (rest.empty()) return NSString::fromUtf16(units);
    rest.remove_prefix(1);
    const std::optional<char16_t> unit = takeEscape(rest);
    if (!unit) return std::nullopt;
    units += *unit;
  }
}

}  // namespace norvik::detail
