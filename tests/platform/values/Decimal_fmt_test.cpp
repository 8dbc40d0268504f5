#include "NorvikCore/platform/values/Decimal_fmt.h"

#include <gtest/gtest.h>

#include <string>

namespace norvik {
namespace {

TEST(Decimal_fmt, HeaderExample) {
  EXPECT_EQ(fmt::format("{}", 1234.5_dec), "1234.5");
  EXPECT_EQ(fmt::format("{:>10.2f}|", 1234.5_dec), "   1234.50|");
  EXPECT_EQ(fmt::format("{:+08.1}", -2.25_dec), "-00002.3");
  EXPECT_EQ(fmt::format("{:,.2f}", 1234567.5_dec), "1,234,567.50");
}

TEST(Decimal_fmt, ACommaSeparatesThousands) {
  const struct {
    const char* format;
    Decimal number;
    const char* expected;
  } rows[] = {
      {"{:,}", 0_dec, "0"},
      {"{:,}", 999_dec, "999"},
      {"{:,}", -1000_dec, "-1,000"},
      {"{:,}", 1000.1234_dec, "1,000.1234"},
      {"{:,.0f}", 999999.5_dec, "1,000,000"},
      {"{:>12,.2f}|", 1234.5_dec, "    1,234.50|"},
      {"{:12,}|", -123456_dec, "    -123,456|"},
      {"{:+,}", 123456_dec, "+123,456"},
      {"{:,}", Decimal::notANumber(), "NaN"},
  };
  for (const auto& row : rows) EXPECT_EQ(fmt::format(fmt::runtime(row.format), row.number), row.expected) << row.format;
  const std::string longest = fmt::format("{:,.999f}", Decimal::minimumDecimalNumber());
  EXPECT_EQ(longest.size(), 1u + 165 + 54 + 1 + 999);
  EXPECT_TRUE(longest.starts_with("-999,999,"));
}

TEST(Decimal_fmt, WritesAllDigitsWithoutAPrecision) {
  EXPECT_EQ(fmt::format("{}", 5.00_dec), "5.00");
  EXPECT_EQ(fmt::format("{:f}", 5.00_dec), "5.00");
  EXPECT_EQ(fmt::format("{}", Decimal::notANumber()), "NaN");
}

TEST(Decimal_fmt, APrecisionRoundsPlainlyAndPadsWithZeros) {
  EXPECT_EQ(fmt::format("{:.2f}", 2.345_dec), "2.35");
  EXPECT_EQ(fmt::format("{:.2f}", -2.345_dec), "-2.35");
  EXPECT_EQ(fmt::format("{:.0f}", 0.5_dec), "1");
  EXPECT_EQ(fmt::format("{:.3}", 7_dec), "7.000");
  EXPECT_EQ(fmt::format("{:.999}", 7_dec), "7." + std::string(999, '0'));
}

TEST(Decimal_fmt, StandsRightUnlessToldOtherwise) {
  EXPECT_EQ(fmt::format("{:7}|", 1.5_dec), "    1.5|");
  EXPECT_EQ(fmt::format("{:<7}|", 1.5_dec), "1.5    |");
  EXPECT_EQ(fmt::format("{:^7}|", 1.50_dec), " 1.50  |");
  EXPECT_EQ(fmt::format("{:*>7}|", 1.5_dec), "****1.5|");
  EXPECT_EQ(fmt::format("{:2}|", -100_dec), "-100|");
}

TEST(Decimal_fmt, SignsAndLeadingZeros) {
  EXPECT_EQ(fmt::format("{:+}", 1_dec), "+1");
  EXPECT_EQ(fmt::format("{:+}", -1_dec), "-1");
  EXPECT_EQ(fmt::format("{: }", 1_dec), " 1");
  EXPECT_EQ(fmt::format("{:-}", 1_dec), "1");
  EXPECT_EQ(fmt::format("{:06.2f}", -1_dec), "-01.00");
  EXPECT_EQ(fmt::format("{:<06}|", 1_dec), "1     |");
  EXPECT_EQ(fmt::format("{:06}", Decimal::notANumber()), "   NaN");
}

TEST(Decimal_fmt, RefusesUnknownFormats) {
  for (const char* format : {"{:x}", "{:.f}", "{:1000}", "{:.2fx}", "{:2.2.2}", "{:08,}", "{:,,}", "{:.2,f}"}) {
    EXPECT_THROW((void)fmt::format(fmt::runtime(format), 1_dec), fmt::format_error) << format;
  }
}

}  // namespace
}  // namespace norvik
