// tests/programs/norvik-log/StrictJson.h - a strict reader of lines of JSON (RFC 8259). It accepts only objects of
// texts, whole numbers and truth values, with unique names, in UTF-8.
#pragma once

#include <algorithm>
#include <cstddef>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace norvik_log_test {

class StrictJson {
 public:
  using Object = std::map<std::string, std::string>;  // numbers and truth values as written

  /// One object in each line. Throws std::runtime_error.
  static std::vector<Object> lines(std::string_view text) {
    std::vector<Object> objects;
    while (!text.empty()) {
      const std::size_t end = text.find('\n');
      if (end == text.npos) throw std::runtime_error("the last line has no end");
      StrictJson reader(text.substr(0, end));
      objects.push_back(reader.object());
      if (!reader.rest_.empty()) reader.fail("text behind the object");
      text.remove_prefix(end + 1);
    }
    return objects;
  }

 private:
  explicit StrictJson(std::string_view text) : whole_(text), rest_(text) {}

  [[noreturn]] void fail(const std::string& what) const {
    throw std::runtime_error(what + " at byte " + std::to_string(whole_.size() - rest_.size()) + " of " +
                             std::string(whole_));
  }
  bool takes(char byte) {
    if (!rest_.starts_with(byte)) return false;
    rest_.remove_prefix(1);
    return true;
  }
  void expect(char byte) {
    if (!takes(byte)) fail(std::string("no ") + byte);
  }
  unsigned char next() {
    if (rest_.empty()) fail("no end of a text");
    const auto byte = static_cast<unsigned char>(rest_.front());
    rest_.remove_prefix(1);
    return byte;
  }

  Object object() {
    Object result;
    expect('{');
    if (takes('}')) return result;
    do {
      const std::string name = text();
      expect(':');
      if (!result.emplace(name, value()).second) fail("a name twice");
    } while (takes(','));
    expect('}');
    return result;
  }
  std::string value() {
    if (rest_.starts_with('"')) return text();
    for (const std::string_view word : {"true", "false", "null"}) {
      if (!rest_.starts_with(word)) continue;
      rest_.remove_prefix(word.size());
      return std::string(word);
    }
    return number();
  }
  std::string number() {
    const std::string_view begin = rest_;
    takes('-');
    const std::size_t digits = std::min(rest_.find_first_not_of("0123456789"), rest_.size());
    if (digits == 0 || (digits > 1 && rest_.front() == '0')) fail("no whole number");
    rest_.remove_prefix(digits);
    return std::string(begin.substr(0, begin.size() - rest_.size()));
  }
  std::string text() {
    expect('"');
    std::string result;
    for (;;) {
      const unsigned char byte = next();
      if (byte == '"') return result;
      if (byte < 0x20) fail("a control character");
      if (byte == '\\') {
        escape(result);
      } else if (byte < 0x80) {
        result += static_cast<char>(byte);
      } else {
        character(result, byte);
      }
    }
  }
  void escape(std::string& result) {
    constexpr std::string_view letters = "\"\\/bfnrt", meant = "\"\\/\b\f\n\r\t";
    const char kind = static_cast<char>(next());
    if (const std::size_t at = letters.find(kind); at != letters.npos) {
      result += meant[at];
      return;
    }
    if (kind != 'u') fail("no escape");
    unsigned point = fourDigits();
    if (point >= 0xdc00 && point < 0xe000) fail("a low surrogate alone");
    if (point >= 0xd800 && point < 0xdc00) {
      expect('\\');
      expect('u');
      const unsigned low = fourDigits();
      if (low < 0xdc00 || low >= 0xe000) fail("a high surrogate alone");
      point = 0x10000 + ((point - 0xd800) << 10) + (low - 0xdc00);
    }
    append(result, point);
  }
  unsigned fourDigits() {
    unsigned number = 0;
    for (int i = 0; i < 4; ++i) {
      const std::size_t digit = std::string_view("0123456789abcdef0123456789ABCDEF").find(static_cast<char>(next()));
      if (digit == std::string_view::npos) fail("no hexadecimal digit");
      number = number * 16 + static_cast<unsigned>(digit % 16);
    }
    return number;
  }
  /// A character of UTF-8, whose first byte is given. Refuses overlong forms, surrogates and numbers above U+10FFFF.
  void character(std::string& result, unsigned char first) {
    const int more = first >= 0xf0 ? 3 : first >= 0xe0 ? 2 : 1;
    if (first < 0xc2 || first > 0xf4) fail("a byte that begins no character");
    unsigned point = first & (0x3fU >> more);
    for (int i = 0; i < more; ++i) {
      const unsigned char byte = next();
      if ((byte & 0xc0) != 0x80) fail("a character without its end");
      point = point << 6 | (byte & 0x3f);
    }
    constexpr unsigned least[] = {0, 0x80, 0x800, 0x10000};
    if (point < least[more] || point > 0x10ffff || (point >= 0xd800 && point < 0xe000)) fail("no character");
    append(result, point);
  }
  static void append(std::string& result, unsigned point) {
    if (point < 0x80) {
      result += static_cast<char>(point);
      return;
    }
    const int more = point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
    constexpr unsigned marks[] = {0, 0xc0, 0xe0, 0xf0};
    result += static_cast<char>(marks[more] | point >> (6 * more));
    for (int i = more - 1; i >= 0; --i) result += static_cast<char>(0x80 | (point >> (6 * i) & 0x3f));
  }

  std::string_view whole_, rest_;
};

}  // namespace norvik_log_test
