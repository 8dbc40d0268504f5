#include "NorvikCore/Categories/NSAttributedString+Norvik.h"

#include "NorvikCore/Categories/NSMutableAttributedString+Norvik.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/object/Block.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <string>

namespace norvik {
namespace {

Ref<NSDictionary> named(const char* name) { return NSDictionary::dictionaryWithObject(1, name); }

/// "text{names}" for each run, "text{}" if it has no attributes.
std::string shown(const NSAttributedString& text) {
  std::string result;
  for (const auto& [range, attributes] : text) {
    result += text.string().substringWithRange(range).utf8() + "{";
    for (const auto& [name, value] : *attributes) result += name.description().utf8();
    result += "}";
  }
  return result;
}

}  // namespace

TEST(NSAttributedStringNorvik, HeaderExample) {
  const auto total =
      nk_stringWithFormat_attributes_argumentAttributes("Total: %@ (%%)", named("plain"), named("amount"), 12);
  EXPECT_EQ(shown(*total), "Total: {plain}12{amount} (%){plain}");
}

TEST(NSAttributedStringNorvik, AnEmptyFormatIsAnEmptyText) {
  EXPECT_EQ(nk_stringWithFormat_attributes("", named("A"))->length(), 0u);
  EXPECT_EQ(nk_stringWithFormat_attributes("%", named("A"))->length(), 0u);
}

// Looks like a mistake but is deliberate: any other directive is text and loses its percent sign.
TEST(NSAttributedStringNorvik, ALonePercentSignDisappears) {
  EXPECT_EQ(nk_stringWithFormat_attributes("Rate %d%@", nullptr, "x")->string(), "Rate dx");
  EXPECT_EQ(nk_stringWithFormat_attributes("5% of %%%@%", nullptr, "x")->string(), "5 of %x");
  EXPECT_EQ(nk_stringWithFormat_attributes("%%%", nullptr)->string(), "%");
  EXPECT_EQ(nk_stringWithFormat_attributes("%%@", nullptr, "x")->string(), "%@");
}

TEST(NSAttributedStringNorvik, APairBringsItsOwnAttributes) {
  const auto pair = NSArray::arrayWithObjects("Pay", named("bold"));
  EXPECT_EQ(shown(*nk_stringWithFormat_attributes_argumentAttributes("%@ now", named("A"), named("G"), pair)),
            "Pay{bold} now{A}");
  const auto styled = NSAttributedString::attributedStringWithString("Pay", named("own"));
  const auto around = NSArray::arrayWithObjects(styled, named("bold"), "ignored");
  EXPECT_EQ(shown(*nk_stringWithFormat_attributes("%@", named("A"), around)), "Pay{own}");
  const auto without = NSArray::arrayWithObjects("Pay", Value::null());
  EXPECT_EQ(shown(*nk_stringWithFormat_attributes("%@", named("A"), without)), "Pay{}");
}

TEST(NSAttributedStringNorvik, APairOfFewerThanTwoOrWithoutADictionaryRaises) {
  EXPECT_RAISES((void)nk_stringWithFormat_attributes("%@", nullptr, NSArray::array()), "NSRangeException");
  EXPECT_RAISES((void)nk_stringWithFormat_attributes("%@", nullptr, NSArray::arrayWithObjects("x")),
                "NSRangeException");
  EXPECT_RAISES((void)nk_stringWithFormat_attributes("%@", nullptr, NSArray::arrayWithObjects("x", "y")),
                "NSInvalidArgumentException");
}

TEST(NSAttributedStringNorvik, AttributedTextKeepsItsStyle) {
  const auto styled = NSMutableAttributedString::attributedStringWithString("ab");
  styled->addAttributes(*named("own"), {1, 1});
  EXPECT_EQ(shown(*nk_stringWithFormat_attributes_argumentAttributes("<%@>", named("A"), named("G"), styled)),
            "<{A}a{}b{own}>{A}");
}

TEST(NSAttributedStringNorvik, WithoutArgumentAttributesAnArgumentHasNone) {
  EXPECT_EQ(shown(*nk_stringWithFormat_attributes_argumentAttributes("a%@", named("A"), nullptr, "b")), "a{A}b{}");
}

TEST(NSAttributedStringNorvik, ArgumentsAreUsedFromTheLeftAndMayBeMissingOrTooMany) {
  EXPECT_EQ(nk_stringWithFormat_attributes("%@-%@", nullptr, 1, 2.5, "surplus")->string(), "1-2.5");
  EXPECT_EQ(nk_stringWithFormat_attributes("%@-%@", nullptr, 1)->string(), "1-(bad argument)");
  EXPECT_EQ(nk_stringWithFormat_attributes("%@ %@", nullptr, Value(), Value::null())->string(), "(null) <null>");
}

TEST(NSAttributedStringNorvik, AListOfArgumentsDoesTheSame) {
  const Value arguments[] = {"x", 2};
  EXPECT_EQ(
      shown(*nk_stringWithFormat_attributes_argumentAttributes_arguments("%@=%@", named("A"), named("G"), arguments)),
      "x{G}={A}2{G}");
  EXPECT_EQ(shown(*nk_initWithFormat_attributes_argumentAttributes_arguments("%@", named("A"), named("G"), arguments)),
            "x{G}");
  EXPECT_EQ(shown(*nk_initWithFormat_attributes_argumentAttributes("%@", named("A"), named("G"), "y")), "y{G}");
}

TEST(NSAttributedStringNorvik, HalvesOfFormatAndArgumentMeet) {
  const auto half = [](char16_t unit) { return NSString::fromUtf16({&unit, 1}); };
  EXPECT_EQ(nk_stringWithFormat_attributes(half(0xD83D) + "%@", nullptr, half(0xDCB7))->string(), "\U0001F4B7");
}

TEST(NSMutableAttributedStringNorvik, HeaderExample) {
  auto text = nk_stringWithFormat_attributes("Net pay of %@: ", named("plain"), "April");
  nk_appendFormat_attributes_argumentAttributes(*text, "GBP %@", named("plain"), named("bold"), 1234.5);
  EXPECT_EQ(shown(*text), "Net pay of April: GBP {plain}1234.5{bold}");
}

TEST(NSMutableAttributedStringNorvik, AppendsItselfAndNothingWhereAnArgumentRaises) {
  const auto text = NSMutableAttributedString::attributedStringWithString("ab", named("own"));
  nk_appendFormat_attributes(*text, "-%@", named("A"), text);
  EXPECT_EQ(shown(*text), "ab{own}-{A}ab{own}");
  EXPECT_RAISES(nk_appendFormat_attributes(*text, "x%@", nullptr, NSArray::array()), "NSRangeException");
  EXPECT_EQ(text->string(), "ab-ab");
}

}  // namespace norvik
