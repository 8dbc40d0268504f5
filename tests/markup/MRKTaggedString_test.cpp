#include "NorvikCore/markup/MRKTaggedString.h"

#include "NorvikCore/markup/MRKEscapedStringForString.h"
#include "NorvikCore/markup/MRKStringParser.h"
#include "tests/support/ThroughArchivers.h"

#include <gtest/gtest.h>

#include <string>

namespace norvik {

TEST(MRKTaggedString, HeaderExample) {
  const NSString name = "Zo <e>";
  auto options = MRKTaggedStringOptions::options();
  options->setAttributes(NSDictionary::dictionaryWithObject("bold", NSFontAttributeName), "b");
  auto source = MRKTaggedString::stringWithFormat("Pay <b>%@</b> now", MRKEscapedStringForString(name));
  EXPECT_EQ(source->string(), "Pay Zo <e> now");
  const auto text = source->attributedStringWithOptions(*options);
  NSRange run;
  EXPECT_EQ(text->attributesAtIndex(4, &run)->objectForKey(NSFontAttributeName), Value("bold"));
  EXPECT_EQ(run, (NSRange{4, 6}));
}

TEST(MRKTaggedString, ArgumentsOfAFormatAreMarkupToo) {
  EXPECT_EQ(MRKTaggedString::stringWithFormat("%@ %d", "<b>x</b>", 7)->string(), "x 7");
}

TEST(MRKTaggedString, WithoutASourceItIsEmpty) {
  EXPECT_EQ(MRKTaggedString::stringWithString(std::nullopt)->underlyingString(), "");
  EXPECT_EQ(make<MRKTaggedString>()->string(), "");
  EXPECT_EQ(make<MRKTaggedString>()->attributedString()->length(), 0u);
}

TEST(MRKTaggedString, TheFormsWithAnErrorSayWhatIsWrong) {
  const auto wrong = MRKTaggedString::stringWithString("<b>x");
  Ref<NSError> error;
  EXPECT_FALSE(wrong->string());
  EXPECT_FALSE(wrong->attributedString());
  EXPECT_FALSE(wrong->stringWithError(&error));
  ASSERT_TRUE(error);
  EXPECT_EQ(error->domain(), MRKTaggedStringErrorDomain);
  error = nullptr;
  EXPECT_FALSE(wrong->attributedStringWithError(&error));
  EXPECT_TRUE(error);
  error = nullptr;
  EXPECT_EQ(MRKTaggedString::stringWithString("x")->stringWithError(&error), "x");
  EXPECT_FALSE(error);
}

TEST(MRKTaggedString, TheAttributedTextDoesNotChange) {
  const auto text = MRKTaggedString::stringWithString("<b>x</b>")->attributedString();
  EXPECT_FALSE(dynamic_cast<NSMutableAttributedString*>(text.get()));
}

TEST(MRKTaggedString, IsEqualBySource) {
  const auto a = MRKTaggedString::stringWithString("<b>x</b>"), b = MRKTaggedString::stringWithString("<b>x</b>");
  EXPECT_TRUE(a->isEqual(*b));
  EXPECT_EQ(a->hash(), b->hash());
  EXPECT_FALSE(a->isEqual(*MRKTaggedString::stringWithString("<B>x</b>")));
  const auto copy = a->copy();
  EXPECT_NE(copy, a);
  EXPECT_TRUE(copy->isEqual(*a));
}

TEST(MRKTaggedString, DescribesItself) {
  const std::string text = MRKTaggedString::stringWithString("<b>")->description().utf8();
  EXPECT_EQ(text.rfind("<MRKTaggedString: 0x", 0), 0u) << text;
  EXPECT_NE(text.find("; underlying: \"<b>\">"), std::string::npos) << text;
}

TEST(MRKTaggedString, IsArchivedAsItsSource) {
  EXPECT_TRUE(MRKTaggedString::supportsSecureCoding());
  const auto source = MRKTaggedString::stringWithString("<b>\U0001F4B7</b>");
  for (const auto archived : test::throughBothArchivers) EXPECT_EQ(archived(source), Value(source));
}

}  // namespace norvik
