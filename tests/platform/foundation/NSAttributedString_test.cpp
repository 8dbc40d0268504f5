#include "NorvikCore/platform/foundation/NSAttributedString.h"

#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

using namespace norvik;

namespace {

Ref<NSDictionary> colour(const char* name) { return NSDictionary::dictionaryWithObject(name, "colour"); }

}  // namespace

TEST(NSAttributedString, HeaderExample) {
  auto red = NSDictionary::dictionaryWith({{NSForegroundColorAttributeName, "red"}});
  auto text = NSMutableAttributedString::attributedStringWithString("1,234.50");
  text->addAttributes(*red, {0, 5});
  NSRange run;
  EXPECT_EQ(Value(text->attributesAtIndex(2, &run)), Value(red));
  EXPECT_EQ(run, (NSRange{0, 5}));
}

TEST(NSAttributedString, GivesTheAttributesAndTheWholeRunOfAUnit) {
  const auto text = NSMutableAttributedString::attributedStringWithString("1,234.50");
  text->addAttributes(*colour("red"), {0, 5});
  NSRange run;
  EXPECT_EQ(text->attributesAtIndex(2, &run)->objectForKey("colour"), Value("red"));
  EXPECT_EQ(run, (NSRange{0, 5}));
  EXPECT_EQ(text->attributesAtIndex(5, &run)->count(), 0u);
  EXPECT_EQ(run, (NSRange{5, 3}));
  EXPECT_TRUE(text->attribute_atIndex("colour", 7).isAbsent());
}

TEST(NSAttributedString, AddedAttributesReplaceTheSameNamedAndKeepTheOthers) {
  const auto text = NSMutableAttributedString::attributedStringWithString(
      "abcdef", NSDictionary::dictionaryWith({{"colour", "red"}, {"size", 12}}));
  text->addAttributes(*colour("blue"), {2, 2});
  EXPECT_EQ(text->attribute_atIndex("colour", 1), Value("red"));
  EXPECT_EQ(text->attribute_atIndex("colour", 2), Value("blue"));
  EXPECT_EQ(text->attribute_atIndex("size", 2), Value(12));
  EXPECT_EQ(text->attribute_atIndex("colour", 4), Value("red"));
}

TEST(NSAttributedString, NeighboursWithEqualAttributesAreOneRun) {
  const auto text = NSMutableAttributedString::attributedStringWithString("abcdef");
  text->addAttributes(*colour("red"), {0, 2});
  text->addAttributes(*colour("red"), {2, 2});
  NSRange run;
  (void)text->attributesAtIndex(0, &run);
  EXPECT_EQ(run, (NSRange{0, 4}));
  text->removeAttribute("colour", {0, 6});
  (void)text->attributesAtIndex(3, &run);
  EXPECT_EQ(run, (NSRange{0, 6}));
}

TEST(NSAttributedString, SettingAttributesLeavesNoOthers) {
  const auto text = NSMutableAttributedString::attributedStringWithString("abc", colour("red"));
  text->setAttributes(NSDictionary::dictionaryWithObject(9, "size"), {1, 1});
  EXPECT_TRUE(text->attribute_atIndex("colour", 1).isAbsent());
  EXPECT_EQ(text->attribute_atIndex("size", 1), Value(9));
  text->setAttributes(nullptr, {0, 3});
  EXPECT_EQ(text->attributesAtIndex(0)->count(), 0u);
}

TEST(NSAttributedString, RangesCountUtf16Units) {
  const auto text = NSMutableAttributedString::attributedStringWithString("a\U0001F600b");
  EXPECT_EQ(text->length(), 4u);
  text->addAttributes(*colour("red"), {1, 2});
  EXPECT_EQ(text->attribute_atIndex("colour", 2), Value("red"));
  EXPECT_TRUE(text->attribute_atIndex("colour", 3).isAbsent());
}

TEST(NSAttributedString, CutsAndJoinsWithItsAttributes) {
  const auto text = NSMutableAttributedString::attributedStringWithString("abcdef");
  text->addAttributes(*colour("red"), {2, 2});
  const auto part = text->attributedSubstringFromRange({1, 4});
  EXPECT_EQ(part->string(), "bcde");
  EXPECT_TRUE(part->attribute_atIndex("colour", 0).isAbsent());
  EXPECT_EQ(part->attribute_atIndex("colour", 1), Value("red"));
  text->appendAttributedString(*part);
  EXPECT_EQ(text->string(), "abcdefbcde");
  EXPECT_EQ(text->attribute_atIndex("colour", 7), Value("red"));
  text->appendAttributedString(*text);
  EXPECT_EQ(text->length(), 20u);
}

TEST(NSAttributedString, ReplacedTextTakesTheAttributesOfWhatItReplacesOrStandsBehind) {
  const auto text = NSMutableAttributedString::attributedStringWithString("abcdef");
  text->addAttributes(*colour("red"), {2, 2});
  text->replaceCharactersInRange({2, 1}, "XYZ");
  EXPECT_EQ(text->string(), "abXYZdef");
  EXPECT_EQ(text->attribute_atIndex("colour", 4), Value("red"));
  text->replaceCharactersInRange({6, 0}, "!");
  EXPECT_EQ(text->string(), "abXYZd!ef");
  EXPECT_EQ(text->attribute_atIndex("colour", 6), Value("red"));
  text->deleteCharactersInRange({0, 9});
  EXPECT_EQ(text->length(), 0u);
}

TEST(NSAttributedString, IsEqualByTextAndAttributes) {
  const auto a = NSMutableAttributedString::attributedStringWithString("abc", colour("red"));
  const auto b = NSMutableAttributedString::attributedStringWithString("abc");
  EXPECT_FALSE(a->isEqual(*b));
  b->addAttributes(*colour("red"), {0, 2});
  EXPECT_FALSE(a->isEqual(*b));
  b->addAttributes(*colour("red"), {2, 1});
  EXPECT_TRUE(a->isEqual(*b));
  EXPECT_EQ(a->hash(), b->hash());
}

TEST(NSAttributedString, DoesNotChangeWithTheDictionaryItWasMadeFrom) {
  const auto attributes = NSMutableDictionary::dictionaryWith({{"colour", "red"}});
  const auto text = NSAttributedString::attributedStringWithString("abc", attributes);
  attributes->setObject("blue", "colour");
  EXPECT_EQ(text->attribute_atIndex("colour", 0), Value("red"));
}

TEST(NSAttributedString, ARangeBeyondTheTextRaises) {
  const auto text = NSMutableAttributedString::attributedStringWithString("abc");
  EXPECT_RAISES((void)text->attributesAtIndex(3), "NSRangeException");
  EXPECT_RAISES(text->addAttributes(*colour("red"), {2, 2}), "NSRangeException");
  EXPECT_RAISES((void)text->attributedSubstringFromRange({4, 0}), "NSRangeException");
  EXPECT_RAISES(text->deleteCharactersInRange({1, NSNotFound}), "NSRangeException");
}
