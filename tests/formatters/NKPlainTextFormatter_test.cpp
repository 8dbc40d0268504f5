// Edits compared with a string model. NORVIK_TEXT_INPUTS is their number (tests/support/RandomTexts.h).
#include "NorvikCore/formatters/NKPlainTextFormatter.h"

#include "NorvikCore/platform/foundation/NSStringCase.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"
#include "tests/support/HeadlessTextField.h"
#include "tests/support/RandomTexts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace norvik {
namespace {

/// Records each notification and which cases are set at that moment.
class CaseWatcher : public NSObject {
  NK_OBJECT(CaseWatcher, NSObject)
  void observeValueForKeyPath(const NSString& path, NSObject& object, const KeyValueChange&, void*) override {
    auto& formatter = dynamic_cast<NKPlainTextFormatter&>(object);
    seen.push_back(path.str() + " " + (formatter.upperCase() ? "u" : "-") + (formatter.lowerCase() ? "l" : "-"));
    if (insistsOnLowerCase && formatter.upperCase()) formatter.setLowerCase(true);
  }
  std::vector<std::string> seen;
  bool insistsOnLowerCase = false;
};

struct Edit {
  NSString text;
  NSRange selection;
  bool isAccepted;
};

/// The caret that a field proposes is at the end of the proposed text.
Edit edit(const NKPlainTextFormatter& formatter, NSString proposed, const NSString& original, NSRange selected) {
  NSRange selection{proposed.length(), 0};
  const bool isAccepted = formatter.isPartialStringValid(proposed, selection, original, selected);
  return {proposed, selection, isAccepted};
}

Ref<NKPlainTextFormatter> limitedTo(std::int64_t length) {
  auto formatter = make<NKPlainTextFormatter>();
  formatter->setMaxLength(length);
  return formatter;
}

}  // namespace

TEST(NKPlainTextFormatter, HeaderExample) {
  auto formatter = make<NKPlainTextFormatter>();
  formatter->setMaxLength(9);
  formatter->setUpperCase(true);
  EXPECT_EQ(formatter->stringForObjectValue("qq123456c"), "QQ123456C");
}

TEST(NKPlainTextFormatter, HasNoLimitAndNoCaseAtFirst) {
  const auto formatter = make<NKPlainTextFormatter>();
  EXPECT_EQ(formatter->maxLength(), 2147483647);
  EXPECT_FALSE(formatter->upperCase());
  EXPECT_FALSE(formatter->lowerCase());
}

TEST(NKPlainTextFormatter, OneCaseEndsTheOther) {
  const auto formatter = make<NKPlainTextFormatter>();
  formatter->setUpperCase(true);
  formatter->setLowerCase(true);
  EXPECT_FALSE(formatter->upperCase());
  EXPECT_TRUE(formatter->lowerCase());
  formatter->setUpperCase(false);
  EXPECT_TRUE(formatter->lowerCase());
  formatter->setLowerCase(false);
  EXPECT_FALSE(formatter->upperCase());
  EXPECT_FALSE(formatter->lowerCase());
  formatter->setValue_forKey(true, "lowerCase");
  formatter->setValue_forKey(true, "upperCase");
  EXPECT_EQ(formatter->valueForKey("lowerCase"), Value(false));
  EXPECT_EQ(formatter->valueForKey("upperCase"), Value(true));
}

TEST(NKPlainTextFormatter, ObserversNeverSeeBothCases) {
  const auto formatter = make<NKPlainTextFormatter>();
  const auto watcher = make<CaseWatcher>();
  for (const char* key : {"upperCase", "lowerCase"})
    formatter->addObserver(*watcher, key, NSKeyValueObservingOptionNew | NSKeyValueObservingOptionPrior);
  formatter->setLowerCase(true);
  formatter->setUpperCase(true);
  formatter->setLowerCase(true);
  formatter->setLowerCase(false);
  const std::vector<std::string> expected = {
      "lowerCase --", "lowerCase -l",                                  // before and after
      "upperCase -l", "lowerCase -l", "lowerCase u-", "upperCase u-",  // both change at once
      "lowerCase u-", "upperCase u-", "upperCase -l", "lowerCase -l",  //
      "lowerCase -l", "lowerCase --"};
  EXPECT_EQ(watcher->seen, expected);
}

TEST(NKPlainTextFormatter, ACaseThatAnObserverSetsIsTheLast) {
  const auto formatter = make<NKPlainTextFormatter>();
  formatter->setLowerCase(true);
  const auto watcher = make<CaseWatcher>();
  watcher->insistsOnLowerCase = true;
  formatter->addObserver(*watcher, "upperCase", NSKeyValueObservingOptionNew);
  formatter->setUpperCase(true);
  EXPECT_TRUE(formatter->lowerCase());
  EXPECT_FALSE(formatter->upperCase());
}

TEST(NKPlainTextFormatter, ShowsAndReadsTextInItsCaseAndNothingElse) {
  const auto formatter = make<NKPlainTextFormatter>();
  Value read;
  EXPECT_EQ(formatter->stringForObjectValue("Stra\u00DFe"), "Stra\u00DFe");
  EXPECT_FALSE(formatter->stringForObjectValue(5));
  EXPECT_FALSE(formatter->stringForObjectValue(Value()));
  EXPECT_FALSE(formatter->stringForObjectValue(Value::null()));
  EXPECT_TRUE(formatter->getObjectValue_forString_errorDescription(read, "Pay"));
  EXPECT_EQ(read, Value("Pay"));
  formatter->setUpperCase(true);
  EXPECT_EQ(formatter->stringForObjectValue("Stra\u00DFe"), "STRASSE");
  EXPECT_TRUE(formatter->getObjectValue_forString_errorDescription(read, "Pay"));
  EXPECT_EQ(read, Value("PAY"));
  formatter->setLowerCase(true);
  EXPECT_EQ(formatter->stringForObjectValue("\u039F\u03A3"), "\u03BF\u03C2");  // a sigma at the end
  NSString why = "untouched";
  EXPECT_TRUE(formatter->getObjectValue_forString_errorDescription(read, "", &why));
  EXPECT_EQ(read, Value(""));
  EXPECT_EQ(why, "untouched");
}

TEST(NKPlainTextFormatter, AnEditThatFitsIsAccepted) {
  const Edit fits = edit(*limitedTo(3), "abc", "ab", {2, 0});
  EXPECT_TRUE(fits.isAccepted);
  EXPECT_EQ(fits.text, "abc");
  EXPECT_EQ(fits.selection, (NSRange{3, 0}));
}

TEST(NKPlainTextFormatter, OfAnEditThatDoesNotFitTheFirstCharactersAreTaken) {
  const Edit pasted = edit(*limitedTo(5), "aXYZWd", "abcd", {1, 2});
  EXPECT_FALSE(pasted.isAccepted);
  EXPECT_EQ(pasted.text, "aXYZd");
  EXPECT_EQ(pasted.selection, (NSRange{4, 0}));
  const Edit full = edit(*limitedTo(4), "abXcd", "abcd", {2, 0});
  EXPECT_EQ(full.text, "abcd");
  EXPECT_EQ(full.selection, (NSRange{2, 0}));
}

TEST(NKPlainTextFormatter, ALimitOfNothingTakesNothing) {
  for (const std::int64_t limit : {std::int64_t{0}, std::int64_t{-1}, INT64_MIN}) {
    const Edit typed = edit(*limitedTo(limit), "a", "", {0, 0});
    EXPECT_FALSE(typed.isAccepted);
    EXPECT_EQ(typed.text, "");
    EXPECT_EQ(typed.selection, (NSRange{0, 0}));
    const Edit nothing = edit(*limitedTo(limit), "", "", {0, 0});
    EXPECT_EQ(nothing.isAccepted, limit == 0) << limit;
    EXPECT_EQ(nothing.text, "");
    EXPECT_EQ(nothing.selection, (NSRange{0, 0}));
  }
}

TEST(NKPlainTextFormatter, ATextThatIsTooLongAlreadyLosesOnlyWhatWasSelected) {
  const Edit typed = edit(*limitedTo(3), "abcdeX", "abcde", {5, 0});
  EXPECT_EQ(typed.text, "abcde");
  EXPECT_EQ(typed.selection, (NSRange{5, 0}));
  const Edit replaced = edit(*limitedTo(3), "aXcde", "abcde", {1, 1});
  EXPECT_EQ(replaced.text, "acde");
  EXPECT_EQ(replaced.selection, (NSRange{1, 0}));
  const Edit deleted = edit(*limitedTo(3), "abcd", "abcde", {4, 1});
  EXPECT_EQ(deleted.text, "abcd");
}

TEST(NKPlainTextFormatter, ATextThatIsTooLongCanBeShortenedByBackspaces) {
  const Edit behind = edit(*limitedTo(3), "abcd", "abcde", {5, 0});
  EXPECT_TRUE(behind.isAccepted);
  EXPECT_EQ(behind.text, "abcd");
  EXPECT_EQ(behind.selection, (NSRange{4, 0}));
  const auto formatter = limitedTo(3);
  formatter->setUpperCase(true);
  EXPECT_EQ(edit(*formatter, "ABDE", "ABCDE", {3, 0}).text, "ABDE");
}

TEST(NKPlainTextFormatter, OfACharacterOfTwoUnitsOneMayFit) {
  const Edit typed = edit(*limitedTo(2), "a\U0001F4B7", "a", {1, 0});
  EXPECT_EQ(typed.text.toUtf16(), (std::u16string{u'a', 0xD83D}));
  EXPECT_EQ(typed.selection, (NSRange{2, 0}));
}

TEST(NKPlainTextFormatter, ASelectionBeyondTheTextIsTakenAsItsEnd) {
  const Edit beyond = edit(*limitedTo(3), "abcd", "abc", {7, 2});
  EXPECT_EQ(beyond.text, "abc");
  EXPECT_EQ(beyond.selection, (NSRange{3, 0}));
}

// Looks like a mistake but is deliberate: an edit that is already right is refused and replaced by itself.
TEST(NKPlainTextFormatter, WithACaseSetNoEditIsAcceptedAsItIs) {
  const auto formatter = limitedTo(3);
  formatter->setUpperCase(true);
  const Edit right = edit(*formatter, "AB", "A", {1, 0});
  EXPECT_FALSE(right.isAccepted);
  EXPECT_EQ(right.text, "AB");
  EXPECT_EQ(right.selection, (NSRange{2, 0}));
  const Edit longer = edit(*formatter, "a\u00DF", "a", {1, 0});
  EXPECT_EQ(longer.text, "ASS");
  EXPECT_EQ(longer.selection, (NSRange{2, 0}));
  formatter->setLowerCase(true);
  const Edit cut = edit(*formatter, "ABCD", "ABC", {3, 0});
  EXPECT_EQ(cut.text, "abc");
  EXPECT_EQ(cut.selection, (NSRange{3, 0}));
}

TEST(NKPlainTextFormatter, AFieldTakesCapitalsThatAreTypedAsCapitals) {
  const auto formatter = limitedTo(4);
  formatter->setUpperCase(true);
  const auto field = make<test::HeadlessTextField>();
  field->setEditable(true);
  field->setFormatter(formatter);
  field->type("Aba");
  EXPECT_EQ(field->text(), "ABA");
  field->select({0, 3});
  field->type("xYzWv");
  EXPECT_EQ(field->text(), "XYZW");
  EXPECT_TRUE(field->commit());
  EXPECT_EQ(field->value(), Value("XYZW"));
}

// Texts typed or pasted over any selection, compared with the rule step by step.
TEST(NKPlainTextFormatter, AnEditIsAnsweredAsTheModelDoes) {
  constexpr std::u16string_view alphabet = u"ab\u00E9\xD83D\xDCB7";
  test::RandomTexts random(6, 50'000);
  for (int i = 0; i < random.inputs(); ++i) {
    const std::u16string original = random.of(alphabet, 8), inserted = random.of(alphabet, 4);
    const std::size_t location = random.upTo(original.size()), length = random.upTo(original.size() - location);
    const auto limit = static_cast<std::int64_t>(random.upTo(10)) - 1;
    const std::u16string before = original.substr(0, location), behind = original.substr(location + length);
    std::u16string expected = before + inserted + behind;
    NSRange caret{location + inserted.size(), 0};
    bool isAccepted = true;
    if (static_cast<std::int64_t>(expected.size()) > limit) {
      std::int64_t fitting = limit - static_cast<std::int64_t>(original.size()) + static_cast<std::int64_t>(length);
      if (fitting < 0) fitting = 0;
      const std::u16string taken = expected.substr(location, static_cast<std::size_t>(fitting));
      expected = before + taken + behind;
      caret = {location + static_cast<std::size_t>(fitting), 0};
      isAccepted = false;
    }
    NSString proposed = NSString::fromUtf16(before + inserted + behind);
    NSRange selection{location + inserted.size(), 0};
    const bool answer =
        limitedTo(limit)->isPartialStringValid(proposed, selection, NSString::fromUtf16(original), {location, length});
    ASSERT_EQ(answer, isAccepted) << random.at(i);
    ASSERT_EQ(proposed.toUtf16(), expected) << random.at(i);
    ASSERT_EQ(selection, caret) << random.at(i);
  }
}

// No field should propose such edits. The formatter adds nothing, and only the selected or deleted text is lost.
TEST(NKPlainTextFormatter, AnEditThatDoesNotFollowFromTheSelectionInventsNothing) {
  constexpr std::u16string_view alphabet = u"ab\xD83D\xDCB7";
  test::RandomTexts random(7, 50'000);
  for (int i = 0; i < random.inputs(); ++i) {
    const std::u16string original = random.of(alphabet, 6), wanted = random.of(alphabet, 8);
    const NSRange selected{random.upTo(9) == 0 ? NSNotFound : random.upTo(8),
                           random.upTo(9) == 0 ? NSNotFound : random.upTo(8)};
    const std::size_t limit = random.upTo(8);
    const std::size_t location = std::min<std::size_t>(selected.location, original.size());
    const std::u16string before = original.substr(0, location);
    const std::u16string behind =
        original.substr(location + std::min<std::size_t>(selected.length, original.size() - location));
    const std::size_t kept = before.size() + behind.size();
    std::u16string expected = wanted;
    if (wanted.size() > limit && wanted.size() >= kept) {
      const std::u16string inserted = location < wanted.size() ? wanted.substr(location) : u"";
      expected = before + inserted.substr(0, kept < limit ? limit - kept : 0) + behind;
    }
    NSString proposed = NSString::fromUtf16(wanted);
    NSRange selection{wanted.size(), 0};
    (void)limitedTo(static_cast<std::int64_t>(limit))
        ->isPartialStringValid(proposed, selection, NSString::fromUtf16(original), selected);
    ASSERT_EQ(proposed.toUtf16(), expected) << random.at(i);
    ASSERT_LE(selection.location, proposed.length()) << random.at(i);
  }
}

// A field that types units one by one, compared with a string into which they are inserted if they fit.
TEST(NKPlainTextFormatter, AFieldHoldsWhatAStringModelHoldsUnderRandomEdits) {
  constexpr int editsInAField = 40;
  test::RandomTexts random(5, 300 * editsInAField);
  const auto upTo = [&](std::size_t most) { return random.upTo(most); };
  static constexpr char16_t alphabet[] = {u'a', u'B', u'-', 0x00E9, 0xD83D, 0xDCB7};
  for (int round = 0; round < random.inputs() / editsInAField; ++round) {
    const std::size_t limit = upTo(8);
    const std::size_t manner = upTo(2);
    const auto formatter = limitedTo(static_cast<std::int64_t>(limit));
    if (manner == 1) formatter->setUpperCase(true);
    if (manner == 2) formatter->setLowerCase(true);
    const auto field = make<test::HeadlessTextField>();
    field->setEditable(true);
    field->setFormatter(formatter);
    std::u16string model;
    if (upTo(3) == 0) {
      model = u"too long a text";
      field->setValue(NSString::fromUtf16(model));
      model = field->text().toUtf16();
    }
    std::size_t caret = model.size();
    for (int typed = 0; typed < editsInAField; ++typed) {
      std::size_t selected = 0;
      if (upTo(3) == 0) {
        caret = upTo(model.size());
        selected = upTo(model.size() - caret);
        field->select({caret, selected});
      }
      const char16_t unit = alphabet[upTo(5)];
      model.erase(caret, selected);
      if (model.size() < limit) model.insert(caret++, 1, unit);
      const NSString text = NSString::fromUtf16(model);
      model = (manner == 1 ? uppercaseString(text) : manner == 2 ? lowercaseString(text) : text).toUtf16();
      field->type(NSString::fromUtf16({&unit, 1}));
      ASSERT_EQ(field->text().toUtf16(), model) << random.at(round * editsInAField + typed);
    }
  }
}

}  // namespace norvik
