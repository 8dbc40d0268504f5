#include "NorvikCore/platform/foundation/internal/DatePattern.h"

#include "NorvikCore/platform/foundation/internal/DateNames.h"

#include <gtest/gtest.h>

namespace norvik::detail {
namespace {

std::string written(std::string_view pattern, const DatePattern::Fields& fields) {
  const auto compiled = DatePattern::compile(pattern);
  if (!compiled) return "not compiled";
  char text[DatePattern::maximalLength];
  return std::string(text, compiled->write(text, fields));
}

const DatePattern::Fields afternoon{referenceDay(2021, 5, 10), 13 * 3600 + 14 * 60 + 15, 16, 3600};

TEST(DatePattern, HeaderExample) {
  const auto stamp = DatePattern::compile("yyyy/MM/dd HH:mm:ss:SSS");
  ASSERT_TRUE(stamp);
  char text[DatePattern::maximalLength];
  std::size_t at = 0;
  const std::size_t length = stamp->write(text, afternoon, &at);
  EXPECT_EQ(std::string(text, length), "2021/05/10 13:14:15:016");
  DatePattern::writeMillisecond(text + at, 17);
  EXPECT_EQ(std::string(text, length), "2021/05/10 13:14:15:017");
}

TEST(DatePattern, TellsWhereTheMillisecondStands) {
  const struct {
    const char* pattern;
    std::size_t at;
  } rows[] = {{"SSS", 0}, {"d.M. SSS", 6}, {"'SSS' SSS s", 4}, {"HH:mm:ss", 99}};
  for (const auto& row : rows) {
    const auto compiled = DatePattern::compile(row.pattern);
    ASSERT_TRUE(compiled) << row.pattern;
    char text[DatePattern::maximalLength];
    std::size_t at = 99;
    (void)compiled->write(text, afternoon, &at);
    EXPECT_EQ(at, row.at) << row.pattern;
  }
}

TEST(DatePattern, KnowsWhetherMoreThanThreeDigitsChangeWithinASecond) {
  for (const char* pattern : {"SSS", "yyyy/MM/dd HH:mm:ss:SSS", "HH:mm:ss", "'S' Z"})
    EXPECT_TRUE(DatePattern::compile(pattern)->isSteadyWithinSecond()) << pattern;
  for (const char* pattern : {"S", "SS", "SSSS", "SSS SSS", "SSS S"})
    EXPECT_FALSE(DatePattern::compile(pattern)->isSteadyWithinSecond()) << pattern;
}

TEST(DatePattern, WritesEveryMillisecondInThreeDigits) {
  char text[] = "<...>";
  DatePattern::writeMillisecond(text + 1, 0);
  EXPECT_STREQ(text, "<000>");
  DatePattern::writeMillisecond(text + 1, 9);
  EXPECT_STREQ(text, "<009>");
  DatePattern::writeMillisecond(text + 1, 87);
  EXPECT_STREQ(text, "<087>");
  DatePattern::writeMillisecond(text + 1, 999);
  EXPECT_STREQ(text, "<999>");
}

TEST(DatePattern, WritesEveryField) {
  const struct {
    const char *pattern, *expected;
  } rows[] = {
      {"y", "2021"},
      {"yy", "21"},
      {"yyyyy", "02021"},
      {"YYYY-w", "2021-19"},
      {"ww", "19"},
      {"M", "5"},
      {"L/LL", "5/05"},
      {"d", "10"},
      {"ddd", "010"},
      {"D", "130"},
      {"Q/qq", "2/02"},
      {"H", "13"},
      {"h", "1"},
      {"hh", "01"},
      {"K", "1"},
      {"k", "13"},
      {"m:s", "14:15"},
      {"S", "0"},
      {"SS", "01"},
      {"SSSSS", "01600"},
      {"Z", "+0100"},
      {"", ""},
      {"''", "'"},
      {"'at' H", "at 13"},
      {"H 'o''clock'", "13 o'clock"},
      {"dd.MM.", "10.05."},
      {"dd/MM/yyyy HH:mm:ss", "10/05/2021 13:14:15"},
      {"yyyyMMdd'T'HHmmss", "20210510T131415"},
      {"yyMMdd", "210510"},
      {"dd--MM", "10--05"},
      {"dd''MM", "10'05"},
      {"dd\u00A0MM", "10\u00A005"},
      {"-dd-MM", "-10-05"},
      {"ddd/MMd", "010/0510"},
  };
  for (const auto& row : rows) EXPECT_EQ(written(row.pattern, afternoon), row.expected) << row.pattern;
}

TEST(DatePattern, WritesMidnightByEachClock) {
  const DatePattern::Fields midnight{0, 0, 0, -19800};
  EXPECT_EQ(written("H h K k Z", midnight), "0 12 0 24 -0530");
}

TEST(DatePattern, WritesNamesWhereItIsGivenThem) {
  const DateNames& british = DateNames::ofLocale(icu::Locale("en", "GB"));
  const struct {
    const char *pattern, *expected;
  } rows[] = {
      {"EEE d MMM yyyy HH:mm", "Mon 10 May 2021 13:14"},
      {"EEEE, d MMMM", "Monday, 10 May"},
      {"E EEEEE cccc", "Mon M Monday"},
      {"LLLL MMMMM", "May M"},
      {"QQQ QQQQ qqq", "Q2 2nd quarter Q2"},
      {"h:mm a", "1:14 pm"},
      {"y G GGGG", "2021 AD Anno Domini"},
  };
  for (const auto& row : rows) {
    const auto compiled = DatePattern::compile(row.pattern, &british);
    ASSERT_TRUE(compiled) << row.pattern;
    char text[DatePattern::maximalLength];
    EXPECT_EQ(std::string(text, compiled->write(text, afternoon)), row.expected) << row.pattern;
  }
  EXPECT_FALSE(DatePattern::compile("d MMM yyyy z", &british)) << "a zone's name is none of them";
  EXPECT_FALSE(DatePattern::compile("aaaaa", &british)) << "ICU tells nobody its narrow ones";
  EXPECT_EQ(&DateNames::ofLocale(icu::Locale("en", "GB")), &british) << "looked up once";
}

TEST(DatePattern, LeavesOtherPatternsAlone) {
  for (const char* pattern : {"MMM", "QQQ", "E", "c", "a", "G", "z", "ZZZZ", "'open", "yyyyyyyyyy", "j"})
    EXPECT_FALSE(DatePattern::compile(pattern)) << pattern;
  EXPECT_FALSE(DatePattern::compile(std::string(257, '-')));
  EXPECT_TRUE(DatePattern::compile(std::string(256, '-')));
}

TEST(DatePattern, LeavesOtherYearsAndOddOffsetsAlone) {
  EXPECT_EQ(written("yyyy", {referenceDay(9999, 12, 31)}), "9999");
  EXPECT_EQ(written("yyyy", {referenceDay(10000, 1, 1)}), "");
  EXPECT_EQ(written("yyyy", {referenceDay(1, 1, 1)}), "0001");
  EXPECT_EQ(written("yyyy", {referenceDay(0, 12, 31)}), "");
  EXPECT_EQ(written("YYYY", {referenceDay(1, 1, 1)}), "0001");
  EXPECT_EQ(written("yy/yyyy", {referenceDay(205, 1, 1)}), "05/0205");
  EXPECT_EQ(written("Z", {0, 0, 0, -75}), "");
}

TEST(DatePattern, StaysWithinItsLength) {
  std::string longest;
  for (int i = 0; i < 28; ++i) longest += "yyyyyyyyyd";  // 28 times 9 and 4 digits at most
  EXPECT_FALSE(DatePattern::compile(longest));
  EXPECT_EQ(written(longest.substr(0, 190), afternoon).size(), 209u);
  std::string pairs;
  for (int i = 0; i < 64; ++i) pairs += "dd/";  // longest counts four digits for each number, however many it has
  EXPECT_FALSE(DatePattern::compile(pairs));
  for (const std::size_t count : {50u, 51u}) {
    const std::string pattern = pairs.substr(0, 3 * count) + "-";
    EXPECT_EQ(written(pattern, afternoon).size(), pattern.size()) << count;
  }
  const DateNames& british = DateNames::ofLocale(icu::Locale("en", "GB"));
  std::string names;
  for (int i = 0; i < 28; ++i) names += i % 2 == 0 ? "MMMM" : "LLLL";
  EXPECT_TRUE(DatePattern::compile(names, &british)) << "28 times nine letters";
  EXPECT_FALSE(DatePattern::compile(names + "MMMM", &british)) << "29 times nine letters";
}

}  // namespace
}  // namespace norvik::detail
