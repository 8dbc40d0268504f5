// Wrapped lines compared with those of a model. NORVIK_TEXT_INPUTS is the number of texts
// (tests/support/RandomTexts.h).
#include "NorvikCore/Categories/internal/WordWrap.h"

#include "tests/support/RandomTexts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace norvik {
namespace {

using test::RandomTexts;

constexpr double unitWidth = 7.5;

double width(const NSString& word) { return unitWidth * static_cast<double>(word.length()); }

std::vector<std::string> wrapped(const NSString& text, double maxWidth) {
  std::vector<std::string> lines;
  for (const NSString& line : detail::splitToWidth(text, maxWidth, unitWidth, width)) lines.push_back(line.utf8());
  return lines;
}

using Lines = std::vector<std::string>;

using Units = std::u16string;
constexpr std::u16string_view blanks = u" \t\u00A0\u1680\u2000\u200A\u202F\u205F\u3000";
constexpr std::u16string_view breaks = u"\n\v\f\r\u0085\u2028\u2029";

/// The width of the widest line.
double modelWidth(const Units& text) {
  std::size_t widest = 0, length = 0;
  for (const char16_t c : text) {
    length = breaks.find(c) != Units::npos ? 0 : length + 1;
    widest = std::max(widest, length);
  }
  return unitWidth * static_cast<double>(widest);
}

/// Wraps step by step, over words that a loop cut.
std::vector<Units> modelWrapped(const Units& text, double maxWidth) {
  std::vector<Units> words(1);
  for (const char16_t c : text) {
    if (blanks.find(c) != Units::npos) {
      words.emplace_back();
    } else {
      words.back() += c;
    }
  }
  std::vector<Units> lines;
  Units line;
  std::size_t i = 0;
  for (;;) {
    if (line.empty()) line = words[i];
    if (i == words.size() - 1) {
      lines.push_back(line);
      return lines;
    }
    const Units candidate = line + u" " + words[i + 1];
    const auto whole = static_cast<long>(modelWidth(candidate));
    if (maxWidth >= static_cast<double>(whole)) {
      line = candidate;
    } else {
      lines.push_back(line);
      line.clear();
    }
    ++i;
  }
}

}  // namespace

TEST(WordWrap, FillsLinesWordByWord) {
  EXPECT_EQ(wrapped("net pay of April", 80), (Lines{"net pay of", "April"}));
  EXPECT_EQ(wrapped("net pay of April", 1000), (Lines{"net pay of April"}));
}

TEST(WordWrap, TheFractionOfAWidthDoesNotCount) {
  EXPECT_EQ(wrapped("a b", 22), (Lines{"a b"}));  // 22.5 points
  EXPECT_EQ(wrapped("a b", 21.99), (Lines{"a", "b"}));
}

TEST(WordWrap, AWordThatIsTooWideHasALineOfItsOwn) {
  EXPECT_EQ(wrapped("a Llanfairpwllgwyngyll b", 20), (Lines{"a", "Llanfairpwllgwyngyll", "b"}));
  EXPECT_EQ(wrapped("abc", 0), (Lines{"abc"}));
  EXPECT_EQ(wrapped("abc d", -1), (Lines{"abc", "d"}));
}

TEST(WordWrap, AnEmptyTextIsOneEmptyLine) { EXPECT_EQ(wrapped("", 100), (Lines{""})); }

TEST(WordWrap, EachBlankSplitsAndALineBreakDoesNot) {
  EXPECT_EQ(wrapped("a  b", 1000), (Lines{"a  b"}));
  EXPECT_EQ(wrapped("a\tb\u00A0c", 1000), (Lines{"a b c"}));
  EXPECT_EQ(wrapped("a\nb c", 10), (Lines{"a\nb", "c"}));
  EXPECT_EQ(wrapped(" a", 1000), (Lines{" a"}));  // the empty word before the space begins the line
  EXPECT_EQ(wrapped("   ", 5), (Lines{"", "", "", ""}));
}

TEST(WordWrap, AWidthThatIsNoNumberFitsNothing) {
  EXPECT_EQ(wrapped("a b", std::numeric_limits<double>::quiet_NaN()), (Lines{"a", "b"}));
  EXPECT_EQ(wrapped("a b", std::numeric_limits<double>::infinity()), (Lines{"a b"}));
}

TEST(WordWrap, EveryKindOfBlankSplits) {
  for (const char16_t blank : blanks)
    EXPECT_EQ(wrapped(NSString::fromUtf16(Units{u'a', blank, u'b'}), 10), (Lines{"a", "b"})) << int(blank);
  EXPECT_EQ(wrapped("a\u200Bb", 10), (Lines{"a\u200B"
                                            "b"}));  // not white space in Unicode
}

TEST(WordWrap, AHalfThatStandsAloneStays) {
  const NSString text = NSString::fromUtf16({u"a \xD83D b\xDCB7", 6});
  const auto lines = detail::splitToWidth(text, 25, unitWidth, width);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].toUtf16(), (Units{u'a', u' ', 0xD83D}));
  EXPECT_EQ(lines[1].toUtf16(), (Units{u'b', 0xDCB7}));
}

TEST(WordWrap, WrapsAsTheModelDoes) {
  RandomTexts random(4, 100'000);
  for (int i = 0; i < random.inputs(); ++i) {
    const Units text = random.upTo(1) == 0 ? random.of(u"abcd  \t\n", 24)
                                           : random.of(u"a\xD83D\xDCB7\u00E9 \u00A0\u3000\u200B\r\u0085\u2028", 24);
    const double maxWidth = static_cast<double>(random.upTo(80));
    std::vector<Units> lines;
    for (const NSString& line : detail::splitToWidth(NSString::fromUtf16(text), maxWidth, unitWidth, width))
      lines.push_back(line.toUtf16());
    ASSERT_EQ(lines, modelWrapped(text, maxWidth))
        << "\"" << NSString::fromUtf16(text) << "\" to " << maxWidth << ", " << random.at(i);
  }
}

}  // namespace norvik
