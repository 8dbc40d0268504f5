#include "NorvikCore/platform/values/Decimal.h"

#include "NorvikCore/platform/values/NSException.h"
#include "tests/support/Decimals.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <limits>
#include <sstream>
#include <type_traits>
#include <unordered_set>
#include <vector>

namespace norvik {
namespace {

const char* const nines38 = "99999999999999999999999999999999999999";

using norvik::test::dec;
using norvik::test::nameOfWhatIsRaised;

TEST(Decimal, HeaderExample) {
  Decimal gross = 2500.00_dec, rate = 0.20_dec;
  Decimal tax = gross * rate;
  EXPECT_EQ(to_string(tax), "500.0000");
  EXPECT_EQ(to_string(gross - tax), "2000.0000");
  EXPECT_EQ(to_string(*Decimal::parse("1234.50") + 1), "1235.50");
  EXPECT_EQ(to_string((gross / 12).round(2)), "208.33");
  EXPECT_EQ(to_string(abs(-2.50_dec)), "2.50");
  EXPECT_EQ(to_string(7.50_dec % 2), "1.50");
  static_assert(0.20_dec * 2 < 1);
}

TEST(Decimal, TextsOfEveryKindAreRead) {
  EXPECT_EQ(Decimal::parse(NSString("12.50")), dec("12.50"));
  EXPECT_EQ(Decimal::parse(std::string("12.50")), dec("12.50"));
  EXPECT_EQ(Decimal::parse(NSString("Zo\u00EB")), std::nullopt);
  EXPECT_EQ(Decimal::decimalNumberWithString(NSString("-3")), -3);
  EXPECT_TRUE(Decimal::decimalNumberWithString(NSString("x")).isNaN());
  static_assert(!std::is_constructible_v<Decimal, const char*> && !std::is_constructible_v<Decimal, NSString>);
}

TEST(Decimal, ExactArithmeticWorksInConstantExpressions) {
  constexpr Decimal net = 2500.00_dec - 0.125_dec * 2;
  static_assert(net == 2499.75_dec && net.exponent() == -3);
  static_assert(1.50_dec + 1 == 2.5_dec && -1.5_dec + 1.50_dec == 0 && (-1.5_dec + 1.50_dec).exponent() == -2);
  static_assert(1E30_dec + 1 == 1000000000000000000000000000001_dec &&
                1 - 1E30_dec == -999999999999999999999999999999_dec);
  static_assert(1E18_dec * 1E18_dec == 1E36_dec && -3_dec * 0.5_dec == -1.5_dec && !(-3_dec * 0_dec).isNegative());
  static_assert(99999999999999999999_dec * 99999999999999999_dec == 9999999999999999899900000000000000001_dec);
  static_assert((Decimal::notANumber() + 1).isNaN() && (2_dec * Decimal::notANumber()).isNaN());
  constexpr Decimal sum = [] {
    Decimal each = 1;
    each += 0.5_dec;
    each -= 0.25_dec;
    each *= 4;
    return each;
  }();
  static_assert(sum == 5);
  // The same at run time, with the same exponents.
  const Decimal pairs[][2] = {{2500.00_dec, 0.125_dec},
                              {-1.5_dec, 1.50_dec},
                              {1E30_dec, -1_dec},
                              {1E30_dec, 7E-7_dec},
                              {99999999999999999999_dec, 99999999999999999_dec},
                              {0E5_dec, 3_dec}};
  constexpr Decimal sums[] = {2500.00_dec + 0.125_dec,
                              -1.5_dec + 1.50_dec,
                              1E30_dec + -1_dec,
                              1E30_dec + 7E-7_dec,
                              99999999999999999999_dec + 99999999999999999_dec,
                              0E5_dec + 3_dec};
  for (std::size_t i = 0; i < std::size(sums); ++i) {
    const Decimal atRunTime = pairs[i][0] + pairs[i][1];
    EXPECT_EQ(atRunTime.parts(), sums[i].parts()) << to_string(sums[i]);
  }
}

TEST(Decimal, RoundsToPlaces) {
  const struct {
    const char* number;
    int places;
    NSRoundingMode mode;
    const char* expected;
  } rows[] = {
      {"2.345", 2, NSRoundPlain, "2.35"},
      {"-2.345", 2, NSRoundPlain, "-2.35"},
      {"2.345", 2, NSRoundBankers, "2.34"},
      {"2.349", 2, NSRoundDown, "2.34"},
      {"-2.341", 2, NSRoundDown, "-2.35"},
      {"2.341", 2, NSRoundUp, "2.35"},
      {"1.5", 2, NSRoundPlain, "1.5"},
      {"1499", -3, NSRoundPlain, "1000"},
      {"1500", -3, NSRoundPlain, "2000"},
      {"0.4", 0, NSRoundPlain, "0"},
      {"-0.4", 0, NSRoundPlain, "0"},
      {"1E-128", 128, NSRoundPlain, nullptr},
      {"1E-128", 127, NSRoundPlain, "0"},
      {"1E-128", 1'000'000, NSRoundPlain, nullptr},
      {"5", -1'000'000, NSRoundPlain, "0"},
      {"5", std::numeric_limits<int>::min(), NSRoundPlain, "0"},
      {"99999999999999999999999999999999999999", -20, NSRoundDown, "99999999999999999900000000000000000000"},
      {"NaN", 2, NSRoundPlain, "NaN"},
  };
  for (const auto& row : rows) {
    const Decimal rounded = dec(row.number).round(row.places, row.mode);
    EXPECT_EQ(rounded, dec(row.expected ? row.expected : row.number)) << row.number << " to " << row.places;
    EXPECT_EQ(rounded, round(dec(row.number), row.places, row.mode));
  }
  EXPECT_EQ(nameOfWhatIsRaised([] { (void)(5_dec).round(-200, NSRoundUp); }), NSDecimalNumberOverflowException);
}

TEST(Decimal, AbsIsTheMagnitude) {
  EXPECT_EQ(abs(-2.50_dec), 2.50_dec);
  EXPECT_EQ((-2.50_dec).abs().exponent(), -2);
  EXPECT_EQ(abs(2_dec), 2);
  EXPECT_EQ(abs(Decimal()), 0);
  EXPECT_TRUE(Decimal::notANumber().abs().isNaN());
  EXPECT_EQ(abs(Decimal::minimumDecimalNumber()), Decimal::maximumDecimalNumber());
}

TEST(Decimal, RemaindersHaveTheSignOfTheDividend) {
  const struct {
    const char *a, *b, *expected;
    int exponent;
  } rows[] = {
      {"7", "3", "1", 0},
      {"-7", "3", "-1", 0},
      {"7", "-3", "1", 0},
      {"-7", "-3", "-1", 0},
      {"6", "3", "0", 0},
      {"100.00", "0.07", "0.04", -2},
      {"100", "0.03", "0.01", -2},
      {"0.05", "100", "0.05", -2},
      {"5.5", "2", "1.5", -1},
      {"0", "0.5", "0", -1},
      {"1E127", "7", "3", 0},
      {"1E127", "3E-128", "1E-128", -128},
      {"1E-128", "1E127", "1E-128", -128},
      {"99999999999999999999999999999999999999", "1E20", "99999999999999999999", 0},
  };
  for (const auto& row : rows) {
    const Decimal rest = dec(row.a) % dec(row.b);
    EXPECT_EQ(rest, dec(row.expected)) << row.a << " % " << row.b;
    EXPECT_EQ(rest.exponent(), row.exponent) << row.a << " % " << row.b;
  }
  Decimal hours = 37.5_dec;
  hours %= 7.5_dec;
  EXPECT_EQ(hours, 0);
  EXPECT_FALSE((-6_dec % 3_dec).isNegative());
  EXPECT_TRUE((Decimal::notANumber() % 3).isNaN());
  EXPECT_TRUE((3_dec % Decimal::notANumber()).isNaN());
  for (const Decimal& zero : {0_dec, 0.00_dec}) {
    EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(3_dec % zero); }), NSDecimalNumberDivideByZeroException);
    EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(0_dec % zero); }), nameOfWhatIsRaised([&] { (void)(0_dec / zero); }));
  }
}

TEST(Decimal, ComparesInConstantExpressions) {
  static_assert(5_dec == 5.00_dec && 5_dec != 5.01_dec && 5_dec <= 5.00_dec);
  static_assert(-5_dec < 5_dec && -5_dec < -4.99_dec && -4.99_dec > -5_dec && 0_dec == -0.00_dec);
  static_assert(1E127_dec > 1E-128_dec && -1E127_dec < -1E-128_dec && 1E-128_dec > 0);
  static_assert(99999999999999999999999999999999999999_dec < 1E38_dec);
  static_assert(99999999999999999999999999999999999999_dec > 9999999999999999999999999999999999999.9_dec);
  static_assert(10000000000000000000000000000000000000_dec == 1E37_dec);
  static_assert(Decimal::notANumber() == Decimal::notANumber() && Decimal::notANumber() < -1E127_dec);
  static_assert(Decimal::minimumDecimalNumber() < Decimal::maximumDecimalNumber());
  static_assert(abs(-2.50_dec) == 2.5_dec && (-3_dec).abs() == 3);
  static_assert((2_dec <=> 10_dec) < 0 && (2.0_dec <=> 2_dec) == 0);
}

TEST(Decimal, IsAValueOf24BytesThatIsCopiedAsBytes) {
  EXPECT_EQ(sizeof(Decimal), 24u);
  EXPECT_EQ(alignof(Decimal), 8u);
  EXPECT_TRUE(std::is_trivially_copyable_v<Decimal>);
  EXPECT_TRUE((std::is_same_v<NSDecimalNumber, Decimal>));
}

TEST(Decimal, KeepsItsExponent) {
  EXPECT_EQ((5_dec).exponent(), 0);
  EXPECT_EQ((5.00_dec).exponent(), -2);
  EXPECT_EQ(5_dec, 5.00_dec);
  EXPECT_EQ((5.00_dec).stringValue(), "5.00");
}

TEST(Decimal, IsZeroByDefault) {
  EXPECT_TRUE(Decimal().isZero());
  EXPECT_EQ(Decimal(), Decimal::zero());
  EXPECT_EQ(Decimal::one(), 1_dec);
}

TEST(Decimal, ComesFromEveryIntegerExactly) {
  const Decimal fromInt = -7;
  EXPECT_EQ(fromInt.stringValue(), "-7");
  EXPECT_EQ(Decimal(std::numeric_limits<std::int64_t>::min()).stringValue(), "-9223372036854775808");
  EXPECT_EQ(Decimal(std::numeric_limits<std::int64_t>::max()).stringValue(), "9223372036854775807");
  EXPECT_EQ(Decimal(std::numeric_limits<std::uint64_t>::max()).stringValue(), "18446744073709551615");
  EXPECT_EQ(Decimal(static_cast<signed char>(-128)).stringValue(), "-128");
  EXPECT_EQ(Decimal(static_cast<unsigned short>(65535)).stringValue(), "65535");
}

TEST(Decimal, ComesFromAnIntegerUnaskedAndFromADoubleOrABooleanOnlyWhenAsked) {
  EXPECT_TRUE((std::is_convertible_v<int, Decimal>));
  EXPECT_TRUE((std::is_convertible_v<std::uint64_t, Decimal>));
  EXPECT_FALSE((std::is_convertible_v<double, Decimal>));
  EXPECT_FALSE((std::is_convertible_v<float, Decimal>));
  EXPECT_FALSE((std::is_convertible_v<bool, Decimal>));
  EXPECT_FALSE((std::is_constructible_v<Decimal, long double>));
  EXPECT_FALSE((std::is_constructible_v<Decimal, const char*>));
  EXPECT_EQ(Decimal(true), 1_dec);
  EXPECT_EQ(Decimal(false), 0_dec);
}

TEST(Decimal, ADoubleGivesTheShortestDigitsThatReadBack) {
  EXPECT_EQ(Decimal(0.1).stringValue(), "0.1");
  EXPECT_EQ(Decimal(-2.675).stringValue(), "-2.675");
  EXPECT_EQ(Decimal(1.0 / 3).stringValue(), "0.3333333333333333");
  EXPECT_EQ(Decimal(0.1 + 0.2).stringValue(), "0.30000000000000004");
  EXPECT_EQ(Decimal(1e25).stringValue(), "10000000000000000000000000");
  EXPECT_EQ(Decimal(1e-7).stringValue(), "0.0000001");
}

TEST(Decimal, AWholeDoubleBelowTwoTo64IsExact) {
  EXPECT_EQ(Decimal(1200.0).stringValue(), "1200");
  EXPECT_EQ(Decimal(1200.0).exponent(), 0);
  EXPECT_EQ(Decimal(9007199254740993.0).stringValue(), "9007199254740992");
  EXPECT_EQ(Decimal(9223372036854775808.0).stringValue(), "9223372036854775808");
  EXPECT_EQ(Decimal(18446744073709549568.0).stringValue(), "18446744073709549568");
  EXPECT_EQ(Decimal(18446744073709551616.0).stringValue(), "18446744073709552000");
}

TEST(Decimal, AFloatGivesItsOwnShortestDigits) {
  EXPECT_EQ(Decimal(0.1F).stringValue(), "0.1");
  EXPECT_EQ(Decimal(16777216.0F).stringValue(), "16777216");
}

TEST(Decimal, ADoubleOutOfRangeIsNoNumberAndATinyOneIsZero) {
  EXPECT_TRUE(Decimal(std::numeric_limits<double>::quiet_NaN()).isNaN());
  EXPECT_TRUE(Decimal(std::numeric_limits<double>::infinity()).isNaN());
  EXPECT_TRUE(Decimal(-std::numeric_limits<double>::infinity()).isNaN());
  EXPECT_TRUE(Decimal(1e166).isNaN());
  EXPECT_FALSE(Decimal(1e164).isNaN());
  EXPECT_TRUE(Decimal(1e-200).isZero());
  EXPECT_EQ(Decimal(1e-128), dec("1E-128"));
  EXPECT_FALSE(Decimal(-0.0).isNegative());
}

TEST(Decimal, IsMadeOfMantissaExponentAndSign) {
  EXPECT_EQ(Decimal::decimalNumberWithMantissa(12345, -2, true).stringValue(), "-123.45");
  EXPECT_EQ(Decimal::decimalNumberWithMantissa(1, 0, true), -1_dec);
  EXPECT_EQ(Decimal::decimalNumberWithMantissa(0, -2, true).stringValue(), "0.00");
  EXPECT_EQ(Decimal::decimalNumberWithMantissa(1, 130, false), dec("1E130"));
  EXPECT_EQ(nameOfWhatIsRaised([] { (void)Decimal::decimalNumberWithMantissa(1, 200, false); }),
            "NSDecimalNumberOverflowException");
  EXPECT_EQ(nameOfWhatIsRaised([] { (void)Decimal::decimalNumberWithMantissa(1, -129, false); }),
            "NSDecimalNumberUnderflowException");
}

TEST(Decimal, PartsTakeANumberApartAndMakeItAgain) {
  const Decimal::Parts parts = (-12.50_dec).parts();
  EXPECT_EQ(parts.mantissaLow, 1250u);
  EXPECT_EQ(parts.mantissaHigh, 0u);
  EXPECT_EQ(parts.exponent, -2);
  EXPECT_TRUE(parts.isNegative);
  EXPECT_FALSE(parts.isNaN);
  EXPECT_EQ(Decimal::fromParts(parts)->stringValue(), "-12.50");
  EXPECT_TRUE(Decimal::fromParts(Decimal::notANumber().parts())->isNaN());
  EXPECT_EQ(Decimal::maximumDecimalNumber().parts().mantissaHigh, 5421010862427522170u);
  EXPECT_EQ(Decimal::maximumDecimalNumber().parts().mantissaLow, 687399551400673279u);
}

TEST(Decimal, PartsThatNoNumberHasAreRefused) {
  EXPECT_FALSE(Decimal::fromParts({.mantissaHigh = 5421010862427522170u, .mantissaLow = 687399551400673280u}));
  EXPECT_FALSE(Decimal::fromParts({.mantissaHigh = ~std::uint64_t{0}}));
  EXPECT_FALSE(Decimal::fromParts({.mantissaLow = 1, .exponent = 128}));
  EXPECT_FALSE(Decimal::fromParts({.mantissaLow = 1, .exponent = -129}));
  EXPECT_FALSE(Decimal::fromParts({.exponent = -1, .isNegative = true})->isNegative());
}

TEST(Decimal, TheGreatestAndTheLeastNumberHave38NinesAndTheGreatestExponent) {
  EXPECT_EQ(Decimal::maximumDecimalNumber().stringValue(), nines38 + std::string(127, '0'));
  EXPECT_EQ(Decimal::minimumDecimalNumber(), -Decimal::maximumDecimalNumber());
}

TEST(Decimal, ASumHasTheSmallerExponent) {
  EXPECT_EQ((1.10_dec + 2.205_dec).stringValue(), "3.305");
  EXPECT_EQ((5_dec + 0.00_dec).stringValue(), "5.00");
  EXPECT_EQ((1E3_dec + 1_dec).stringValue(), "1001");
  EXPECT_EQ((0.10_dec + 0.20_dec).stringValue(), "0.30");
}

TEST(Decimal, ASumIsExactWhere38DigitsHoldIt) {
  EXPECT_EQ((dec("99999999999999999999999999999999999998") + 1).stringValue(), nines38);
  EXPECT_EQ((dec("18446744073709551615") + 1).stringValue(), "18446744073709551616");
  EXPECT_EQ((dec("1E30") + dec("0.0000001")).stringValue(), "1000000000000000000000000000000.0000001");
  EXPECT_EQ((dec(nines38) - dec(nines38)).stringValue(), "0");
}

TEST(Decimal, ASumThatNeedsMoreDigitsIsRoundedHalfAwayFromZero) {
  EXPECT_EQ(dec(nines38) + 1, dec("1E38"));
  EXPECT_EQ(dec("1E38") + 4, dec("1E38"));
  EXPECT_EQ(dec("1E38") + 5, dec("100000000000000000000000000000000000010"));
  EXPECT_EQ(dec("-1E38") - 5, dec("-100000000000000000000000000000000000010"));
  EXPECT_EQ(dec("1E38") - dec("1E-100"), dec("1E38"));
}

TEST(Decimal, ADifferenceOfEqualNumbersIsAZeroWithoutSign) {
  const Decimal zero = 1.25_dec - 1.25_dec;
  EXPECT_TRUE(zero.isZero());
  EXPECT_FALSE(zero.isNegative());
  EXPECT_FALSE((-zero).isNegative());
  EXPECT_FALSE((zero * -1).isNegative());
  EXPECT_EQ(zero.stringValue(), "0.00");
}

TEST(Decimal, AProductHasTheSumOfTheExponents) {
  EXPECT_EQ((1.10_dec * 2.20_dec).stringValue(), "2.4200");
  EXPECT_EQ((-1.5_dec * 3).stringValue(), "-4.5");
  EXPECT_EQ((-1.5_dec * -3).stringValue(), "4.5");
  EXPECT_EQ((dec("18446744073709551615") * dec("18446744073709551615")).stringValue(),
            "340282366920938463426481119284349108230");
  EXPECT_EQ((9999999999999999999_dec * 9999999999999999999_dec).stringValue(),
            "99999999999999999980000000000000000001");
}

TEST(Decimal, AnExactQuotientStopsWhereItIsExact) {
  EXPECT_EQ((6.00_dec / 2).stringValue(), "3.00");
  EXPECT_EQ((1_dec / 4).stringValue(), "0.25");
  EXPECT_EQ((1_dec / 1024).stringValue(), "0.0009765625");
  EXPECT_EQ((600_dec / 2.00_dec).exponent(), 2);
  EXPECT_EQ((600_dec / 2.00_dec).stringValue(), "300");
  EXPECT_EQ((dec("1E38") / dec("1E30")).stringValue(), "100000000");
  EXPECT_EQ((0.00_dec / 7).stringValue(), "0.00");
}

TEST(Decimal, WhatLiesBeyondTheGreatestNumberRaisesHoweverCloseItIs) {
  const Decimal greatest = Decimal::maximumDecimalNumber(), lowest = Decimal::minimumDecimalNumber();
  const Decimal least = dec("1E-128"), step = dec("1E127");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(greatest + 1); }), "NSDecimalNumberOverflowException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(greatest + least); }), "NSDecimalNumberOverflowException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(greatest + dec("1E126")); }), "NSDecimalNumberOverflowException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(greatest + step); }), "NSDecimalNumberOverflowException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(greatest * 10); }), "NSDecimalNumberOverflowException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(greatest * dec("1.0000000000000000000000000000000000001")); }),
            "NSDecimalNumberOverflowException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(greatest / dec("0.99999999999999999999999999999999999999")); }),
            "NSDecimalNumberOverflowException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(lowest - 1); }), "NSDecimalNumberOverflowException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(lowest - least); }), "NSDecimalNumberOverflowException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(least / 1.1_dec); }), "NSDecimalNumberUnderflowException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(-least / 1.1_dec); }), "NSDecimalNumberUnderflowException");

  EXPECT_EQ(greatest + 0, greatest);
  EXPECT_EQ(greatest * 1, greatest);
  EXPECT_EQ(greatest - 1, greatest) << "rounded to 38 digits";
  EXPECT_EQ(lowest + 1, lowest);
  EXPECT_EQ(greatest - step + step, greatest);
  EXPECT_EQ(least * 0.0_dec, 0);
}

TEST(Decimal, ATextBeyondTheGreatestNumberIsNone) {
  const std::string nines(38, '9');
  EXPECT_EQ(Decimal::parse(nines + "E127"), Decimal::maximumDecimalNumber());
  EXPECT_EQ(Decimal::parse(nines + ".0E127"), Decimal::maximumDecimalNumber());
  EXPECT_EQ(Decimal::parse(nines + ".1E127"), std::nullopt);
  EXPECT_EQ(Decimal::parse("-" + nines + ".1E127"), std::nullopt);
  EXPECT_EQ(Decimal::parse(nines + ".1E126"), dec(nines + "E126"));
}

TEST(Decimal, AnEndlessQuotientHas38DigitsRoundedHalfAwayFromZero) {
  EXPECT_EQ((1_dec / 3).stringValue(), "0.33333333333333333333333333333333333333");
  EXPECT_EQ((-2_dec / 3).stringValue(), "-0.66666666666666666666666666666666666667");
  EXPECT_EQ((10_dec / 3).stringValue(), "3.3333333333333333333333333333333333333");
  EXPECT_EQ((1_dec / 3000000).stringValue(), "0.00000033333333333333333333333333333333333333");
  EXPECT_EQ((dec("12345678901234567890123456789") / dec("98765432109876543210987654321")).stringValue(),
            "0.12499999886093750001423828124982202148");
}

TEST(Decimal, ArithmeticOutOfRangeRaisesByDefault) {
  const Decimal greatest = Decimal::maximumDecimalNumber(), least = dec("1E-128");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(greatest + greatest); }), "NSDecimalNumberOverflowException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(-greatest - greatest); }), "NSDecimalNumberOverflowException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(greatest * 2); }), "NSDecimalNumberOverflowException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(greatest / 0.1_dec); }), "NSDecimalNumberOverflowException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(least * least); }), "NSDecimalNumberUnderflowException");
  EXPECT_EQ(nameOfWhatIsRaised([&] { (void)(least / 2); }), "NSDecimalNumberUnderflowException");
  EXPECT_EQ(nameOfWhatIsRaised([] { (void)(1_dec / 0); }), "NSDecimalNumberDivideByZeroException");
  EXPECT_EQ(nameOfWhatIsRaised([] { (void)(0_dec / 0.00_dec); }), "NSDecimalNumberDivideByZeroException");
  EXPECT_EQ(nameOfWhatIsRaised([] { (void)(1_dec / 3); }), "");
}

TEST(Decimal, TheLastNumbersBeforeARangeEndsAreNumbers) {
  const Decimal greatest = Decimal::maximumDecimalNumber(), least = dec("1E-128");
  EXPECT_EQ(greatest - greatest, 0);
  EXPECT_EQ(dec("1E100") * dec("1E64"), dec("1E164"));
  EXPECT_EQ(dec("1E-64") * dec("1E-64"), least);
  EXPECT_EQ(least - least, 0);
  EXPECT_EQ(dec("1.5E-127") / 2, dec("8E-128"));
}

TEST(Decimal, NotANumberStaysAndNothingRaises) {
  const Decimal none = Decimal::notANumber();
  EXPECT_TRUE((none + 1).isNaN());
  EXPECT_TRUE((1 - none).isNaN());
  EXPECT_TRUE((none * 0).isNaN());
  EXPECT_TRUE((none / 0).isNaN());
  EXPECT_TRUE((1 / none).isNaN());
  EXPECT_TRUE((-none).isNaN());
  EXPECT_FALSE((-none).isNegative());
  EXPECT_TRUE(none.decimalNumberByRaisingToPower(0).isNaN());
  EXPECT_TRUE(none.decimalNumberByMultiplyingByPowerOf10(3).isNaN());
  EXPECT_TRUE(none.decimalNumberByRoundingAccordingToBehavior(NSDecimalNumberHandler({.scale = 2})).isNaN());
}

TEST(Decimal, SumsOfUnlikeExponentsAreExactAtTheLimitsOfTheShortPath) {
  const struct {
    const char* why;
    const char *a, *b, *sum;
  } rows[] = {
      {"amount and rate", "1234.56", "0.0725", "1234.6325"},
      {"rate and negative amount", "0.0725", "-1234.56", "-1234.4875"},
      {"a sum of zero is not negative", "-1.50", "1.5000", "0.0000"},
      {"6 places apart, 2^42 - 1", "4398046511103", "0.000001", "4398046511103.000001"},
      {"6 places apart, 2^42", "4398046511104", "-0.000001", "4398046511103.999999"},
      {"6 places apart, 2^61", "2305843009213693952", "0.000001", "2305843009213693952.000001"},
      {"18 places apart, 2^42 - 1", "4398046511103", "0.000000000000000001", "4398046511103.000000000000000001"},
      {"7 places apart", "4398046511103", "0.0000001", "4398046511103.0000001"},
      {"both negative and both great", "-4398046511103", "-4398046.511103", "-4398050909149.511103"},
      {"64 bits", "18446744073709551615", "0.1", "18446744073709551615.1"},
      {"18 places apart", "9", "0.000000000000000001", "9.000000000000000001"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ((dec(row.a) + dec(row.b)).stringValue(), row.sum) << row.why;
    EXPECT_EQ((dec(row.b) + dec(row.a)).stringValue(), row.sum) << row.why;
  }
}

TEST(Decimal, ReadsAndPrintsTextsOfEveryLength) {
  const std::string digits = "1234567890123456789012345678901234567";
  for (std::size_t length = 1; length <= digits.size(); ++length) {
    for (std::size_t places = 0; places < length; ++places) {
      std::string text = digits.substr(0, length);
      if (places != 0) text.insert(length - places, 1, '.');
      for (const char* sign : {"", "-"}) {
        const auto number = Decimal::parse(sign + text);
        ASSERT_TRUE(number.has_value()) << text;
        EXPECT_EQ(number->exponent(), -static_cast<int>(places)) << text;
        EXPECT_EQ(number->stringValue(), sign + text);
      }
      for (std::size_t i = 0; i <= text.size(); ++i) {
        std::string wrong = text;
        wrong.insert(i, 1, i % 2 == 0 ? ':' : '/');  // the characters beside the digits
        EXPECT_EQ(Decimal::parse(wrong), std::nullopt) << wrong;
      }
    }
  }
}

TEST(Decimal, NoOtherCharacterCountsAsADigitOrAsThePoint) {
  for (const std::string text : {"9999", "999.99", "-999.99", "99999.99", "9.999999", "-9999999", "99999999"}) {
    for (std::size_t i = 0; i < text.size(); ++i) {
      for (int code = 0; code < 256; ++code) {
        const char character = static_cast<char>(code);
        if (std::string_view("0123456789.Ee+-").find(character) != std::string_view::npos) continue;
        std::string wrong = text;
        wrong[i] = character;
        EXPECT_EQ(Decimal::parse(wrong), std::nullopt) << text << " with " << code << " at " << i;
      }
    }
  }
}

TEST(Decimal, DigitsMayBeMissingBeforeOrAfterThePoint) {
  const struct {
    const char *text, *shown;
  } rows[] = {
      {".5", "0.5"},       {".500", "0.500"},    {"-.500", "-0.500"},  {".5000000", "0.5000000"},
      {"5.", "5"},         {"500.", "500"},      {"-500.", "-500"},    {"5000000.", "5000000"},
      {".0000", "0.0000"}, {"-.0000", "0.0000"}, {"-0000.00", "0.00"},
  };
  for (const auto& row : rows) EXPECT_EQ(Decimal::decimalNumberWithString(row.text).stringValue(), row.shown);
}

TEST(Decimal, NamedOperationsWithoutABehaviourAreTheOperators) {
  EXPECT_EQ((1.5_dec).decimalNumberByAdding(2).stringValue(), "3.5");
  EXPECT_EQ((1.5_dec).decimalNumberBySubtracting(2).stringValue(), "-0.5");
  EXPECT_EQ((1.5_dec).decimalNumberByMultiplyingBy(2).stringValue(), "3.0");
  EXPECT_EQ((1.5_dec).decimalNumberByDividingBy(2).stringValue(), "0.75");
  EXPECT_EQ(nameOfWhatIsRaised([] { (void)(1_dec).decimalNumberByDividingBy(0); }),
            "NSDecimalNumberDivideByZeroException");
}

TEST(Decimal, AssignmentOperatorsChangeTheirReceiver) {
  Decimal value = 10;
  value += 2.5_dec;
  EXPECT_EQ(value, 12.5_dec);
  value -= 0.5_dec;
  EXPECT_EQ(value, 12_dec);
  value *= 3;
  EXPECT_EQ(value, 36_dec);
  value /= 8;
  EXPECT_EQ(value, 4.5_dec);
  EXPECT_EQ(+value, value);
}

TEST(Decimal, PowersAreExactOrRoundedTo38Digits) {
  EXPECT_EQ((1.05_dec).decimalNumberByRaisingToPower(2).stringValue(), "1.1025");
  EXPECT_EQ((-2_dec).decimalNumberByRaisingToPower(3), -8);
  EXPECT_EQ((-2_dec).decimalNumberByRaisingToPower(4), 16);
  EXPECT_EQ((7.5_dec).decimalNumberByRaisingToPower(0), 1);
  EXPECT_EQ((0_dec).decimalNumberByRaisingToPower(0), 1);
  EXPECT_EQ((0_dec).decimalNumberByRaisingToPower(5), 0);
  EXPECT_EQ((2_dec).decimalNumberByRaisingToPower(126).stringValue(), "85070591730234615865843651857942052864");
  EXPECT_EQ((2_dec).decimalNumberByRaisingToPower(127), dec("170141183460469231731687303715884105730"));
  EXPECT_EQ((100_dec).decimalNumberByRaisingToPower(80), dec("1E160"));
  EXPECT_EQ((1.00_dec).decimalNumberByRaisingToPower(1'000'000'000), 1);
  // (1 + 1E-9)^1E9 = e * (1 - 0.5E-9 + ...)
  EXPECT_EQ((1.000000001_dec).decimalNumberByRaisingToPower(1'000'000'000).stringValue().substr(0, 20),
            "2.718281827099904322");
}

TEST(Decimal, PowersOutOfRangeRaise) {
  EXPECT_EQ(nameOfWhatIsRaised([] { (void)(10_dec).decimalNumberByRaisingToPower(165); }),
            "NSDecimalNumberOverflowException");
  EXPECT_EQ(nameOfWhatIsRaised([] { (void)(0.1_dec).decimalNumberByRaisingToPower(129); }),
            "NSDecimalNumberUnderflowException");
  EXPECT_EQ(nameOfWhatIsRaised([] { (void)(-1.01_dec).decimalNumberByRaisingToPower(~std::uint64_t{0}); }),
            "NSDecimalNumberOverflowException");
  EXPECT_EQ(nameOfWhatIsRaised([] { (void)(0.99_dec).decimalNumberByRaisingToPower(~std::uint64_t{0}); }),
            "NSDecimalNumberUnderflowException");
}

TEST(Decimal, APowerOfTenMovesThePoint) {
  EXPECT_EQ((12.5_dec).decimalNumberByMultiplyingByPowerOf10(3).stringValue(), "12500");
  EXPECT_EQ((12.5_dec).decimalNumberByMultiplyingByPowerOf10(-2).stringValue(), "0.125");
  EXPECT_EQ((1_dec).decimalNumberByMultiplyingByPowerOf10(164), dec("1E164"));
  EXPECT_EQ(nameOfWhatIsRaised([] { (void)(1_dec).decimalNumberByMultiplyingByPowerOf10(165); }),
            "NSDecimalNumberOverflowException");
  EXPECT_EQ(nameOfWhatIsRaised([] { (void)(1_dec).decimalNumberByMultiplyingByPowerOf10(-32768); }),
            "NSDecimalNumberUnderflowException");
}

TEST(Decimal, ComparesByValue) {
  EXPECT_EQ((5_dec).compare(5.00_dec), NSOrderedSame);
  EXPECT_EQ((0_dec).compare(0.00_dec), NSOrderedSame);
  EXPECT_EQ((1.1_dec).compare(1.09_dec), NSOrderedDescending);
  EXPECT_EQ((-1.1_dec).compare(-1.09_dec), NSOrderedAscending);
  EXPECT_LT(-1_dec, 0_dec);
  EXPECT_LT(dec("1E-128"), dec("1E127"));
  EXPECT_GT(dec("1E-128"), 0);
  EXPECT_LT(dec("-1E-128"), 0);
  EXPECT_EQ(dec("1E37"), dec("10000000000000000000000000000000000000"));
  EXPECT_LT(dec("99999999999999999999999999999999999998"), dec(nines38));
  EXPECT_TRUE(3 == 3.0_dec);
}

TEST(Decimal, NotANumberIsTheSameAsItselfAndLessThanEveryNumber) {
  const Decimal none = Decimal::notANumber();
  EXPECT_EQ(none, none);
  EXPECT_EQ(none.compare(none), NSOrderedSame);
  EXPECT_EQ(none.compare(Decimal::minimumDecimalNumber()), NSOrderedAscending);
  EXPECT_EQ(Decimal::zero().compare(none), NSOrderedDescending);
  EXPECT_NE(none, 0);
}

TEST(Decimal, LongLongValueDiscardsTheFraction) {
  EXPECT_EQ((-7.9_dec).longLongValue(), -7);
  EXPECT_EQ((7.9_dec).longLongValue(), 7);
  EXPECT_EQ((0.99999_dec).longLongValue(), 0);
  EXPECT_EQ(dec("12E2").longLongValue(), 1200);
  EXPECT_EQ(dec("123456789012345678901E-2").longLongValue(), 1234567890123456789);
  EXPECT_EQ(dec("1E-128").longLongValue(), 0);
  EXPECT_EQ(Decimal::notANumber().longLongValue(), 0);
}

TEST(Decimal, LongLongValueOutOfRangeIsTheNearestEnd) {
  constexpr auto least = std::numeric_limits<std::int64_t>::min(), most = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(dec("9223372036854775807.9").longLongValue(), most);
  EXPECT_EQ(dec("9223372036854775808").longLongValue(), most);
  EXPECT_EQ(dec("-9223372036854775807").longLongValue(), least + 1);
  EXPECT_EQ(dec("-9223372036854775808").longLongValue(), least);
  EXPECT_EQ(dec("-9223372036854775809").longLongValue(), least);
  EXPECT_EQ(Decimal::maximumDecimalNumber().longLongValue(), most);
  EXPECT_EQ(Decimal::minimumDecimalNumber().longLongValue(), least);
}

TEST(Decimal, UnsignedLongLongValueStopsAtZeroAndAtItsGreatest) {
  constexpr auto most = std::numeric_limits<std::uint64_t>::max();
  EXPECT_EQ(dec("18446744073709551615").unsignedLongLongValue(), most);
  EXPECT_EQ(dec("18446744073709551616").unsignedLongLongValue(), most);
  EXPECT_EQ((-1_dec).unsignedLongLongValue(), 0u);
  EXPECT_EQ((41.99_dec).unsignedLongLongValue(), 41u);
  EXPECT_EQ(Decimal::notANumber().unsignedLongLongValue(), 0u);
}

TEST(Decimal, DoubleValueIsTheNearestDouble) {
  EXPECT_EQ((0.1_dec).doubleValue(), 0.1);
  EXPECT_EQ((-1234.5_dec).doubleValue(), -1234.5);
  EXPECT_EQ(dec("1E127").doubleValue(), 1e127);
  EXPECT_EQ(dec("1E-128").doubleValue(), 1e-128);
  EXPECT_EQ(dec("9007199254740993").doubleValue(), 9007199254740992.0);  // a tie, to even
  EXPECT_EQ(dec("9007199254740993.00001").doubleValue(), 9007199254740994.0);
  EXPECT_TRUE(std::isnan(Decimal::notANumber().doubleValue()));
}

TEST(Decimal, BoolValueIsTrueForANumberOtherThanZero) {
  EXPECT_TRUE((0.01_dec).boolValue());
  EXPECT_TRUE((-1_dec).boolValue());
  EXPECT_FALSE((0.00_dec).boolValue());
  EXPECT_FALSE(Decimal::notANumber().boolValue());
}

TEST(Decimal, EqualNumbersAreOneInAHashedSet) {
  const std::unordered_set<Decimal> set{5_dec, 5.00_dec, dec("0.5E1"), 50_dec, dec("5E1"), -5_dec};
  EXPECT_EQ(set.size(), 3u);
  EXPECT_EQ((0_dec).hash(), (0.000_dec).hash());
}

TEST(Decimal, TextIsPlainDigits) {
  const struct {
    const char *text, *plain;
  } rows[] = {
      {"0", "0"},
      {"0.00", "0.00"},
      {"-0", "0"},
      {"007", "7"},
      {"1234.50", "1234.50"},
      {"-0.05", "-0.05"},
      {".5", "0.5"},
      {"5.", "5"},
      {"1E3", "1000"},
      {"1e+3", "1000"},
      {"12.5E-3", "0.0125"},
      {"+1.5", "1.5"},
      {"0E5", "0"},
      {"+.5", "0.5"},
      {"1.50E1", "15.0"},
      {"NaN", "NaN"},
      {"00000000000000000000000000000000000000000000000001", "1"},
      {"0.00000000000000000000000000000000000000000000000001", "0.00000000000000000000000000000000000000000000000001"},
  };
  for (const auto& row : rows) EXPECT_EQ(dec(row.text).stringValue(), row.plain) << row.text;
}

TEST(Decimal, TextIsReadWholeOrNotAtAll) {
  for (const char* text : {"",
                           " ",
                           "-",
                           "+",
                           ".",
                           "-.",
                           "e5",
                           "1e",
                           "1e+",
                           "1,234",
                           "1.2.3",
                           "12abc",
                           " 1",
                           "1 ",
                           "--1",
                           "+-1",
                           "-+1",
                           "0x10",
                           "1_000",
                           "nan",
                           "-NaN",
                           "+NaN",
                           "inf",
                           "NaN1",
                           "1E5.0",
                           "\xC2\xA3"
                           "5"}) {
    EXPECT_FALSE(Decimal::parse(text).has_value()) << '"' << text << '"';
    EXPECT_TRUE(Decimal::decimalNumberWithString(text).isNaN()) << '"' << text << '"';
  }
  EXPECT_FALSE(Decimal::parse(std::string_view("1\0", 2)).has_value());
  EXPECT_EQ(Decimal::decimalNumberWithString("-12.50").stringValue(), "-12.50");
}

TEST(Decimal, TextOutOfRangeIsReadAsNothing) {
  EXPECT_FALSE(Decimal::parse("1E165").has_value());
  EXPECT_TRUE(Decimal::parse("1E164").has_value());
  EXPECT_FALSE(Decimal::parse("9E-129").has_value());
  EXPECT_TRUE(Decimal::parse("1E-128").has_value());
  EXPECT_FALSE(Decimal::parse("1E99999999999999999999999999").has_value());
  EXPECT_FALSE(Decimal::parse("1E-99999999999999999999999999").has_value());
  EXPECT_EQ(dec("0E99999").exponent(), 127);
  EXPECT_EQ(dec("0E-99999").exponent(), -128);
}

TEST(Decimal, TextOfMoreThan38DigitsIsRoundedHalfAwayFromZero) {
  EXPECT_EQ(dec("1.00000000000000000000000000000000000004").stringValue(), "1.0000000000000000000000000000000000000");
  EXPECT_EQ(dec("1.00000000000000000000000000000000000005").stringValue(), "1.0000000000000000000000000000000000001");
  EXPECT_EQ(dec("-1.00000000000000000000000000000000000005").stringValue(), "-1.0000000000000000000000000000000000001");
  EXPECT_EQ(dec("999999999999999999999999999999999999995"), dec("1E39"));
  EXPECT_EQ(dec("1" + std::string(164, '0')), dec("1E164"));
  EXPECT_EQ(dec("1.4999E-128").stringValue(), "0." + std::string(127, '0') + "1");
  EXPECT_EQ(dec("1.5E-128").stringValue(), "0." + std::string(127, '0') + "2");
}

TEST(Decimal, TheLongestTextsHave168CharactersAtMost) {
  EXPECT_EQ(Decimal::minimumDecimalNumber().stringValue().size(), 166u);
  EXPECT_EQ(dec("-1E-128").stringValue().size(), 131u);
}

TEST(Decimal, StreamsWriteTextAndReadAWord) {
  std::ostringstream out;
  out.width(8);
  out << -1.50_dec << '|' << Decimal::notANumber();
  EXPECT_EQ(out.str(), "   -1.50|NaN");

  std::istringstream in("12.50 -3 x");
  Decimal first, second, third = 9;
  in >> first >> second;
  EXPECT_EQ(first.stringValue(), "12.50");
  EXPECT_EQ(second, -3);
  in >> third;
  EXPECT_TRUE(in.fail());
  EXPECT_EQ(third, 9);
}

TEST(Decimal, LimitsDescribeTheType) {
  using Limits = std::numeric_limits<Decimal>;
  EXPECT_TRUE(Limits::is_specialized && Limits::is_signed && !Limits::is_integer && !Limits::is_exact);
  EXPECT_EQ(Limits::radix, 10);
  EXPECT_EQ(Limits::digits10, 38);
  EXPECT_EQ(Limits::min(), dec("1E-128"));
  EXPECT_EQ(Limits::max(), Decimal::maximumDecimalNumber());
  EXPECT_EQ(Limits::lowest(), Decimal::minimumDecimalNumber());
  EXPECT_EQ(1 + Limits::epsilon() - 1, Limits::epsilon());
  EXPECT_EQ(1 + Limits::epsilon() * 0.4_dec, 1);
  EXPECT_TRUE(Limits::quiet_NaN().isNaN());
}

}  // namespace
}  // namespace norvik
