#include "NorvikCore/markup/MRKTaggedStringOptions.h"

#include "NorvikCore/markup/MRKTaggedString.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"

#include <gtest/gtest.h>

#include <latch>
#include <thread>
#include <vector>

namespace norvik {
namespace {

Ref<NSDictionary> colour(const char* name) { return NSDictionary::dictionaryWithObject(name, "colour"); }

Value colourOf(const char* source, const MRKTaggedStringOptions& options) {
  return MRKTaggedString::stringWithString(source)->attributedStringWithOptions(options)->attribute_atIndex("colour",
                                                                                                            0);
}

/// Restores the registered options.
class RegisteredOptions {
 public:
  ~RegisteredOptions() { MRKTaggedStringOptions::registerDefaultOptions(*before_); }

 private:
  Ref<MRKTaggedStringOptions> before_ = MRKTaggedStringOptions::defaultOptions();
};

}  // namespace

TEST(MRKTaggedStringOptions, HeaderExample) {
  const auto body = NSDictionary::dictionaryWithObject("body", NSFontAttributeName);
  auto options = MRKTaggedStringOptions::optionsWithBaseAttributes(body);
  options->setAttributes(NSDictionary::dictionaryWithObject("bold", NSFontAttributeName), "b");
  options->setDynamicAttributes(
      [](const NSString&, const NSDictionary& written, const NSDictionary&) {
        return NSDictionary::dictionaryWithObject(written["href"], NSLinkAttributeName);
      },
      "a");
  const auto text =
      MRKTaggedString::stringWithString("<a href=x>Pay</a> <b>now</b>")->attributedStringWithOptions(*options);
  EXPECT_EQ(text->attribute_atIndex(NSLinkAttributeName, 0), Value("x"));
  EXPECT_EQ(text->attribute_atIndex(NSFontAttributeName, 0), Value("body"));
  EXPECT_EQ(text->attribute_atIndex(NSFontAttributeName, 4), Value("bold"));
}

TEST(MRKTaggedStringOptions, AreEmptyAtFirst) {
  const auto options = MRKTaggedStringOptions::options();
  EXPECT_EQ(options->baseAttributes()->count(), 0u);
  EXPECT_FALSE(options->unknownTagDynamicAttributes());
  EXPECT_FALSE(options->attributeForTagName("b"));
  EXPECT_EQ(MRKTaggedStringOptions::optionsWithBaseAttributes(nullptr)->baseAttributes()->count(), 0u);
  options->setBaseAttributes(colour("red"));
  options->setBaseAttributes(nullptr);
  EXPECT_EQ(options->baseAttributes()->count(), 0u);
}

TEST(MRKTaggedStringOptions, OneNameHasOneEntryWhateverItsCase) {
  const auto options = MRKTaggedStringOptions::options();
  options->setAttributes(colour("red"), "B");
  EXPECT_EQ(colourOf("<b>x</b>", *options), Value("red"));
  options->setDynamicAttributes(
      [](const NSString&, const NSDictionary&, const NSDictionary&) { return colour("blue"); }, "b");
  EXPECT_FALSE(options->attributeForTagName("B")->staticDictionary());
  EXPECT_EQ(colourOf("<B>x</b>", *options), Value("blue"));
  options->setAttributes(colour("green"), "b");
  EXPECT_FALSE(options->attributeForTagName("b")->dynamicAttributes());
  EXPECT_EQ(colourOf("<b>x</b>", *options), Value("green"));
}

TEST(MRKTaggedStringOptions, UnknownTagsHaveAClosureOfTheirOwn) {
  const auto options = MRKTaggedStringOptions::options();
  options->setAttributes(colour("red"), "b");
  const MRKDynamicAttributes closure = [](const NSString& name, const NSDictionary&, const NSDictionary&) {
    return NSDictionary::dictionaryWithObject(name, "colour");
  };
  options->setUnknownTagDynamicAttributes(closure);
  EXPECT_EQ(options->unknownTagDynamicAttributes(), closure);
  EXPECT_EQ(colourOf("<b>x</b>", *options), Value("red"));
  EXPECT_EQ(colourOf("<Teal>x</teal>", *options), Value("Teal"));
  options->setUnknownTagDynamicAttributes(nullptr);
  EXPECT_TRUE(colourOf("<Teal>x</teal>", *options).isAbsent());
}

TEST(MRKTaggedStringOptions, ACopyDoesNotSeeLaterChangesNorMakesThem) {
  const auto options = MRKTaggedStringOptions::options();
  options->setAttributes(colour("red"), "b");
  const auto copy = options->copy();
  EXPECT_TRUE(copy->isEqual(*options));
  EXPECT_EQ(copy->hash(), options->hash());
  options->setAttributes(colour("blue"), "b");
  copy->setAttributes(colour("green"), "i");
  EXPECT_EQ(colourOf("<b>x</b>", *copy), Value("red"));
  EXPECT_TRUE(colourOf("<i>x</i>", *options).isAbsent());
  EXPECT_FALSE(copy->isEqual(*options));
}

TEST(MRKTaggedStringOptions, AreEqualByWhatTheyHold) {
  const auto a = MRKTaggedStringOptions::optionsWithBaseAttributes(colour("red"));
  const auto b = MRKTaggedStringOptions::optionsWithBaseAttributes(colour("red"));
  EXPECT_TRUE(a->isEqual(*b));
  a->setUnknownTagDynamicAttributes(
      [](const NSString&, const NSDictionary&, const NSDictionary&) { return colour("blue"); });
  EXPECT_FALSE(a->isEqual(*b));
  EXPECT_FALSE(b->isEqual(*a));
  b->setUnknownTagDynamicAttributes(a->unknownTagDynamicAttributes());
  EXPECT_TRUE(a->isEqual(*b));
  EXPECT_EQ(a->hash(), b->hash());
  EXPECT_FALSE(a->isEqual(*colour("red")));
}

TEST(MRKTaggedStringOptions, RegisteredOnesAreCopiedAndCountWhereNoneAreGiven) {
  const RegisteredOptions restored;
  const auto options = MRKTaggedStringOptions::options();
  options->setAttributes(colour("red"), "b");
  MRKTaggedStringOptions::registerDefaultOptions(*options);
  options->setAttributes(colour("blue"), "b");
  const auto source = MRKTaggedString::stringWithString("<b>x</b>");
  EXPECT_EQ(source->attributedString()->attribute_atIndex("colour", 0), Value("red"));
  MRKTaggedStringOptions::defaultOptions()->setAttributes(colour("green"), "b");
  EXPECT_EQ(source->attributedString()->attribute_atIndex("colour", 0), Value("red"));
}

TEST(MRKTaggedStringOptions, AnyThreadMayRegisterAndParse) {
  const RegisteredOptions restored;
  const auto red = MRKTaggedStringOptions::options(), blue = MRKTaggedStringOptions::options();
  red->setAttributes(colour("red"), "b");
  blue->setAttributes(colour("blue"), "b");
  MRKTaggedStringOptions::registerDefaultOptions(*red);
  const auto source = MRKTaggedString::stringWithString("<b>x</b>");
  std::latch start(3);
  std::thread registering([&] {
    start.arrive_and_wait();
    for (int i = 0; i < 500; ++i) MRKTaggedStringOptions::registerDefaultOptions(i % 2 == 0 ? *blue : *red);
  });
  std::vector<std::thread> parsing;
  for (int t = 0; t < 2; ++t) {
    parsing.emplace_back([&] {
      start.arrive_and_wait();
      for (int i = 0; i < 500; ++i) {
        const Value found = source->attributedString()->attribute_atIndex("colour", 0);
        EXPECT_TRUE(found == Value("red") || found == Value("blue"));
      }
    });
  }
  registering.join();
  for (std::thread& thread : parsing) thread.join();
}

TEST(MRKTaggedStringOptions, ListedTagsAreAddedToATextInTheirOrder) {
  const auto options = MRKTaggedStringOptions::optionsWithBaseAttributes(colour("black"));
  options->setAttributes(colour("red"), "b");
  options->setAttributes(colour("blue"), "i");
  const auto tag = [](const char* name, NSUInteger from, NSUInteger to) {
    const auto made = make<MRKStringParserTag>(name, from);
    made->updateWithTag(*make<MRKStringParserTag>("/", to));
    return made;
  };
  const auto text =
      NSMutableAttributedString::attributedStringWithString("abcd", NSDictionary::dictionaryWithObject(9, "size"));
  options->_private_updateAttributedString(
      *text, *NSArray::arrayWithObjects(tag("b", 0, 3), tag("I", 1, 2), tag("other", 0, 4), tag("b", 4, 4)));
  const char* const expected[] = {"red", "blue", "red", "black"};
  for (NSUInteger i = 0; i < 4; ++i) EXPECT_EQ(text->attribute_atIndex("colour", i), Value(expected[i])) << i;
  EXPECT_TRUE(text->attribute_atIndex("size", 0).isAbsent());
  const auto empty = make<NSMutableAttributedString>();
  options->_private_updateAttributedString(*empty, *NSArray::arrayWithObjects(tag("b", 0, 0)));
  EXPECT_EQ(empty->length(), 0u);
}

}  // namespace norvik
