#include "NorvikCore/platform/values/NSNumber.h"

#include "tests/support/Doubles.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <unordered_set>

namespace norvik {
namespace {

using norvik::test::infinity;
using norvik::test::notANumber;
constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t greatest = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t greatestUnsigned = std::numeric_limits<std::uint64_t>::max();

static_assert(std::is_trivially_copyable_v<NSNumber>);
static_assert(!std::is_constructible_v<NSNumber, long double>);
static_assert(!std::is_constructible_v<NSNumber, const char*>);
static_assert(!std::is_constructible_v<NSNumber, std::nullptr_t>);

TEST(NSNumber, HeaderExample) {
  const NSNumber hours = 37.5, rate = 12.21_dec, staff = 40;
  EXPECT_EQ(hours.kind(), NSNumber::Kind::Double);
  EXPECT_EQ(staff.kind(), NSNumber::Kind::Integer);
  EXPECT_EQ((hours.decimalValue() * rate.decimalValue()).stringValue(), "457.875");
  EXPECT_EQ(NSNumber(5), NSNumber(5.00_dec));
  EXPECT_EQ(NSNumber(5).hash(), NSNumber(5.00_dec).hash());
}

TEST(NSNumber, KeepsTheKindItWasMadeFrom) {
  EXPECT_EQ(NSNumber().kind(), NSNumber::Kind::Integer);
  EXPECT_EQ(NSNumber(true).kind(), NSNumber::Kind::Boolean);
  EXPECT_EQ(NSNumber('c').kind(), NSNumber::Kind::Integer);
  EXPECT_EQ(NSNumber(-1).kind(), NSNumber::Kind::Integer);
  EXPECT_EQ(NSNumber(static_cast<std::uint64_t>(greatest)).kind(), NSNumber::Kind::Integer);
  EXPECT_EQ(NSNumber(static_cast<std::uint64_t>(greatest) + 1).kind(), NSNumber::Kind::Unsigned);
  EXPECT_EQ(NSNumber(1.0F).kind(), NSNumber::Kind::Double);
  EXPECT_EQ(NSNumber(1_dec).kind(), NSNumber::Kind::Decimal);
  EXPECT_TRUE(NSNumber(false).isBool());
  EXPECT_FALSE(NSNumber(0).isBool());
}

TEST(NSNumber, GivesTheNearestOfAnotherKind) {
  const struct {
    const char* why;
    NSNumber number;
    bool asBool;
    int asInt;
    std::int64_t asLongLong;
    std::uint64_t asUnsigned;
    double asDouble;
  } rows[] = {
      {"true", true, true, 1, 1, 1, 1.0},
      {"false", false, false, 0, 0, 0, 0.0},
      {"a negative integer", -7, true, -7, -7, 0, -7.0},
      {"least", least, true, std::numeric_limits<int>::min(), least, 0, -0x1p63},
      {"beyond int", 1LL << 40, true, std::numeric_limits<int>::max(), 1LL << 40, 1ULL << 40, 0x1p40},
      {"greatest unsigned", greatestUnsigned, true, std::numeric_limits<int>::max(), greatest, greatestUnsigned,
       0x1p64},
      {"a fraction", 2.9, true, 2, 2, 2, 2.9},
      {"a negative fraction", -2.9, true, -2, -2, 0, -2.9},
      {"below 1", 0.5, true, 0, 0, 0, 0.5},
      {"minus zero", -0.0, false, 0, 0, 0, 0.0},
      {"infinity", infinity, true, std::numeric_limits<int>::max(), greatest, greatestUnsigned, infinity},
      {"minus infinity", -infinity, true, std::numeric_limits<int>::min(), least, 0, -infinity},
      {"2^63 as a double", 0x1p63, true, std::numeric_limits<int>::max(), greatest, 1ULL << 63, 0x1p63},
      {"a decimal", 1234.56_dec, true, 1234, 1234, 1234, 1234.56},
      {"a negative decimal", -1234.56_dec, true, -1234, -1234, 0, -1234.56},
      {"a zero decimal", 0.00_dec, false, 0, 0, 0, 0.0},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.number.boolValue(), row.asBool) << row.why;
    EXPECT_EQ(row.number.intValue(), row.asInt) << row.why;
    EXPECT_EQ(row.number.longLongValue(), row.asLongLong) << row.why;
    EXPECT_EQ(row.number.unsignedLongLongValue(), row.asUnsigned) << row.why;
    EXPECT_EQ(row.number.doubleValue(), row.asDouble) << row.why;
  }
}

TEST(NSNumber, NotANumberIsZeroWhereThereIsNoOther) {
  for (const NSNumber& number : {NSNumber(notANumber), NSNumber(Decimal::notANumber())}) {
    EXPECT_TRUE(number.isNaN());
    EXPECT_FALSE(number.boolValue());
    EXPECT_EQ(number.longLongValue(), 0);
    EXPECT_EQ(number.unsignedLongLongValue(), 0u);
    EXPECT_TRUE(number.decimalValue().isNaN());
    EXPECT_NE(number.doubleValue(), number.doubleValue());
  }
  EXPECT_FALSE(NSNumber(1).isNaN());
}

TEST(NSNumber, DecimalsComeOutExactly) {
  EXPECT_EQ(NSNumber(greatestUnsigned).decimalValue().stringValue(), "18446744073709551615");
  EXPECT_EQ(NSNumber(0.1).decimalValue().stringValue(), "0.1");
  EXPECT_EQ(NSNumber(5.00_dec).decimalValue().stringValue(), "5.00");
  EXPECT_EQ(NSNumber(true).decimalValue().stringValue(), "1");
  EXPECT_TRUE(NSNumber(infinity).decimalValue().isNaN());
}

TEST(NSNumber, StringValueGivesTheDigits) {
  const struct {
    NSNumber number;
    NSString expected;
  } rows[] = {
      {true, "1"},         {false, "0"},   {-42, "-42"},       {greatestUnsigned, "18446744073709551615"},
      {0.1, "0.1"},        {1.0, "1"},     {1e21, "1e+21"},    {1.0 / 3, "0.3333333333333333"},
      {infinity, "inf"},   {-2.5, "-2.5"}, {5.00_dec, "5.00"}, {Decimal::notANumber(), "NaN"},
      {notANumber, "nan"},
  };
  for (const auto& row : rows) EXPECT_EQ(row.number.stringValue(), row.expected);
  std::ostringstream out;
  out << NSNumber(2.5) << ' ' << NSNumber(true);
  EXPECT_EQ(out.str(), "2.5 1");
}

TEST(NSNumber, EqualityOrderAndHashLookAtTheNumericValueOnly) {
  EXPECT_EQ(NSNumber(true), NSNumber(1.0));
  EXPECT_EQ(NSNumber(0.1), NSNumber(0.1_dec));
  EXPECT_EQ(NSNumber(-0.0), NSNumber(false));
  EXPECT_NE(NSNumber(2), NSNumber(true));
  EXPECT_LT(NSNumber(-1), NSNumber(greatestUnsigned));
  EXPECT_EQ(NSNumber(1).compare(1.5), NSOrderedAscending);
  EXPECT_EQ(NSNumber(2_dec).compare(1.5), NSOrderedDescending);
  EXPECT_EQ(NSNumber(2_dec).compare(2u), NSOrderedSame);
  const std::unordered_set<NSNumber> numbers{1, 1.0, 1_dec, true, 1.00_dec, 2};
  EXPECT_EQ(numbers.size(), 2u);
}

}  // namespace
}  // namespace norvik
