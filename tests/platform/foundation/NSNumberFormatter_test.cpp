#include "NorvikCore/platform/foundation/NSNumberFormatter.h"

#include "NorvikCore/platform/archives/NSKeyedArchiver.h"
#include "NorvikCore/platform/archives/NSKeyedUnarchiver.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"
#include "NorvikCore/platform/foundation/NSLocale.h"
#include "tests/support/Decimals.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>
#include <unicode/decimfmt.h>
#include <unicode/uchar.h>

#include <limits>
#include <memory>
#include <random>
#include <string>
#include <utility>

using namespace norvik;

namespace {

using norvik::test::dec;

Ref<NSNumberFormatter> british(const char* pattern) {
  auto formatter = make<NSNumberFormatter>();
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  formatter->setFormat(pattern);
  formatter->setGeneratesDecimalNumbers(true);
  return formatter;
}

/// The number that was read, as plain digits, or "no" for a text that is refused.
std::string read(const NSNumberFormatter& formatter, const char* text) {
  const auto number = formatter.numberFromString(text);
  return number ? number->stringValue().utf8() : "no";
}

/// The text that ICU writes, or the text that it writes for zero if all digits are zero.
icu::UnicodeString withoutSignOfZero(const icu::NumberFormat& format, const Decimal& number) {
  UErrorCode status = U_ZERO_ERROR;
  icu::UnicodeString text, zero;
  format.format(icu::StringPiece(number.stringValue()), text, nullptr, status);
  for (std::int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
    if (u_charDigitValue(text.char32At(i)) > 0) return text;
  }
  format.format(icu::StringPiece("0"), zero, nullptr, status);
  return zero;
}

Ref<NSNumberFormatter> inLocale(const char* locale, bool isLenient) {
  auto formatter = make<NSNumberFormatter>();
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier(locale));
  formatter->setNumberStyle(NSNumberFormatterDecimalStyle);
  formatter->setGeneratesDecimalNumbers(true);
  formatter->setLenient(isLenient);
  return formatter;
}

constexpr const char* localesWithDigitsOfTheirOwn[] = {"ar_EG", "fa_IR", "bn_BD", "hi_IN@numbers=deva",
                                                       "my_MM", "ne_NP", "mr_IN", "zh_CN@numbers=hanidec"};

}  // namespace

TEST(NSFormatter, HeaderExample) {
  const Ref<NSFormatter> formatter = british("#,##0.00");
  Value amount;
  NSString why;
  EXPECT_TRUE(formatter->getObjectValue_forString_errorDescription(amount, "1,234.50", &why));
  EXPECT_EQ(amount, Value(1234.5));
  EXPECT_FALSE(formatter->getObjectValue_forString_errorDescription(amount, "a lot", &why));
  EXPECT_FALSE(why.empty());
}

TEST(NSNumberFormatter, HeaderExample) {
  auto money = make<NSNumberFormatter>();
  money->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  money->setFormat("#,##0.00");
  EXPECT_EQ(money->stringFromNumber(dec("1234.5")), "1,234.50");
  money->setLenient(true);
  EXPECT_EQ(money->numberFromString(" 1,234.5 "), NSNumber(dec("1234.5")));
}

TEST(NSNumberFormatter, WritesPatternsInBritishForm) {
  const struct {
    const char *pattern, *number, *expected;
  } rows[] = {
      {"#,##0.00##", "1234.5", "1,234.50"},
      {"#,##0.00##", "1234.56789", "1,234.5679"},
      {"#,##0.00##", "0", "0.00"},
      {"#,##0.00##", "-1234567.125", "-1,234,567.125"},
      {"#,##0.0###", "12", "12.0"},
      {"#,##0.0###", "0.00005", "0.0"},
      {"#,##0.0###", "0.00015", "0.0002"},
      {"#,##0.00", "999999.995", "1,000,000.00"},
      {"0.00", "1234567.1", "1234567.10"},
      {"#", "0", "0"},
      {"#.##", "0.5", "0.5"},
      {"#.##", "0", "0"},
      {"000", "7", "007"},
      {"#,##0.00", "-0.001", "0.00"},
      {"#,##0.00", "-0.005", "0.00"},
      {"#,##0.00", "-0.0051", "-0.01"},
      {"#,##0.00;(#,##0.00)", "-0.001", "0.00"},
      {"0%", "-0.001", "0%"},
      {"#", "-0.4", "0"},
      {"#,##0.25", "-0.1", "0.00"},
      {"0.00 '9s'", "-0.001", "0.00 9s"},
      {"#,##0", "2.5", "2"},
      {"#,##0", "3.5", "4"},
      {"#,##0.00;(#,##0.00)", "-5", "(5.00)"},
      {"0%", "0.125", "12%"},
      {"#,##0.00", "12345678901234567890123456789012345678", "12,345,678,901,234,567,890,123,456,789,012,345,678.00"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(british(row.pattern)->stringFromNumber(dec(row.number)), row.expected)
        << row.pattern << " of " << row.number;
  }
}

TEST(NSNumberFormatter, LenientReadingTakesWhatAClerkTypesWholeOrNotAtAll) {
  const auto formatter = british("#,##0.00##");
  formatter->setLenient(true);
  const struct {
    const char *text, *expected;
  } rows[] = {
      {"1,234.5", "1234.5"},
      {" 1234.50 ", "1234.50"},
      {"1234", "1234"},
      {"-12.5", "-12.5"},
      {"+7", "7"},
      {".5", "0.5"},
      {"5.", "5"},
      {"12,34", "1234"},
      {"\u221212", "-12"},
      {"\u00A012\u00A0", "12"},
      {"0001", "1"},
      {"1,2,34.5x", "no"},
      {"12abc", "no"},
      {"1.2.3", "no"},
      {"", "no"},
      {" ", "no"},
      {"-", "no"},
      {".", "no"},
      {"1,", "no"},
      {",1", "no"},
      {"1,,2", "no"},
      {"1 2", "no"},
      {"--1", "no"},
      {"1-", "no"},
      {"\u00A3"
       "12",
       "no"},
      {"1e5", "no"},
      {"NaN", "no"},
      {"1.5,0", "no"},
      {"0.12345678", "0.12345678"},
  };
  for (const auto& row : rows) EXPECT_EQ(read(*formatter, row.text), row.expected) << '"' << row.text << '"';
}

TEST(NSNumberFormatter, LenientReadingTakesSeparatorsAsTheyAreTyped) {
  const struct {
    const char *locale, *text, *expected, *strictly;
  } rows[] = {
      {"fr_FR", "1\u202F234,5", "1234.5", "1234.5"},
      {"fr_FR", "1 234,5", "1234.5", "no"},
      {"fr_FR", "1\u00A0234,5", "1234.5", "no"},
      {"fr_FR", "1  234,5", "no", "no"},
      {"fr_FR", "1 ,5", "no", "no"},
      {"nb_NO", "1 234 567", "1234567", "no"},
      {"nb_NO", "1\u202F234", "1234", "no"},
      {"de_CH", "1\u2019234.5", "1234.5", "1234.5"},
      {"de_CH", "1'234.5", "1234.5", "no"},
      {"en_GB", "1 234", "no", "no"},
      {"en_GB", "1'234", "no", "no"},
      {"de_DE", "1 234,5", "no", "no"},
  };
  for (const auto& row : rows) {
    const auto formatter = make<NSNumberFormatter>();
    formatter->setLocale(NSLocale::localeWithLocaleIdentifier(row.locale));
    formatter->setFormat("#,##0.00##");
    EXPECT_EQ(read(*formatter, row.text), row.strictly) << row.locale << " \"" << row.text << '"';
    formatter->setLenient(true);
    EXPECT_EQ(read(*formatter, row.text), row.expected) << row.locale << " \"" << row.text << '"';
  }
}

TEST(NSNumberFormatter, HowManyDigitsThereAreDoesNotCountInReading) {
  for (const bool isLenient : {false, true}) {
    const auto formatter = british("#,##0.00");
    formatter->setLenient(isLenient);
    EXPECT_EQ(read(*formatter, ".5"), "0.5");
    EXPECT_EQ(read(*formatter, "5."), "5");
    EXPECT_EQ(read(*formatter, "1.2345"), "1.2345");
    EXPECT_EQ(read(*formatter, "0001"), "1");
    EXPECT_EQ(read(*formatter, "."), "no");
  }
}

TEST(NSNumberFormatter, ALimitHoldsAsItCameOutInTheLocaleInWhichItWasSet) {
  for (const bool readsBetween : {false, true}) {
    const auto formatter = make<NSNumberFormatter>();
    formatter->setNumberStyle(NSNumberFormatterCurrencyStyle);
    formatter->setLocale(NSLocale::localeWithLocaleIdentifier("ja_JP"));
    formatter->setMinimumFractionDigits(1);
    if (readsBetween) {
      EXPECT_EQ(formatter->maximumFractionDigits(), 1);
    }
    formatter->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
    EXPECT_EQ(formatter->stringFromNumber(dec("1.25")), "£1.2") << readsBetween;
  }
}

TEST(NSNumberFormatter, StrictReadingWantsTheFormattersOwnForm) {
  const auto formatter = british("#,##0.00##");
  EXPECT_EQ(read(*formatter, "1,234.50"), "1234.50");
  EXPECT_EQ(read(*formatter, "1234.5"), "1234.5");
  EXPECT_EQ(read(*formatter, "12,34"), "no");
  EXPECT_EQ(read(*formatter, "1,2345"), "no");
  EXPECT_EQ(read(*formatter, " 1"), "no");
  EXPECT_EQ(read(*formatter, "+1"), "no");
}

TEST(NSNumberFormatter, ReadsNoPowersOfTenWhereThePatternHasNone) {
  EXPECT_EQ(read(*british("0%"), "50%"), "0.5");
  EXPECT_EQ(read(*british("0%"), "1E5%"), "no");
}

TEST(NSNumberFormatter, ShowsTheLastDigitsOfANumberWithTooMany) {
  const auto formatter = british("#,##0");
  formatter->setMaximumIntegerDigits(2);
  EXPECT_EQ(formatter->stringFromNumber(1234), "34");
}

TEST(NSNumberFormatter, ReadsIntoTheKindThatIsAskedFor) {
  const auto formatter = british("#,##0.##");
  EXPECT_EQ(formatter->numberFromString("12")->kind(), NSNumber::Kind::Decimal);
  formatter->setGeneratesDecimalNumbers(false);
  EXPECT_EQ(formatter->numberFromString("12")->kind(), NSNumber::Kind::Integer);
  EXPECT_EQ(formatter->numberFromString("12.5")->kind(), NSNumber::Kind::Double);
  EXPECT_EQ(formatter->numberFromString("99999999999999999999")->kind(), NSNumber::Kind::Double);
}

TEST(NSNumberFormatter, ReadsAPartOfALongerText) {
  using namespace std::string_literals;
  const std::string line = "pay,\u00A31,234.50,twelve,1\xFF,1\0,,"s;
  const std::string_view whole = line;
  const auto money = british("\u00A4#,##0.00"), words = british("0");
  words->setNumberStyle(NSNumberFormatterSpellOutStyle);
  EXPECT_EQ(money->numberFromString(whole.substr(4, 10)), NSNumber(dec("1234.5")));
  EXPECT_EQ(money->numberFromString(whole.substr(4, 8)), NSNumber(dec("1234")));
  EXPECT_EQ(money->numberFromString(std::string(whole.substr(4, 10))), NSNumber(dec("1234.5")));
  EXPECT_EQ(words->numberFromString(whole.substr(15, 6)), NSNumber(12));
  EXPECT_EQ(money->numberFromString(whole.substr(22, 2)), std::nullopt) << "not UTF-8";
  EXPECT_EQ(money->numberFromString(whole.substr(25, 2)), std::nullopt) << "a character of number 0";
  EXPECT_EQ(money->numberFromString(whole.substr(28, 0)), std::nullopt) << "empty";
  EXPECT_EQ(money->numberFromString(std::string_view()), std::nullopt) << "empty";
}

TEST(NSNumberFormatter, RefusesWhatIsOutOfBoundsOrHasAFractionWhereNoneIsAllowed) {
  const auto formatter = british("#,##0.##");
  formatter->setMaximum(100);
  formatter->setMinimum(-5);
  EXPECT_EQ(read(*formatter, "100"), "100");
  EXPECT_EQ(read(*formatter, "100.01"), "no");
  EXPECT_EQ(read(*formatter, "-5"), "-5");
  EXPECT_EQ(read(*formatter, "-5.01"), "no");
  formatter->setAllowsFloats(false);
  EXPECT_EQ(read(*formatter, "7"), "7");
  EXPECT_EQ(read(*formatter, "7.0"), "no");
}

TEST(NSNumberFormatter, RefusalKeepsTheValueAndSaysWhy) {
  const auto formatter = british("#,##0.00");
  Value value = "before";
  NSString why;
  EXPECT_FALSE(formatter->getObjectValue_forString_errorDescription(value, "12abc", &why));
  EXPECT_EQ(value, Value("before"));
  EXPECT_NE(why.rangeOfString("12abc").length, 0u);
  EXPECT_TRUE(formatter->getObjectValue_forString_errorDescription(value, "", nullptr));
  EXPECT_TRUE(value.isAbsent());
}

TEST(NSNumberFormatter, ARefusalNamesTheBound) {
  const auto reasonFor = [](const NSNumberFormatter& formatter, const NSString& text) {
    Value value;
    NSString why;
    EXPECT_FALSE(formatter.getObjectValue_forString_errorDescription(value, text, &why)) << text;
    return why;
  };
  const auto formatter = british("#,##0.00");
  formatter->setMaximum(100000);
  formatter->setMinimum(-5);
  EXPECT_EQ(reasonFor(*formatter, "1000000"), "\"1000000\" is greater than 100,000.00.");
  EXPECT_EQ(reasonFor(*formatter, "-5.01"), "\"-5.01\" is less than -5.00.");
  EXPECT_EQ(reasonFor(*formatter, "2.75O"), "\"2.75O\" is not a number that can be entered here.");
  formatter->setAllowsFloats(false);
  EXPECT_EQ(reasonFor(*formatter, "2.5"), "\"2.5\" is not a whole number.");

  const auto percent = british("0%");
  percent->setMaximum(0.25_dec);
  EXPECT_EQ(reasonFor(*percent, "26%"), "\"26%\" is greater than 25%.");
}

TEST(NSNumberFormatter, ShowsNumbersOnly) {
  const auto formatter = british("#,##0.00");
  EXPECT_EQ(formatter->stringForObjectValue(Value(5)), NSString("5.00"));
  EXPECT_EQ(formatter->stringForObjectValue(Value()), NSString(""));
  EXPECT_EQ(formatter->stringForObjectValue(Value("5")), std::nullopt);
  const auto attributed = formatter->attributedStringForObjectValue_withDefaultAttributes(
      Value(5), NSDictionary::dictionaryWithObject("red", "colour"));
  EXPECT_EQ(attributed->string(), "5.00");
  EXPECT_EQ(attributed->attribute_atIndex("colour", 0), Value("red"));
}

TEST(NSNumberFormatter, StylesAreTheLocales) {
  auto formatter = make<NSNumberFormatter>();
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  EXPECT_EQ(formatter->stringFromNumber(1234.5), "1234");
  formatter->setNumberStyle(NSNumberFormatterDecimalStyle);
  EXPECT_EQ(formatter->stringFromNumber(1234.5678), "1,234.568");
  formatter->setNumberStyle(NSNumberFormatterCurrencyStyle);
  EXPECT_EQ(formatter->stringFromNumber(1234.5),
            "\u00A3"
            "1,234.50");
  formatter->setNumberStyle(NSNumberFormatterPercentStyle);
  EXPECT_EQ(formatter->stringFromNumber(0.25), "25%");
  formatter->setNumberStyle(NSNumberFormatterSpellOutStyle);
  EXPECT_EQ(formatter->stringFromNumber(1234), "one thousand two hundred and thirty-four");
  EXPECT_EQ(formatter->stringFromNumber(dec("2.5")), "two point five");
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier("de_DE"));
  formatter->setNumberStyle(NSNumberFormatterDecimalStyle);
  EXPECT_EQ(formatter->stringFromNumber(1234.5), "1.234,5");
  EXPECT_EQ(read(*formatter, "1.234,5"), "1234.5");
}

TEST(NSNumberFormatter, WhatWasSetOutlastsALocaleAndGoesWithAStyle) {
  auto formatter = make<NSNumberFormatter>();
  formatter->setNumberStyle(NSNumberFormatterDecimalStyle);
  formatter->setMinimumFractionDigits(2);
  formatter->setHasThousandSeparators(false);
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  EXPECT_EQ(formatter->stringFromNumber(1234), "1234.00");
  formatter->setNumberStyle(NSNumberFormatterDecimalStyle);
  EXPECT_EQ(formatter->stringFromNumber(1234), "1,234");
}

TEST(NSNumberFormatter, AMalformedPatternRaisesAndChangesNothing) {
  const auto formatter = british("#,##0.00");
  EXPECT_RAISES(formatter->setFormat("#,##0.00.00"), "NSInvalidArgumentException");
  EXPECT_EQ(formatter->stringFromNumber(1), "1.00");
}

TEST(NSNumberFormatter, KeepsItsSettingsThroughAnArchive) {
  const auto formatter = british("#,##0.0##");
  formatter->setMaximumIntegerDigits(3);
  formatter->setRoundingMode(NSNumberFormatterRoundUp);
  formatter->setMaximum(Decimal::parse("99.5").value());
  formatter->setLenient(true);
  const auto data = NSKeyedArchiver::archivedDataWithRootObject(Value(formatter));
  const auto same = NSKeyedUnarchiver::unarchiveObjectWithData(*data).as<Ref<NSNumberFormatter>>();
  ASSERT_TRUE(same);
  EXPECT_EQ(same->stringFromNumber(dec("12.00001")), "12.001");
  EXPECT_EQ(same->maximumIntegerDigits(), 3);
  EXPECT_EQ(same->maximum(), NSNumber(dec("99.5")));
  EXPECT_EQ(same->minimum(), std::nullopt);
  EXPECT_EQ(read(*same, " 99 "), "99");
  EXPECT_EQ(same->numberFromString("1")->kind(), NSNumber::Kind::Decimal);
}

TEST(NSNumberFormatter, RefusesADamagedArchive) {
  const auto data = NSKeyedArchiver::archivedDataWithRootObject(Value(british("0.00")));
  std::size_t refused = 0;
  for (std::size_t i = 0; i < data->length(); ++i) {
    std::string bytes(data->bytes().begin(), data->bytes().end());
    bytes[i] = static_cast<char>(bytes[i] ^ 0x40);
    try {
      (void)NSKeyedUnarchiver::unarchiveObjectWithData(*NSData::dataWithBytes(bytes.data(), bytes.size()));
    } catch (const NSException&) {
      ++refused;
    }
  }
  EXPECT_GT(refused, 0u);
}

// Compares the fast path with ICU itself, for many patterns, rounding modes and numbers of all sizes.
TEST(NSNumberFormatter, StylesOfEveryLocaleAreWrittenAsIcuWritesThem) {
  std::mt19937_64 random(19990101);
  for (const char* locale :
       {"en_GB", "en_US", "de_DE", "fr_CH", "pl_PL", "ja_JP", "hi_IN", "ar_EG", "fa_IR", "es_ES", "sv_SE", "en_ZA"}) {
    const struct {
      NSNumberFormatterStyle style;
      UNumberFormatStyle icuStyle;
    } styles[] = {{NSNumberFormatterDecimalStyle, UNUM_DECIMAL},
                  {NSNumberFormatterPercentStyle, UNUM_PERCENT},
                  {NSNumberFormatterCurrencyStyle, UNUM_CURRENCY}};
    for (const auto& [style, icuStyle] : styles) {
      auto formatter = make<NSNumberFormatter>();
      formatter->setLocale(NSLocale::localeWithLocaleIdentifier(locale));
      formatter->setNumberStyle(style);
      formatter->setGeneratesDecimalNumbers(true);
      UErrorCode status = U_ZERO_ERROR;
      const std::unique_ptr<icu::NumberFormat> icuFormat(
          icu::NumberFormat::createInstance(icu::Locale::createCanonical(locale), icuStyle, status));
      ASSERT_TRUE(U_SUCCESS(status));
      for (int i = 0; i < 100; ++i) {
        const auto number = Decimal::decimalNumberWithMantissa(
            random() >> (random() % 64), static_cast<std::int16_t>(-static_cast<int>(random() % 6)), random() % 3 == 0);
        const icu::UnicodeString text = withoutSignOfZero(*icuFormat, number);
        std::string expected;
        text.toUTF8String(expected);
        const NSString written = formatter->stringFromNumber(number);
        ASSERT_EQ(written, expected.c_str()) << locale << " " << style << " of " << number;
        icu::Formattable read;
        icuFormat->parse(text, read, status);
        const icu::StringPiece digits = read.getDecimalNumber(status);
        ASSERT_TRUE(U_SUCCESS(status)) << locale << " " << expected;
        const auto back = formatter->numberFromString(written);
        ASSERT_TRUE(back) << locale << " " << expected;
        ASSERT_EQ(back->decimalValue(), dec({digits.data(), static_cast<std::size_t>(digits.size())}))
            << locale << " " << expected;
      }
    }
  }
}

TEST(NSNumberFormatter, ASeparatorOfAnotherAlphabetIsNotDroppedButRefused) {
  for (const bool isLenient : {false, true}) {
    for (const char* locale : {"ar_EG", "fa_IR"}) {
      const auto formatter = inLocale(locale, isLenient);
      for (const char* text : {"12.50", "12,50", "1.250,5", "1,250.5", "1 250", "1'250", "\u0661\u0662.\u0665"}) {
        EXPECT_EQ(read(*formatter, text), "no") << locale << " " << text << " " << isLenient;
      }
      EXPECT_EQ(read(*formatter, "1250"), "1250") << locale;
      EXPECT_EQ(read(*formatter, "12\u066B50"), "12.50") << locale;
      EXPECT_EQ(read(*formatter, "1\u066C250\u066B5"), "1250.5") << locale;
    }
    for (const char* locale : {"bn_BD", "hi_IN@numbers=deva", "my_MM", "ne_NP", "mr_IN"}) {
      const auto formatter = inLocale(locale, isLenient);
      EXPECT_EQ(read(*formatter, "12.50"), "12.50") << locale;
      EXPECT_EQ(read(*formatter, "12\u066B50"), "no") << locale;
      EXPECT_EQ(read(*formatter, "1 250"), "no") << locale;
    }
  }
}

TEST(NSNumberFormatter, ANumberHasOneSignAtMost) {
  for (const char* locale : {"en_GB", "en_IN", "sv_SE", "he_IL", "ar_EG", "fa_IR", "bn_BD", "hi_IN@numbers=deva",
                             "my_MM", "ne_NP", "mr_IN"}) {
    for (const bool isLenient : {false, true}) {
      const auto formatter = inLocale(locale, isLenient);
      for (const char* text : {"--5", "+-5", "-+5", "++5", "-\u22125", "- -5", "-5-", "5-", "5+"}) {
        EXPECT_EQ(read(*formatter, text), "no") << locale << " " << text << " " << isLenient;
      }
    }
    EXPECT_EQ(read(*inLocale(locale, true), "-5"), "-5") << locale;
    EXPECT_EQ(read(*inLocale(locale, true), "+5"), "5") << locale;
  }
  for (const char* pattern : {"0%", "\u00A3#,##0.00", "#,##0.00;(#,##0.00)", "0.00 'kg'", "0E0", "#,##0.25", "@@"}) {
    const auto formatter = british(pattern);
    formatter->setLenient(true);
    for (const char* text : {"--5", "+-5", "--5%", "-(5)", "(-5)", "-\u00A3-5", "--5 kg", "+-5E0"}) {
      EXPECT_EQ(read(*formatter, text), "no") << pattern << " " << text;
    }
  }
}

TEST(NSNumberFormatter, DigitsAreTheLocalesOrAsciisButOfOneKindInANumber) {
  const struct {
    const char *locale, *own, *mixed, *foreign;
  } rows[] = {{"ar_EG", "\u0661\u0662\u066B\u0665", "\u06612\u066B\u0665", "\u0967\u0968"},
              {"fa_IR", "\u06F1\u06F2\u066B\u06F5", "1\u06F2\u066B5", "\u0661\u0662"},
              {"bn_BD", "\u09E7\u09E8.\u09EB", "\u09E7\u09E8.5", "\u0967\u0968"},
              {"en_GB", "12.5", "1\u0662.5", "\u0661\u0662"}};
  for (const auto& row : rows) {
    for (const bool isLenient : {false, true}) {
      const auto formatter = inLocale(row.locale, isLenient);
      EXPECT_EQ(read(*formatter, row.own), "12.5") << row.locale;
      EXPECT_EQ(read(*formatter, "12"), "12") << row.locale;
      EXPECT_EQ(read(*formatter, row.mixed), "no") << row.locale;
      EXPECT_EQ(read(*formatter, row.foreign), "no") << row.locale;
    }
  }
  EXPECT_EQ(read(*british("0%"), "\u0661\u0662%"), "no");
}

TEST(NSNumberFormatter, ReadsInEveryLocaleAndStyleWhatItWrites) {
  for (const char* locale : localesWithDigitsOfTheirOwn) {
    for (const auto style : {NSNumberFormatterDecimalStyle, NSNumberFormatterCurrencyStyle,
                             NSNumberFormatterPercentStyle, NSNumberFormatterScientificStyle}) {
      for (const bool isLenient : {false, true}) {
        const auto formatter = inLocale(locale, isLenient);
        formatter->setNumberStyle(style);
        for (const char* number : {"0", "5", "-5", "1234567", "-1234567"}) {
          const NSString text = formatter->stringFromNumber(dec(number));
          const auto back = formatter->numberFromString(text);
          ASSERT_TRUE(back) << locale << " " << style << " " << text << " " << isLenient;
          EXPECT_EQ(*back, NSNumber(dec(number))) << locale << " " << style << " " << text;
        }
      }
    }
  }
}

TEST(NSNumberFormatter, AnAmountThatRoundsToZeroHasNoSignInAnyLocale) {
  for (const char* locale : localesWithDigitsOfTheirOwn) {
    const auto formatter = inLocale(locale, false);
    formatter->setMaximumFractionDigits(2);
    EXPECT_EQ(formatter->stringFromNumber(dec("-0.001")), formatter->stringFromNumber(0)) << locale;
    EXPECT_NE(formatter->stringFromNumber(dec("-5")), formatter->stringFromNumber(5)) << locale;
  }
  const auto truncated = british("0.00");
  truncated->setMaximumIntegerDigits(2);
  EXPECT_EQ(truncated->stringFromNumber(-500), "0.00") << "its last two digits";
}

TEST(NSNumberFormatter, LenientSpacesAreTheSameInEveryPattern) {
  const struct {
    const char *pattern, *before, *after;
  } rows[] = {{"#,##0.00", "", ""},
              {"0%", "", "%"},
              {"\u00A3#,##0.00", "\u00A3", ""},
              {"0.00 'kg'", "", " kg"},
              {"0E0", "", "E0"},
              {"#,##0.25", "", ""},
              {"@@", "", ""},
              {"*x0.00", "", ""},
              {"#,##0.00;(#,##0.00)", "", ""},
              {"\u00A4#,##0.00", "\u00A3", ""}};
  for (const auto& row : rows) {
    const auto formatter = british(row.pattern);
    const std::string five = std::string(row.before) + "5" + row.after;
    const std::string plain = read(*formatter, five.c_str());
    ASSERT_NE(plain, "no") << row.pattern;
    const std::string spaced[] = {" " + five,         five + " ",          "\t" + five,     "\u00A0" + five,
                                  five + "\u2009",    "\u3000" + five,     "\u2028" + five, five + "\u200E",
                                  " \u202F\n" + five, five + "\r\n \u0085"};
    for (const std::string& text : spaced) {
      formatter->setLenient(true);
      EXPECT_EQ(read(*formatter, text.c_str()), plain) << row.pattern << " \"" << text << '"';
      formatter->setLenient(false);
      EXPECT_EQ(read(*formatter, text.c_str()), "no") << row.pattern << " \"" << text << '"';
    }
    formatter->setLenient(true);
    EXPECT_EQ(read(*formatter, ("- " + five).c_str()), "-" + plain) << row.pattern;
    for (const std::string& text :
         {std::string("5 5"), "1 000" + std::string(row.after), "5 .5" + std::string(row.after)}) {
      EXPECT_EQ(read(*formatter, text.c_str()), "no") << row.pattern << " " << text;
    }
  }
}

TEST(NSNumberFormatter, DigitsInWhatStandsAroundANumberAreNoneOfItsOwn) {
  const struct {
    const char *pattern, *text, *expected;
  } rows[] = {
      {"'1'0;'2'0", "15", "5"},
      {"'1'0;'2'0", "25", "-5"},
      {"'Week 52: '0.00", "Week 52: 3.50", "3.50"},
      {"0.00' at 20'", "3.50 at 20", "3.50"},
  };
  for (const auto& row : rows) {
    const auto formatter = british(row.pattern);
    EXPECT_EQ(read(*formatter, row.text), row.expected) << row.pattern;
    formatter->setLenient(true);
    EXPECT_EQ(read(*formatter, row.text), row.expected) << row.pattern;
    EXPECT_EQ(read(*formatter, (" " + std::string(row.text) + "\t").c_str()), row.expected) << row.pattern;
    EXPECT_EQ(read(*formatter, "7"), "7") << row.pattern;
  }
}

TEST(NSNumberFormatter, LenientReadingTakesANumberWithoutASignAsThePatternWritesIt) {
  const auto formatter = british("0 'CR';0");
  EXPECT_EQ(formatter->stringFromNumber(-5), "5");
  for (const bool isLenient : {false, true}) {
    formatter->setLenient(isLenient);
    EXPECT_EQ(read(*formatter, "5"), "-5") << isLenient;
    EXPECT_EQ(read(*formatter, "5 CR"), "5") << isLenient;
  }
  EXPECT_EQ(read(*formatter, " 5 "), "-5");
  EXPECT_EQ(read(*formatter, "5CR"), "5");
}

TEST(NSNumberFormatter, LenientReadingGivesTheNumberThatStrictReadingGives) {
  const struct {
    const char *why, *pattern, *text, *expected;
  } rows[] = {
      {"only a tab tells the sign", "'J'#,##0.0;0.00\t", "2,892,579.0\t", "-2892579.0"},
      {"the text of positive numbers", "'J'#,##0.0;0.00\t", "J2,892,579.0", "2892579.0"},
      {"only a space in front tells the sign", "0'CR'; 0", " 5", "-5"},
      {"a space and nothing else shows the sign", "0;0 ", "5 ", "-5"},
      {"no space", "0;0 ", "5", "5"},
      {"a plus sign means a minus", "0;+0", "+5", "-5"},
      {"no plus sign", "0;+0", "5", "5"},
      {"the signs are exchanged", "-0;+0", "-5", "5"},
      {"the signs are exchanged", "-0;+0", "+5", "-5"},
  };
  for (const auto& row : rows) {
    const auto formatter = british(row.pattern);
    EXPECT_EQ(formatter->stringFromNumber(dec(row.expected)), row.text) << row.why << ": " << row.pattern;
    for (const bool isLenient : {false, true}) {
      formatter->setLenient(isLenient);
      EXPECT_EQ(read(*formatter, row.text), row.expected) << row.why << ": " << row.pattern << " " << isLenient;
    }
  }
}

TEST(NSNumberFormatter, LenientReadingTakesTheSignThatThePatternMeansWhereBlanksAreMissingOrAdded) {
  const struct {
    const char *pattern, *text, *expected;
  } rows[] = {
      {"0.00 'CR';0.00   ", "5.00", "-5.00"},
      {"0.00 'CR';0.00   ", " 5.00 ", "-5.00"},
      {"0.00 'CR';0.00   ", "5.00 CR", "5.00"},
      {"0.00 'CR';0.00   ", "5.00CR ", "5.00"},
      {"'J'#,##0.0;0.00\t", "2,892", "-2892"},
      {"'J'#,##0.0;0.00\t", "J 2,892", "2892"},
      {"0;0 ", " 5", "5"},
      {"0;0 ", "\t5\t", "5"},
      {"'DR '0 'x';'DR'0", "DR 5", "-5"},
      {"'DR '0 'x';'DR'0", "DR5 x", "5"},
      {"'DR '0 'x';'DR'0", "5", "5"},
  };
  for (const auto& row : rows) {
    const auto formatter = british(row.pattern);
    formatter->setLenient(true);
    EXPECT_EQ(read(*formatter, row.text), row.expected) << row.pattern << " \"" << row.text << '"';
  }
}

TEST(NSNumberFormatter, PaddingThatIsAlsoInWhatStandsAroundANumberLeavesThatWhole) {
  const auto formatter = british("*L##0'LLD'");
  EXPECT_EQ(formatter->stringFromNumber(5), "LL5LLD");
  EXPECT_EQ(read(*formatter, "LL5LLD"), "5");
  formatter->setLenient(true);
  EXPECT_EQ(read(*formatter, "LL5LLD"), "5");
  EXPECT_EQ(read(*formatter, " LL5LLD "), "5");
  EXPECT_EQ(read(*formatter, "5"), "5");
}

TEST(NSNumberFormatter, PaddingIsReadWhereItIsWrittenAndUpToTheWidthOfThePattern) {
  const struct {
    const char *pattern, *positive, *negative;
  } rows[] = {
      {"*y;D*+#y", "27", "D27y"},
      {"D*y#;Dy#", "D27", "Dy27"},
      {"*xA#;#x", "A27", "27x"},
      {"A*x;#Ax", "A27", "27Ax"},
  };
  for (const auto& row : rows) {
    const auto formatter = british(row.pattern);
    EXPECT_EQ(formatter->stringFromNumber(27), row.positive) << row.pattern;
    EXPECT_EQ(formatter->stringFromNumber(-27), row.negative) << row.pattern;
    for (const bool isLenient : {false, true}) {
      formatter->setLenient(isLenient);
      EXPECT_EQ(read(*formatter, row.positive), "27") << row.pattern << " " << isLenient;
      EXPECT_EQ(read(*formatter, row.negative), "-27") << row.pattern << " " << isLenient;
    }
  }
  const auto cheque = british("**#,##0.00");
  EXPECT_EQ(read(*cheque, "***5.00"), "no");
  EXPECT_EQ(read(*cheque, "*****5.00"), "no");
  EXPECT_EQ(read(*cheque, "5.00****"), "no");
  cheque->setLenient(true);
  EXPECT_EQ(read(*cheque, "***5.00"), "5.00");
}

TEST(NSNumberFormatter, ATextBeforeTheNumberThatIsThePaddingTooIsNotTakenForPadding) {
  const auto formatter = british("x*x;3");
  EXPECT_EQ(formatter->stringFromNumber(4), "x4");
  EXPECT_EQ(formatter->stringFromNumber(-4), "4");
  for (const bool isLenient : {false, true}) {
    formatter->setLenient(isLenient);
    EXPECT_EQ(read(*formatter, "x4"), "4") << isLenient;
    EXPECT_EQ(read(*formatter, "4"), "-4") << isLenient;
  }
}

TEST(NSNumberFormatter, ReadsTheCurrencyInThePlaceOfTheDecimalSeparator) {
  const struct {
    const char *pattern, *number, *written;
  } rows[] = {
      {"0\u00A400", "1.50", "1\u00A350"},
      {"0\u00A400", "-1.50", "-1\u00A350"},
      {"#,##0\u00A400", "1234.50", "1,234\u00A350"},
      {"#\u00A400", "0.25", "\u00A325"},
      {"#\u00A400", "-0.25", "-\u00A325"},
      {"#\u00A400", "7.25", "7\u00A325"},
      {"0\u00A4##", "7", "7"},
  };
  for (const auto& row : rows) {
    const auto formatter = british(row.pattern);
    EXPECT_EQ(formatter->stringFromNumber(dec(row.number)), row.written) << row.pattern;
    for (const bool isLenient : {false, true}) {
      formatter->setLenient(isLenient);
      EXPECT_EQ(read(*formatter, row.written), row.number) << row.pattern << " " << isLenient;
    }
  }
}

TEST(NSNumberFormatter, WritesMultiplesOfAnIncrementWithPowersOfTen) {
  const struct {
    const char *pattern, *number, *written, *read;
  } rows[] = {
      {"0.3##E0", "10.6367", "1.05E1", "10.5"}, {"0.3E0", "10.6367", "1.05E1", "10.5"}, {"0.3E0", "9", "9.0E0", "9.0"},
      {"0.3E0", "1234", "1.2339E3", "1233.9"},  {"0.3E0", "0.31", "3.0E-1", "0.30"},
  };
  for (const auto& row : rows) {
    const auto formatter = british(row.pattern);
    EXPECT_EQ(formatter->stringFromNumber(dec(row.number)), row.written) << row.pattern;
    EXPECT_EQ(read(*formatter, row.written), row.read) << row.pattern;
    EXPECT_EQ(formatter->stringFromNumber(dec(row.read)), row.written) << row.pattern;
  }
}

TEST(NSNumberFormatter, WritesTheFirstNumberAsTheLaterOnes) {
  const auto formatter = inLocale("ar_EG", true);
  formatter->setFormat("\u00A4\u00A4\u00A4.\u00A4 x");
  const NSString first = formatter->stringFromNumber(5);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(formatter->stringFromNumber(5), first) << i;
  EXPECT_EQ(formatter->numberFromString(first), NSNumber(5));
}

TEST(NSNumberFormatter, ReadsMoneyWithPowersOfTenAndWithTheNameOfWhatAPercentageShows) {
  const struct {
    const char *pattern, *number, *written;
  } rows[] = {
      {"\u00A40.##E0", "514", "\u00A35.14E2"},
      {"\u00A40.##E0", "0.0514", "\u00A35.14E-2"},
      {"\u00A4\u00A4\u00A4 %0.##E0", "5.14", "British pounds %5.14E2"},
      {"\u00A4\u00A4\u00A4 %0.##E0", "0.01", "British pound %1E0"},
      {"%0.## \u00A4\u00A4\u00A4", "0.02", "%2 British pounds"},
  };
  for (const auto& row : rows) {
    const auto formatter = british(row.pattern);
    EXPECT_EQ(formatter->stringFromNumber(Decimal::decimalNumberWithString(row.number)), row.written) << row.pattern;
    for (const bool isLenient : {false, true}) {
      formatter->setLenient(isLenient);
      EXPECT_EQ(read(*formatter, row.written), row.number) << row.pattern << " " << isLenient;
    }
  }
}

TEST(NSNumberFormatter, PaddingByADigitOrASeparatorIsReadAsOne) {
  const struct {
    const char *pattern, *written, *read;
  } rows[] = {{"*0####", "0007", "7"}, {"*5####", "5557", "5557"}, {"*x####", "xxx7", "7"}, {"*,####", ",,,7", "no"}};
  for (const auto& row : rows) {
    const auto formatter = british(row.pattern);
    EXPECT_EQ(formatter->stringFromNumber(7), row.written) << row.pattern;
    for (const bool isLenient : {false, true}) {
      formatter->setLenient(isLenient);
      EXPECT_EQ(read(*formatter, row.written), row.read) << row.pattern << " " << isLenient;
    }
  }
}

TEST(NSNumberFormatter, LenientReadingTakesANumberWithoutWhatStandsAroundIt) {
  const struct {
    const char *pattern, *text, *expected;
  } rows[] = {
      {"0%", "5", "0.05"},
      {"0%", "5 %", "0.05"},
      {"0%", "% 5", "no"},
      {"\u00A3#,##0.00", "1,234.5", "1234.5"},
      {"\u00A3#,##0.00", "\u00A3-5", "-5"},
      {"\u00A3#,##0.00", "- \u00A3 5", "-5"},
      {"\u00A3#,##0.00", "\u00A3\u00A35", "no"},
      {"\u00A4#,##0.00", "GBP 5", "5"},
      {"\u00A4#,##0.00", "USD 5", "no"},
      {"0.00 'kg'", "5kg", "5"},
      {"0.00 'kg'", "5 k", "no"},
      {"#,##0.00;(#,##0.00)", "( 5 )", "-5"},
      {"#,##0.00;(#,##0.00)", "-5", "-5"},
      {"#,##0.00;(#,##0.00)", "(5", "no"},
      {"#,##0.00;(#,##0.00)", "5)", "no"},
      {"0.00;0.00-", "5 -", "-5"},
      {"0.00;0.00-", "-5", "-5"},
      {"+0.0;-0.0", "+-5", "no"},
      {"+0.0;-0.0", "+5", "5"},
      {"+0.0;-0.0", "5", "5"},
      {"+0.0;-0.0", "-5", "-5"},
      {"'A-'0", "A-5", "5"},
      {"'A-'0", "-A-5", "-5"},
      {"'A-'0", "-5", "-5"},
      {"'A-'0", "5", "5"},
      {"0 'DR';0 'CR'", "5 CR", "-5"},
      {"0 'DR';0 'CR'", "5DR", "5"},
      {"0 'DR';0 'CR'", "5", "5"},
      {"0 'DR';0 'CR'", "-5 CR", "no"},
      {"0E0", "1e3", "1000"},
      {"0E0", "1 E 3", "no"},
      {"0E0", "1E- 3", "no"},
      {"0E0", "1E--3", "no"},
  };
  for (const auto& row : rows) {
    const auto formatter = british(row.pattern);
    formatter->setLenient(true);
    EXPECT_EQ(read(*formatter, row.text), row.expected) << row.pattern << " \"" << row.text << '"';
  }
}

TEST(NSNumberFormatter, IndianGroupsAreReadAsTheyAreWritten) {
  const auto formatter = inLocale("en_IN", false);
  EXPECT_EQ(formatter->stringFromNumber(12345678), "1,23,45,678");
  EXPECT_EQ(read(*formatter, "1,23,45,678"), "12345678");
  EXPECT_EQ(read(*formatter, "12,345,678"), "no");
  EXPECT_EQ(read(*formatter, "123,456"), "no");
  formatter->setLenient(true);
  EXPECT_EQ(read(*formatter, "12,345,678"), "12345678");
}

TEST(NSNumberFormatter, MoneyIsReadInTheFormsOfItsNumber) {
  const auto named = british("0.00 \u00A4\u00A4\u00A4");
  for (const char* number : {"1", "2", "-1", "0.5"}) {
    const NSString text = named->stringFromNumber(dec(number));
    EXPECT_EQ(named->numberFromString(text), NSNumber(dec(number))) << text;
  }
  EXPECT_EQ(read(*named, "2.00 US dollars"), "no");
  const auto german = inLocale("de_DE", true);
  german->setNumberStyle(NSNumberFormatterCurrencyStyle);
  for (const char* text : {"1.234,50\u00A0\u20AC", "1.234,50 \u20AC", "1.234,50\u20AC", "1234,50", "EUR 1.234,50"}) {
    EXPECT_EQ(read(*german, text), *text == 'E' ? "no" : "1234.50") << text;
  }
}

TEST(NSNumberFormatter, PaddingIsNoPartOfTheNumber) {
  const auto cheque = british("**#,##0.00");
  EXPECT_EQ(cheque->stringFromNumber(5), "****5.00");
  EXPECT_EQ(read(*cheque, "****5.00"), "5.00");
  EXPECT_EQ(read(*cheque, "5.00"), "5.00");
  EXPECT_EQ(read(*cheque, "5*00"), "no");
  const auto zeros = british("*0#,##0.00");
  EXPECT_EQ(read(*zeros, zeros->stringFromNumber(0).utf8().c_str()), "0.00");
}

TEST(NSNumberFormatter, RoundsToIncrementsWhateverTheNumberOfDigits) {
  const struct {
    const char *pattern, *number, *expected;
  } rows[] = {
      {"#,##0.25", "1.3", "1.25"},
      {"#,##0.25", "-1.3", "-1.25"},
      {"#,##0.25", "0.125", "0.00"},
      {"#,##0.25", "0.375", "0.50"},
      {"#,##0.25", "0.3749999999999999999999999999999999999", "0.25"},
      {"#,##0.25", "0.3750000000000000000000000000000000001", "0.50"},
      {"0.25", "1234567890123456789012345678901234", "1234567890123456789012345678901234.00"},
      {"0.25", "12345678901234567890123456789012345.3", "12345678901234567890123456789012345.25"},
      {"0.25", "-99999999999999999999999999999999999.9", "-100000000000000000000000000000000000.00"},
      {"0.03", "99999999999999999999999999999999999999", "99999999999999999999999999999999999999.00"},
      {"0.07", "10000000000000000000000000000000000000", "10000000000000000000000000000000000000.01"},
      {"50", "74", "50"},
      {"50", "75", "100"},
      {"4000000000000000000", "6000000000000000001", "8000000000000000000"},
      {"0.25%", "0.0131", "1.25%"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(british(row.pattern)->stringFromNumber(dec(row.number)), row.expected)
        << row.pattern << " of " << row.number;
  }
}

/// Doubles beyond the greatest decimal number. ICU writes them inexactly, some of them as the empty text.
TEST(NSNumberFormatter, RoundsTheGreatestDoublesToIncrementsExactly) {
  const auto zeros = [](std::size_t count) { return std::string(count, '0'); };
  const struct {
    const char* pattern;
    double number;
    std::string expected;
  } rows[] = {
      {"0.25", 1e164, "1" + zeros(164) + ".00"},
      {"0.25", 1e165, "1" + zeros(165) + ".00"},
      {"0.25", 1.5e165, "15" + zeros(164) + ".00"},
      {"0.25", -1e308, "-1" + zeros(308) + ".00"},
      {"0.25", 1.2345678901234567e300, "12345678901234567" + zeros(284) + ".00"},
      {"0.07", 1e300, std::string(300, '9') + ".98"},
      {"0.25%", 1e300, "1" + zeros(302) + ".00%"},
      {"#,##0.25", 1e165,
       "1" +
           [] {
             std::string groups;
             for (int i = 0; i < 55; ++i) groups += ",000";
             return groups + ".00";
           }()},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(british(row.pattern)->stringFromNumber(row.number), row.expected.c_str())
        << row.pattern << " of " << row.number;
  }
  EXPECT_FALSE(british("0.25")->stringFromNumber(std::numeric_limits<double>::infinity()).empty());
  EXPECT_FALSE(british("0.25")->stringFromNumber(std::numeric_limits<double>::quiet_NaN()).empty());
}

TEST(NSNumberFormatter, IncrementsAreRoundedAsIcuRoundsThem) {
  std::mt19937_64 random(20260101);
  for (const char* pattern : {"#,##0.25", "0.05", "#,##5", "0.15", "0.003", "0.25%", "#,##0.25;(#,##0.25)"}) {
    for (const auto& [mode, icuMode] : {std::pair{NSNumberFormatterRoundHalfEven, icu::DecimalFormat::kRoundHalfEven},
                                        {NSNumberFormatterRoundHalfUp, icu::DecimalFormat::kRoundHalfUp},
                                        {NSNumberFormatterRoundHalfDown, icu::DecimalFormat::kRoundHalfDown},
                                        {NSNumberFormatterRoundCeiling, icu::DecimalFormat::kRoundCeiling},
                                        {NSNumberFormatterRoundFloor, icu::DecimalFormat::kRoundFloor},
                                        {NSNumberFormatterRoundUp, icu::DecimalFormat::kRoundUp},
                                        {NSNumberFormatterRoundDown, icu::DecimalFormat::kRoundDown}}) {
      const auto formatter = british(pattern);
      formatter->setRoundingMode(mode);
      UErrorCode status = U_ZERO_ERROR;
      icu::DecimalFormat icuFormat(icu::UnicodeString(pattern),
                                   new icu::DecimalFormatSymbols(icu::Locale("en_GB"), status), status);
      ASSERT_TRUE(U_SUCCESS(status));
      icuFormat.setRoundingMode(icuMode);
      for (int i = 0; i < 200; ++i) {
        const auto number = Decimal::decimalNumberWithMantissa(
            random() >> (random() % 64), static_cast<std::int16_t>(-static_cast<int>(random() % 6)), random() % 2 == 0);
        std::string expected;
        withoutSignOfZero(icuFormat, number).toUTF8String(expected);
        ASSERT_EQ(formatter->stringFromNumber(number), expected.c_str()) << pattern << " of " << number << ", " << mode;
      }
    }
  }
}

TEST(NSNumberFormatter, WordsAreReadWhereTheyAreOneNumber) {
  auto words = make<NSNumberFormatter>();
  words->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  words->setNumberStyle(NSNumberFormatterSpellOutStyle);
  words->setGeneratesDecimalNumbers(true);
  EXPECT_EQ(read(*words, "one thousand two hundred and thirty-four"), "1234");
  EXPECT_EQ(read(*words, "one thousand two hundred thirty-four"), "1234");
  EXPECT_EQ(read(*words, "minus two point five"), "-2.5");
  EXPECT_EQ(read(*words, words->stringFromNumber(999'999'999'999'999).utf8().c_str()), "999999999999999");
  EXPECT_EQ(read(*words, "one quadrillion and one"), "no");
  for (const char* number : {"4.6957402161574358", "-0.30000000000000004", "123456789.01234567", "0.1"}) {
    EXPECT_EQ(read(*words, words->stringFromNumber(dec(number)).utf8().c_str()), number);
  }
  EXPECT_EQ(read(*words, "1,000,000,000,000,000,000"), "1000000000000000000");
  EXPECT_EQ(read(*words, "1234567890123456.78"), "1234567890123456.78");
  EXPECT_EQ(read(*words, "twelve twelve"), "no");
  EXPECT_EQ(read(*words, "minus minus two"), "no");
  EXPECT_EQ(read(*words, "five thousand x"), "no");
  EXPECT_EQ(read(*words, " five"), "no");
  words->setLenient(true);
  EXPECT_EQ(read(*words, " five "), "5");
}

/// If the time were quadratic in the length, as it is in ICU, each of these would take minutes.
TEST(NSNumberFormatter, LongTextsAreNoWordsAndAreRefusedInLinearTime) {
  auto words = make<NSNumberFormatter>();
  words->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  words->setNumberStyle(NSNumberFormatterSpellOutStyle);
  words->setGeneratesDecimalNumbers(true);
  for (const bool isLenient : {false, true}) {
    words->setLenient(isLenient);
    for (const char* unit : {"1", "0", "1 ", "minus ", "thousand ", "point ", "one million one thousand "}) {
      std::string text;
      while (text.size() < 1'000'000) text += unit;
      EXPECT_EQ(read(*words, (text + "x").c_str()), "no") << unit;
    }
  }
  EXPECT_EQ(read(*words, (std::string(1000, ' ') + "five" + std::string(1000, ' ')).c_str()), "5");
}

TEST(NSNumberFormatter, ReadsTheLongestWordsOfANumber) {
  auto words = make<NSNumberFormatter>();
  words->setNumberStyle(NSNumberFormatterSpellOutStyle);
  words->setGeneratesDecimalNumbers(true);
  for (const char* locale : {"kl", "fi", "de", "en_GB"}) {
    words->setLocale(NSLocale::localeWithLocaleIdentifier(locale));
    const NSString text = words->stringFromNumber(-888'888'888'888'888);
    EXPECT_EQ(read(*words, text.utf8().c_str()), "-888888888888888") << locale << ' ' << text.length();
  }
}

TEST(NSNumberFormatter, ReadsPercentagesAndMoneyInWhatStandsAroundThem) {
  const auto percentage = british("#,##0.##%");
  EXPECT_EQ(read(*percentage, "12.5%"), "0.125");
  EXPECT_EQ(read(*percentage, "-1,234%"), "-12.34");
  EXPECT_EQ(read(*percentage, "12.5"), "no");
  EXPECT_EQ(read(*percentage, "12.5%%"), "no");
  EXPECT_EQ(read(*percentage, "%"), "no");
  EXPECT_EQ(read(*percentage, "12,5%"), "no");
  const auto money = british("\u00A3#,##0.00;(\u00A3#,##0.00)");
  EXPECT_EQ(read(*money, "\u00A31,234.50"), "1234.50");
  EXPECT_EQ(read(*money, "(\u00A31,234.50)"), "-1234.50");
  EXPECT_EQ(read(*money, "(\u00A31,234.50"), "no");
  EXPECT_EQ(read(*money, "\u00A31,234.50)"), "no");
}

TEST(NSNumberFormatter, APercentageThatIsReadHasNoPlacesThatItDoesNotNeed) {
  const auto percentage = british("#,##0.##%");
  EXPECT_EQ(read(*percentage, "5,000%"), "50");
  EXPECT_EQ(read(*percentage, "50%"), "0.5");
  EXPECT_EQ(read(*percentage, "1200.00%"), "12.00");
  EXPECT_EQ(read(*percentage, "12.50%"), "0.125");
  EXPECT_EQ(read(*percentage, "0%"), "0");
  EXPECT_EQ(read(*percentage, "12345678901234567890123456789012345678%"), "123456789012345678901234567890123456.78");
}

TEST(NSNumberFormatter, WritesNumbersAtTheLimitsOfTheFastPath) {
  const auto money = british("#,##0.00");
  const auto text = [&](const char* number) { return money->stringFromNumber(*Decimal::parse(number)); };
  EXPECT_EQ(text("999999999999999999"), "999,999,999,999,999,999.00");
  EXPECT_EQ(text("1000000000000000000"), "1,000,000,000,000,000,000.00");
  EXPECT_EQ(text("9999999999999999.99"), "9,999,999,999,999,999.99");
  EXPECT_EQ(text("99999999999999999.99"), "99,999,999,999,999,999.99");
  EXPECT_EQ(text("-1000"), "-1,000.00");
  EXPECT_EQ(text("-0.005"), "0.00") << "half to even, and no sign before zero";
  EXPECT_EQ(text("0.1000"), "0.10");
  EXPECT_EQ(text("1E3"), "1,000.00");
  const auto bare = british("0.##");
  bare->setMinimumIntegerDigits(0);
  EXPECT_EQ(bare->stringFromNumber(0), "0");
  EXPECT_EQ(bare->stringFromNumber(Decimal::parse("0.5").value()), ".5");
  EXPECT_EQ(british("0,000,000,000,000,000,000.0")->stringFromNumber(7), "0,000,000,000,000,000,007.0");
}

TEST(NSNumberFormatter, WritesPercentagesOfTheGreatestNumbers) {
  const auto percentage = british("0%");
  EXPECT_EQ(percentage->stringFromNumber(Decimal::maximumDecimalNumber()),
            "99999999999999999999999999999999999999" + std::string(129, '0') + "%");
}

TEST(NSNumberFormatter, WritesWhatIcuWrites) {
  const char* const patterns[] = {"#,##0.00##",
                                  "#,##0.0###",
                                  "#,##0.00",
                                  "0",
                                  "#",
                                  "#.###",
                                  "000.0",
                                  "#,###.##",
                                  "0.00",
                                  "#,##0.0#%",
                                  "0.0\u2030",
                                  "+0.00;-0",
                                  "\u00A3#,##0.00;(\u00A3#,##0.00)",
                                  "'gross '0.00",
                                  "\u00A4#,##0.00",
                                  "\u00A4\u00A4 0.00",
                                  "\u00A4\u00A4\u00A40.00"};
  const struct {
    NSNumberFormatterRoundingMode mode;
    icu::DecimalFormat::ERoundingMode icuMode;
  } modes[] = {{NSNumberFormatterRoundHalfEven, icu::DecimalFormat::kRoundHalfEven},
               {NSNumberFormatterRoundHalfUp, icu::DecimalFormat::kRoundHalfUp},
               {NSNumberFormatterRoundCeiling, icu::DecimalFormat::kRoundCeiling},
               {NSNumberFormatterRoundFloor, icu::DecimalFormat::kRoundFloor},
               {NSNumberFormatterRoundUp, icu::DecimalFormat::kRoundUp},
               {NSNumberFormatterRoundDown, icu::DecimalFormat::kRoundDown}};
  std::mt19937_64 random(20241105);
  for (const char* pattern : patterns) {
    for (const auto& [mode, icuMode] : modes) {
      const auto formatter = british(pattern);
      formatter->setRoundingMode(mode);
      UErrorCode status = U_ZERO_ERROR;
      icu::DecimalFormat icuFormat(icu::UnicodeString(pattern),
                                   new icu::DecimalFormatSymbols(icu::Locale("en_GB"), status), status);
      ASSERT_TRUE(U_SUCCESS(status));
      icuFormat.setRoundingMode(icuMode);
      for (int i = 0; i < 400; ++i) {
        if (i == 200) {
          const int most = 1 + static_cast<int>(random() % 6);
          formatter->setMaximumIntegerDigits(most);
          icuFormat.setMaximumIntegerDigits(most);
        }
        const auto mantissa = random() >> (random() % 64);
        const auto number = Decimal::decimalNumberWithMantissa(
            mantissa, static_cast<std::int16_t>(-static_cast<int>(random() % 9)), random() % 2 == 0);
        std::string expected;
        withoutSignOfZero(icuFormat, number).toUTF8String(expected);
        ASSERT_EQ(formatter->stringFromNumber(number), expected.c_str())
            << pattern << " of " << number << ", mode " << mode;
      }
    }
  }
}
