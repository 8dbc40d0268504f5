#include "NorvikCore/platform/values/internal/Utf8Words.h"

#include <gtest/gtest.h>

#include <string>

namespace norvik::detail {
namespace {

TEST(Utf8Words, HeaderExample) {
  EXPECT_TRUE(isAsciiByWords("payslip 40 written"));
  EXPECT_TRUE(isValidByWords("payslip of Zo\xC3\xAB written"));
  EXPECT_EQ(unitCountByWords("payslip of Zo\xC3\xAB written"), 22u);
}

TEST(Utf8Words, UnitsAreCountedAtEveryPlace) {
  const struct {
    const char* character;
    std::size_t units;
  } rows[] = {{"\x7F", 1},         {"\xC2\x80", 1},     {"\xDF\xBF", 1},         {"\xE2\x82\xAC", 1},
              {"\xED\xA0\xBD", 1}, {"\xEF\xBF\xBF", 1}, {"\xF0\x9F\x92\xB7", 2}, {"\xF4\x8F\xBF\xBF", 2}};
  for (const auto& row : rows) {
    for (std::size_t before = 0; before <= 20; ++before) {
      const std::string text = std::string(before, 'x') + row.character + std::string(20 - before, 'x');
      EXPECT_EQ(unitCountByWords(text), 20 + row.units) << row.character << ' ' << before;
    }
    std::string many;
    for (std::size_t count = 0; count < 40; ++count, many += row.character)
      EXPECT_EQ(unitCountByWords(many), count * row.units) << row.character;
  }
}

TEST(Utf8Words, AsciiIsBothAtEveryLength) {
  for (std::size_t size = 0; size <= 80; ++size) {
    EXPECT_TRUE(isAsciiByWords(std::string(size, '\x7F'))) << size;
    EXPECT_TRUE(isValidByWords(std::string(size, '\x7F'))) << size;
  }
}

TEST(Utf8Words, ALetterBeyondAsciiIsFoundAtEveryPlace) {
  for (std::size_t size = 2; size <= 80; ++size) {
    for (std::size_t at = 0; at + 2 <= size; ++at) {
      const std::string text = std::string(size, 'x').replace(at, 2, "\xC2\xA3");
      EXPECT_FALSE(isAsciiByWords(text)) << size << ' ' << at;
      EXPECT_TRUE(isValidByWords(text)) << size << ' ' << at;
    }
  }
}

TEST(Utf8Words, AWrongByteIsFoundAtEveryPlace) {
  for (std::size_t size = 1; size <= 80; ++size) {
    for (std::size_t at = 0; at < size; ++at) {
      for (const char wrong : {'\xFF', '\xA3', '\xC2'}) {
        std::string text(size, 'x');
        text[at] = wrong;
        EXPECT_FALSE(isAsciiByWords(text)) << size << ' ' << at;
        EXPECT_FALSE(isValidByWords(text)) << size << ' ' << at;
      }
    }
  }
}

TEST(Utf8Words, ACopyHasEveryByteInItsPlaceAndNoneBeyond) {
  std::string text;
  for (std::size_t size = 1; size <= 100; ++size) {
    text += static_cast<char>(' ' + size % 95);
    std::string copy(size + 2, '#');
    EXPECT_TRUE(copyingIsAscii(copy.data() + 1, text)) << size;
    EXPECT_EQ(copy, '#' + text + '#');
    for (std::size_t at = 0; at < size; ++at) {
      std::string other = text;
      other[at] = '\x80';
      EXPECT_FALSE(copyingIsAscii(copy.data() + 1, other)) << size << ' ' << at;
      EXPECT_EQ(copy, '#' + other + '#');
    }
  }
}

TEST(Utf8Words, ACharacterThatEndsWithTheTextIsWhole) {
  EXPECT_TRUE(isValidByWords("1234567\xC2\xA3"));
  EXPECT_TRUE(isValidByWords("12345\xF0\x9F\x92\xB7"));
  EXPECT_FALSE(isValidByWords("12345\xF0\x9F\x92"));
  EXPECT_FALSE(isValidByWords("\xED\xA0\xBD 12345678")) << "a lone half";
  EXPECT_FALSE(isValidByWords("12345678\xED\xA0\xBD")) << "a lone half";
}

}  // namespace
}  // namespace norvik::detail
