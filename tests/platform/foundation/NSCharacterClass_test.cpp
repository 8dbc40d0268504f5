#include "NorvikCore/platform/foundation/NSCharacterClass.h"

#include "NorvikCore/platform/values/NSString.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>

#include <string_view>

namespace norvik {
namespace {

constexpr char32_t lastCodePoint = 0x10FFFF;

}  // namespace

TEST(NSCharacterClass, HeaderExample) {
  EXPECT_TRUE(isUppercaseLetter(u'\u00C9'));
  EXPECT_TRUE(isWhitespace(U'\u00A0'));
}

TEST(NSCharacterClass, CapitalsAreUppercaseAndTitleCaseLetters) {
  const struct {
    const char* why;
    char32_t character;
    bool expected;
  } rows[] = {
      {"before the capitals", U'@', false},
      {"the first", U'A', true},
      {"the last of ASCII", U'Z', true},
      {"behind the capitals", U'[', false},
      {"a small letter", U'a', false},
      {"an accent", U'\u00C9', true},
      {"title case", U'\u01C5', true},
      {"a dotted I", U'\u0130', true},
      {"a Roman numeral", U'\u2160', false},
      {"a circled letter", U'\u24B6', false},
      {"beyond 16 bits", U'\U00010400', true},
      {"no case", U'\u00AA', false},
      {"a high half", char32_t{0xD801}, false},
      {"a low half", char32_t{0xDC00}, false},
      {"NUL", U'\0', false},
      {"no character", char32_t{0x110000}, false},
  };
  for (const auto& row : rows) EXPECT_EQ(isUppercaseLetter(row.character), row.expected) << row.why;
}

TEST(NSCharacterClass, TheseAreTheBlanksAndTheLineBreaks) {
  constexpr std::u32string_view blanks =
      U"\t \u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009\u200A\u202F\u205F\u3000";
  constexpr std::u32string_view breaks = U"\n\v\f\r\u0085\u2028\u2029";
  for (char32_t character = 0; character <= lastCodePoint; ++character) {
    ASSERT_EQ(isWhitespace(character), blanks.find(character) != blanks.npos) << std::hex << int(character);
    ASSERT_EQ(isLineBreak(character), breaks.find(character) != breaks.npos) << std::hex << int(character);
  }
}

TEST(NSCharacterClass, BlanksAndLineBreaksAreUnicodesWhiteSpaceAndWhatTrimmingTakes) {
  for (char32_t character = 0; character <= lastCodePoint; ++character) {
    const bool expected = u_isUWhiteSpace(static_cast<UChar32>(character)) != 0;
    ASSERT_EQ(isWhitespace(character) || isLineBreak(character), expected) << std::hex << int(character);
    ASSERT_EQ(NSString::fromCodePoint(character).stringByTrimming().empty(), expected) << std::hex << int(character);
  }
}

}  // namespace norvik
