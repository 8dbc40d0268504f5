#include "NorvikCore/platform/values/NSException.h"
#include "NorvikCore/platform/values/NSMutableString.h"
#include "NorvikCore/platform/values/NSString.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace norvik {
namespace {

using testing::ElementsAre;

constexpr NSRange none{NSNotFound, 0};

TEST(NSStringSearch, FindsTheFirstOccurrenceInUnits) {
  const struct {
    const char* why;
    NSString text, wanted;
    NSRange expected;
  } rows[] = {
      {"at the start", "pay pay", "pay", {0, 3}},
      {"at the end", "net pay", "pay", {4, 3}},
      {"the whole", "pay", "pay", {0, 3}},
      {"absent", "pay", "Pay", none},
      {"longer than the text", "pay", "payday", none},
      {"empty", "pay", "", none},
      {"empty in empty", "", "", none},
      {"behind a pair of halves", "\U0001F4B7\u00A3x", "x", {3, 1}},
      {"a pair itself", "a\U0001F4B7", "\U0001F4B7", {1, 2}},
      {"composed is not decomposed", "caf\u00E9", "e\u0301", none},
  };
  for (const auto& row : rows) EXPECT_EQ(row.text.rangeOfString(row.wanted), row.expected) << row.why;
}

TEST(NSStringSearch, OptionsSayWhereAndHow) {
  const NSString text = "ab\u00C9 AB\u00E9 ab";
  EXPECT_EQ(text.rangeOfString("ab", NSBackwardsSearch), (NSRange{8, 2}));
  EXPECT_EQ(text.rangeOfString("AB", NSCaseInsensitiveSearch), (NSRange{0, 2}));
  EXPECT_EQ(text.rangeOfString("aB\u00E9", NSCaseInsensitiveSearch | NSBackwardsSearch), (NSRange{4, 3}));
  EXPECT_EQ(text.rangeOfString("b", NSAnchoredSearch), none);
  EXPECT_EQ(text.rangeOfString("ab", NSAnchoredSearch), (NSRange{0, 2}));
  EXPECT_EQ(text.rangeOfString("ab", NSAnchoredSearch | NSBackwardsSearch), (NSRange{8, 2}));
  EXPECT_EQ(text.rangeOfString("a", NSAnchoredSearch | NSBackwardsSearch), none);
  EXPECT_EQ(text.rangeOfString("B", NSAnchoredSearch | NSCaseInsensitiveSearch), none);
  EXPECT_EQ(text.rangeOfString("AB", NSAnchoredSearch | NSBackwardsSearch | NSCaseInsensitiveSearch), (NSRange{8, 2}));
  EXPECT_EQ(text.rangeOfString("AB", NSLiteralSearch), (NSRange{4, 2}));
}

TEST(NSStringSearch, FoldingMayChangeHowManyBytesALetterTakes) {
  EXPECT_EQ(NSString("\u212Ag 5").rangeOfString("KG", NSCaseInsensitiveSearch), (NSRange{0, 2}));  // the Kelvin sign
  EXPECT_EQ(NSString("5 kg").rangeOfString("\u212Ag", NSCaseInsensitiveSearch | NSBackwardsSearch), (NSRange{2, 2}));
}

TEST(NSStringSearch, CaseAsideTheLastOneIsFoundFromTheEnd) {
  const NSString text = "Zo\u00CB, zo\u00EB and ZO\u00CB.";
  constexpr auto fromTheEnd = NSCaseInsensitiveSearch | NSBackwardsSearch;
  EXPECT_EQ(text.rangeOfString("zo\u00EB", fromTheEnd), (NSRange{13, 3}));
  EXPECT_EQ(text.rangeOfString("zo\u00EB", fromTheEnd, {0, 12}), (NSRange{5, 3}));
  EXPECT_EQ(text.rangeOfString("zo\u00EB", fromTheEnd | NSAnchoredSearch), (NSRange{NSNotFound, 0}));
  EXPECT_EQ(text.rangeOfString("O\u00EB.", fromTheEnd | NSAnchoredSearch), (NSRange{14, 3}));
  EXPECT_EQ(NSString("aaaa").rangeOfString("AA", fromTheEnd), (NSRange{2, 2}));
  EXPECT_EQ(NSString("aaaa").rangeOfString("AA", fromTheEnd | NSAnchoredSearch), (NSRange{2, 2}));
}

TEST(NSStringSearch, StaysWithinTheRangeGiven) {
  const NSString text = "a-\u00E9-a";
  EXPECT_EQ(text.rangeOfString("a", NSLiteralSearch, {1, 4}), (NSRange{4, 1}));
  EXPECT_EQ(text.rangeOfString("a", NSLiteralSearch, {1, 3}), none);
  EXPECT_EQ(text.rangeOfString("a", NSLiteralSearch, {5, 0}), none);
  EXPECT_EQ(text.rangeOfString("-", NSBackwardsSearch, {0, 3}), (NSRange{1, 1}));
  EXPECT_EQ(text.rangeOfString("-", NSAnchoredSearch, {1, 4}), (NSRange{1, 1}));
  EXPECT_THROW((void)text.rangeOfString("a", NSLiteralSearch, {3, 3}), NSException);
}

TEST(NSStringSearch, HalvesAreFoundInsideCharacters) {
  const NSString text = "a\U0001F4B7b";
  const NSString high = text.substringWithRange({1, 1}), low = text.substringWithRange({2, 1});
  EXPECT_EQ(text.rangeOfString(low), (NSRange{2, 1}));
  EXPECT_EQ(text.rangeOfString(high), (NSRange{1, 1}));
  EXPECT_EQ(text.rangeOfString("a" + high), (NSRange{0, 2}));
  EXPECT_EQ(text.rangeOfString(low + "B", NSCaseInsensitiveSearch), (NSRange{2, 2}));
  EXPECT_EQ(text.rangeOfString("b", NSLiteralSearch, {2, 2}), (NSRange{3, 1}));
  EXPECT_TRUE(text.hasPrefix("a" + high));
  EXPECT_TRUE(text.hasSuffix(low + "b"));
  EXPECT_FALSE(text.hasSuffix(high + "b"));
}

TEST(NSStringSearch, LettersBeyondTheFirstPlaneFoldBesideAHalfToo) {
  const NSString high = NSString::fromCodePoint(0xD83D), low = NSString::fromCodePoint(0xDCB7);
  const NSString upper = "\U00010400", lower = "\U00010428";
  constexpr auto caseAside = NSCaseInsensitiveSearch;
  EXPECT_EQ((low + upper).rangeOfString(low + lower, caseAside), (NSRange{0, 3}));
  EXPECT_EQ(("x" + upper + high).rangeOfString(lower + high, caseAside), (NSRange{1, 3}));
  EXPECT_EQ((upper + "\U0001F4B7").rangeOfString(lower + high, caseAside | NSBackwardsSearch), (NSRange{0, 3}));
  EXPECT_EQ(("\U0001F4B7" + upper).rangeOfString(low + lower, caseAside | NSBackwardsSearch | NSAnchoredSearch),
            (NSRange{1, 3}));
  EXPECT_EQ((low + upper).rangeOfString(low + lower), none);
  // The halves of a character that a range cuts do not fold, because they are not letters.
  EXPECT_EQ((upper + "x").rangeOfString("X", caseAside, {1, 2}), (NSRange{2, 1}));
  EXPECT_EQ((upper + upper).rangeOfString(lower, caseAside, {1, 3}), (NSRange{2, 2}));
  EXPECT_EQ((upper + upper).rangeOfString(lower, caseAside, {1, 2}), none);
  const NSString halfOfUpper = upper.substringFromIndex(1), halfOfLower = lower.substringFromIndex(1);
  EXPECT_EQ((upper + "x").rangeOfString(halfOfUpper + "X", caseAside), (NSRange{1, 2}));
  EXPECT_EQ((upper + "x").rangeOfString(halfOfLower + "X", caseAside), none);
}

TEST(NSStringSearch, PrefixesAndSuffixes) {
  const NSString text = "nk_days\u00E9";
  EXPECT_TRUE(text.hasPrefix("nk_"));
  EXPECT_TRUE(text.hasPrefix(text));
  EXPECT_FALSE(text.hasPrefix("NK_"));
  EXPECT_FALSE(text.hasPrefix(""));
  EXPECT_TRUE(text.hasSuffix("\u00E9"));
  EXPECT_TRUE(text.hasSuffix(text));
  EXPECT_FALSE(text.hasSuffix("x" + text));
  EXPECT_FALSE(text.hasSuffix(""));
  EXPECT_TRUE(text.containsString("day"));
  EXPECT_FALSE(text.containsString("Day"));
}

TEST(NSStringSearch, SplittingKeepsEmptyPieces) {
  EXPECT_THAT(NSString("a,b,c").componentsSeparatedBy(","), ElementsAre("a", "b", "c"));
  EXPECT_THAT(NSString(",a,,").componentsSeparatedBy(","), ElementsAre("", "a", "", ""));
  EXPECT_THAT(NSString("").componentsSeparatedBy(","), ElementsAre(""));
  EXPECT_THAT(NSString("abc").componentsSeparatedBy(""), ElementsAre("abc"));
  EXPECT_THAT(NSString("abc").componentsSeparatedBy(","), ElementsAre("abc"));
  EXPECT_THAT(NSString("\u00E9 | \U0001F4B7").componentsSeparatedBy(" | "), ElementsAre("\u00E9", "\U0001F4B7"));
}

TEST(NSStringSearch, ReplacingGoesFromTheStartWithoutOverlap) {
  EXPECT_EQ(NSString("aaa").stringByReplacingOccurrencesOfString("aa", "b"), "ba");
  EXPECT_EQ(NSString("a<b<c").stringByReplacingOccurrencesOfString("<", "\001<"), "a\001<b\001<c");
  EXPECT_EQ(NSString("a\u00C9b\u00E9").stringByReplacingOccurrencesOfString("\u00E9", "-", NSCaseInsensitiveSearch),
            "a-b-");
  EXPECT_EQ(NSString("abc").stringByReplacingOccurrencesOfString("", "x"), "abc");
  EXPECT_EQ(NSString("abc").stringByReplacingOccurrencesOfString("b", ""), "ac");
  const NSString text = std::string("abc");
  EXPECT_TRUE(text.stringByReplacingOccurrencesOfString("x", "y").isIdenticalTo(text));
}

TEST(NSStringSearch, ReplacingMayJoinHalves) {
  const NSString high = NSString::fromCodePoint(0xD83D), low = NSString::fromCodePoint(0xDCB7);
  EXPECT_EQ((high + "-" + low).stringByReplacingOccurrencesOfString("-", ""), "\U0001F4B7");
}

/// Such texts come from other programs. With quadratic time this would take many minutes.
TEST(NSStringSearch, BytesThatAreNotUtf8AreReplacedInALongTextInLinearTime) {
  constexpr std::size_t lines = 200'000;
  std::string bytes, expected;
  for (std::size_t i = 0; i < lines; ++i) {
    bytes += "pay \xA3 1,234.50\n";
    expected += "pay \u00A3 1,234.50\n";
  }
  const NSString text = NSString::fromBytes(bytes), pound = NSString::fromBytes("\xA3");
  EXPECT_EQ(text.stringByReplacingOccurrencesOfString(pound, "\u00A3").view(), expected);
  EXPECT_EQ(text.componentsSeparatedBy(pound).size(), lines + 1);
}

/// With quadratic time each of these would take minutes.
TEST(NSStringSearch, RepetitiveTextIsSearchedInLinearTimeInEveryManner) {
  constexpr std::size_t length = 400'000;
  const NSString half = NSString::fromCodePoint(0xDCB7);
  for (const NSString& letter : {NSString("a"), NSString("\u00E9"), NSString("\U00010428"), half}) {
    NSMutableString run;
    for (std::size_t i = 0; i < length / 2; ++i) run.appendString(letter);
    const NSString text = run.string() + run.string(), before = "b" + run.string(), after = run.string() + "b";
    for (const auto folded : {NSLiteralSearch, NSCaseInsensitiveSearch}) {
      for (const auto direction : {NSLiteralSearch, NSBackwardsSearch}) {
        EXPECT_EQ(text.rangeOfString(before, folded | direction), none);
        EXPECT_EQ(text.rangeOfString(after, folded | direction), none);
        EXPECT_EQ((text + "b").rangeOfString(after, folded | direction).location, text.length() - run.length());
        EXPECT_EQ(text.rangeOfString(after, folded | direction | NSAnchoredSearch), none);
      }
      EXPECT_EQ(text.rangeOfString(after, folded, {1, text.length() - 2}), none);
      EXPECT_TRUE(text.stringByReplacingOccurrencesOfString(after, "", folded).isIdenticalTo(text));
      EXPECT_EQ((before + before).stringByReplacingOccurrencesOfString(before, "-", folded), "--");
    }
    EXPECT_EQ((after + after).componentsSeparatedBy(after).size(), 3u);
    EXPECT_EQ(text.componentsSeparatedBy(letter + letter).size(), length / 2 + 1);
    EXPECT_FALSE(text.hasPrefix(after));
    EXPECT_FALSE(text.hasSuffix(before));
  }
}

TEST(NSStringSearch, HalvesAreReplacedInsideCharactersWithoutOverlap) {
  const NSString low = NSString::fromCodePoint(0xDCB7);
  EXPECT_EQ(NSString("\U0001F4B7\U0001F4B7").stringByReplacingOccurrencesOfString(low, low), "\U0001F4B7\U0001F4B7");
  EXPECT_EQ((low + low + low).stringByReplacingOccurrencesOfString(low + low, "-"), "-" + low);
  EXPECT_EQ((low + "Pay").stringByReplacingOccurrencesOfString(low + "PAY", "-", NSCaseInsensitiveSearch), "-");
  EXPECT_EQ((low + "Pay").stringByReplacingOccurrencesOfString(low + "PAY", "-"), low + "Pay");
}

TEST(NSStringSearch, TrimmingTakesEveryKindOfSpaceOffBothEnds) {
  EXPECT_EQ(NSString(" \t\r\n pay day\v\f ").stringByTrimming(), "pay day");
  EXPECT_EQ(NSString("\u00A0\u2003pay\u3000\u2028").stringByTrimming(), "pay");
  EXPECT_EQ(NSString(" \u2003 ").stringByTrimming(), "");
  EXPECT_EQ(NSString("\u200Bpay").stringByTrimming(), "\u200Bpay");  // has no width, but is not a space
}

}  // namespace
}  // namespace norvik
