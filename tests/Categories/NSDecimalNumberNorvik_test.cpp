#include "NorvikCore/Categories/NSDecimalNumber+Norvik.h"

#include "tests/support/Decimals.h"
#include "tests/support/ExpectRaises.h"
#include "tests/support/WarningRecorder.h"

#include <gtest/gtest.h>

using namespace norvik;

namespace {

using norvik::test::dec;

}  // namespace

TEST(NSDecimalNumberNorvik, HeaderExample) {
  EXPECT_EQ(dec("1.005").decimalNumberByRoundingAccordingToBehavior(nk_scaleBehavior(2)).stringValue(), "1.01");
  EXPECT_TRUE(nk_isLessThan(5, 7));
  EXPECT_EQ(nk_maximum(5, dec("5.00")).stringValue(), "5");
}

TEST(NSDecimalNumberNorvik, MinusOneAndTheRoundDownBehaviourAreTheSameObjectsOnEveryCall) {
  EXPECT_EQ(&minusOne(), &minusOne());
  EXPECT_EQ(minusOne().stringValue(), "-1");
  const NSDecimalNumberHandler& behavior = roundDownBehavior();
  EXPECT_EQ(&behavior, &roundDownBehavior());
  EXPECT_EQ(behavior.roundingMode(), 1u);
  EXPECT_EQ(behavior.scale(), 32767);
  EXPECT_TRUE(behavior.raiseOnExactness() && behavior.raiseOnOverflow() && behavior.raiseOnUnderflow() &&
              behavior.raiseOnDivideByZero());
}

TEST(NSDecimalNumberNorvik, TheScaleBehaviourAlwaysRoundsToTwoPlaces) {
  for (const std::int64_t scale : {0, 2, 6, -3}) {
    const NSDecimalNumberHandler behavior = nk_scaleBehavior(scale);
    EXPECT_EQ(behavior.roundingMode(), 0u);
    EXPECT_EQ(behavior.scale(), 2);
    EXPECT_TRUE(behavior.raiseOnExactness() && behavior.raiseOnOverflow() && behavior.raiseOnUnderflow() &&
                behavior.raiseOnDivideByZero());
    EXPECT_EQ(dec("1.005").decimalNumberByRoundingAccordingToBehavior(behavior), dec("1.01")) << scale;
    EXPECT_EQ(dec("1.004").decimalNumberByRoundingAccordingToBehavior(behavior), dec("1.00")) << scale;
    EXPECT_EQ(dec("-1.005").decimalNumberByRoundingAccordingToBehavior(behavior), dec("-1.01")) << scale;
  }
}

TEST(NSDecimalNumberNorvik, FaultsRaiseUnderTheLibrarysBehaviours) {
  EXPECT_RAISES((void)dec("1").decimalNumberByDividingBy(3, roundDownBehavior()), "NSDecimalNumberExactnessException");
  EXPECT_RAISES((void)dec("1").decimalNumberByDividingBy(0, nk_scaleBehavior(2)),
                "NSDecimalNumberDivideByZeroException");
  EXPECT_RAISES((void)Decimal::maximumDecimalNumber().decimalNumberByMultiplyingBy(10, nk_scaleBehavior(2)),
                "NSDecimalNumberOverflowException");
  EXPECT_RAISES((void)dec("1e-128").decimalNumberByMultiplyingBy(dec("0.1"), nk_scaleBehavior(2)),
                "NSDecimalNumberUnderflowException");
  EXPECT_RAISES((void)dec("1e-128").decimalNumberByMultiplyingBy(dec("0.1"), roundDownBehavior()),
                "NSDecimalNumberUnderflowException");
  EXPECT_RAISES((void)dec("1").decimalNumberByDividingBy(0, roundDownBehavior()),
                "NSDecimalNumberDivideByZeroException");
}

TEST(NSDecimalNumberNorvik, NegationMultipliesByMinusOne) {
  EXPECT_EQ(negate(dec("2.50")).stringValue(), "-2.50");
  EXPECT_EQ(negate(dec("-0.01")), dec("0.01"));
  EXPECT_EQ(negate(0), 0);
  EXPECT_TRUE(negate(Decimal::notANumber()).isNaN());
}

TEST(NSDecimalNumberNorvik, FloorKeepsTheFraction) {
  EXPECT_EQ(floor(dec("2.75")).stringValue(), "2.75");
  EXPECT_EQ(floor(dec("-2.75")).stringValue(), "-2.75");
  EXPECT_EQ(floor(dec("-0.5")).stringValue(), "-0.5");
}

TEST(NSDecimalNumberNorvik, TheIntegralNumberDiscardsTheFraction) {
  EXPECT_EQ(integralNumber(dec("-7.9")).longLongValue(), -7);
  EXPECT_EQ(integralNumber(dec("-7.9")).kind(), NSNumber::Kind::Integer);
  EXPECT_EQ(integralNumber(dec("7.9")).longLongValue(), 7);
  EXPECT_EQ(integralNumber(dec("1e30")).longLongValue(), INT64_MAX);
}

TEST(NSDecimalNumberNorvik, ShowsMoneyInCurrencyStyle) {
  EXPECT_EQ(nk_currencyStyleString(dec("1234.5")), "1,234.50");
  EXPECT_EQ(nk_currencyStyleString(dec("-0.12345")), "-0.1234");
}

TEST(NSDecimalNumberNorvik, ZeroIsZeroWhateverItsDigits) {
  EXPECT_TRUE(nk_isZero(0));
  EXPECT_TRUE(nk_isZero(dec("0.00")));
  EXPECT_FALSE(nk_isZero(dec("0.01")));
  EXPECT_FALSE(nk_isZero(Decimal::notANumber()));
}

TEST(NSDecimalNumberNorvik, ComparesBothSidesOfEachBoundary) {
  const struct {
    const char *a, *b;
    bool less, lessOrEqual, greater, greaterOrEqual;
  } rows[] = {{"1", "2", true, true, false, false},
              {"2", "2.00", false, true, false, true},
              {"2.01", "2", false, false, true, true}};
  for (const auto& row : rows) {
    EXPECT_EQ(nk_isLessThan(dec(row.a), dec(row.b)), row.less) << row.a;
    EXPECT_EQ(nk_isLessThanOrEqualTo(dec(row.a), dec(row.b)), row.lessOrEqual) << row.a;
    EXPECT_EQ(nk_isGreaterThan(dec(row.a), dec(row.b)), row.greater) << row.a;
    EXPECT_EQ(nk_isGreaterThanOrEqualTo(dec(row.a), dec(row.b)), row.greaterOrEqual) << row.a;
  }
}

TEST(NSDecimalNumberNorvik, TheMaximumOfATieIsTheReceiver) {
  EXPECT_EQ(nk_maximum(5, dec("5.00")).exponent(), 0);
  EXPECT_EQ(nk_maximum(dec("5.00"), 5).exponent(), -2);
  EXPECT_EQ(nk_maximum(4, 5), 5);
  EXPECT_EQ(nk_maximum(6, 5), 6);
}

TEST(NSDecimalNumberNorvik, AnAbsentArgumentWarnsWithTheCallStackAndComparesAsTheSame) {
  norvik::test::WarningRecorder recorder;
  EXPECT_FALSE(nk_isLessThan(5, std::nullopt));
  const auto warnings = recorder.take();
  ASSERT_EQ(warnings.size(), 1u);
  const auto& warning = warnings[0];
  const std::string beginning = "Argument for NSDecimalNumber -compare: is nil. Comparison result is undefined.\n";
  EXPECT_EQ(warning.text.substr(0, beginning.size()), beginning);
  EXPECT_NE(warning.text.find("nk_isLessThan"), std::string::npos) << warning.text;
  EXPECT_EQ(warning.text.back(), '\n');
  EXPECT_EQ(warning.file, "Categories/NSDecimalNumber+Norvik");
  EXPECT_EQ(warning.function, "nk_isLessThan:");
  EXPECT_EQ(warning.level, 3);
  EXPECT_EQ(warning.flag, 2);
  EXPECT_EQ(warning.context, 0);
  EXPECT_FALSE(warning.hasTag);

  EXPECT_TRUE(nk_isLessThanOrEqualTo(5, std::nullopt));
  EXPECT_FALSE(nk_isGreaterThan(5, std::nullopt));
  EXPECT_TRUE(nk_isGreaterThanOrEqualTo(5, std::nullopt));
  EXPECT_EQ(recorder.take().size(), 3u);
}

TEST(NSDecimalNumberNorvik, TheMaximumWithNothingWarnsTwiceAndIsTheReceiver) {
  norvik::test::WarningRecorder recorder;
  EXPECT_EQ(nk_maximum(5, std::nullopt), 5);
  const auto warnings = recorder.take();
  ASSERT_EQ(warnings.size(), 2u);
  EXPECT_EQ(warnings[0].function, "nk_maximum:");
  EXPECT_EQ(warnings[1].function, "nk_isGreaterThanOrEqualTo:");
}

TEST(NSDecimalNumberNorvik, WithWarningsOffNothingIsLogged) {
  norvik::test::WarningRecorder recorder;
  ddLogLevel = 1;
  EXPECT_FALSE(nk_isLessThan(5, std::nullopt));
  ddLogLevel = 3;
  EXPECT_TRUE(recorder.take().empty());
}
