#include "NorvikCore/platform/values/NSNumber_fmt.h"

#include <gtest/gtest.h>

#include <limits>

namespace norvik {
namespace {

TEST(NSNumberFmt, HeaderExample) {
  EXPECT_EQ(fmt::format("{}", NSNumber(37.5)), "37.5");
  EXPECT_EQ(fmt::format("{:,.2f}", NSNumber(1234)), "1,234.00");
}

TEST(NSNumberFmt, WithoutAPrecisionItIsTheStringValue) {
  for (const NSNumber& number : {NSNumber(true), NSNumber(-7), NSNumber(0.1), NSNumber(1e21), NSNumber(1e-7),
                                 NSNumber(5.00_dec), NSNumber(std::numeric_limits<double>::infinity())}) {
    EXPECT_EQ(fmt::format("{}", number), number.stringValue());
  }
}

TEST(NSNumberFmt, EveryKindIsRoundedAsADecimal) {
  EXPECT_EQ(
      fmt::format("{:.2f} {:.2f} {:.2f} {:.1f}", NSNumber(2.675), NSNumber(2.675_dec), NSNumber(-3), NSNumber(true)),
      "2.68 2.68 -3.00 1.0");
  EXPECT_EQ(fmt::format("{:.2f}", NSNumber(0.125)), "0.13");
}

TEST(NSNumberFmt, WhatADecimalCannotHoldIsAWord) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(fmt::format("{:08.2f}|{:<6,}|{:.2f}", NSNumber(infinity), NSNumber(-infinity), NSNumber(1e300)),
            "     inf|-inf  |1e+300");
  EXPECT_EQ(fmt::format("{:.2f}", NSNumber(std::numeric_limits<double>::quiet_NaN())), "nan");
}

}  // namespace
}  // namespace norvik
