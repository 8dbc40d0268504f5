// Guesses and conversions beside what they are defined by: regular expressions as ICU matches them, and plain loops
// over units.
#include "NorvikCore/Categories/NSString+Norvik.h"

#include <gtest/gtest.h>
#include <unicode/regex.h>
#include <unicode/uchar.h>

#include <memory>
#include <random>
#include <string>

namespace norvik {
namespace {

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

class Source {
 public:
  explicit Source(std::uint32_t seed) : engine_(seed) {}
  std::size_t upTo(std::size_t most) { return std::uniform_int_distribution<std::size_t>(0, most)(engine_); }
  Units of(const std::u16string_view alphabet, std::size_t most) {
    Units units;
    for (std::size_t length = upTo(most); units.size() < length;) units += alphabet[upTo(alphabet.size() - 1)];
    return units;
  }

 private:
  std::mt19937 engine_;
};

constexpr std::u16string_view breaksAndBlanks = u"\n\r\v\f\t \u0085\u00A0\u2028\u2029\u3000\u200B";

}  // namespace

TEST(NSStringNorvikProperty, JsonIsWhatItsPatternFinds) {
  const Pattern pattern("^\\{\\s*\".*\\}$");
  Source source(1);
  int found = 0;
  for (int i = 0; i < 200'000; ++i) {
    const Units units = u"{" + source.of(breaksAndBlanks, 1) + u"\"" + source.of(u"a}\"\U0001F4B7", 2) +
                        source.of(breaksAndBlanks, 1) + u"}" + source.of(breaksAndBlanks, 2);
    const bool expected = pattern.isFoundIn(units);
    found += expected ? 1 : 0;
    ASSERT_EQ(nk_isJson(NSString::fromUtf16(units)), expected) << i << ": " << NSString::fromUtf16(units);
  }
  EXPECT_GT(found, 1000);
}

TEST(NSStringNorvikProperty, AnActionsSelectorIsWhatItsPatternMatchesWhole) {
  const Pattern pattern("\\A[^\\s:]+:\\z");
  Source source(2);
  for (int i = 0; i < 100'000; ++i) {
    const Units units = source.of(u"ab:\u00E9 \n\u00A0\u2028", 4) + source.of(u":", 1);
    ASSERT_EQ(isValidActionSelectorName(NSString::fromUtf16(units)), pattern.isFoundIn(units)) << i;
  }
}

TEST(NSStringNorvikProperty, CamelCaseIsALoopOverUnits) {
  Source source(3);
  for (int i = 0; i < 100'000; ++i) {
    const Units units = source.of(u"aB1\u00C9\u01C5\u0130\xD801\xDC00 ", 8);
    Units expected;
    for (const char16_t unit : units) {
      const int type = u_charType(unit);
      if (type == U_UPPERCASE_LETTER || type == U_TITLECASE_LETTER) expected += u' ';
      expected += unit;
    }
    ASSERT_EQ(nk_stringFromCamelCase(NSString::fromUtf16(units)).toUtf16(), expected) << i;
  }
}

TEST(NSStringNorvikProperty, FileNamesAreAReplacementOfUnitsAndTrimmed) {
  Source source(4);
  for (int i = 0; i < 50'000; ++i) {
    const Units units = source.of(u"a./:\\ \u00A0\xD83D\xDCB7", 8), replacement = source.of(u"-_ ", 2);
    Units expected;
    for (const char16_t unit : units) {
      if (std::u16string_view(u".:/\\?%*|\"<>").find(unit) == Units::npos) {
        expected += unit;
      } else {
        expected += replacement;
      }
    }
    ASSERT_EQ(nk_sanitizeFileNameString(NSString::fromUtf16(units), NSString::fromUtf16(replacement)),
              NSString::fromUtf16(expected).stringByTrimming())
        << i;
  }
}

}  // namespace norvik
