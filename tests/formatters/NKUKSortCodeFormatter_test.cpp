// Texts and edits compared with a model of patterns. NORVIK_TEXT_INPUTS is their number (tests/support/RandomTexts.h).
#include "NorvikCore/formatters/NKUKSortCodeFormatter.h"

#include "tests/support/HeadlessTextField.h"
#include "tests/support/RandomTexts.h"
#include "tests/support/ThroughArchivers.h"

#include <gtest/gtest.h>

#include <optional>
#include <regex>
#include <string>
#include <string_view>

namespace norvik {
namespace {

using namespace std::string_view_literals;

Ref<test::HeadlessTextField> sortCodeField() {
  auto field = make<test::HeadlessTextField>();
  field->setEditable(true);
  field->setFormatter(make<NKUKSortCodeFormatter>());
  return field;
}

/// Follows the patterns that define a sort code.
std::string modelSortCode(const std::string& text) {
  static const std::regex others("[^0-9]+"), sixDigits("[0-9]{6}");
  const std::string digits = std::regex_replace(text, others, "");
  if (!std::regex_match(digits, sixDigits)) return text;
  return digits.substr(0, 2) + "-" + digits.substr(2, 2) + "-" + digits.substr(4, 2);
}

}  // namespace

TEST(NKUKSortCodeFormatter, HeaderExample) {
  auto formatter = make<NKUKSortCodeFormatter>();
  EXPECT_EQ(formatter->stringForObjectValue("123456"), "12-34-56");
  EXPECT_EQ(formatter->stringForObjectValue("12 34 5"), "12 34 5");
}

TEST(NKUKSortCodeFormatter, SixDigitsBecomePairsAndAnythingElseStays) {
  const auto formatter = make<NKUKSortCodeFormatter>();
  const struct {
    const char *text, *expected;
  } rows[] = {
      {"123456", "12-34-56"},
      {"12 34 56", "12-34-56"},
      {"12-34-56", "12-34-56"},
      {"Code 12.34.56!", "12-34-56"},
      {"12345", "12345"},
      {"12-34-5", "12-34-5"},
      {"1234567", "1234567"},
      {"ab", "ab"},
      {"", ""},
      {"\u0661\u0662\u0663\u0664\u0665\u0666", "\u0661\u0662\u0663\u0664\u0665\u0666"},
      {"12\u20AC34\U0001F4B756", "12-34-56"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(formatter->transformedValue(row.text), Value(row.expected));
    EXPECT_EQ(formatter->stringForObjectValue(row.text), row.expected);
    Value read;
    EXPECT_TRUE(formatter->getObjectValue_forString_errorDescription(read, row.text));
    EXPECT_EQ(read, Value(row.expected));
  }
}

TEST(NKUKSortCodeFormatter, WhatIsNoTextHasNoText) {
  const auto formatter = make<NKUKSortCodeFormatter>();
  EXPECT_FALSE(formatter->stringForObjectValue(123456));
  EXPECT_TRUE(formatter->transformedValue(123456).isAbsent());
  EXPECT_TRUE(formatter->transformedValue(Value()).isAbsent());
}

TEST(NKUKSortCodeFormatter, CaseIsChangedWhileTypingOnly) {
  const auto formatter = make<NKUKSortCodeFormatter>();
  formatter->setUpperCase(true);
  EXPECT_EQ(formatter->stringForObjectValue("ab"), "ab");
  NSString proposed = "ab";
  NSRange caret{2, 0};
  EXPECT_FALSE(formatter->isPartialStringValid(proposed, caret, "a", {1, 0}));
  EXPECT_EQ(proposed, "AB");
}

TEST(NKUKSortCodeFormatter, ANinthCharacterIsRefused) {
  const auto field = sortCodeField();
  field->setValue("12-34-56");
  field->type("7");
  EXPECT_EQ(field->text(), "12-34-56");
  NSString proposed = "12-34-567";
  NSRange caret{9, 0};
  EXPECT_FALSE(make<NKUKSortCodeFormatter>()->isPartialStringValid(proposed, caret, "12-34-56", {8, 0}));
  EXPECT_EQ(proposed, "12-34-56");
  EXPECT_EQ(caret, (NSRange{8, 0}));
}

TEST(NKUKSortCodeFormatter, LettersAreAcceptedWhileTypingAndStayOnCommit) {
  const auto field = sortCodeField();
  EXPECT_TRUE(field->type("ab"));
  EXPECT_TRUE(field->commit());
  EXPECT_EQ(field->text(), "ab");
  EXPECT_EQ(field->value(), Value("ab"));
}

TEST(NKUKSortCodeFormatter, StaysAsItIsSetUpInArchives) {
  const auto formatter = make<NKUKSortCodeFormatter>();
  formatter->setMaxLength(20);
  for (const auto archived : test::throughBothArchivers)
    EXPECT_EQ(archived(formatter).as<Ref<NKUKSortCodeFormatter>>()->maxLength(), 8);
}

TEST(NKUKSortCodeFormatter, TransformsAsThePatternsSay) {
  const auto formatter = make<NKUKSortCodeFormatter>();
  test::RandomTexts random(8, 20'000);
  int codes = 0;
  for (int i = 0; i < random.inputs(); ++i) {
    const NSString text =
        NSString::fromUtf16(random.of(u"0123456789012345678901234567890123456789- x\0\n\u0661\xD83D\xDCB7"sv, 10));
    const std::optional<NSString> shown = formatter->stringForObjectValue(text);
    ASSERT_TRUE(shown);
    ASSERT_EQ(shown->str(), modelSortCode(text.str())) << random.at(i);
    if (*shown != text) ++codes;
  }
  EXPECT_GT(codes, random.inputs() / 20);
}

TEST(NKUKSortCodeFormatter, AFieldHoldsAndCommitsWhatAStringModelDoes) {
  test::RandomTexts random(9, 2'400);
  const auto upTo = [&](std::size_t most) { return random.upTo(most); };
  int codes = 0;
  for (int edits = 0; edits < random.inputs();) {
    const auto field = sortCodeField();
    std::string model;
    std::size_t caret = 0;
    for (std::size_t typed = upTo(12); typed > 0; --typed, ++edits) {
      std::size_t selected = 0;
      if (upTo(4) == 0) {
        caret = upTo(model.size());
        selected = upTo(model.size() - caret);
        field->select({caret, selected});
      }
      const char unit = "0123456789- x"[upTo(12)];
      model.erase(caret, selected);
      if (model.size() < 8) model.insert(caret++, 1, unit);
      field->type(NSString(std::string(1, unit)));
      ASSERT_EQ(field->text(), model) << random.at(edits);
    }
    ASSERT_TRUE(field->commit());
    ASSERT_EQ(field->value(), Value(modelSortCode(model)));
    ASSERT_EQ(field->text(), modelSortCode(model));
    if (modelSortCode(model) != model) ++codes;
  }
  EXPECT_GT(codes, 10);
}

}  // namespace norvik
