#include "NorvikCore/platform/values/Decimal_literal.h"

#include <gtest/gtest.h>

namespace norvik {
namespace {

TEST(Decimal_literal, HeaderExample) {
  const Decimal amount = 1'234.50_dec, rate = 2E-1_dec;
  EXPECT_EQ(amount.stringValue(), "1234.50");
  EXPECT_EQ(rate.stringValue(), "0.2");
}

TEST(Decimal_literal, IsMadeByTheCompiler) {
  static constexpr Decimal amount = -1234.50_dec;
  static_assert(amount.isNegative() && amount.exponent() == -2);
  EXPECT_EQ(amount.stringValue(), "-1234.50");
}

TEST(Decimal_literal, HasTheDigitsAndTheExponentThatAreWritten) {
  EXPECT_EQ((0_dec).stringValue(), "0");
  EXPECT_EQ((0.000_dec).stringValue(), "0.000");
  EXPECT_EQ((.5_dec).stringValue(), "0.5");
  EXPECT_EQ((5._dec).stringValue(), "5");
  EXPECT_EQ((1e+3_dec).exponent(), 3);
  EXPECT_EQ((99999999999999999999999999999999999999_dec).stringValue(), "99999999999999999999999999999999999999");
  EXPECT_EQ((0.00000000000000000000000000000000000000000001_dec).exponent(), -44);
  EXPECT_EQ((1E127_dec).exponent(), 127);
}

}  // namespace
}  // namespace norvik
