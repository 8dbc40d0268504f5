#include "NorvikCore/formatters/NKDecimalFormatter.h"

#include "NorvikCore/Categories/NSFormatter+Norvik.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/foundation/NSLocale.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "tests/support/Decimals.h"

#include <gtest/gtest.h>

#include <latch>
#include <string>
#include <thread>
#include <vector>

using namespace norvik;

namespace {

using norvik::test::dec;

Ref<NKDecimalFormatter> british() {
  auto formatter = make<NKDecimalFormatter>();
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  return formatter;
}

struct Edit {
  NSString text;
  NSRange selection;
  bool isAccepted;
};

Edit edit(const NKDecimalFormatter& formatter, NSString proposed, const NSString& original, NSRange originalSelection) {
  NSRange selection{proposed.length(), 0};
  const bool isAccepted = formatter.isPartialStringValid(proposed, selection, original, originalSelection);
  return {proposed, selection, isAccepted};
}

}  // namespace

TEST(NKDecimalFormatter, HeaderExample) {
  const auto formatter = british();
  EXPECT_EQ(formatter->stringFromNumber(dec("1234.5")), "1,234.50");
  formatter->setMaximum(1000);
  EXPECT_EQ(formatter->maximumIntegerDigits(), 4);
  EXPECT_EQ(formatter->maxLength(), 9);
}

TEST(NKDecimalFormatter, ANumberThatTheMaximumCutsIsReportedOnce) {
  const auto formatter = british();
  formatter->setMaximum(9999);
  const kernel::SystemLogCapture console;
  EXPECT_EQ(formatter->stringFromNumber(dec("9999.99")), "9,999.99");
  EXPECT_TRUE(console.lines().empty()) << "above the maximum, and shown whole";
  EXPECT_EQ(formatter->stringFromNumber(dec("12345.67")), "2,345.67");
  EXPECT_EQ(formatter->stringFromNumber(dec("67890")), "7,890.00");
  EXPECT_EQ(
      console.lines(),
      std::vector<std::string>{"A number formatter shows a number above its maximum, 9999, without the first digits"});
  formatter->setMaximum(dec("9999.99"));
  EXPECT_EQ(formatter->stringFromNumber(dec("12345.67")), "12,345.67") << "seven characters, so seven digits";
}

TEST(NKDecimalFormatter, ReadsADecimalWhereverADoubleHasOtherDigits) {
  const struct {
    const char *text, *number;
    NSNumber::Kind kind;
  } rows[] = {
      {"1,234", "1234", NSNumber::Kind::Integer},
      {"9,223,372,036,854,775,807", "9223372036854775807", NSNumber::Kind::Integer},
      {"9,223,372,036,854,775,808", "9223372036854775808", NSNumber::Kind::Double},
      {"9,223,372,036,854,775,809", "9223372036854775809", NSNumber::Kind::Decimal},
      {"1234.5", "1234.5", NSNumber::Kind::Double},
      {"0.1", "0.1", NSNumber::Kind::Double},
      {"123456789012.34", "123456789012.34", NSNumber::Kind::Double},
      {"12345678901234567.89", "12345678901234567.89", NSNumber::Kind::Decimal},
      {"-0.12345678901234567891", "-0.12345678901234567891", NSNumber::Kind::Decimal},
  };
  const auto formatter = british();
  for (const auto& row : rows) {
    const auto number = formatter->numberFromString(row.text);
    ASSERT_TRUE(number) << row.text;
    EXPECT_EQ(number->decimalValue(), dec(row.number)) << row.text;
    EXPECT_EQ(number->kind(), row.kind) << row.text;
  }
  EXPECT_EQ(make<NSNumberFormatter>()->numberFromString("99999999999999999999")->kind(), NSNumber::Kind::Double);
}

TEST(NKDecimalFormatter, IsSetUpForAmounts) {
  const auto formatter = make<NKDecimalFormatter>();
  EXPECT_EQ(formatter->formatterBehavior(), 1040u);
  EXPECT_EQ(formatter->numberStyle(), 1u);
  EXPECT_TRUE(formatter->allowsFloats());
  EXPECT_EQ(formatter->minimumIntegerDigits(), 1);
  EXPECT_EQ(formatter->minimumFractionDigits(), 2);
  EXPECT_EQ(formatter->maximumFractionDigits(), 2);
  EXPECT_TRUE(formatter->hasThousandSeparators());
  EXPECT_TRUE(formatter->lenient());
  EXPECT_FALSE(formatter->generatesDecimalNumbers());
  EXPECT_EQ(formatter->maxLength(), 0);
  EXPECT_EQ(formatter->locale(), NSLocale::currentLocale()) << "the user's, as the platform has it";
  EXPECT_EQ(formatter->roundingMode(), NSNumberFormatterRoundHalfEven);
}

TEST(NKDecimalFormatter, DerivesItsCapsFromTheMaximum) {
  const struct {
    const char* maximum;
    int integerDigits;
    std::int64_t maxLength;
  } rows[] = {{"100", 3, 8}, {"1000", 4, 9}, {"99.99", 5, 10}, {"-5", 2, 6}};
  for (const auto& row : rows) {
    const auto formatter = make<NKDecimalFormatter>();
    formatter->setMaximum(dec(row.maximum));
    EXPECT_EQ(formatter->maximumIntegerDigits(), row.integerDigits) << row.maximum;
    EXPECT_EQ(formatter->maxLength(), row.maxLength) << row.maximum;
  }
  const auto formatter = make<NKDecimalFormatter>();
  formatter->setMaximum(100000.0);
  EXPECT_EQ(formatter->maximumIntegerDigits(), 6) << "a double counts by its plain digits";
  EXPECT_EQ(formatter->maxLength(), 12);
}

TEST(NKDecimalFormatter, NoMaximumLeavesTheCapsAsTheyWere) {
  const auto formatter = make<NKDecimalFormatter>();
  formatter->setMaximum(std::nullopt);
  EXPECT_EQ(formatter->maxLength(), 0);
  formatter->setMaximum(100);
  formatter->setMaximum(std::nullopt);
  EXPECT_EQ(formatter->maxLength(), 8);
  EXPECT_EQ(formatter->maximum(), std::nullopt);
}

TEST(NKDecimalFormatter, SettingAMaximumBringsTheBehaviourBack) {
  const auto formatter = make<NKDecimalFormatter>();
  formatter->setFormatterBehavior(NSNumberFormatterBehavior10_0);
  formatter->setMaximum(100);
  EXPECT_EQ(formatter->formatterBehavior(), 1040u);
}

TEST(NKDecimalFormatter, AnUncappedFieldAcceptsEveryLength) {
  const auto formatter = make<NKDecimalFormatter>();
  EXPECT_TRUE(edit(*formatter, "12345678901234567890", "1234567890123456789", {19, 0}).isAccepted);
}

TEST(NKDecimalFormatter, AcceptsUpToTheCapAndChangesNothing) {
  const auto formatter = make<NKDecimalFormatter>();
  formatter->setMaxLength(8);
  const Edit result = edit(*formatter, "1,234.56", "1,234.5", {7, 0});
  EXPECT_TRUE(result.isAccepted);
  EXPECT_EQ(result.text, "1,234.56");
}

TEST(NKDecimalFormatter, TypingIntoAFullFieldChangesNothingAndLeavesTheCaret) {
  const auto formatter = make<NKDecimalFormatter>();
  formatter->setMaxLength(8);
  const Edit result = edit(*formatter, "1,234.567", "1,234.56", {8, 0});
  EXPECT_FALSE(result.isAccepted);
  EXPECT_EQ(result.text, "1,234.56");
  EXPECT_EQ(result.selection, (NSRange{8, 0}));
}

TEST(NKDecimalFormatter, PastingOverASelectionKeepsWhatFits) {
  const auto formatter = make<NKDecimalFormatter>();
  formatter->setMaxLength(8);
  const Edit result = edit(*formatter, "1,12345.56", "1,234.56", {2, 3});
  EXPECT_FALSE(result.isAccepted);
  EXPECT_EQ(result.text, "1,123.56");
  EXPECT_EQ(result.selection, (NSRange{5, 0}));
  const Edit two = edit(*formatter,
                        "12345"
                        "345678",
                        "98345678", {0, 2});
  EXPECT_FALSE(two.isAccepted);
  EXPECT_EQ(two.text, "12345678");
  EXPECT_EQ(two.selection, (NSRange{2, 0}));
}

TEST(NKDecimalFormatter, ATextThatIsTooLongAlreadyTakesNothingMore) {
  const auto formatter = make<NKDecimalFormatter>();
  formatter->setMaxLength(4);
  const Edit result = edit(*formatter, "1234567x8", "12345678", {7, 0});
  EXPECT_FALSE(result.isAccepted);
  EXPECT_EQ(result.text, "12345678");
  EXPECT_EQ(result.selection, (NSRange{7, 0}));
}

TEST(NKDecimalFormatter, ATextThatIsTooLongAlreadyCanBeShortened) {
  const auto formatter = make<NKDecimalFormatter>();
  formatter->setMaxLength(4);
  const Edit result = edit(*formatter, "1234567", "12345678", {7, 1});
  EXPECT_EQ(result.text, "1234567");
  EXPECT_EQ(result.selection, (NSRange{7, 0}));
}

TEST(NKDecimalFormatter, TheCapCountsUtf16UnitsAndNothingElseIsJudgedWhileTyping) {
  const auto formatter = make<NKDecimalFormatter>();
  formatter->setMaxLength(4);
  EXPECT_TRUE(edit(*formatter, "x-.\u00E9", "x-.", {3, 0}).isAccepted);
  EXPECT_TRUE(edit(*formatter, "12\U0001F600", "12", {2, 0}).isAccepted);
  EXPECT_FALSE(edit(*formatter, "123\U0001F600", "123", {3, 0}).isAccepted);
}

TEST(NKDecimalFormatter, ARefusedEditIsNotExplained) {
  const auto formatter = make<NKDecimalFormatter>();
  formatter->setMaxLength(4);
  NSString proposed = "12345", error = "as before";
  NSRange selection{5, 0};
  EXPECT_FALSE(formatter->isPartialStringValid(proposed, selection, "1234", {4, 0}, &error));
  EXPECT_EQ(error, "as before");
}

TEST(NKDecimalFormatter, WhatWasSetHoldsInTheOrderInWhichItWasSet) {
  const auto formatter = british();
  formatter->setMaximumFractionDigits(1);
  EXPECT_EQ(formatter->minimumFractionDigits(), 1) << "the limits never cross";
  formatter->setMinimumFractionDigits(3);
  EXPECT_EQ(formatter->maximumFractionDigits(), 3);
  for (int i = 0; i < 100; ++i) formatter->setMinimumIntegerDigits(i % 5);
  EXPECT_EQ(formatter->stringFromNumber(dec("1.5")), "0,001.500");
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier("de_DE"));
  EXPECT_EQ(formatter->stringFromNumber(dec("1.5")), "0.001,500");
}

TEST(NKDecimalFormatter, TheFirstToReadByAFormatterMayBeSeveralThreads) {
  for (int round = 0; round < 50; ++round) {
    const auto formatter = british();
    std::latch start(3);
    std::vector<NSString> texts(3);
    std::vector<std::thread> threads;
    for (NSString& text : texts) {
      threads.emplace_back([&] {
        start.arrive_and_wait();
        text = formatter->stringFromNumber(dec("1234.5"));
      });
    }
    for (std::thread& thread : threads) thread.join();
    for (const NSString& text : texts) EXPECT_EQ(text, "1,234.50");
  }
}

TEST(NKDecimalFormatter, EditsThePlatformsText) {
  EXPECT_EQ(british()->editingStringForObjectValue(Value(dec("1234.5"))), NSString("1,234.50"));
}

TEST(NKDecimalFormatter, LaysItsAdditionalAttributesOverWhatItShows) {
  const auto formatter = british();
  const auto defaults = NSDictionary::dictionaryWith({{"colour", "black"}, {"size", 12}});
  const auto plain = formatter->attributedStringForObjectValue_withDefaultAttributes(Value(5), defaults);
  EXPECT_EQ(plain->attribute_atIndex("colour", 0), Value("black"));
  setNk_additionalAttributes(*formatter, NSDictionary::dictionaryWithObject("red", "colour"));
  const auto custom = formatter->attributedStringForObjectValue_withDefaultAttributes(Value(5), defaults);
  EXPECT_EQ(custom->string(), "5.00");
  EXPECT_EQ(custom->attribute_atIndex("colour", 3), Value("red"));
  EXPECT_EQ(custom->attribute_atIndex("size", 3), Value(12));
}
