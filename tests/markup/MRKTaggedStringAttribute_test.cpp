#include "NorvikCore/markup/MRKTaggedStringAttribute.h"

#include <gtest/gtest.h>

namespace norvik {
namespace {

Ref<NSDictionary> red() { return NSDictionary::dictionaryWithObject("red", "colour"); }

}  // namespace

TEST(MRKTaggedStringAttribute, HeaderExample) {
  auto bold = make<MRKTaggedStringAttribute>();
  bold->setStaticDictionary(NSDictionary::dictionaryWithObject("a font", NSFontAttributeName));
  const auto tag = make<MRKStringParserTag>("b", 0u);
  const auto text = NSAttributedString::attributedStringWithString("x");
  EXPECT_EQ(bold->attributesForTag(*tag, *text), bold->staticDictionary());
}

TEST(MRKTaggedStringAttribute, TheDictionaryCountsBeforeTheClosureAndNeitherIsAnEmptyOne) {
  const auto attribute = make<MRKTaggedStringAttribute>();
  const auto tag = make<MRKStringParserTag>("A", 1u);
  tag->addRawTagAttributes("x=1");
  const auto text = NSMutableAttributedString::attributedStringWithString("ab");
  text->addAttributes(*red(), {1, 1});
  EXPECT_EQ(attribute->attributesForTag(*tag, *text)->count(), 0u);
  attribute->setDynamicAttributes([](const NSString& name, const NSDictionary& written, const NSDictionary& present) {
    return NSDictionary::dictionaryWith({{"name", name}, {"x", written["x"]}, {"was", present["colour"]}});
  });
  EXPECT_TRUE(attribute->attributesForTag(*tag, *text)
                  ->isEqual(*NSDictionary::dictionaryWith({{"name", "A"}, {"x", "1"}, {"was", "red"}})));
  attribute->setStaticDictionary(red());
  EXPECT_TRUE(attribute->attributesForTag(*tag, *text)->isEqual(*red()));
}

TEST(MRKTaggedStringAttribute, AClosureAtTheVeryEndIsGivenNoPresentAttributes) {
  const auto attribute = make<MRKTaggedStringAttribute>();
  NSUInteger present = 99;
  attribute->setDynamicAttributes([&](const NSString&, const NSDictionary&, const NSDictionary& there) {
    present = there.count();
    return Ref<NSDictionary>();
  });
  EXPECT_FALSE(attribute->attributesForTag(*make<MRKStringParserTag>("a", 2u),
                                           *NSAttributedString::attributedStringWithString("ab", red())));
  EXPECT_EQ(present, 0u);
}

TEST(MRKTaggedStringAttribute, IsEqualByTheDictionaryAndTheVeryClosure) {
  const auto a = make<MRKTaggedStringAttribute>(), b = make<MRKTaggedStringAttribute>();
  EXPECT_TRUE(a->isEqual(*b));
  a->setStaticDictionary(red());
  EXPECT_FALSE(a->isEqual(*b));
  EXPECT_FALSE(b->isEqual(*a));
  b->setStaticDictionary(red());
  EXPECT_TRUE(a->isEqual(*b));
  EXPECT_EQ(a->hash(), b->hash());
  const auto closure = [](const NSString&, const NSDictionary&, const NSDictionary&) { return red(); };
  a->setDynamicAttributes(closure);
  b->setDynamicAttributes(closure);  // created again, so a different one
  EXPECT_FALSE(a->isEqual(*b));
  const auto copy = a->copy();
  EXPECT_NE(copy, a);
  EXPECT_TRUE(copy->isEqual(*a));
  EXPECT_EQ(copy->hash(), a->hash());
}

}  // namespace norvik
