#include "NorvikCore/platform/object/Value.h"

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/values/Decimal_literal.h"
#include "tests/support/Decimals.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <sstream>
#include <vector>

using namespace norvik;

namespace {

using norvik::test::dec;

enum class Colour : int { Red = 1, Green = 2 };

}  // namespace

TEST(Value, HeaderExample) {
  Value pay = 1234.50_dec;
  EXPECT_TRUE(pay == Value(1234.5));
  EXPECT_EQ(pay.as<Decimal>(), 1234.5_dec);
  EXPECT_RAISES((void)Value("unpaid").as<Decimal>(), "NSInvalidArgumentException");
  EXPECT_TRUE(Value{}.isAbsent());
  EXPECT_TRUE(Value::null().isNull());
}

TEST(Value, KnowsItsKind) {
  EXPECT_TRUE(Value().isAbsent());
  EXPECT_TRUE(Value::null().isNull());
  EXPECT_EQ(Value(true).kind(), Value::Kind::Boolean);
  EXPECT_EQ(Value(1).kind(), Value::Kind::Integer);
  EXPECT_EQ(Value(1.5).kind(), Value::Kind::Double);
  EXPECT_EQ(Value(dec("1.5")).kind(), Value::Kind::Decimal);
  EXPECT_EQ(Value(Date()).kind(), Value::Kind::Date);
  EXPECT_EQ(Value("text").kind(), Value::Kind::String);
  EXPECT_TRUE(Value(Ref<NSObject>()).isAbsent());
  EXPECT_TRUE(Value(std::optional<int>()).isAbsent());
  EXPECT_EQ(Value(std::optional<int>(3)), Value(3));
}

TEST(Value, AnIntegerBeyondSixtyThreeBitsIsKeptExactly) {
  const Value greatest = std::numeric_limits<std::uint64_t>::max();
  EXPECT_EQ(greatest.description(), "18446744073709551615");
  EXPECT_EQ(greatest.as<std::uint64_t>(), std::numeric_limits<std::uint64_t>::max());
}

TEST(Value, OneEqualityAndOneHashGoAcrossAllNumbers) {
  const std::vector<Value> ones{Value(1), Value(true), Value(1.0), Value(dec("1")), Value(dec("1.00")), Value(1u)};
  for (const Value& a : ones) {
    for (const Value& b : ones) {
      EXPECT_EQ(a, b);
      EXPECT_EQ(a.hash(), b.hash());
    }
  }
  EXPECT_EQ(Value(0.5), Value(dec("0.50")));
  EXPECT_EQ(Value(0.5).hash(), Value(dec("0.50")).hash());
  EXPECT_FALSE(Value(1) == Value(2));
  EXPECT_FALSE(Value(1) == Value("1"));
}

TEST(Value, EqualDecimalsOfOtherDigitsAreEqualAndNotIdentical) {
  EXPECT_EQ(Value(dec("5")), Value(dec("5.00")));
  EXPECT_FALSE(Value(dec("5")).isIdenticalTo(Value(dec("5.00"))));
  EXPECT_TRUE(Value(dec("5.00")).isIdenticalTo(Value(dec("5.00"))));
  EXPECT_FALSE(Value(5).isIdenticalTo(Value(5.0)));
}

TEST(Value, ADoubleIsIdenticalToItsCopyWhateverItIsAndTheTwoZerosAreNot) {
  const Value nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE(nan.isIdenticalTo(Value(nan)));
  EXPECT_EQ(NSArray::arrayWithObjects(1.5, nan)->indexOfObjectIdenticalTo(nan), 1U);
  EXPECT_TRUE(Value(-0.0).isIdenticalTo(Value(-0.0)));
  EXPECT_FALSE(Value(0.0).isIdenticalTo(Value(-0.0)));
  EXPECT_EQ(Value(0.0), Value(-0.0));
}

TEST(Value, CopiesAndMovesKeepTheContent) {
  Value text = NSString("a text long enough to be stored on its own");
  const Value copy = text;
  EXPECT_TRUE(copy.isIdenticalTo(text));
  const Value moved = std::move(text);
  EXPECT_EQ(moved, copy);
  Value target = 5;
  target = moved;
  EXPECT_EQ(target, copy);
  target = *&target;
  EXPECT_EQ(target, copy);
}

TEST(Value, ConvertsNumbersToOneAnother) {
  EXPECT_EQ(Value(2.9).as<int>(), 2);
  EXPECT_EQ(Value(dec("-7.9")).as<int>(), -7);
  EXPECT_EQ(Value(3).as<Decimal>(), dec("3"));
  EXPECT_EQ(Value(2).as<Colour>(), Colour::Green);
  EXPECT_EQ(Value(true).as<int>(), 1);
  EXPECT_EQ(Value(0).as<bool>(), false);
  EXPECT_EQ(Value().as<std::optional<int>>(), std::nullopt);
}

TEST(Value, AConversionThatWouldLoseItsMeaningRaises) {
  EXPECT_RAISES((void)Value(300).as<std::int8_t>(), "NSInvalidArgumentException");
  EXPECT_RAISES((void)Value(-1).as<std::uint64_t>(), "NSInvalidArgumentException");
  EXPECT_RAISES((void)Value(1e30).as<std::int64_t>(), "NSInvalidArgumentException");
  EXPECT_RAISES((void)Value(dec("1e30")).as<std::int64_t>(), "NSInvalidArgumentException");
  EXPECT_RAISES((void)Value("12").as<int>(), "NSInvalidArgumentException");
  EXPECT_RAISES((void)Value(12).as<NSString>(), "NSInvalidArgumentException");
  EXPECT_RAISES((void)Value().as<Decimal>(), "NSInvalidArgumentException");
  EXPECT_RAISES((void)Value(Date()).as<bool>(), "NSInvalidArgumentException");
}

TEST(Value, OrdersNumbersTextsAndDatesAmongThemselves) {
  EXPECT_EQ(Value(1).compare(Value(dec("1.5"))), NSOrderedAscending);
  EXPECT_EQ(Value("b").compare(Value("a")), NSOrderedDescending);
  EXPECT_EQ(Value(Date()).compare(Value(Date())), NSOrderedSame);
  EXPECT_RAISES((void)Value(1).compare(Value("1")), "NSInvalidArgumentException");
}

TEST(Value, DescribesItself) {
  std::ostringstream out;
  out << Value(dec("1.50")) << ' ' << Value(true) << ' ' << Value("x") << ' ' << Value() << ' ' << Value::null();
  EXPECT_EQ(out.str(), "1.50 1 x (null) <null>");
}

TEST(Value, KnowsItsClass) {
  EXPECT_EQ(Value(1).classObject().name(), "NSNumber");
  EXPECT_EQ(Value(dec("1")).classObject().name(), "NSDecimalNumber");
  EXPECT_EQ(Value(dec("1")).classObject().superclass()->name(), "NSNumber");
  EXPECT_EQ(Value::null().classObject().name(), "NSNull");
  EXPECT_RAISES((void)Value().classObject(), "NSInvalidArgumentException");
}

TEST(Value, AnElementOfWhatItHoldsCanBeAssignedToIt) {
  Value value = NSArray::arrayWithObjects(NSArray::arrayWithObjects("inner"), 2);
  value = value.object<NSArray>()->objectAtIndex(0);
  ASSERT_TRUE(value.isObject());
  value = value.object<NSArray>()->objectAtIndex(0);
  EXPECT_EQ(value, Value("inner"));
}
