#include "NorvikCore/platform/values/Decimal_charconv.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace norvik {
namespace {

std::string fixed(const Decimal& value, int places) {
  char text[400];
  const auto [end, error] = to_chars(text, text + sizeof text, value, places);
  EXPECT_EQ(error, std::errc{});
  return {text, end};
}

TEST(Decimal_charconv, HeaderExample) {
  char text[longestDecimalText];
  auto [end, error] = to_chars(text, text + sizeof text, 1234.5_dec, 2);
  EXPECT_EQ(error, std::errc{});
  EXPECT_EQ(std::string_view(text, end), "1234.50");
}

TEST(Decimal_charconv, ReadsAsFarAsTheNumberGoes) {
  const struct {
    std::string_view text, rest, value;
  } rows[] = {
      {"12.50 GBP", " GBP", "12.50"},
      {"-3,", ",", "-3"},
      {"1.2.3", ".3", "1.2"},
      {"5e", "e", "5"},
      {"5e+", "e+", "5"},
      {"5E2x", "x", "500"},
      {"NaN!", "!", "NaN"},
      {"7.", "", "7"},
  };
  for (const auto& row : rows) {
    Decimal value;
    const auto [end, error] = from_chars(row.text.data(), row.text.data() + row.text.size(), value);
    EXPECT_EQ(error, std::errc{}) << row.text;
    EXPECT_EQ(std::string_view(end, static_cast<std::size_t>(row.text.data() + row.text.size() - end)), row.rest);
    EXPECT_EQ(value.stringValue(), row.value);
  }
}

TEST(Decimal_charconv, LeavesTheValueWhereNothingIsRead) {
  for (const std::string_view text : {"", "x", "+1", "-", ".", " 1"}) {
    Decimal value = 9;
    const auto [end, error] = from_chars(text.data(), text.data() + text.size(), value);
    EXPECT_EQ(error, std::errc::invalid_argument) << text;
    EXPECT_EQ(end, text.data());
    EXPECT_EQ(value, 9);
  }
}

TEST(Decimal_charconv, PassesANumberOutOfRangeAndSaysSo) {
  const std::string_view text = "1E200;";
  Decimal value = 9;
  const auto [end, error] = from_chars(text.data(), text.data() + text.size(), value);
  EXPECT_EQ(error, std::errc::result_out_of_range);
  EXPECT_EQ(*end, ';');
  EXPECT_EQ(value, 9);
}

TEST(Decimal_charconv, WritesNothingBeyondTheRoomThereIs) {
  char text[8] = "......";
  const auto tooSmall = to_chars(text, text + 4, -1.50_dec);
  EXPECT_EQ(tooSmall.ec, std::errc::value_too_large);
  EXPECT_EQ(tooSmall.ptr, text + 4);
  EXPECT_EQ(text[4], '.');
  const auto enough = to_chars(text, text + 5, -1.50_dec);
  EXPECT_EQ(enough.ec, std::errc{});
  EXPECT_EQ(std::string_view(text, enough.ptr), "-1.50");
  EXPECT_EQ(to_chars(text, text + 3, 5_dec, 2).ec, std::errc::value_too_large);
  EXPECT_EQ(to_chars(text, text + 4, 5_dec, 2).ec, std::errc{});
}

TEST(Decimal_charconv, WritesExactlyTheDigitsAskedForAfterThePoint) {
  EXPECT_EQ(fixed(5_dec, 2), "5.00");
  EXPECT_EQ(fixed(5.1_dec, 2), "5.10");
  EXPECT_EQ(fixed(-2.345_dec, 2), "-2.35");
  EXPECT_EQ(fixed(-0.001_dec, 2), "0.00");
  EXPECT_EQ(fixed(2.5_dec, 0), "3");
  EXPECT_EQ(fixed(2.5_dec, -1), "3");
  EXPECT_EQ(fixed(1E3_dec, 1), "1000.0");
  EXPECT_EQ(fixed(Decimal::notANumber(), 2), "NaN");
  EXPECT_EQ(fixed(1_dec, 300), "1." + std::string(300, '0'));
}

}  // namespace
}  // namespace norvik
