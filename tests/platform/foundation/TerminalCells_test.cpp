#include "NorvikCore/platform/foundation/TerminalCells.h"

#include <gtest/gtest.h>

using namespace norvik;

TEST(TerminalCells, HeaderExample) {
  EXPECT_EQ(terminalCells("Zo\u00EB"), 3u);
  EXPECT_EQ(terminalCells("Zoe\u0308"), 3u);
  EXPECT_EQ(terminalCells(U'\u738B'), 2u);
}

TEST(TerminalCells, OfACharacter) {
  const struct {
    const char* why;
    char32_t character;
    std::size_t cells;
  } rows[] = {
      {"a letter", U'a', 1},
      {"a space", U' ', 1},
      {"the last of ASCII", U'~', 1},
      {"NUL", 0, 0},
      {"a tab", U'\t', 0},
      {"a line feed", U'\n', 0},
      {"unit separator, before the space", 0x1F, 0},
      {"delete", 0x7F, 0},
      {"the last C1 control", 0x9F, 0},
      {"a no-break space, behind it", 0xA0, 1},
      {"a soft hyphen", 0xAD, 1},
      {"an accented letter", 0xE9, 1},
      {"an ambiguous sign is narrow", 0xB1, 1},
      {"an ambiguous letter is narrow", 0x3B1, 1},
      {"an ambiguous circled digit is narrow", 0x2460, 1},
      {"the first combining accent", 0x300, 0},
      {"an enclosing circle", 0x20DD, 0},
      {"a Hebrew point", 0x5B0, 0},
      {"an Arabic vowel", 0x64E, 0},
      {"an Arabic letter", 0x639, 1},
      {"the Arabic number sign is drawn", 0x600, 1},
      {"a Devanagari vowel sign that takes its own cell", 0x93E, 1},
      {"a Devanagari virama", 0x94D, 0},
      {"a zero width space", 0x200B, 0},
      {"a zero width joiner", 0x200D, 0},
      {"a right-to-left override", 0x202E, 0},
      {"a line separator", 0x2028, 0},
      {"a byte order mark", 0xFEFF, 0},
      {"a variation selector", 0xFE0F, 0},
      {"Chinese", 0x738B, 2},
      {"Hiragana", 0x3042, 2},
      {"Katakana", 0x30AB, 2},
      {"Katakana of half the width", 0xFF76, 1},
      {"a Latin letter of full width", 0xFF21, 2},
      {"an ideographic space", 0x3000, 2},
      {"a Hangul syllable", 0xAC00, 2},
      {"a Hangul initial consonant", 0x1100, 2},
      {"a Hangul vowel", 0x1161, 0},
      {"a Hangul final consonant", 0x11A8, 0},
      {"Chinese beyond the basic plane", 0x20000, 2},
      {"an emoji", 0x1F4B7, 2},
      {"an emoji of the basic plane", 0x231A, 2},
      {"a sign that is an emoji only by a selector", 0x263A, 1},
      {"a regional indicator, of which a flag has two", 0x1F1EC, 1},
      {"a private character", 0xE000, 1},
      {"a surrogate half", 0xD800, 1},
      {"a number that is no character", 0x10FFFF, 1},
  };
  for (const auto& row : rows) EXPECT_EQ(terminalCells(row.character), row.cells) << row.why;
}

TEST(TerminalCells, OfATextAreTheSum) {
  EXPECT_EQ(terminalCells(""), 0u);
  EXPECT_EQ(terminalCells("\u738B\u5C0F\u660E Wu"), 9u);
  EXPECT_EQ(terminalCells("\U0001F1EC\U0001F1E7"), 2u) << "a flag";
  EXPECT_EQ(terminalCells("\U0001F469\u200D\U0001F4BB"), 4u) << "joined emoji take the cells of all";
  EXPECT_EQ(terminalCells("\u1112\u1161\u11AB"), 2u) << "a Korean syllable in its parts";
  EXPECT_EQ(terminalCells("Ade\u0301ba\u0301yo\u0323\u0300"), 7u);
}
