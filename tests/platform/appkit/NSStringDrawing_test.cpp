#include "NorvikCore/platform/appkit/NSStringDrawing.h"

#include "tests/support/ExpectRaises.h"
#include "tests/support/InChild.h"
#include "tests/support/QuietFork.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>
#include <cmath>
#include <fstream>
#include <limits>
#include <string>

using namespace norvik;

namespace {

Ref<NSFont> sans(double size = 11) { return NSFont::fontWithName("DejaVu Sans", size); }

Ref<NSDictionary> inFont(const Ref<NSFont>& font) {
  return NSDictionary::dictionaryWithObject(font, NSFontAttributeName);
}

bool hasLoaded(const std::string& library) {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.find(library) != std::string::npos) return true;
  }
  return false;
}

}  // namespace

TEST(NSStringDrawing, HeaderExample) {
  const auto font = sans();
  EXPECT_GT(widthInFont("1,234.50", *font), 40);
  EXPECT_LT(widthInFont("1,234.50", *font), 60);
  const NSSize size = sizeWithAttributes("Pay\nNet", inFont(font));
  EXPECT_GT(size.height, 2 * 11);
}

TEST(NSStringDrawing, PangoIsLoadedWhenTextIsFirstMeasured) {
  RUN_IN_CHILD({
    EXPECT_FALSE(hasLoaded("libpango"));
    EXPECT_FALSE(hasLoaded("libcairo"));
    EXPECT_GT(widthInFont("wages", *sans()), 0);
    EXPECT_TRUE(hasLoaded("libpango"));
  });
}

// Only the header for users of {fmt} needs it. (The undefined behaviour sanitizer needs the types of its exceptions.)
#ifndef NK_TEST_ADDRESS_SANITIZER
TEST(NSStringDrawing, MeasuringNeedsNoFmt) {
  EXPECT_GT(widthInFont("wages", *sans()), 0);
  EXPECT_FALSE(hasLoaded("libfmt"));
}
#endif

// From the font's own table: the advance of each digit is 1,303 of 2,048 units.
TEST(NSStringDrawing, AWidthIsTheSumOfTheFontsAdvances) {
  EXPECT_NEAR(widthInFont("0", *sans(100)), 100 * 1303 / 2048.0, 0.01);
  EXPECT_NEAR(widthInFont("12345", *sans(100)), 5 * 100 * 1303 / 2048.0, 0.05);
  EXPECT_NEAR(widthInFont(" ", *sans(100)), 100 * 651 / 2048.0, 0.01);
}

TEST(NSStringDrawing, WidthsGrowWithTheFontsSize) {
  const double small = widthInFont("Weekly wages", *sans(7)), large = widthInFont("Weekly wages", *sans(70));
  EXPECT_NEAR(large, 10 * small, 0.1);
}

TEST(NSStringDrawing, WordsAndBlanksAddUp) {
  const auto font = sans();
  const double blank = widthInFont(" ", *font);
  EXPECT_EQ(widthInFont("net pay", *font), widthInFont("net", *font) + blank + widthInFont("pay", *font));
  EXPECT_EQ(widthInFont("  net ", *font), 3 * blank + widthInFont("net", *font));
}

TEST(NSStringDrawing, ATabReachesToTheNextEightBlanks) {
  const auto font = sans();
  const double blank = widthInFont(" ", *font);
  EXPECT_EQ(widthInFont("\t", *font), 8 * blank);
  EXPECT_EQ(widthInFont("       \t", *font), 8 * blank);
  EXPECT_EQ(widthInFont("        \t", *font), 16 * blank);
  EXPECT_EQ(widthInFont("\tpay", *font), 8 * blank + widthInFont("pay", *font));
}

TEST(NSStringDrawing, BoldIsWiderAndAnEmptyTextHasNoWidth) {
  EXPECT_GT(widthInFont("wages", *make<NSFont>("DejaVu Sans", 11, true)), widthInFont("wages", *sans()));
  EXPECT_EQ(widthInFont("", *sans()), 0);
}

TEST(NSStringDrawing, TheWidestLineCounts) {
  const auto font = sans();
  const double widest = widthInFont("deductions", *font);
  for (const char* const separator : {"\n", "\r", "\r\n", "\v", "\f", "\u0085", "\u2028", "\u2029"}) {
    EXPECT_EQ(widthInFont(NSString("pay") + separator + "deductions" + separator + "net", *font), widest);
  }
}

TEST(NSStringDrawing, LinesAddUpInHeight) {
  const double line = sizeWithAttributes("x", inFont(sans())).height;
  EXPECT_NEAR(line, 11 * (1901 + 483) / 2048.0, 0.02);  // the font's ascent and descent
  EXPECT_EQ(sizeWithAttributes("", inFont(sans())).height, line);
  EXPECT_EQ(sizeWithAttributes("a\r\nb", inFont(sans())).height, 2 * line);
  EXPECT_EQ(sizeWithAttributes("a\n", inFont(sans())).height, 2 * line);
}

TEST(NSStringDrawing, WithoutAFontTheSystemsCounts) {
  const NSSize size = sizeWithAttributes("wages");
  EXPECT_EQ(size.width, widthInFont("wages", *NSFont::systemFontOfSize(13)));
  EXPECT_EQ(size, sizeWithAttributes("wages", NSDictionary::dictionary()));
  EXPECT_EQ(size, sizeWithAttributes("wages", NSDictionary::dictionaryWithObject("Sans", NSFontAttributeName)));
}

TEST(NSStringDrawing, AFontThatIsNotThereIsReplaced) {
  const auto missing = NSFont::fontWithName("No Such Family 7", 11);
  EXPECT_GT(widthInFont("wages", *missing), 20);
  EXPECT_LT(widthInFont("wages", *missing), 60);
  EXPECT_GT(widthInFont("wages", *NSFont::fontWithName("a,b\n\"c\"", 11)), 20);
}

TEST(NSStringDrawing, LettersThatTheFontLacksAreMeasured) {
  EXPECT_GT(widthInFont("\u4E2D\u6587", *sans()), 11);                                       // Chinese
  EXPECT_GT(widthInFont("\u0645\u0631\u062D\u0628\u0627", *sans()), 11);                     // Arabic
  EXPECT_EQ(widthInFont("e\u0301", *sans(100)) > widthInFont("e", *sans(100)) + 10, false);  // a combining accent
}

TEST(NSStringDrawing, LoneHalvesAndNulAreReplacementCharacters) {
  const double replacement = widthInFont("\uFFFD", *sans());
  EXPECT_EQ(widthInFont(NSString::fromUtf16(u"\xD800"), *sans()), replacement);
  EXPECT_EQ(widthInFont(NSString(std::string_view("\0", 1)), *sans()), replacement);
}

TEST(NSStringDrawing, ManyFontsAndWordsAreForgottenAndMeasuredAgain) {
  const double before = widthInFont("wages", *sans());
  for (int size = 1; size <= 70; ++size) EXPECT_GT(widthInFont("wages", *sans(size + 0.5)), size);
  EXPECT_EQ(widthInFont("wages", *sans()), before);
  for (int word = 0; word < 9'000; ++word) {
    ASSERT_GT(widthInFont(NSString("w" + std::to_string(word)), *sans()), 0);
  }
  EXPECT_EQ(widthInFont("wages", *sans()), before);
}

// The advance of each m is 1,995 of 2,048 units.
TEST(NSStringDrawing, AWordMayBeWiderThanPangoCounts) {
  const double wide = 400'000 * 11 * (1995 / 2048.0);
  EXPECT_NEAR(widthInFont(NSString(std::string(400'000, 'm')), *sans()), wide, wide * 1e-3);
}

TEST(NSStringDrawing, LinesOfALongParagraphFollowEachOther) {
  std::string text;
  for (int i = 0; i < 30'000; ++i) text += "wages of April ";  // more than two million points
  text.pop_back();
  const auto styled = NSAttributedString::attributedStringWithString(NSString(text), inFont(sans()));
  const double lineWidth = widthInFont("wages of April wages of April wages of April", *sans());
  const NSSize size = sizeOfText(*styled, lineWidth + 1);
  const double line = sizeWithAttributes("x", inFont(sans())).height;
  EXPECT_NEAR(size.height, 10'000 * line, 10'000 * 0.01);
  EXPECT_NEAR(size.width, lineWidth, 0.5);
}

TEST(NSStringDrawing, ParagraphsOfManyPiecesHaveTheirLines) {
  std::string text;
  for (int i = 0; i < 5'000; ++i) text += "pay\n\n";
  const auto styled = NSAttributedString::attributedStringWithString(NSString(text), inFont(sans()));
  const double line = sizeWithAttributes("x", inFont(sans())).height;
  EXPECT_NEAR(sizeOfText(*styled, 100).height, 10'001 * line, 10'001 * 0.01);
}

TEST(NSStringDrawing, AFontsSizeIsLimited) {
  const NSSize greatest = sizeWithAttributes("wages", inFont(sans(10'000)));
  EXPECT_GT(greatest.width, 5'000);
  EXPECT_GT(greatest.width, sizeWithAttributes("wages", inFont(sans(9'999))).width);
  EXPECT_EQ(sizeWithAttributes("wages", inFont(sans(10'001))), greatest);
  EXPECT_EQ(sizeWithAttributes("wages", inFont(sans(1e300))), greatest);
  EXPECT_EQ(widthInFont("wages", *sans(1e-300)), 0);
}

TEST(NSStringDrawing, NoncharactersAreReplacementCharacters) {
  const double replacement = widthInFont("\uFFFD", *sans());
  for (const char32_t point : {U'\uFDD0', U'\uFDEF', U'\uFFFE', U'\uFFFF', U'\U0001FFFE', U'\U0010FFFF'}) {
    EXPECT_EQ(widthInFont(NSString::fromCodePoint(point), *sans()), replacement) << static_cast<unsigned>(point);
  }
}

TEST(NSStringDrawing, AReturnAndALineFeedOfTwoRunsAreOneLineBreak) {
  const auto text = NSMutableAttributedString::attributedStringWithString("net\r\npay", inFont(sans()));
  const NSSize before = sizeOfText(*text);
  text->addAttribute(NSForegroundColorAttributeName, "none", {4, 4});
  EXPECT_EQ(sizeOfText(*text), before);
}

TEST(NSStringDrawing, StyledTextIsMeasuredRunByRun) {
  const auto text = NSMutableAttributedString::attributedStringWithString("net pay", inFont(sans()));
  text->addAttribute(NSFontAttributeName, sans(22), {4, 3});
  const NSSize size = sizeOfText(*text);
  EXPECT_NEAR(size.width, widthInFont("net ", *sans()) + widthInFont("pay", *sans(22)), 1e-9);
  EXPECT_NEAR(size.height, sizeWithAttributes("x", inFont(sans(22))).height, 0.01);
}

TEST(NSStringDrawing, StyledTextIsBrokenBetweenWords) {
  const auto text = NSAttributedString::attributedStringWithString("net pay of April", inFont(sans()));
  const double line = sizeWithAttributes("x", inFont(sans())).height;
  EXPECT_NEAR(sizeOfText(*text).height, line, 0.01);
  EXPECT_NEAR(sizeOfText(*text, widthInFont("net pay of", *sans()) + 1).height, 2 * line, 0.05);
  EXPECT_LE(sizeOfText(*text, 60).width, 60);
  EXPECT_GT(sizeOfText(*text, 0).height, 10 * line);  // one letter per line at least
  EXPECT_GT(sizeOfText(*text, -1).height, 10 * line);
  EXPECT_GT(sizeOfText(*text, std::nan("")).height, 0);
  EXPECT_NEAR(sizeOfText(*text, std::numeric_limits<double>::infinity()).height, line, 0.01);
}

TEST(NSStringDrawing, APlainLineAndOneThatIsLaidOutTakeTheSameRoom) {
  const auto plain = NSMutableAttributedString::attributedStringWithString("Weekly wages 1,234.50", inFont(sans()));
  const NSSize before = sizeOfText(*plain);
  plain->addAttribute(NSUnderlineStyleAttributeName, 1, {0, 6});  // an underline makes Pango lay it out
  EXPECT_NEAR(sizeOfText(*plain).width, before.width, 0.01);
  EXPECT_NEAR(sizeOfText(*plain).height, before.height, 0.01);
}

TEST(NSStringDrawing, AMachineWithoutFontsIsAnError) {
  const test::TemporaryFolder folder;
  const std::string settings = folder.path("fonts.conf");
  std::ofstream(settings) << "<fontconfig></fontconfig>";
  RUN_IN_CHILD({
    setenv("FONTCONFIG_FILE", settings.c_str(), 1);
    for (int attempt = 0; attempt < 2; ++attempt) {
      EXPECT_RAISES(static_cast<void>(widthInFont("wages", *sans())), "NSGenericException");
      EXPECT_RAISES(static_cast<void>(sizeOfText(*NSAttributedString::attributedStringWithString("net\npay"))),
                    "NSGenericException");
    }
  });
}

TEST(NSStringDrawing, AChildOfAForkMeasures) {
  RUN_IN_CHILD({
    const double before = widthInFont("wages", *sans());
    test::quietBeforeFork();
    const pid_t child = fork();
    if (child == 0) _exit(widthInFont("wages", *sans()) == before && widthInFont("new", *sans()) > 0 ? 7 : 8);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 7);
  });
}
