#include "NorvikCore/Categories/internal/WordWrap.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>
#include <vector>

namespace norvik {
namespace {

/// A unit is 7.5 points wide.
double width(const NSString& line) { return 7.5 * static_cast<double>(line.length()); }

std::vector<std::string> wrapped(const NSString& text, double maxWidth) {
  std::vector<std::string> lines;
  for (const NSString& line : detail::splitToWidth(text, maxWidth, width)) lines.push_back(line.utf8());
  return lines;
}

using Lines = std::vector<std::string>;

/// The steps one by one, over words that a loop cut.
Lines modelWrapped(const std::string& text, double maxWidth) {
  std::vector<std::string> words(1);
  for (const char c : text) {
    if (c == ' ' || c == '\t') {
      words.emplace_back();
    } else {
      words.back() += c;
    }
  }
  Lines lines;
  std::string line;
  std::size_t i = 0;
  for (;;) {
    if (line.empty()) line = words[i];
    if (i == words.size() - 1) {
      lines.push_back(line);
      return lines;
    }
    const std::string candidate = line + " " + words[i + 1];
    const auto whole = static_cast<long>(7.5 * static_cast<double>(candidate.size()));
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
  EXPECT_EQ(wrapped(" a", 1000), (Lines{" a"}));  // the empty word before the blank begins the line
  EXPECT_EQ(wrapped("   ", 5), (Lines{"", "", "", ""}));
}

TEST(WordWrap, AWidthThatIsNoNumberFitsNothing) {
  EXPECT_EQ(wrapped("a b", std::numeric_limits<double>::quiet_NaN()), (Lines{"a", "b"}));
  EXPECT_EQ(wrapped("a b", std::numeric_limits<double>::infinity()), (Lines{"a b"}));
}

TEST(WordWrap, WrapsAsTheModelDoes) {
  std::mt19937 engine(4);
  const auto upTo = [&](std::size_t most) { return std::uniform_int_distribution<std::size_t>(0, most)(engine); };
  for (int round = 0; round < 100'000; ++round) {
    std::string text;
    for (std::size_t length = upTo(24); text.size() < length;) text += "abcd  \t\n"[upTo(7)];
    const double maxWidth = static_cast<double>(upTo(80));
    ASSERT_EQ(wrapped(text, maxWidth), modelWrapped(text, maxWidth)) << "\"" << text << "\" to " << maxWidth;
  }
}

}  // namespace norvik
