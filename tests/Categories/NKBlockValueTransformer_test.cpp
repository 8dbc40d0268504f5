#include "NorvikCore/Categories/NKBlockValueTransformer.h"

#include <gtest/gtest.h>

#include "NorvikCore/Categories/NKBlockValueReversingTransformer.h"
#include "tests/support/ExpectRaises.h"

namespace norvik {
namespace {

const NKTransformBlock pounds = [](const Value& pennies) -> Value { return pennies.as<Decimal>() / Decimal(100); };
const NKTransformBlock pennies = [](const Value& shown) -> Value { return shown.as<Decimal>() * Decimal(100); };

TEST(NKBlockValueTransformer, HeaderExample) {
  const auto shout = [](const NSString& text) { return text + "!"; };
  EXPECT_EQ(NKBlockValueTransformer::valueTransformerWithBlock(shout)->transformedValue("pay"), Value("pay!"));
}

TEST(NKBlockValueTransformer, MakesValuesOfTheRootClassAndGoesOneWay) {
  EXPECT_EQ(NKBlockValueTransformer::transformedValueClass(), NSObject::staticClass());
  auto transformer = NKBlockValueTransformer::valueTransformerWithBlock(pounds);
  EXPECT_FALSE(transformer->canReverse());
  EXPECT_RAISES(static_cast<void>(transformer->reverseTransformedValue(1)), "NSInvalidArgumentException");
}

TEST(NKBlockValueTransformer, AnAbsentValueGoesThroughTheClosure) {
  auto transformer = NKBlockValueTransformer::valueTransformerWithBlock(
      [](const Value& value) { return value.isAbsent() ? Value("none") : Value(); });
  EXPECT_EQ(transformer->transformedValue(Value()), Value("none"));
  EXPECT_TRUE(transformer->transformedValue(1).isAbsent());
}

TEST(NKBlockValueTransformer, AnAbsentClosureRaises) {
  auto transformer = NKBlockValueTransformer::valueTransformerWithBlock(nullptr);
  EXPECT_RAISES(static_cast<void>(transformer->transformedValue(1)), "NSInvalidArgumentException");
}

TEST(NKBlockValueTransformer, TheClosureIsAProperty) {
  auto transformer = NKBlockValueTransformer::valueTransformerWithBlock(pounds);
  EXPECT_EQ(transformer->transform(), pounds);
  transformer->setTransform(pennies);
  EXPECT_EQ(transformer->transformedValue(1), Value(100));
  EXPECT_EQ(transformer->valueForKey("transform"), Value(pennies));
}

TEST(NKBlockValueReversingTransformer, HeaderExample) {
  auto both = NKBlockValueReversingTransformer::valueTransformerWithBlock(
      [](const Decimal& pennies) { return pennies / 100; }, [](const Decimal& pounds) { return pounds * 100; });
  EXPECT_EQ(both->transformedValue(1250), Value(12.5));
  EXPECT_EQ(both->reverseTransformedValue(12.5), Value(1250));
}

TEST(NKBlockValueReversingTransformer, AllowsTheWayBack) {
  EXPECT_TRUE(NKBlockValueReversingTransformer::allowsReverseTransformation());
  EXPECT_TRUE(NKBlockValueReversingTransformer::valueTransformerWithBlock(pounds, pennies)->canReverse());
  EXPECT_EQ(NKBlockValueReversingTransformer::transformedValueClass(), NSObject::staticClass());
}

TEST(NKBlockValueReversingTransformer, ADirectionWithoutItsClosureRaises) {
  auto forward = NKBlockValueReversingTransformer::valueTransformerWithBlock(pounds, nullptr);
  EXPECT_EQ(forward->transformedValue(100), Value(1));
  EXPECT_RAISES(static_cast<void>(forward->reverseTransformedValue(1)), "NSInvalidArgumentException");
  auto back = NKBlockValueReversingTransformer::valueTransformerWithBlock(nullptr, pennies);
  EXPECT_EQ(back->reverseTransformedValue(1), Value(100));
  EXPECT_RAISES(static_cast<void>(back->transformedValue(1)), "NSInvalidArgumentException");
}

TEST(NKBlockValueReversingTransformer, TheReverseClosureIsAProperty) {
  auto both = NKBlockValueReversingTransformer::valueTransformerWithBlock(pounds, nullptr);
  both->setReverseTransform(pennies);
  EXPECT_EQ(both->reverseTransform(), pennies);
  EXPECT_EQ(both->reverseTransformedValue(2), Value(200));
}

}  // namespace
}  // namespace norvik
