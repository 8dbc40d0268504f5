#include "NorvikCore/markup/MRKStringParserTag.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace norvik {
namespace {

/// "name=value" for each attribute, in order; without "=" for the null marker.
std::vector<std::string> attributesIn(const NSString& raw) {
  const auto tag = make<MRKStringParserTag>("a", 0u);
  tag->addRawTagAttributes(raw);
  std::vector<std::string> texts;
  for (const auto& [name, value] : *tag->tagAttributes().get())
    texts.push_back(name.as<NSString>().utf8() + (value.isNull() ? "" : "=" + value.as<NSString>().utf8()));
  return texts;
}

using Texts = std::vector<std::string>;

}  // namespace

TEST(MRKStringParserTag, HeaderExample) {
  auto tag = make<MRKStringParserTag>("a", 4u);
  tag->addRawTagAttributes("href='https://example.org' target=new flag");
  EXPECT_TRUE(tag->tagAttributes()->isEqual(
      *NSDictionary::dictionaryWith({{"href", "https://example.org"}, {"target", "new"}, {"flag", Value::null()}})));
}

TEST(MRKStringParserTag, KnowsWhetherItEndsAnother) {
  const auto b = make<MRKStringParserTag>("b", 2u), upper = make<MRKStringParserTag>("/B", 6u);
  EXPECT_FALSE(b->isEndingTag());
  EXPECT_TRUE(upper->isEndingTag());
  EXPECT_TRUE(b->isEndedByTag(*upper));
  EXPECT_FALSE(b->isEndedByTag(*b));
  EXPECT_FALSE(make<MRKStringParserTag>("i", 2u)->isEndedByTag(*upper));
  const auto nameless = make<MRKStringParserTag>(std::nullopt, 0u);
  EXPECT_FALSE(nameless->isEndingTag());
  EXPECT_FALSE(nameless->isEndedByTag(*make<MRKStringParserTag>("/", 0u)));
}

TEST(MRKStringParserTag, ItsRangeReachesToItsEndingTag) {
  const auto b = make<MRKStringParserTag>("b", 2u);
  EXPECT_EQ(b->endLocation(), 0u);
  EXPECT_EQ(b->tagRange(), (NSRange{2, 0}));
  b->updateWithTag(*make<MRKStringParserTag>("/b", 6u));
  EXPECT_EQ(b->tagRange(), (NSRange{2, 4}));
}

TEST(MRKStringParserTag, ReadsValuesWithAndWithoutQuotes) {
  EXPECT_EQ(attributesIn("href='x' target=y flag"), (Texts{"href=x", "target=y", "flag"}));
  EXPECT_EQ(attributesIn("a=\"x y\"b=2"), (Texts{"a=x y", "b=2"}));
  EXPECT_EQ(attributesIn("a = 'x'"), (Texts{"a=x"}));
  EXPECT_EQ(attributesIn(" \t "), Texts());
  EXPECT_EQ(attributesIn("A=1 a=2"), (Texts{"A=1", "a=2"}));
  EXPECT_EQ(attributesIn("a=1 a=2"), (Texts{"a=2"}));
}

TEST(MRKStringParserTag, TwoQuotesAreTheEmptyTextAndNoValueIsTheNullMarker) {
  EXPECT_EQ(attributesIn("title=''"), (Texts{"title="}));
  EXPECT_EQ(attributesIn("title='''x"), (Texts{"title=", "x"}));
  EXPECT_EQ(attributesIn("title='"), (Texts{"title"}));
  EXPECT_EQ(attributesIn("title= "), (Texts{"title"}));
  EXPECT_EQ(attributesIn("title=\t'x'"), (Texts{"title", "'x'"}));
  EXPECT_EQ(attributesIn("title='x"), (Texts{"title=x"}));
}

// Looks like a mistake but is deliberate: a value ends at either kind of quote, whichever opened it.
TEST(MRKStringParserTag, AValueOpenedByOneKindOfQuoteIsClosedByEither) {
  EXPECT_EQ(attributesIn("title=\"it's\""), (Texts{"title=it", "s\""}));
  EXPECT_EQ(attributesIn("a='x\" b=1"), (Texts{"a=x", "b=1"}));
}

// Looks like a mistake but is deliberate: a value without a name is dropped, and the text after it is read.
TEST(MRKStringParserTag, AValueWithoutANameIsLeftOut) {
  EXPECT_EQ(attributesIn("=value b=1"), (Texts{"b=1"}));
  EXPECT_EQ(attributesIn("= ='x' c"), (Texts{"c"}));
}

TEST(MRKStringParserTag, ATabDoesNotEndTheNameOfAnAttribute) {
  EXPECT_EQ(attributesIn("a\tb=1"), (Texts{"a\tb=1"}));
  EXPECT_EQ(attributesIn("a=1\tb=2"), (Texts{"a=1", "b=2"}));
}

TEST(MRKStringParserTag, OtherBlanksArePartOfNamesAndValues) {
  EXPECT_EQ(attributesIn("a\n=1\u00A02 b"), (Texts{"a\n=1\u00A02", "b"}));
}

TEST(MRKStringParserTag, MoreAttributesAreAddedToThoseItHas) {
  const auto tag = make<MRKStringParserTag>("a", 0u);
  tag->addRawTagAttributes("x=1 y=1");
  tag->addRawTagAttributes("y=2");
  tag->addRawTagAttributes("");
  EXPECT_TRUE(tag->tagAttributes()->isEqual(*NSDictionary::dictionaryWith({{"x", "1"}, {"y", "2"}})));
}

TEST(MRKStringParserTag, AttributesKeepLoneHalves) {
  const auto tag = make<MRKStringParserTag>("a", 0u);
  const std::u16string raw{u'x', u'=', 0xD83D};
  tag->addRawTagAttributes(NSString::fromUtf16(raw));
  EXPECT_EQ(tag->tagAttributes()->objectForKey("x").as<NSString>().toUtf16(), (std::u16string{0xD83D}));
}

TEST(MRKStringParserTag, DescribesItself) {
  const auto tag = make<MRKStringParserTag>("/b", 0u);
  const std::string text = tag->description().utf8();
  EXPECT_EQ(text.rfind("<MRKStringParserTag: 0x", 0), 0u) << text;
  EXPECT_NE(text.find("; tag: /b, isEndingTag: YES, parsedAttributes: {\n}>"), std::string::npos) << text;
}

}  // namespace norvik
