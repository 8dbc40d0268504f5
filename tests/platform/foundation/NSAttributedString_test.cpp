#include "NorvikCore/platform/foundation/NSAttributedString.h"

#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/object/Weak.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

using namespace norvik;

namespace {

Ref<NSDictionary> colour(const char* name) { return NSDictionary::dictionaryWithObject(name, "colour"); }

/// A value of an attribute that counts how often two are compared.
class Ink : public NSObject {
  NK_OBJECT(Ink, NSObject)
  explicit Ink(int number) : number_(number) {}
  [[nodiscard]] bool isEqual(const NSObject& other) const override {
    ++comparisons;
    const auto* ink = dynamic_cast<const Ink*>(&other);
    return ink && ink->number_ == number_;
  }
  [[nodiscard]] std::size_t hash() const override { return static_cast<std::size_t>(number_); }
  static inline int comparisons = 0;

 private:
  int number_;
};

/// A text that records its calls of edited().
class ShownText : public NSMutableAttributedString {
  NK_OBJECT(ShownText, NSMutableAttributedString)
  using NSMutableAttributedString::NSMutableAttributedString;
  std::vector<std::pair<NSRange, NSInteger>> edits;

 protected:
  void edited(NSRange range, NSInteger changeInLength) override { edits.emplace_back(range, changeInLength); }
};

}  // namespace

TEST(NSAttributedString, HeaderExample) {
  auto red = NSDictionary::dictionaryWith({{NSForegroundColorAttributeName, "red"}});
  auto text = NSMutableAttributedString::attributedStringWithString("1,234.50");
  text->addAttributes(*red, {0, 5});
  NSRange run;
  EXPECT_EQ(Value(text->attributesAtIndex(2, &run)), Value(red));
  EXPECT_EQ(run, (NSRange{0, 5}));
  std::vector<NSRange> ranges;
  for (const auto& [range, attributes] : *text) ranges.push_back(range);
  EXPECT_EQ(ranges, (std::vector<NSRange>{{0, 5}, {5, 3}}));
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

TEST(NSAttributedString, IsMadeFromRuns) {
  const auto text = make<NSAttributedString>(
      "abcdef", std::vector<AttributeRun>{{2, colour("red")}, {0, colour("blue")}, {1, colour("red")}, {3, nullptr}});
  NSRange run;
  EXPECT_EQ(text->attributesAtIndex(1, &run)->objectForKey("colour"), Value("red"));
  EXPECT_EQ(run, (NSRange{0, 3}));
  EXPECT_EQ(text->attributesAtIndex(3, &run)->count(), 0u);
  EXPECT_EQ(run, (NSRange{3, 3}));
  EXPECT_RAISES((void)make<NSAttributedString>("ab", std::vector<AttributeRun>{{1, nullptr}}), "NSRangeException");
  EXPECT_RAISES((void)make<NSAttributedString>("ab", std::vector<AttributeRun>{{3, nullptr}}), "NSRangeException");
}

TEST(NSAttributedString, RangesMayCutAPairOfHalves) {
  const auto text = NSMutableAttributedString::attributedStringWithString("\U0001F4B7");
  text->addAttributes(*colour("red"), {1, 1});
  EXPECT_TRUE(text->attribute_atIndex("colour", 0).isAbsent());
  EXPECT_EQ(text->attribute_atIndex("colour", 1), Value("red"));
  EXPECT_EQ(text->string(), "\U0001F4B7");
  text->insertAttributedString(*NSAttributedString::attributedStringWithString("-"), 1);
  EXPECT_EQ(text->string().toUtf16(), (std::u16string{0xD83D, u'-', 0xDCB7}));
  EXPECT_EQ(text->attribute_atIndex("colour", 2), Value("red"));
  text->deleteCharactersInRange({1, 1});
  EXPECT_EQ(text->string(), "\U0001F4B7");
  EXPECT_EQ(text->attribute_atIndex("colour", 1), Value("red"));
}

TEST(NSAttributedString, InsertsAndReplacesAttributedText) {
  const auto text = NSMutableAttributedString::attributedStringWithString("Pay now", colour("red"));
  text->insertAttributedString(*NSAttributedString::attributedStringWithString("it "), 4);
  EXPECT_EQ(text->string(), "Pay it now");
  EXPECT_EQ(text->attribute_atIndex("colour", 3), Value("red"));
  EXPECT_TRUE(text->attribute_atIndex("colour", 4).isAbsent());
  EXPECT_TRUE(text->attribute_atIndex("colour", 6).isAbsent());
  EXPECT_EQ(text->attribute_atIndex("colour", 7), Value("red"));
  text->replaceCharactersInRange({4, 2}, *NSAttributedString::attributedStringWithString("them", colour("blue")));
  EXPECT_EQ(text->string(), "Pay them now");
  EXPECT_EQ(text->attribute_atIndex("colour", 7), Value("blue"));
  EXPECT_TRUE(text->attribute_atIndex("colour", 8).isAbsent());
  text->setAttributedString(*NSAttributedString::attributedStringWithString("x"));
  EXPECT_EQ(text->description(), "x{\n}");
  EXPECT_RAISES(text->insertAttributedString(*text, 2), "NSRangeException");
}

TEST(NSAttributedString, TextInsertedAtTheStartTakesTheAttributesBehindIt) {
  const auto text = NSMutableAttributedString::attributedStringWithString("now", colour("red"));
  text->replaceCharactersInRange({0, 0}, "Pay ");
  EXPECT_EQ(text->attribute_atIndex("colour", 0), Value("red"));
  text->deleteCharactersInRange({0, 7});
  text->replaceCharactersInRange({0, 0}, "later");
  EXPECT_EQ(text->attributesAtIndex(0)->count(), 0u);
}

TEST(NSAttributedString, ACopyOfAMutableTextDoesNotChangeWithIt) {
  const auto text = NSMutableAttributedString::attributedStringWithString("abc", colour("red"));
  const Ref<NSAttributedString> copy = text->copy();
  EXPECT_FALSE(dynamic_cast<NSMutableAttributedString*>(copy.get()));
  EXPECT_EQ(copy->copy(), copy);
  const NSString before = text->string();
  text->deleteCharactersInRange({0, 2});
  text->setAttributes(nullptr, {0, 1});
  EXPECT_EQ(before, "abc");
  EXPECT_EQ(copy->string(), "abc");
  EXPECT_EQ(copy->attribute_atIndex("colour", 2), Value("red"));
}

TEST(NSAttributedString, ALoopOverATextThatChangesRaisesAtItsNextStep) {
  const auto text = NSMutableAttributedString::attributedStringWithString("abcdef");
  text->addAttributes(*colour("red"), {0, 2});
  int steps = 0;
  EXPECT_RAISES(
      {
        for (const auto& [range, attributes] : *text) {
          ++steps;
          text->addAttributes(*colour("blue"), range);
        }
      },
      "NSGenericException");
  EXPECT_EQ(steps, 1);
  const auto empty = make<NSAttributedString>();
  for (const auto& run : *empty) FAIL() << run.range;
}

TEST(NSAttributedString, ABatchIsOneEdit) {
  const auto text = make<ShownText>("abcdef");
  text->addAttributes(*colour("red"), {1, 2});
  EXPECT_EQ(text->edits, (std::vector<std::pair<NSRange, NSInteger>>{{{1, 2}, 0}}));
  text->edits.clear();
  text->beginEditing();
  text->replaceCharactersInRange({4, 1}, "XYZ");
  text->beginEditing();
  text->deleteCharactersInRange({1, 1});
  EXPECT_EQ(text->string(), "acdXYZf");
  text->endEditing();
  EXPECT_TRUE(text->edits.empty());
  text->addAttributes(*colour("blue"), {0, 1});
  text->endEditing();
  EXPECT_EQ(text->edits, (std::vector<std::pair<NSRange, NSInteger>>{{{0, 6}, 1}}));
  text->edits.clear();
  text->beginEditing();
  text->endEditing();
  EXPECT_TRUE(text->edits.empty());
  EXPECT_RAISES(text->endEditing(), "NSInternalInconsistencyException");
}

TEST(NSAttributedString, AChangeOfOneRunOfTenThousandLooksAtFewOthers) {
  const auto text = NSMutableAttributedString::attributedStringWithString(NSString(std::string(30000, 'x')));
  for (NSUInteger i = 0; i < 10000; ++i) text->addAttribute("ink", make<Ink>(int(i)), {3 * i, 3});
  NSRange run;
  EXPECT_EQ(text->attributesAtIndex(15001, &run)->count(), 1u);
  EXPECT_EQ(run, (NSRange{15000, 3}));
  Ink::comparisons = 0;
  text->addAttribute("size", 9, {15000, 3});
  text->removeAttribute("ink", {9000, 2});
  text->setAttributes(nullptr, {600, 1});
  text->replaceCharactersInRange({20001, 1}, "abc");
  text->insertAttributedString(*NSAttributedString::attributedStringWithString("q"), 30);
  text->deleteCharactersInRange({7, 1});
  text->appendAttributedString(*NSAttributedString::attributedStringWithString("q"));
  EXPECT_LE(Ink::comparisons, 20);
}

TEST(NSAttributedString, EqualAttributesOfTwoDictionariesAreOneRun) {
  const auto text = NSMutableAttributedString::attributedStringWithString("abcd");
  text->addAttribute("colour", "red", {0, 2});
  text->addAttribute("colour", NSString(std::string("red")), {2, 2});
  NSRange run;
  (void)text->attributesAtIndex(3, &run);
  EXPECT_EQ(run, (NSRange{0, 4}));
}

TEST(NSAttributedString, AnAttributeThatIsReplacedIsReleased) {
  const auto text = NSMutableAttributedString::attributedStringWithString("abcd");
  auto ink = make<Ink>(1);
  const Weak<Ink> watched = ink;
  text->addAttribute("ink", ink, {0, 4});
  ink = nullptr;
  EXPECT_TRUE(watched.lock());
  text->setAttributes(nullptr, {0, 4});
  EXPECT_FALSE(watched.lock());
}
