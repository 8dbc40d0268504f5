#include "NorvikCore/platform/values/NumberHash.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>

namespace norvik {
namespace {

TEST(NumberHash, HeaderExample) {
  EXPECT_TRUE(numberHash(5) == numberHash(5.0) && numberHash(5.0) == numberHash(5.00_dec));
}

TEST(NumberHash, OneHashGoesAcrossAllKindsOfNumbers) {
  EXPECT_EQ(numberHash(true), numberHash(1));
  EXPECT_EQ(numberHash(false), numberHash(0.0));
  EXPECT_EQ(numberHash(-0.0), numberHash(0_dec));
  EXPECT_EQ(numberHash(std::int64_t{-3}), numberHash(-3.0));
  EXPECT_EQ(numberHash(0.1), numberHash(0.10_dec));
  EXPECT_EQ(numberHash(9223372036854775808.0), numberHash(std::uint64_t{9223372036854775808u}));
  EXPECT_EQ(numberHash(std::numeric_limits<std::uint64_t>::max()), numberHash(18446744073709551615_dec));
  EXPECT_EQ(numberHash(1.5e20), numberHash(150000000000000000000_dec));
}

TEST(NumberHash, EveryNotANumberHasOneHash) {
  EXPECT_EQ(numberHash(std::numeric_limits<double>::quiet_NaN()), numberHash(Decimal::notANumber()));
  EXPECT_EQ(numberHash(-std::numeric_limits<double>::quiet_NaN()), numberHash(Decimal::notANumber()));
}

TEST(NumberHash, DoublesThatNoDecimalCanBeHaveHashesToo) {
  EXPECT_NE(numberHash(1e200), numberHash(1e201));
  EXPECT_NE(numberHash(std::numeric_limits<double>::infinity()), numberHash(-std::numeric_limits<double>::infinity()));
}

TEST(NumberHash, NeighbouringAmountsSpread) {
  std::set<std::size_t> whole, lowBits;
  for (int pennies = 0; pennies < 4096; ++pennies) {
    const std::size_t hash = numberHash(Decimal(pennies).decimalNumberByMultiplyingByPowerOf10(-2));
    whole.insert(hash);
    lowBits.insert(hash % 4096);
  }
  EXPECT_EQ(whole.size(), 4096u);
  EXPECT_GT(lowBits.size(), 2400u);  // at random, 63 % of the places are used: 2589
}

}  // namespace
}  // namespace norvik
