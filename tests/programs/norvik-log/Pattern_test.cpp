#include "Pattern.h"

#include <gtest/gtest.h>

#include "ByteSearch.h"

namespace norvik_log {
namespace {

TEST(Pattern, TellsTheLongestTextThatEveryMatchContains) {
  const struct {
    const char *pattern, *literal;
    bool matchesInPlace, needsCharacters;
  } rows[] = {
      {"paid", "paid", true, false},
      {"[a-z]+ rejected [0-9]+", " rejected ", true, false},
      {"ab*cde", "cde", true, false},
      {"ab?", "a", true, false},
      {"abc+d", "abc", true, false},
      {"x{2,3}yz", "yz", true, false},
      {"abc{0}", "ab", true, false},
      {"paid|unpaid", "", true, false},
      {"(paid|unpaid) twice", " twice", true, false},
      {"(?:optional)?always", "always", true, false},
      {"a\\.b\\\\c", "a.b\\c", true, false},
      {"^paid$", "paid", false, false},
      {"a.b", "a", true, true},
      {"[^a]b", "b", true, true},
      {"Zo\xc3\xab?", "Zo", true, true},
      {"\\bpaid\\b", "paid", true, false},
      {"[]x]y", "y", true, false},
      // These are not understood, so nothing is promised:
      {"(?i)paid", "", false, true},
      {"paid(?!x)", "", false, true},
      {"(*ANYCRLF)paid", "", false, true},
      {"a\\x41b", "", false, true},
      {"\\Qa+b\\E", "", false, true},
      {"(a)\\1", "", false, true},
      {"a++b", "", false, true},
      {"[[:alpha:]]x", "", false, true},
      {"paid)", "", false, true},
      {"[a", "", false, true},
      {"a\\", "", false, true},
  };
  for (const auto& row : rows) {
    const PatternTraits traits = traitsOf(row.pattern);
    EXPECT_EQ(traits.literal, row.literal) << row.pattern;
    EXPECT_EQ(traits.matchesInPlace, row.matchesInPlace) << row.pattern;
    EXPECT_EQ(traits.needsCharacters, row.needsCharacters) << row.pattern;
  }
}

TEST(Pattern, MatchesCharactersAndTheEndsOfLines) {
  const struct {
    const char *pattern, *text;
    bool ignoresCase, matches;
  } rows[] = {
      {"^Z.\xc3\xab$", "first\nZo\xc3\xab\nlast", false, true},
      {"^o", "Zo", false, false},
      {"a.b", "a\nb", false, false},
      {"a.b",
       "a\xc3\xab"
       "b",
       false, true},
      {"a..b",
       "a\xc3\xab"
       "b",
       false, false},
      {"a.b",
       "a\xff"
       "b",
       false, false},
      {"[0-9]b",
       "\xff"
       "1b",
       false, true},
      {"PAID", "paid", false, false},
      {"PAID", "paid", true, true},
      {"\xc3\x89", "\xc3\xa9", true, true},
      {"\\d{3}", "12", false, false},
      {"\\d{3}", "123", false, true},
  };
  for (const auto& row : rows) {
    const Pattern pattern(row.pattern, Pattern::Kind::Regular, row.ignoresCase);
    EXPECT_EQ(Pattern::Matcher(pattern).matches(row.text), row.matches) << row.pattern << " in " << row.text;
  }
}

TEST(Pattern, ALiteralIsNoExpression) {
  const Pattern pattern("a.B", Pattern::Kind::Literal, true);
  EXPECT_EQ(Pattern::Matcher(pattern).find("axb a.b", 0), 4u);
}

TEST(Pattern, SaysWhereItIsWrong) {
  try {
    const Pattern pattern("pay(roll", Pattern::Kind::Regular, false);
    FAIL();
  } catch (const PatternError& error) {
    EXPECT_STREQ(error.what(), "\"pay(roll\" is not a regular expression: missing closing parenthesis, at character 9");
  }
}

TEST(Pattern, GivesUpOnWhatTakesTooLong) {
  const Pattern pattern("^(a+)+$", Pattern::Kind::Regular, false);
  Pattern::Matcher matcher(pattern);
  EXPECT_FALSE(matcher.matches(std::string(60, 'a') + "b"));
  EXPECT_EQ(matcher.takeGivenUp(), 1u);
  EXPECT_EQ(matcher.takeGivenUp(), 0u);
  EXPECT_TRUE(matcher.matches("aaa"));
}

TEST(ByteSearch, FindsTheFirstPlaceWhereverItIs) {
  for (const std::string& text :
       {std::string("x"), std::string("paid"), std::string("aa"), std::string("Z\0\xff", 3), std::string(40, 'q')}) {
    const ByteSearch search(text);
    for (std::size_t before = 0; before < 70; ++before) {
      for (const std::size_t behind :
           {std::size_t{0}, std::size_t{1}, std::size_t{15}, std::size_t{16}, std::size_t{17}}) {
        const std::string block = std::string(before, '.') + text + std::string(behind, '.') + text;
        const char* const found = search.find(block.data(), block.data() + block.size());
        ASSERT_NE(found, nullptr) << before << " " << behind;
        ASSERT_EQ(found - block.data(), static_cast<std::ptrdiff_t>(before)) << behind;
        // Without its last byte, the text is not found.
        ASSERT_EQ(search.find(block.data(), block.data() + before + text.size() - 1), nullptr) << before;
      }
    }
  }
  const std::string block = "block";
  EXPECT_EQ(ByteSearch("").find(block.data(), block.data() + 5), block.data());
  EXPECT_EQ(ByteSearch("blocks").find(block.data(), block.data() + 5), nullptr);
}

}  // namespace
}  // namespace norvik_log
