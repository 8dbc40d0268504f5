#include "NorvikCore/platform/values/NSDecimalNumberHandler.h"

#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/support/Decimals.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <string>

namespace norvik {
namespace {

using norvik::test::dec;
using norvik::test::nameOfWhatIsRaised;

NSDecimalNumberHandler rounding(NSRoundingMode mode, std::int16_t scale) {
  return NSDecimalNumberHandler::decimalNumberHandlerWithRoundingMode(mode, scale, true, true, true, true);
}

std::string rounded(std::string_view text, NSRoundingMode mode, std::int16_t scale) {
  return dec(text).decimalNumberByRoundingAccordingToBehavior(rounding(mode, scale)).stringValue();
}

TEST(NSDecimalNumberHandler, HeaderExample) {
  const auto pennies = NSDecimalNumberHandler({.roundingMode = NSRoundBankers, .scale = 2});
  EXPECT_EQ((2.345_dec).decimalNumberByRoundingAccordingToBehavior(pennies).stringValue(), "2.34");
}

TEST(NSDecimalNumberHandler, ModesAndNoScaleHaveThePlatformsNumbers) {
  EXPECT_EQ(NSRoundPlain, 0u);
  EXPECT_EQ(NSRoundDown, 1u);
  EXPECT_EQ(NSRoundUp, 2u);
  EXPECT_EQ(NSRoundBankers, 3u);
  EXPECT_EQ(NSDecimalNoScale, 32767);
}

TEST(NSDecimalNumberHandler, KeepsItsSixSettings) {
  const auto handler =
      NSDecimalNumberHandler::decimalNumberHandlerWithRoundingMode(NSRoundUp, -3, true, false, true, false);
  EXPECT_EQ(handler.roundingMode(), NSRoundUp);
  EXPECT_EQ(handler.scale(), -3);
  EXPECT_TRUE(handler.raiseOnExactness());
  EXPECT_FALSE(handler.raiseOnOverflow());
  EXPECT_TRUE(handler.raiseOnUnderflow());
  EXPECT_FALSE(handler.raiseOnDivideByZero());
  EXPECT_EQ(handler, handler);
  EXPECT_FALSE(handler == NSDecimalNumberHandler::defaultDecimalNumberHandler());
}

TEST(NSDecimalNumberHandler, TheDefaultRoundsPlainlyTo38DigitsAndRaisesAllButExactness) {
  const NSDecimalNumberHandler& handler = NSDecimalNumberHandler::defaultDecimalNumberHandler();
  EXPECT_EQ(&handler, &NSDecimalNumberHandler::defaultDecimalNumberHandler());
  EXPECT_EQ(handler.roundingMode(), NSRoundPlain);
  EXPECT_EQ(handler.scale(), NSDecimalNoScale);
  EXPECT_FALSE(handler.raiseOnExactness());
  EXPECT_TRUE(handler.raiseOnOverflow());
  EXPECT_TRUE(handler.raiseOnUnderflow());
  EXPECT_TRUE(handler.raiseOnDivideByZero());
}

TEST(NSDecimalNumberHandler, EveryModeRoundsAsItsNameSays) {
  const struct {
    const char *number, *plain, *down, *up, *bankers;
  } rows[] = {
      {"1.24", "1.2", "1.2", "1.3", "1.2"},
      {"1.26", "1.3", "1.2", "1.3", "1.3"},
      {"1.25", "1.3", "1.2", "1.3", "1.2"},
      {"1.35", "1.4", "1.3", "1.4", "1.4"},
      {"1.2500001", "1.3", "1.2", "1.3", "1.3"},
      {"-1.24", "-1.2", "-1.3", "-1.2", "-1.2"},
      {"-1.25", "-1.3", "-1.3", "-1.2", "-1.2"},
      {"-1.35", "-1.4", "-1.4", "-1.3", "-1.4"},
      {"-1.26", "-1.3", "-1.3", "-1.2", "-1.3"},
      {"0.04", "0.0", "0.0", "0.1", "0.0"},
      {"-0.04", "0.0", "-0.1", "0.0", "0.0"},
      {"0.05", "0.1", "0.0", "0.1", "0.0"},
      {"9.96", "10.0", "9.9", "10.0", "10.0"},
      {"1.30", "1.3", "1.3", "1.3", "1.3"},
      {"123456789012345678901234567890.55", "123456789012345678901234567890.6", "123456789012345678901234567890.5",
       "123456789012345678901234567890.6", "123456789012345678901234567890.6"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(rounded(row.number, NSRoundPlain, 1), row.plain) << row.number;
    EXPECT_EQ(rounded(row.number, NSRoundDown, 1), row.down) << row.number;
    EXPECT_EQ(rounded(row.number, NSRoundUp, 1), row.up) << row.number;
    EXPECT_EQ(rounded(row.number, NSRoundBankers, 1), row.bankers) << row.number;
  }
}

TEST(NSDecimalNumberHandler, RoundsToPennies) {
  EXPECT_EQ(rounded("1.005", NSRoundPlain, 2), "1.01");
  EXPECT_EQ(rounded("1.004", NSRoundPlain, 2), "1.00");
  EXPECT_EQ(rounded("-1.005", NSRoundPlain, 2), "-1.01");
}

TEST(NSDecimalNumberHandler, RoundingAddsNoDigits) {
  EXPECT_EQ(rounded("1.5", NSRoundPlain, 2), "1.5");
  EXPECT_EQ(rounded("3", NSRoundUp, 100), "3");
  EXPECT_EQ(rounded("0.0000", NSRoundPlain, 2), "0.00");
}

TEST(NSDecimalNumberHandler, NoScaleLeavesANumberAsItIs) {
  EXPECT_EQ(rounded("2.75", NSRoundDown, NSDecimalNoScale), "2.75");
  EXPECT_EQ(rounded("-0.5", NSRoundDown, NSDecimalNoScale), "-0.5");
}

TEST(NSDecimalNumberHandler, ANegativeScaleRoundsBeforeThePoint) {
  EXPECT_EQ(rounded("12545", NSRoundPlain, -1), "12550");
  EXPECT_EQ(rounded("12345.67", NSRoundPlain, -3), "12000");
  EXPECT_EQ(rounded("12345", NSRoundUp, -3), "13000");
  EXPECT_EQ(rounded("499", NSRoundPlain, -3), "0");
  EXPECT_EQ(rounded("500", NSRoundPlain, -3), "1000");
  EXPECT_EQ(rounded("500", NSRoundBankers, -3), "0");
  EXPECT_EQ(rounded("5", NSRoundPlain, -200), "0");
  EXPECT_EQ(rounded("1", NSRoundUp, -164), "1" + std::string(164, '0'));
  EXPECT_EQ(nameOfWhatIsRaised([] { (void)rounded("1", NSRoundUp, -165); }), "NSDecimalNumberOverflowException");
}

TEST(NSDecimalNumberHandler, AnOperationRoundsItsExactResultOnce) {
  // Rounded to 38 digits first, 0.004999...9 would become 0.005, and then 0.01.
  const Decimal nearlyHalf = dec("0.004" + std::string(37, '9')), rest = dec("9E-41");
  EXPECT_EQ(nearlyHalf.decimalNumberByAdding(rest, NSDecimalNumberHandler({.scale = 2})).stringValue(), "0.00");
  EXPECT_EQ((2_dec)
                .decimalNumberByDividingBy(3, NSDecimalNumberHandler({.roundingMode = NSRoundDown, .scale = 2}))
                .stringValue(),
            "0.66");
  EXPECT_EQ((1.15_dec).decimalNumberByMultiplyingBy(1.1_dec, NSDecimalNumberHandler({.scale = 2})).stringValue(),
            "1.27");
  EXPECT_EQ((1.125_dec).decimalNumberBySubtracting(1, NSDecimalNumberHandler({.scale = 2})).stringValue(), "0.13");
  EXPECT_EQ((1.15_dec).decimalNumberByRaisingToPower(2, NSDecimalNumberHandler({.scale = 2})).stringValue(), "1.32");
  EXPECT_EQ((1.15_dec).decimalNumberByMultiplyingByPowerOf10(-1, NSDecimalNumberHandler({.scale = 2})).stringValue(),
            "0.12");
}

TEST(NSDecimalNumberHandler, TheModeAlsoRoundsTo38Digits) {
  const auto with = [](NSRoundingMode mode, const Decimal& a) {
    return a.decimalNumberByDividingBy(3, NSDecimalNumberHandler({.roundingMode = mode})).stringValue();
  };
  EXPECT_EQ(with(NSRoundDown, 2), "0.66666666666666666666666666666666666666");
  EXPECT_EQ(with(NSRoundUp, 1), "0.33333333333333333333333333333333333334");
  EXPECT_EQ(with(NSRoundDown, -1), "-0.33333333333333333333333333333333333334");
  EXPECT_EQ(with(NSRoundUp, -2), "-0.66666666666666666666666666666666666666");
}

TEST(NSDecimalNumberHandler, LossOfPrecisionIsAResultOfMoreThan38DigitsNotWhatAScaleCuts) {
  const auto all = rounding(NSRoundPlain, 2);
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(1.005_dec).decimalNumberByRoundingAccordingToBehavior(all); }), "");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(1.005_dec).decimalNumberByAdding(0.001_dec, all); }), "");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(1.005_dec).decimalNumberByMultiplyingBy(1.005_dec, all); }), "");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(1_dec).decimalNumberByDividingBy(8, all); }), "");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(1_dec).decimalNumberByDividingBy(3, all); }),
            "NSDecimalNumberExactnessException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)dec("1E38").decimalNumberByAdding(1, all); }),
            "NSDecimalNumberExactnessException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)dec("1E38").decimalNumberByAdding(10, all); }), "");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(1.1_dec).decimalNumberByRaisingToPower(36, all); }),
            "");  // 11^36 has 38 digits
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(1.1_dec).decimalNumberByRaisingToPower(37, all); }),
            "NSDecimalNumberExactnessException");
}

TEST(NSDecimalNumberHandler, EachFlagRaisesItsExceptionAndNoOther) {
  const Decimal greatest = Decimal::maximumDecimalNumber(), least = dec("1E-128");
  for (int set = 0; set < 16; ++set) {
    const NSDecimalNumberHandler some({.raiseOnExactness = (set & 1) != 0,
                                       .raiseOnOverflow = (set & 2) != 0,
                                       .raiseOnUnderflow = (set & 4) != 0,
                                       .raiseOnDivideByZero = (set & 8) != 0});
    EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(1_dec).decimalNumberByDividingBy(3, some); }),
              (set & 1) != 0 ? "NSDecimalNumberExactnessException" : "");
    EXPECT_EQ(nameOfWhatIsRaised([&] { (void)greatest.decimalNumberByMultiplyingBy(10, some); }),
              (set & 2) != 0 ? "NSDecimalNumberOverflowException" : "");
    EXPECT_EQ(nameOfWhatIsRaised([&] { (void)least.decimalNumberByMultiplyingBy(0.1_dec, some); }),
              (set & 4) != 0 ? "NSDecimalNumberUnderflowException" : "");
    EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(1_dec).decimalNumberByDividingBy(0, some); }),
              (set & 8) != 0 ? "NSDecimalNumberDivideByZeroException" : "");
  }
}

TEST(NSDecimalNumberHandler, AFaultThatDoesNotRaiseGivesNotANumberAndALossTheRoundedNumber) {
  const NSDecimalNumberHandler none(
      {.raiseOnOverflow = false, .raiseOnUnderflow = false, .raiseOnDivideByZero = false});
  EXPECT_TRUE(Decimal::maximumDecimalNumber().decimalNumberByMultiplyingBy(10, none).isNaN());
  EXPECT_TRUE(dec("1E-128").decimalNumberByMultiplyingBy(0.1_dec, none).isNaN());
  EXPECT_TRUE((1_dec).decimalNumberByDividingBy(0, none).isNaN());
  EXPECT_EQ((1_dec).decimalNumberByDividingBy(3, none), dec("0.33333333333333333333333333333333333333"));
}

TEST(NSDecimalNumberHandler, WhatLiesBeyondTheGreatestNumberIsAFaultInEveryRoundingMode) {
  const Decimal greatest = Decimal::maximumDecimalNumber(), lowest = Decimal::minimumDecimalNumber();
  for (const NSRoundingMode mode : {NSRoundPlain, NSRoundDown, NSRoundUp, NSRoundBankers}) {
    for (const std::int16_t scale : {NSDecimalNoScale, std::int16_t{2}, std::int16_t{-127}}) {
      const NSDecimalNumberHandler all = rounding(mode, scale);
      const NSDecimalNumberHandler quiet({.roundingMode = mode, .scale = scale, .raiseOnOverflow = false});
      EXPECT_EQ(nameOfWhatIsRaised([&] { (void)greatest.decimalNumberByAdding(1, all); }),
                "NSDecimalNumberOverflowException");
      EXPECT_EQ(nameOfWhatIsRaised([&] { (void)lowest.decimalNumberBySubtracting(1, all); }),
                "NSDecimalNumberOverflowException");
      EXPECT_TRUE(greatest.decimalNumberByAdding(1, quiet).isNaN());
      EXPECT_TRUE(lowest.decimalNumberBySubtracting(1, quiet).isNaN());
      EXPECT_TRUE(greatest.decimalNumberByMultiplyingBy(10, quiet).isNaN());
      EXPECT_EQ(greatest.decimalNumberByAdding(0, all), greatest);
    }
  }
}

TEST(NSDecimalNumberHandler, AScaleThatRoundsTheGreatestNumberUpIsAnOverflow) {
  const Decimal greatest = Decimal::maximumDecimalNumber();
  EXPECT_EQ(nameOfWhatIsRaised(
                [&] { (void)greatest.decimalNumberByRoundingAccordingToBehavior(rounding(NSRoundPlain, -128)); }),
            "NSDecimalNumberOverflowException");
  EXPECT_EQ(greatest.decimalNumberByRoundingAccordingToBehavior(rounding(NSRoundDown, -128)),
            dec(std::string(37, '9') + "E127") * 10);
}

TEST(NSDecimalNumberHandler, FaultsAreJudgedBeforeTheScaleRounds) {
  const auto pennies = rounding(NSRoundPlain, 2);
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)dec("1E-100").decimalNumberByMultiplyingBy(dec("1E-100"), pennies); }),
            "NSDecimalNumberUnderflowException");
  EXPECT_EQ(nameOfWhatIsRaised(
                [&] { (void)dec("1E100").decimalNumberByMultiplyingBy(dec("1E100"), rounding(NSRoundPlain, -300)); }),
            "NSDecimalNumberOverflowException");
}

}  // namespace
}  // namespace norvik
