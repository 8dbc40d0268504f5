#include "NorvikCore/platform/foundation/NSLocale.h"

#include <gtest/gtest.h>

#include "NorvikCore/platform/foundation/NSCalendar.h"
#include "NorvikCore/platform/foundation/NSDateFormatter.h"
#include "NorvikCore/platform/foundation/internal/LocaleData.h"

namespace norvik {
namespace {

TEST(NSLocale, HeaderExample) {
  Ref<NSLocale> british = NSLocale::localeWithLocaleIdentifier("en_GB");
  EXPECT_EQ(british->objectForKey(NSLocaleCurrencySymbol), Value("£"));
  EXPECT_EQ(british->displayName(), "English (United Kingdom)");
}

TEST(NSLocale, AnswersEveryKeyForTheUnitedKingdom) {
  const Ref<NSLocale> british = NSLocale::localeWithLocaleIdentifier("en_GB");
  const struct {
    const NSString& key;
    Value expected;
  } rows[] = {
      {NSLocaleIdentifier, "en_GB"},
      {NSLocaleLanguageCode, "en"},
      {NSLocaleCountryCode, "GB"},
      {NSLocaleScriptCode, Value()},
      {NSLocaleVariantCode, Value()},
      {NSLocaleExemplarCharacterSet, "[a-z]"},
      {NSLocaleCollationIdentifier, Value()},
      {NSLocaleUsesMetricSystem, true},
      {NSLocaleMeasurementSystem, "U.K."},
      {NSLocaleDecimalSeparator, "."},
      {NSLocaleGroupingSeparator, ","},
      {NSLocaleCurrencySymbol, "£"},
      {NSLocaleCurrencyCode, "GBP"},
      {NSLocaleCollatorIdentifier, "en-GB"},
      {NSLocaleQuotationBeginDelimiterKey, "“"},
      {NSLocaleQuotationEndDelimiterKey, "”"},
      {NSLocaleAlternateQuotationBeginDelimiterKey, "‘"},
      {NSLocaleAlternateQuotationEndDelimiterKey, "’"},
  };
  for (const auto& row : rows) EXPECT_EQ(british->objectForKey(row.key), row.expected) << row.key;
  const Value calendar = british->objectForKey(NSLocaleCalendar);
  ASSERT_TRUE(calendar.object<NSCalendar>());
  EXPECT_EQ(calendar.object<NSCalendar>()->firstWeekday(), 2u);
}

TEST(NSLocale, AnswersWhatAnotherIdentifierHas) {
  const Ref<NSLocale> serbian = NSLocale::localeWithLocaleIdentifier("sr_Latn_RS");
  EXPECT_EQ(serbian->objectForKey(NSLocaleScriptCode), Value("Latn"));
  EXPECT_EQ(serbian->objectForKey(NSLocaleDecimalSeparator), Value(","));
  const Ref<NSLocale> american = NSLocale::localeWithLocaleIdentifier("en_US_POSIX");
  EXPECT_EQ(american->objectForKey(NSLocaleVariantCode), Value("POSIX"));
  EXPECT_EQ(american->objectForKey(NSLocaleUsesMetricSystem), Value(false));
  EXPECT_EQ(american->objectForKey(NSLocaleMeasurementSystem), Value("U.S."));
  const Ref<NSLocale> german = NSLocale::localeWithLocaleIdentifier("de_DE@collation=phonebook");
  EXPECT_EQ(german->objectForKey(NSLocaleCollationIdentifier), Value("phonebook"));
  EXPECT_EQ(german->objectForKey(NSLocaleMeasurementSystem), Value("Metric"));
}

TEST(NSLocale, AnUnknownKeyHasNoValue) {
  EXPECT_TRUE(NSLocale::localeWithLocaleIdentifier("en_GB")->objectForKey("colour").isAbsent());
}

TEST(NSLocale, IdentifiersComeBackInOneForm) {
  EXPECT_EQ(NSLocale::localeWithLocaleIdentifier("en-GB")->localeIdentifier(), "en_GB");
  EXPECT_EQ(NSLocale::localeWithLocaleIdentifier("")->localeIdentifier(), "");
  EXPECT_EQ(NSLocale::systemLocale()->localeIdentifier(), "");
  EXPECT_EQ(NSLocale::initWithLocaleIdentifier("en_GB")->description(), "<NSLocale: en_GB>");
}

TEST(NSLocale, ATextThatIsNoIdentifierIsTheRoot) {
  const Ref<NSLocale> none = NSLocale::localeWithLocaleIdentifier("Europe/London");
  EXPECT_EQ(none->localeIdentifier(), "");
  EXPECT_EQ(none->objectForKey(NSLocaleDecimalSeparator), Value("."));
  const auto formatter = make<NSDateFormatter>();
  formatter->setLocale(none);
  formatter->setDateStyle(NSDateFormatterShortStyle);
  EXPECT_EQ(formatter->dateFormat(), "y-MM-dd");
}

TEST(NSLocale, LocalesOfOneIdentifierAreEqual) {
  const Ref<NSLocale> a = NSLocale::localeWithLocaleIdentifier("en_GB"),
                      b = NSLocale::localeWithLocaleIdentifier("en-GB");
  EXPECT_TRUE(a->isEqual(*b));
  EXPECT_EQ(a->hash(), b->hash());
  EXPECT_FALSE(a->isEqual(*NSLocale::systemLocale()));
}

TEST(NSLocale, TheEnvironmentNamesTheCurrentOne) {
  using detail::localeIdentifierFromEnvironment;
  EXPECT_EQ(localeIdentifierFromEnvironment(nullptr, nullptr, nullptr), "en_GB");
  EXPECT_EQ(localeIdentifierFromEnvironment("", "", ""), "en_GB");
  EXPECT_EQ(localeIdentifierFromEnvironment("C", "de_DE.UTF-8", "de_DE"), "en_GB");
  EXPECT_EQ(localeIdentifierFromEnvironment("C.UTF-8", nullptr, nullptr), "en_GB");
  EXPECT_EQ(localeIdentifierFromEnvironment(nullptr, nullptr, "POSIX"), "en_GB");
  EXPECT_EQ(localeIdentifierFromEnvironment(nullptr, nullptr, "fr_FR.UTF-8"), "fr_FR");
  EXPECT_EQ(localeIdentifierFromEnvironment(nullptr, "de_AT@euro", "fr_FR"), "de_AT");
  EXPECT_EQ(localeIdentifierFromEnvironment("en_IE", "de_AT", "fr_FR"), "en_IE");
  EXPECT_EQ(localeIdentifierFromEnvironment("sr_RS.UTF-8@latin", nullptr, nullptr), "sr_Latn_RS");
  EXPECT_EQ(localeIdentifierFromEnvironment("uz_UZ@cyrillic", nullptr, nullptr), "uz_Cyrl_UZ");
  EXPECT_EQ(localeIdentifierFromEnvironment("sr@latin", nullptr, nullptr), "sr_Latn");
  EXPECT_EQ(localeIdentifierFromEnvironment("ca_ES@valencia", nullptr, nullptr), "ca_ES");
}

TEST(NSLocale, TheCurrentOneIsAlwaysTheSameObject) { EXPECT_EQ(NSLocale::currentLocale(), NSLocale::currentLocale()); }

}  // namespace
}  // namespace norvik
