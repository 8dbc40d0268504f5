#include "NorvikCore/platform/appkit/AttributedStringTerminal.h"

#include "NorvikCore/platform/appkit/NSColor.h"
#include "NorvikCore/platform/appkit/NSFont.h"
#include "tests/support/StyledText.h"

#include <gtest/gtest.h>

using namespace norvik;

namespace {

using norvik::test::styled;

Ref<NSFont> font(bool isBold, bool isItalic) { return make<NSFont>("Sans", 10, isBold, isItalic); }

std::string plain(const NSString& text, TerminalColors colors = TerminalColors::Direct) {
  return terminalText(*NSAttributedString::attributedStringWithString(text), colors);
}

std::string coloured(const Ref<NSColor>& color, TerminalColors colors) {
  return terminalText(*styled("x", NSForegroundColorAttributeName, color), colors);
}

std::string linkedInTerminal(const NSString& address, TerminalColors colors = TerminalColors::Direct) {
  return terminalText(*styled("x", NSLinkAttributeName, address), colors, TerminalLinks::Written);
}

}  // namespace

TEST(AttributedStringTerminal, HeaderExample) {
  const auto text = NSMutableAttributedString::attributedStringWithString("Pay now");
  text->addAttribute(NSFontAttributeName, font(true, false), {0, 3});
  EXPECT_EQ(terminalText(*text, TerminalColors::Ansi16), "\033[1mPay\033[0m now");
  EXPECT_EQ(terminalText(*text, TerminalColors::Plain), "Pay now");
}

TEST(AttributedStringTerminal, TextWithoutStylesHasNoEscapeSequence) {
  EXPECT_EQ(plain(""), "");
  EXPECT_EQ(plain("Zo\u00EB \u738B \U0001F4B7"), "Zo\u00EB \u738B \U0001F4B7");
  EXPECT_EQ(terminalText(*styled("x", NSFontAttributeName, font(false, false)), TerminalColors::Direct), "x");
}

TEST(AttributedStringTerminal, EveryStyleHasItsParameterAndOneResetEndsThem) {
  const auto all = NSDictionary::dictionaryWith({{NSFontAttributeName, font(true, true)},
                                                 {NSUnderlineStyleAttributeName, 1},
                                                 {NSForegroundColorAttributeName, NSColor::redColor()},
                                                 {NSBackgroundColorAttributeName, NSColor::whiteColor()}});
  const auto text = NSAttributedString::attributedStringWithString("x", all);
  EXPECT_EQ(terminalText(*text, TerminalColors::Plain), "x");
  EXPECT_EQ(terminalText(*text, TerminalColors::Monochrome), "\033[1;3;4mx\033[0m");
  EXPECT_EQ(terminalText(*text, TerminalColors::Ansi16), "\033[1;3;4;91;107mx\033[0m");
  EXPECT_EQ(terminalText(*text, TerminalColors::Ansi256), "\033[1;3;4;38;5;196;48;5;231mx\033[0m");
  EXPECT_EQ(terminalText(*text, TerminalColors::Direct), "\033[1;3;4;38;2;255;0;0;48;2;255;255;255mx\033[0m");
  EXPECT_EQ(terminalText(*styled("x", NSFontAttributeName, font(false, true)), TerminalColors::Ansi16),
            "\033[3mx\033[0m");
  EXPECT_EQ(terminalText(*styled("x", NSUnderlineStyleAttributeName, 0), TerminalColors::Ansi16), "x");
}

TEST(AttributedStringTerminal, AColourIsTakenToTheNearestOneThereIs) {
  const struct {
    const char* why;
    Ref<NSColor> color;
    const char *ansi16, *ansi256, *direct;
  } rows[] = {
      {"black", NSColor::blackColor(), "30", "38;5;16", "38;2;0;0;0"},
      {"white", NSColor::whiteColor(), "97", "38;5;231", "38;2;255;255;255"},
      {"a dark red", NSColor::colorWithRed(0.75, 0, 0, 1), "31", "38;5;124", "38;2;191;0;0"},
      {"blue", NSColor::blueColor(), "34", "38;5;21", "38;2;0;0;255"},
      {"green", NSColor::greenColor(), "92", "38;5;46", "38;2;0;255;0"},
      {"a middle grey", NSColor::colorWithWhite(0.5, 1), "90", "38;5;244", "38;2;128;128;128"},
      {"nearly black", NSColor::colorWithWhite(8 / 255.0, 1), "30", "38;5;232", "38;2;8;8;8"},
      {"half transparent counts as opaque", NSColor::colorWithRed(1, 0, 0, 0.5), "91", "38;5;196", "38;2;255;0;0"},
  };
  for (const auto& row : rows) {
    const auto expected = [](const char* parameters) { return "\033[" + std::string(parameters) + "mx\033[0m"; };
    EXPECT_EQ(coloured(row.color, TerminalColors::Ansi16), expected(row.ansi16)) << row.why;
    EXPECT_EQ(coloured(row.color, TerminalColors::Ansi256), expected(row.ansi256)) << row.why;
    EXPECT_EQ(coloured(row.color, TerminalColors::Direct), expected(row.direct)) << row.why;
    EXPECT_EQ(coloured(row.color, TerminalColors::Monochrome), "x") << row.why;
  }
  EXPECT_EQ(coloured(NSColor::clearColor(), TerminalColors::Direct), "x");
  EXPECT_EQ(terminalText(*styled("x", NSBackgroundColorAttributeName, NSColor::blueColor()), TerminalColors::Ansi16),
            "\033[44mx\033[0m");
  EXPECT_EQ(terminalText(*styled("x", NSBackgroundColorAttributeName, NSColor::whiteColor()), TerminalColors::Ansi16),
            "\033[107mx\033[0m");
}

TEST(AttributedStringTerminal, NeighboursOfOneStyleShareIt) {
  const auto text = NSMutableAttributedString::attributedStringWithString("abc");
  text->addAttribute(NSFontAttributeName, font(true, false), {0, 2});
  text->addAttribute("department", "OPS", {1, 1});
  EXPECT_EQ(terminalText(*text, TerminalColors::Ansi16), "\033[1mab\033[0mc");
}

TEST(AttributedStringTerminal, AStyleEndsBeforeALineDoes) {
  const auto bold = styled("a\nb\n\nc\n", NSFontAttributeName, font(true, false));
  EXPECT_EQ(terminalText(*bold, TerminalColors::Ansi16), "\033[1ma\033[0m\n\033[1mb\033[0m\n\n\033[1mc\033[0m\n");
  EXPECT_EQ(terminalText(*styled("\n", NSFontAttributeName, font(true, false)), TerminalColors::Ansi16), "\n");
}

TEST(AttributedStringTerminal, EveryLineBreakIsALineFeed) {
  EXPECT_EQ(plain("a\nb\rc\r\nd\u0085e\u2028f\u2029g\vh\fi\n\rj"), "a\nb\nc\nd\ne\nf\ng\nh\ni\n\nj");
  const auto halves = NSMutableAttributedString::attributedStringWithString("a\r\nb");
  halves->addAttribute(NSFontAttributeName, font(true, false), {0, 2});
  EXPECT_EQ(terminalText(*halves, TerminalColors::Ansi16), "\033[1ma\033[0m\nb") << "CR LF across two styles";
}

TEST(AttributedStringTerminal, TheTextReachesNoControlOfTheTerminal) {
  for (const TerminalColors colors : {TerminalColors::Plain, TerminalColors::Direct}) {
    EXPECT_EQ(plain("a\033[2Jb", colors), "a\u241B[2Jb");
    EXPECT_EQ(plain("\033]0;title\a", colors), "\u241B]0;title\u2407");
    EXPECT_EQ(plain("a\bb\x7F", colors), "a\u2408b\u2421");
    EXPECT_EQ(plain("\u009B31mred", colors), "\uFFFD31mred") << "an escape sequence of one character";
    EXPECT_EQ(plain(NSString(std::string_view("a\0b", 3)), colors), "a\u2400b");
    EXPECT_EQ(plain("a\tb", colors), "a\tb");
    EXPECT_EQ(plain(NSString::fromCodePoint(0xD800), colors), "\uFFFD");
  }
}

TEST(AttributedStringTerminal, AStyleBetweenTheHalvesOfACharacterShowsTwoMarks) {
  const auto text = NSMutableAttributedString::attributedStringWithString("\U0001F4B7");
  text->addAttribute(NSFontAttributeName, font(true, false), {0, 1});
  EXPECT_EQ(terminalText(*text, TerminalColors::Ansi16), "\033[1m\uFFFD\033[0m\uFFFD");
}

TEST(AttributedStringTerminal, ALinkIsWrittenOnlyWhereItIsAskedForAndSafe) {
  const auto text = styled("HMRC", NSLinkAttributeName, "https://www.gov.uk/paye");
  EXPECT_EQ(terminalText(*text, TerminalColors::Direct), "HMRC");
  EXPECT_EQ(terminalText(*text, TerminalColors::Plain, TerminalLinks::Written), "HMRC");
  EXPECT_EQ(terminalText(*text, TerminalColors::Monochrome, TerminalLinks::Written),
            "\033]8;;https://www.gov.uk/paye\033\\HMRC\033]8;;\033\\");
  EXPECT_EQ(linkedInTerminal("mailto:pay@example.org"), "\033]8;;mailto:pay@example.org\033\\x\033]8;;\033\\");
  EXPECT_EQ(linkedInTerminal("HTTP://example.org"), "\033]8;;HTTP://example.org\033\\x\033]8;;\033\\");
  for (const char* address :
       {"javascript:alert(1)", "file:///etc/passwd", "", "http", "httpx://a", " http://a", "//a"}) {
    EXPECT_EQ(linkedInTerminal(address), "x") << address;
  }
}

TEST(AttributedStringTerminal, AnAddressCannotEndItsEscapeSequence) {
  EXPECT_EQ(linkedInTerminal("http://a/\033\\\033[2J\a b\u00E9\u009C"),
            "\033]8;;http://a/%1B\\%1B[2J%07%20b%C3%A9%C2%9C\033\\x\033]8;;\033\\");
}

TEST(AttributedStringTerminal, ALinkWithAStyleIsEndedInReverse) {
  const auto text = NSMutableAttributedString::attributedStringWithString("x");
  text->addAttribute(NSLinkAttributeName, "http://a", {0, 1});
  text->addAttribute(NSFontAttributeName, font(true, false), {0, 1});
  EXPECT_EQ(terminalText(*text, TerminalColors::Direct, TerminalLinks::Written),
            "\033]8;;http://a\033\\\033[1mx\033[0m\033]8;;\033\\");
}

TEST(AttributedStringTerminal, AnAttributeOfAnotherClassSetsNothing) {
  EXPECT_EQ(terminalText(*styled("x", NSFontAttributeName, "Sans Bold"), TerminalColors::Direct), "x");
  EXPECT_EQ(terminalText(*styled("x", NSForegroundColorAttributeName, 7), TerminalColors::Direct), "x");
  EXPECT_EQ(terminalText(*styled("x", NSUnderlineStyleAttributeName, "yes"), TerminalColors::Direct), "x");
  EXPECT_EQ(terminalText(*styled("x", NSLinkAttributeName, 7), TerminalColors::Direct, TerminalLinks::Written), "x");
}
