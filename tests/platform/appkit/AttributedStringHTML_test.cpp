#include "NorvikCore/platform/appkit/AttributedStringHTML.h"

#include "NorvikCore/platform/appkit/NSColor.h"
#include "tests/support/StyledText.h"

#include <gtest/gtest.h>

using namespace norvik;

namespace {

using norvik::test::styled;

const NSFont& body() {
  static const auto& font = *new Ref<NSFont>(make<NSFont>("Sans", 10));
  return *font;
}

std::string inFont(const Ref<NSFont>& font, const NSFont* surrounding = nullptr) {
  return htmlText(*styled("x", NSFontAttributeName, font), surrounding);
}

std::string linkedInHtml(const NSString& address) { return htmlText(*styled("x", NSLinkAttributeName, address)); }

}  // namespace

TEST(AttributedStringHTML, HeaderExample) {
  const auto text = NSMutableAttributedString::attributedStringWithString("Pay now");
  text->addAttribute(NSFontAttributeName, make<NSFont>("Sans", 10, true), {0, 3});
  EXPECT_EQ(htmlText(*text, &body()), "<span style=\"font-weight:bold\">Pay</span> now");
  EXPECT_EQ(htmlText(*text),
            "<span style=\"font-family:&#39;Sans&#39;;font-size:10pt;font-weight:bold\">Pay</span> now");
}

TEST(AttributedStringHTML, WhateverTheTextHoldsIsText) {
  const auto html = [](const NSString& text) {
    const std::string attributed = htmlText(*NSAttributedString::attributedStringWithString(text));
    EXPECT_EQ(attributed, htmlText(text));
    return attributed;
  };
  EXPECT_EQ(html(""), "");
  EXPECT_EQ(html("<script>alert(\"&'\")</script>"), "&lt;script&gt;alert(&quot;&amp;&#39;&quot;)&lt;/script&gt;");
  EXPECT_EQ(html("&lt;"), "&amp;lt;");
  EXPECT_EQ(html("Zo\u00EB \u738B \U0001F4B7 \u0639"), "Zo\u00EB \u738B \U0001F4B7 \u0639");
  EXPECT_EQ(html(NSString(std::string_view("a\0b\033\x7F\u009B", 7))), "a\uFFFDb\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(html("a\tb  c"), "a\tb  c");
  EXPECT_EQ(html(NSString::fromCodePoint(0xDFFF)), "\uFFFD");
}

TEST(AttributedStringHTML, EveryLineBreakIsABr) {
  EXPECT_EQ(htmlText("a\nb\rc\r\nd\u0085e\u2028f\u2029g\vh\fi\n\rj"),
            "a<br>b<br>c<br>d<br>e<br>f<br>g<br>h<br>i<br><br>j");
  const auto halves = NSMutableAttributedString::attributedStringWithString("a\r\nb");
  halves->addAttribute(NSUnderlineStyleAttributeName, 1, {0, 2});
  EXPECT_EQ(htmlText(*halves), "<span style=\"text-decoration:underline\">a<br></span>b");
}

TEST(AttributedStringHTML, EveryStyleIsADeclaration) {
  const auto all =
      NSDictionary::dictionaryWith({{NSFontAttributeName, make<NSFont>("DejaVu Serif", 12.5, true, true)},
                                    {NSUnderlineStyleAttributeName, 1},
                                    {NSForegroundColorAttributeName, NSColor::redColor()},
                                    {NSBackgroundColorAttributeName, NSColor::colorWithRed(0, 0, 1, 0.5)}});
  EXPECT_EQ(htmlText(*NSAttributedString::attributedStringWithString("x", all)),
            "<span style=\"font-family:&#39;DejaVu Serif&#39;;font-size:12.5pt;font-weight:bold;font-style:italic;"
            "color:#FF0000;background-color:#0000FF80;text-decoration:underline\">x</span>");
  EXPECT_EQ(htmlText(*styled("x", NSForegroundColorAttributeName, NSColor::clearColor())), "x");
  EXPECT_EQ(htmlText(*styled("x", NSUnderlineStyleAttributeName, 0)), "x");
}

TEST(AttributedStringHTML, WithinAFontOnlyWhatDiffersIsWritten) {
  EXPECT_EQ(inFont(make<NSFont>("Sans", 10), &body()), "x");
  EXPECT_EQ(inFont(make<NSFont>("Sans", 14), &body()), "<span style=\"font-size:1.4em\">x</span>");
  EXPECT_EQ(inFont(make<NSFont>("Serif", 10), &body()), "<span style=\"font-family:&#39;Serif&#39;\">x</span>");
  const auto bold = make<NSFont>("Sans", 9, true, true);
  EXPECT_EQ(inFont(make<NSFont>("Sans", 9), bold.get()),
            "<span style=\"font-weight:normal;font-style:normal\">x</span>");
  EXPECT_EQ(inFont(make<NSFont>("Sans", 1), bold.get()),
            "<span style=\"font-size:0.111em;font-weight:normal;font-style:normal\">x</span>");
}

TEST(AttributedStringHTML, SizesBeyondReasonAreTakenToALimit) {
  EXPECT_EQ(inFont(make<NSFont>("S", 1e300)), "<span style=\"font-family:&#39;S&#39;;font-size:10000pt\">x</span>");
  EXPECT_EQ(inFont(make<NSFont>("S", 1e-300)), "<span style=\"font-family:&#39;S&#39;;font-size:0.001pt\">x</span>");
}

TEST(AttributedStringHTML, AFamilyCannotEndItsDeclarationOrItsAttribute) {
  EXPECT_EQ(inFont(make<NSFont>("a'b\\c\"d>e\n;}", 10), &body()),
            "<span style=\"font-family:&#39;a\\27 b\\5c c&quot;d&gt;e\\a ;}&#39;\">x</span>");
}

TEST(AttributedStringHTML, NeighboursOfOneStyleShareIt) {
  const auto text = NSMutableAttributedString::attributedStringWithString("abc");
  text->addAttribute(NSUnderlineStyleAttributeName, 1, {0, 2});
  text->addAttribute("department", "OPS", {1, 1});
  EXPECT_EQ(htmlText(*text), "<span style=\"text-decoration:underline\">ab</span>c");
}

TEST(AttributedStringHTML, ALinkIsOneWhereItsAddressIsSafe) {
  EXPECT_EQ(linkedInHtml("https://www.gov.uk/?a=1&b='2'\"<"),
            "<a href=\"https://www.gov.uk/?a=1&amp;b=&#39;2&#39;&quot;&lt;\">x</a>");
  EXPECT_EQ(linkedInHtml("MailTo:pay@example.org"), "<a href=\"MailTo:pay@example.org\">x</a>");
  EXPECT_EQ(linkedInHtml("http://a/ \u00E9\n"), "<a href=\"http://a/%20%C3%A9%0A\">x</a>");
  for (const char* address :
       {"javascript:alert(1)", "java\nscript:alert(1)", " javascript:alert(1)", "data:text/html,x",
        "file:///etc/passwd", "vbscript:x", "", "https", "//example.org", "\001http://a"}) {
    EXPECT_EQ(linkedInHtml(address), "x") << address;
  }
  const auto styledLink = NSMutableAttributedString::attributedStringWithString("x");
  styledLink->addAttribute(NSLinkAttributeName, "http://a", {0, 1});
  styledLink->addAttribute(NSForegroundColorAttributeName, NSColor::blueColor(), {0, 1});
  EXPECT_EQ(htmlText(*styledLink), "<a href=\"http://a\" style=\"color:#0000FF\">x</a>");
}

TEST(AttributedStringHTML, AnAttributeOfAnotherClassSetsNothing) {
  EXPECT_EQ(htmlText(*styled("x", NSFontAttributeName, "Sans Bold")), "x");
  EXPECT_EQ(htmlText(*styled("x", NSForegroundColorAttributeName, "red")), "x");
  EXPECT_EQ(htmlText(*styled("x", NSUnderlineStyleAttributeName, "yes")), "x");
  EXPECT_EQ(htmlText(*styled("x", NSLinkAttributeName, 7)), "x");
}
