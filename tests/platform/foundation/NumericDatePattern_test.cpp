#include "NorvikCore/platform/foundation/internal/NumericDatePattern.h"

#include <gtest/gtest.h>

namespace norvik::detail {
namespace {

std::string written(std::string_view pattern, const NumericDatePattern::Fields& fields) {
  const auto compiled = NumericDatePattern::compile(pattern);
  if (!compiled) return "not compiled";
  char text[NumericDatePattern::maximalLength];
  return std::string(text, compiled->write(text, fields));
}

const NumericDatePattern::Fields afternoon{referenceDay(2021, 5, 10), 13 * 3600 + 14 * 60 + 15, 16, 3600};

TEST(NumericDatePattern, HeaderExample) {
  EXPECT_EQ(written("yyyy/MM/dd HH:mm:ss:SSS", afternoon), "2021/05/10 13:14:15:016");
}

TEST(NumericDatePattern, WritesEveryField) {
  const struct {
    const char *pattern, *expected;
  } rows[] = {
      {"y", "2021"},         {"yy", "21"},        {"yyyyy", "02021"},
      {"YYYY-w", "2021-19"}, {"ww", "19"},        {"M", "5"},
      {"L/LL", "5/05"},      {"d", "10"},         {"ddd", "010"},
      {"D", "130"},          {"H", "13"},         {"h", "1"},
      {"hh", "01"},          {"K", "1"},          {"k", "13"},
      {"m:s", "14:15"},      {"S", "0"},          {"SS", "01"},
      {"SSSSS", "01600"},    {"Z", "+0100"},      {"", ""},
      {"''", "'"},           {"'at' H", "at 13"}, {"H 'o''clock'", "13 o'clock"},
      {"dd.MM.", "10.05."},
  };
  for (const auto& row : rows) EXPECT_EQ(written(row.pattern, afternoon), row.expected) << row.pattern;
}

TEST(NumericDatePattern, WritesMidnightByEachClock) {
  const NumericDatePattern::Fields midnight{0, 0, 0, -19800};
  EXPECT_EQ(written("H h K k Z", midnight), "0 12 0 24 -0530");
}

TEST(NumericDatePattern, LeavesOtherPatternsAlone) {
  for (const char* pattern : {"MMM", "EEE", "a", "G", "z", "ZZZZ", "'open", "yyyyyyyyyy", "j"})
    EXPECT_FALSE(NumericDatePattern::compile(pattern)) << pattern;
  EXPECT_FALSE(NumericDatePattern::compile(std::string(257, '-')));
  EXPECT_TRUE(NumericDatePattern::compile(std::string(256, '-')));
}

TEST(NumericDatePattern, LeavesOtherYearsAndOddOffsetsAlone) {
  EXPECT_EQ(written("yyyy", {referenceDay(9999, 12, 31)}), "9999");
  EXPECT_EQ(written("yyyy", {referenceDay(10000, 1, 1)}), "");
  EXPECT_EQ(written("yyyy", {referenceDay(1, 1, 1)}), "0001");
  EXPECT_EQ(written("yyyy", {referenceDay(0, 12, 31)}), "");
  EXPECT_EQ(written("YYYY", {referenceDay(1, 1, 1)}), "0001");
  EXPECT_EQ(written("Z", {0, 0, 0, -75}), "");
}

TEST(NumericDatePattern, StaysWithinItsLength) {
  std::string longest;
  for (int i = 0; i < 28; ++i) longest += "yyyyyyyyyd";  // 28 times 9 and 4 digits at most
  EXPECT_FALSE(NumericDatePattern::compile(longest));
  EXPECT_EQ(written(longest.substr(0, 190), afternoon).size(), 209u);
}

}  // namespace
}  // namespace norvik::detail
