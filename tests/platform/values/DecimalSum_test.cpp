#include "NorvikCore/platform/values/DecimalSum.h"

#include "NorvikCore/platform/values/NSException.h"
#include "tests/support/Decimals.h"

#include <gtest/gtest.h>

#include <vector>

namespace norvik {
namespace {

using norvik::test::dec;

std::string sumOf(const std::vector<Decimal>& numbers) {
  DecimalSum sum;
  sum.add(numbers.data(), numbers.size());
  return sum.value().stringValue();
}

TEST(DecimalSum, HeaderExample) {
  struct Payslip {
    Decimal net;
  };
  const std::vector<Payslip> slips{{1523.40_dec}, {2210.05_dec}};
  DecimalSum net;
  for (const Payslip& slip : slips) net += slip.net;
  Decimal total = net.value();
  EXPECT_EQ(total.stringValue(), "3733.45");
}

TEST(DecimalSum, OfNothingIsZero) {
  EXPECT_EQ(sumOf({}), "0");
  EXPECT_EQ(DecimalSum().value().exponent(), 0);
}

TEST(DecimalSum, HasTheSmallestExponent) {
  EXPECT_EQ(sumOf({1.10_dec, 2.205_dec}), "3.305");
  EXPECT_EQ(sumOf({2.205_dec, 1.1_dec, 1_dec}), "4.305");
  EXPECT_EQ(sumOf({dec("5E3")}), "5000");
  EXPECT_EQ(sumOf({-1.50_dec, 1.5_dec}), "0.00");
}

TEST(DecimalSum, IsExactBeyond64Bits) {
  EXPECT_EQ(sumOf({dec("18446744073709551615"), dec("18446744073709551615"), 1}), "36893488147419103231");
  EXPECT_EQ(sumOf({dec("99999999999999999999999999999999999998"), 1}), "99999999999999999999999999999999999999");
}

TEST(DecimalSum, ComesBackFromSumsThatNeedAll38Digits) {
  EXPECT_EQ(
      sumOf({dec("99999999999999999999999999999999999998"), dec("-99999999999999999999999999999999999990"), 0.25_dec}),
      "8.25");
  EXPECT_EQ(sumOf({dec("1E38"), 1, dec("-1E38")}), "0");
}

TEST(DecimalSum, ANotANumberMakesTheSumNotANumberForGood) { EXPECT_EQ(sumOf({1, Decimal::notANumber(), 2}), "NaN"); }

TEST(DecimalSum, AnOverflowRaisesAndLeavesTheSumAsItWas) {
  DecimalSum sum;
  sum += Decimal::maximumDecimalNumber();
  EXPECT_THROW(sum += Decimal::maximumDecimalNumber(), NSException);
  EXPECT_EQ(sum.value(), Decimal::maximumDecimalNumber());
}

TEST(DecimalSum, KeepsTheNumbersBeforeOneWhoseAdditionRaises) {
  const std::vector<Decimal> numbers{-5, Decimal::maximumDecimalNumber(), Decimal::maximumDecimalNumber(), 7};
  DecimalSum sum;
  EXPECT_THROW(sum.add(numbers.data(), numbers.size()), NSException);
  EXPECT_EQ(sum.value(), Decimal::maximumDecimalNumber() - 5);
}

}  // namespace
}  // namespace norvik
