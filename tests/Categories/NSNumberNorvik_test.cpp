#include "NorvikCore/Categories/NSNumber+Norvik.h"

#include "NorvikCore/Categories/NSNumberFormatter+Norvik.h"
#include "NorvikCore/platform/foundation/NSLocale.h"

#include <gtest/gtest.h>

#include <thread>

using namespace norvik;

namespace {

/// Words are in the user's language, which the process reads once.
struct NSNumberNorvik : testing::Test {
  void SetUp() override {
    if (NSLocale::currentLocale()->localeIdentifier() != "en_GB") GTEST_SKIP() << "the user is not British";
  }
};

}  // namespace

TEST_F(NSNumberNorvik, HeaderExample) {
  EXPECT_EQ(nk_wordString(1234), "one thousand two hundred and thirty-four");
  EXPECT_EQ(nk_invertBool(true), NSNumber(0));
}

TEST(NSNumberFormatterNorvik, HeaderExample) {
  EXPECT_EQ(nk_defaultStringFromNumber(1234.5, NSNumberFormatterDecimalStyle), "1,234.5");
}

TEST_F(NSNumberNorvik, BecomesADecimalExactlyOrByItsShortestDigits) {
  EXPECT_EQ(nk_decimalNumber(INT64_MAX).stringValue(), "9223372036854775807");
  EXPECT_EQ(nk_decimalNumber(0.1).stringValue(), "0.1");
  EXPECT_EQ(nk_decimalNumber(1234.565).stringValue(), "1234.565");
  EXPECT_EQ(nk_decimalNumber(true).stringValue(), "1");
}

TEST_F(NSNumberNorvik, ReadsInWordsAsOnACheque) {
  const struct {
    NSNumber number;
    const char* words;
  } rows[] = {{0, "zero"},
              {7, "seven"},
              {105, "one hundred and five"},
              {1234, "one thousand two hundred and thirty-four"},
              {-2, "minus two"}};
  for (const auto& row : rows) EXPECT_EQ(nk_wordString(row.number), row.words);
  EXPECT_EQ(nk_wordString(Decimal::parse("9007199254740993.00").value()), nk_wordString(9007199254740993));
}

TEST_F(NSNumberNorvik, WordsAreExactForEighteenDigitsAndForFractionsOfFifteen) {
  EXPECT_EQ(nk_wordString(Decimal::parse("999000000000000001").value()),
            "nine hundred and ninety-nine quadrillion and one");
  EXPECT_EQ(nk_wordString(Decimal::parse("1000000000000.25").value()), "one trillion point two five");
}

TEST_F(NSNumberNorvik, WhatTheNearestDoubleDoesNotHoldIsWrittenInDigits) {
  const struct {
    const char *number, *text;
  } rows[] = {
      {"1234567890123456.78", "1,234,567,890,123,456.78"},
      {"-1234567890123456.78", "-1,234,567,890,123,456.78"},
      {"0.12345678901234567891", "0.12345678901234567891"},
      {"0.00000000000000000001",
       "zero point zero zero zero zero zero zero zero zero zero zero zero zero zero zero zero "
       "zero zero zero zero one"},
      {"0.000000000000000000001", "0.000000000000000000001"},
      {"0.1", "zero point one"},
      {"0.30000000000000004",
       "zero point three zero zero zero zero zero zero zero zero zero zero zero zero zero zero "
       "zero four"},
      {"0.300000000000000041", "0.300000000000000041"},
      {"12.50", "twelve point five"},
      {"-0.4", "minus zero point four"},
  };
  for (const auto& row : rows) EXPECT_EQ(nk_wordString(Decimal::parse(row.number).value()), row.text) << row.number;
}

TEST_F(NSNumberNorvik, NumbersForWhichThereAreNoWordsAreWrittenInDigits) {
  const struct {
    NSNumber number;
    const char* text;
  } rows[] = {
      {Decimal::parse("999999999999999999").value(),
       "nine hundred and ninety-nine quadrillion, nine hundred and ninety-nine trillion, nine hundred and ninety-nine "
       "billion, nine hundred and ninety-nine million, nine hundred and ninety-nine thousand, nine hundred and "
       "ninety-nine"},
      {1'000'000'000'000'000'000, "1,000,000,000,000,000,000"},
      {INT64_MIN, "-9,223,372,036,854,775,808"},
      {UINT64_MAX, "18,446,744,073,709,551,615"},
      {Decimal::parse("10000000000000000001").value(), "10,000,000,000,000,000,001"},
      {Decimal::parse("-100000000000000000000").value(), "-100,000,000,000,000,000,000"},
      {Decimal::parse("1234567890123456789.5").value(), "1,234,567,890,123,456,789.5"},
      {Decimal::parse("999999999999999999.99").value(), "999,999,999,999,999,999.99"},
      {-1e20, "-100,000,000,000,000,000,000"},
      {1e30, "1,000,000,000,000,000,000,000,000,000,000"},
  };
  for (const auto& row : rows) EXPECT_EQ(nk_wordString(row.number), row.text);
  EXPECT_EQ(nk_wordString(1e300).length(), 401U) << "a number that no decimal can be";
}

TEST_F(NSNumberNorvik, InvertsBooleans) {
  EXPECT_EQ(nk_invertBool(0), NSNumber(1));
  EXPECT_EQ(nk_invertBool(true), NSNumber(0));
  EXPECT_EQ(nk_invertBool(-3.5), NSNumber(0));
  EXPECT_EQ(nk_invertBool(1).kind(), NSNumber::Kind::Integer);
}

TEST(NSNumberFormatterNorvik, WritesStylesInTheDefaultLocaleAndKeepsItsFormatterOnTheMainThread) {
  EXPECT_EQ(kSharedNumberFormatterLock, "kSharedNumberFormatterLock");
  m_sharedNumberFormatter = nullptr;
  EXPECT_EQ(nk_defaultStringFromNumber(1234.5, NSNumberFormatterDecimalStyle), "1,234.5");
  const Ref<NSNumberFormatter> kept = m_sharedNumberFormatter;
  ASSERT_TRUE(kept);
  EXPECT_EQ(kept->locale()->localeIdentifier(), "en_GB");
  EXPECT_EQ(nk_defaultStringFromNumber(0.5, NSNumberFormatterPercentStyle), "50%");
  EXPECT_EQ(m_sharedNumberFormatter, kept);
  EXPECT_EQ(kept->numberStyle(), NSNumberFormatterPercentStyle) << "it keeps the last style set";
  EXPECT_EQ(nk_defaultStringFromNumber(5, NSNumberFormatterSpellOutStyle), "five");
}

TEST(NSNumberFormatterNorvik, NeverTouchesTheKeptFormatterFromAnotherThread) {
  m_sharedNumberFormatter = nullptr;
  NSString text;
  std::thread([&] { text = nk_defaultStringFromNumber(1234.5, NSNumberFormatterDecimalStyle); }).join();
  EXPECT_EQ(text, "1,234.5");
  EXPECT_FALSE(m_sharedNumberFormatter);
  EXPECT_EQ(nk_defaultStringFromNumber(1, NSNumberFormatterDecimalStyle), "1");
  const Ref<NSNumberFormatter> kept = m_sharedNumberFormatter;
  std::thread([&] { text = nk_defaultStringFromNumber(0.5, NSNumberFormatterPercentStyle); }).join();
  EXPECT_EQ(m_sharedNumberFormatter, kept);
  EXPECT_EQ(kept->numberStyle(), NSNumberFormatterDecimalStyle);
}
