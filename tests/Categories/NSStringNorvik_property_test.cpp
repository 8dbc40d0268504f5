// Checks and conversions compared with their definitions: regular expressions as ICU matches them, and plain loops over
// units. NORVIK_TEXT_INPUTS is the number of inputs that each test compares (tests/support/RandomTexts.h).
#include "NorvikCore/Categories/NSString+Norvik.h"

#include "tests/support/ExpectRaises.h"
#include "tests/support/RandomTexts.h"

#include <gtest/gtest.h>
#include <unicode/regex.h>
#include <unicode/uchar.h>

#include <memory>
#include <string>
#include <vector>

namespace norvik {
namespace {

using test::RandomTexts;
using Units = std::u16string;

class Pattern {
 public:
  explicit Pattern(const char* text) {
    UErrorCode status = U_ZERO_ERROR;
    pattern_.reset(icu::RegexPattern::compile(icu::UnicodeString::fromUTF8(text), 0, status));
    EXPECT_TRUE(U_SUCCESS(status));
  }
  [[nodiscard]] bool isFoundIn(const Units& units) const {
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString text(units.data(), static_cast<std::int32_t>(units.size()));
    const std::unique_ptr<icu::RegexMatcher> matcher(pattern_->matcher(text, status));
    return matcher->find(status);
  }

 private:
  std::unique_ptr<icu::RegexPattern> pattern_;
};

constexpr std::u16string_view breaksAndBlanks = u"\n\r\v\f\t \u0085\u00A0\u2028\u2029\u3000\u200B";

/// The parts before, between and after the separators.
std::vector<Units> split(const Units& units, const Units& separator) {
  std::vector<Units> parts;
  std::size_t from = 0;
  while (!separator.empty()) {
    const std::size_t found = units.find(separator, from);
    if (found == Units::npos) break;
    parts.push_back(units.substr(from, found - from));
    from = found + separator.size();
  }
  parts.push_back(units.substr(from));
  return parts;
}

}  // namespace

TEST(NSStringNorvikProperty, JsonIsWhatItsPatternFinds) {
  const Pattern pattern("^\\{\\s*\".*\\}$");
  RandomTexts random(1, 200'000);
  int found = 0;
  for (int i = 0; i < random.inputs(); ++i) {
    const Units object = u"{" + random.of(breaksAndBlanks, 1) + u"\"" + random.of(u"a}\"\U0001F4B7", 2) +
                         random.of(breaksAndBlanks, 1) + u"}" + random.of(breaksAndBlanks, 2);
    const Units units = random.upTo(3) == 0 ? random.of(u"{}\"a \n\u2028\xDCB7", 8) : object;
    const bool expected = pattern.isFoundIn(units);
    found += expected ? 1 : 0;
    ASSERT_EQ(nk_isJson(NSString::fromUtf16(units)), expected) << random.at(i) << ": " << NSString::fromUtf16(units);
  }
  EXPECT_GT(found, random.inputs() / 200);
}

TEST(NSStringNorvikProperty, AnActionsSelectorIsWhatItsPatternMatchesWhole) {
  const Pattern pattern("\\A[^\\s:]+:\\z");
  RandomTexts random(2, 100'000);
  for (int i = 0; i < random.inputs(); ++i) {
    const Units units = random.of(u"ab:\u00E9 \n\u00A0\u2028", 4) + random.of(u":", 1);
    ASSERT_EQ(isValidActionSelectorName(NSString::fromUtf16(units)), pattern.isFoundIn(units)) << random.at(i);
  }
}

TEST(NSStringNorvikProperty, CamelCaseIsALoopOverUnits) {
  RandomTexts random(3, 100'000);
  for (int i = 0; i < random.inputs(); ++i) {
    const Units units = random.of(u"aB1\u00C9\u01C5\u0130\xD801\xDC00 ", 8);
    Units expected;
    for (const char16_t unit : units) {
      const int type = u_charType(unit);
      if (type == U_UPPERCASE_LETTER || type == U_TITLECASE_LETTER) expected += u' ';
      expected += unit;
    }
    ASSERT_EQ(nk_stringFromCamelCase(NSString::fromUtf16(units)).toUtf16(), expected) << random.at(i);
  }
}

TEST(NSStringNorvikProperty, FileNamesAreAReplacementOfUnitsAndTrimmed) {
  RandomTexts random(4, 50'000);
  for (int i = 0; i < random.inputs(); ++i) {
    const Units units = random.of(u"a./:\\ \u00A0\xD83D\xDCB7", 8), replacement = random.of(u"-_ ", 2);
    Units expected;
    for (const char16_t unit : units) {
      if (std::u16string_view(u".:/\\?%*|\"<>").find(unit) == Units::npos) {
        expected += unit;
      } else {
        expected += replacement;
      }
    }
    const std::size_t first = expected.find_first_not_of(breaksAndBlanks);
    expected =
        first == Units::npos ? Units() : expected.substr(first, expected.find_last_not_of(breaksAndBlanks) - first + 1);
    ASSERT_EQ(nk_sanitizeFileNameString(NSString::fromUtf16(units), NSString::fromUtf16(replacement)).toUtf16(),
              expected)
        << random.at(i);
  }
}

TEST(NSStringNorvikProperty, TheFirstOccurrenceIsFoundUnitByUnit) {
  constexpr std::u16string_view alphabet = u"ab\xD83D\xDCB7";
  RandomTexts random(5, 50'000);
  for (int i = 0; i < random.inputs(); ++i) {
    const Units units = random.of(alphabet, 8), target = random.of(alphabet, 2), replacement = random.of(alphabet, 2);
    Units expected = units;
    const std::size_t found = target.empty() ? Units::npos : units.find(target);
    if (found != Units::npos) expected.replace(found, target.size(), replacement);
    ASSERT_EQ(nk_stringByReplacingFirstOccurrenceOfString(NSString::fromUtf16(units), NSString::fromUtf16(target),
                                                          NSString::fromUtf16(replacement))
                  .toUtf16(),
              expected)
        << random.at(i);
  }
}

TEST(NSStringNorvikProperty, PartsBetweenSeparatorsBeginWithASmallLetterOrRaise) {
  RandomTexts random(6, 50'000);
  for (int i = 0; i < random.inputs(); ++i) {
    const Units units = random.of(u"AB.\xD83D\xDCB7", 8), separator = random.of(u".B\xD83D\xDCB7", 2);
    Units expected;
    bool raises = false;
    for (const Units& part : split(units, separator)) {
      raises = raises || part.empty();
      if (!expected.empty()) expected += separator;
      expected += part;
      if (!part.empty() && (part[0] == u'A' || part[0] == u'B')) expected[expected.size() - part.size()] += u'a' - u'A';
    }
    NSString answer;
    const std::string raised = test::nameOfWhatIsRaised([&] {
      answer = nk_lowercaseFirstCharactersSeparatedByString(NSString::fromUtf16(units), NSString::fromUtf16(separator));
    });
    ASSERT_EQ(raised, raises ? "NSRangeException" : "") << random.at(i);
    ASSERT_EQ(answer.toUtf16(), raises ? Units() : expected) << random.at(i);
  }
}

}  // namespace norvik
