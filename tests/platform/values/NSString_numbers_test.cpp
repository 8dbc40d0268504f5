#include "NorvikCore/platform/values/NSString.h"

#include "tests/support/Doubles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace norvik {
namespace {

using norvik::test::infinity;

TEST(NSStringNumbers, IntegersAreReadFromTheStartAndStopAtTheLimits) {
  const struct {
    NSString text;
    int asInt;
    std::int64_t asLongLong;
  } rows[] = {
      {"", 0, 0},
      {"12", 12, 12},
      {" \t\n-12abc", -12, -12},
      {"+7", 7, 7},
      {"1,234", 1, 1},
      {"- 5", 0, 0},
      {"--5", 0, 0},
      {"abc", 0, 0},
      {"12.9", 12, 12},
      {"2147483647", 2147483647, 2147483647},
      {"2147483648", 2147483647, 2147483648},
      {"-2147483648", -2147483647 - 1, -2147483648LL},
      {"-2147483649", -2147483647 - 1, -2147483649LL},
      {"9223372036854775807", 2147483647, 9223372036854775807LL},
      {"9223372036854775808", 2147483647, 9223372036854775807LL},
      {"-9223372036854775808", -2147483647 - 1, -9223372036854775807LL - 1},
      {"-99999999999999999999999", -2147483647 - 1, -9223372036854775807LL - 1},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.text.intValue(), row.asInt) << row.text;
    EXPECT_EQ(row.text.longLongValue(), row.asLongLong) << row.text;
    EXPECT_EQ(row.text.integerValue(), row.asLongLong) << row.text;
  }
}

TEST(NSStringNumbers, DoublesAreReadFromTheStartWithAPoint) {
  const struct {
    NSString text;
    double expected;
  } rows[] = {
      {"", 0},
      {"12.5", 12.5},
      {" -.5x", -0.5},
      {"+5.", 5},
      {" 1.5e3 GBP", 1500},
      {"1e", 1},
      {"1,5", 1},
      {".", 0},
      {"inf", 0},
      {"nan", 0},
      {"0x10", 0},
      {"1e400", infinity},
      {"-1e400", -infinity},
      {"1e-400", 0},
      {"0.000e99999999999", 0},
      {"0.001e400", infinity},
      {"10000000000e-400", 0},
  };
  for (const auto& row : rows) EXPECT_EQ(row.text.doubleValue(), row.expected) << row.text;
  EXPECT_TRUE(std::signbit(NSString("-0").doubleValue()));
}

TEST(NSStringNumbers, YesTrueAndDigitsOtherThanZeroAreTrue) {
  for (const char* text : {"Y", "yes", "T", "true", "1", " 9", "+001", "-3", "0t"}) {
    EXPECT_TRUE(NSString(text).boolValue()) << text;
  }
  for (const char* text : {"", "N", "no", "false", "0", "-0", "00", "0.5", "x1", "- 1"}) {
    EXPECT_FALSE(NSString(text).boolValue()) << text;
  }
}

}  // namespace
}  // namespace norvik
