#include "NorvikCore/platform/appkit/NSValueTransformer.h"

#include <gtest/gtest.h>

#include "NorvikCore/platform/collections/NSArray.h"
#include "tests/support/ExpectRaises.h"

namespace norvik {

namespace pay {
class Rounding : public NSValueTransformer {
  NK_OBJECT(Rounding, NSValueTransformer)
};
class Doubling : public NSValueTransformer {
  NK_OBJECT(Doubling, NSValueTransformer)
};
}  // namespace pay

namespace hr {
class Rounding : public NSValueTransformer {
  NK_OBJECT(Rounding, NSValueTransformer)
};
class Doubling : public NSObject {
  NK_OBJECT(Doubling, NSObject)
};
}  // namespace hr

namespace {

class PenniesToPounds : public NSValueTransformer {
  NK_OBJECT(PenniesToPounds, NSValueTransformer)
  static bool allowsReverseTransformation() { return true; }
  NK_CLASS_METHOD(allowsReverseTransformation)
  Value transformedValue(const Value& pennies) override { return pennies.as<Decimal>() / Decimal(100); }
  Value reverseTransformedValue(const Value& pounds) override { return pounds.as<Decimal>() * Decimal(100); }
};

/// Is its own inverse.
class Negation : public NSValueTransformer {
  NK_OBJECT(Negation, NSValueTransformer)
  static bool allowsReverseTransformation() { return true; }
  NK_CLASS_METHOD(allowsReverseTransformation)
  Value transformedValue(const Value& value) override { return !value.as<bool>(); }
};

class NeedsArguments : public NSValueTransformer {
  NK_OBJECT(NeedsArguments, NSValueTransformer)
  explicit NeedsArguments(int) {}
};

TEST(NSValueTransformer, HeaderExample) {
  NSValueTransformer::setValueTransformer_forName(make<PenniesToPounds>(), "pounds");
  EXPECT_EQ(NSValueTransformer::valueTransformerForName("pounds")->transformedValue(1250), Value(12.50_dec));
  EXPECT_EQ(NSValueTransformer::valueTransformerForName("pounds")->reverseTransformedValue(12.5), Value(1250));
}

TEST(NSValueTransformer, ThePlainOneGivesValuesAsTheyAreAndGoesOneWay) {
  auto plain = make<NSValueTransformer>();
  EXPECT_EQ(plain->transformedValue("a"), Value("a"));
  EXPECT_TRUE(plain->transformedValue(Value()).isAbsent());
  EXPECT_FALSE(plain->canReverse());
  EXPECT_RAISES(static_cast<void>(plain->reverseTransformedValue("a")), "NSInvalidArgumentException");
  EXPECT_EQ(NSValueTransformer::transformedValueClass(), NSObject::staticClass());
}

TEST(NSValueTransformer, OneThatAllowsItIsItsOwnInverseUnlessItHasAnother) {
  auto negation = make<Negation>();
  EXPECT_TRUE(negation->canReverse());
  EXPECT_EQ(negation->reverseTransformedValue(true), Value(false));
}

TEST(NSValueTransformer, ANameNobodyGaveHasNone) {
  EXPECT_FALSE(NSValueTransformer::valueTransformerForName("nobody gave this name"));
  EXPECT_FALSE(NSValueTransformer::valueTransformerForName(""));
}

TEST(NSValueTransformer, TheNameOfATransformerClassGetsOneOfItAndKeepsIt) {
  const auto made = NSValueTransformer::valueTransformerForName("Negation");
  ASSERT_TRUE(made);
  EXPECT_EQ(made->classObject(), Negation::staticClass());
  EXPECT_EQ(NSValueTransformer::valueTransformerForName("Negation"), made);
  EXPECT_FALSE(NSValueTransformer::valueTransformerForName("NSArray"));
  EXPECT_FALSE(NSValueTransformer::valueTransformerForName("NeedsArguments"));
}

TEST(NSValueTransformer, TheNameOfSeveralTransformerClassesGetsNone) {
  EXPECT_FALSE(NSValueTransformer::valueTransformerForName("Rounding"));
  EXPECT_TRUE(NSValueTransformer::valueTransformerForName("norvik::pay::Rounding"));
  const auto doubling = NSValueTransformer::valueTransformerForName("Doubling");
  ASSERT_TRUE(doubling) << "the other class of that name is no transformer";
  EXPECT_EQ(&doubling->classObject(), &pay::Doubling::staticClass());
}

TEST(NSValueTransformer, ANameIsGivenAnewAndTakenAway) {
  const auto first = make<Negation>(), second = make<Negation>();
  NSValueTransformer::setValueTransformer_forName(first, "given twice");
  NSValueTransformer::setValueTransformer_forName(second, "given twice");
  EXPECT_EQ(NSValueTransformer::valueTransformerForName("given twice"), second);
  EXPECT_TRUE(NSValueTransformer::valueTransformerNames()->containsObject("given twice"));
  NSValueTransformer::setValueTransformer_forName(nullptr, "given twice");
  EXPECT_FALSE(NSValueTransformer::valueTransformerForName("given twice"));
  EXPECT_FALSE(NSValueTransformer::valueTransformerNames()->containsObject("given twice"));
}

TEST(NSValueTransformer, NamesDifferByCase) {
  NSValueTransformer::setValueTransformer_forName(make<Negation>(), "case");
  EXPECT_FALSE(NSValueTransformer::valueTransformerForName("Case"));
}

}  // namespace
}  // namespace norvik
