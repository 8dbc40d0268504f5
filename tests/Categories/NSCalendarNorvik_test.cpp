#include "NorvikCore/Categories/NSCalendar+Norvik.h"

#include "NorvikCore/Categories/NSLocale+Norvik.h"
#include "NorvikCore/Categories/NSTimeZone+Norvik.h"
#include "NorvikCore/platform/values/Date_literals.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace norvik;

namespace {

Date date(const char* text) { return Date::dateWithString(text).value(); }

}  // namespace

TEST(NSCalendarNorvik, HeaderExample) {
  const Date newYearsEve = "2020-12-31"_date, newYearsDay = "2021-01-01"_date;
  EXPECT_EQ(daysWithinEraFromDate(*nk_defaultCalendar(), newYearsEve, newYearsDay), 1);
}

TEST(NSLocaleNorvik, HeaderExample) {
  EXPECT_EQ(nk_defaultLocale()->localeIdentifier(), "en_GB");
  const NSString description = nk_description(*nk_ukLocale());
  EXPECT_EQ(std::count(description.view().begin(), description.view().end(), '\n'), 19);
}

TEST(NSTimeZoneNorvik, HeaderExample) {
  EXPECT_EQ(nk_defaultTimeZone()->name(), "UTC");
  EXPECT_EQ(nk_ukTimeZone()->name(), "Europe/London");
}

TEST(NSCalendarNorvik, EachSharedObjectIsTheSameOnEveryCall) {
  EXPECT_EQ(nk_defaultCalendar(), nk_defaultCalendar());
  EXPECT_EQ(nk_ukCalendar(), nk_ukCalendar());
  EXPECT_EQ(nk_defaultLocale(), nk_defaultLocale());
  EXPECT_EQ(nk_ukLocale(), nk_ukLocale());
  EXPECT_EQ(nk_defaultTimeZone(), nk_defaultTimeZone());
  EXPECT_EQ(nk_ukTimeZone(), nk_ukTimeZone());
}

TEST(NSCalendarNorvik, TheTwoLocalesAreDifferentObjectsWithEqualIdentifiers) {
  EXPECT_NE(nk_defaultLocale(), nk_ukLocale());
  EXPECT_EQ(nk_defaultLocale()->localeIdentifier(), "en_GB");
  EXPECT_EQ(nk_ukLocale()->localeIdentifier(), "en_GB");
}

TEST(NSCalendarNorvik, BothCalendarsAreGregorianInBritishEnglish) {
  for (const auto& calendar : {nk_defaultCalendar(), nk_ukCalendar()}) {
    EXPECT_EQ(calendar->calendarIdentifier(), NSGregorianCalendar);
    EXPECT_EQ(calendar->locale(), nk_defaultLocale());
    EXPECT_EQ(calendar->firstWeekday(), 2u);
    EXPECT_EQ(calendar->minimumDaysInFirstWeek(), 4u);
  }
  EXPECT_EQ(nk_defaultCalendar()->timeZone()->name(), "UTC");
  EXPECT_EQ(nk_ukCalendar()->timeZone()->name(), "Europe/London");
}

TEST(NSCalendarNorvik, TheNightWhenSummerTimeBegins) {
  const struct {
    const char* instant;
    int hourInUtc, hourInLondon;
  } rows[] = {{"2020-03-29 00:30:00 +0000", 0, 0}, {"2020-03-29 01:30:00 +0000", 1, 2}};
  for (const auto& row : rows) {
    const Date instant = date(row.instant);
    EXPECT_EQ(nk_defaultCalendar()->component(NSCalendarUnitDay, instant), 29) << row.instant;
    EXPECT_EQ(nk_defaultCalendar()->component(NSCalendarUnitHour, instant), row.hourInUtc) << row.instant;
    EXPECT_EQ(nk_ukCalendar()->component(NSCalendarUnitDay, instant), 29) << row.instant;
    EXPECT_EQ(nk_ukCalendar()->component(NSCalendarUnitHour, instant), row.hourInLondon) << row.instant;
  }
}

TEST(NSCalendarNorvik, DaysWithinTheEraCountCalendarDays) {
  const struct {
    const char *from, *to;
    std::int64_t days;
  } rows[] = {{"2020-12-31 23:59:00 +0000", "2021-01-01 00:00:00 +0000", 1},
              {"2021-01-01 00:00:00 +0000", "2020-12-31 23:59:00 +0000", -1},
              {"2021-05-10 08:00:00 +0000", "2021-05-10 08:00:00 +0000", 0},
              {"2021-05-10 00:00:00 +0000", "2021-05-10 23:59:59 +0000", 0},
              {"2020-01-01 00:00:00 +0000", "2021-01-01 00:00:00 +0000", 366}};
  for (const auto& row : rows) {
    EXPECT_EQ(daysWithinEraFromDate(*nk_defaultCalendar(), date(row.from), date(row.to)), row.days) << row.from;
  }
  EXPECT_EQ(
      daysWithinEraFromDate(*nk_ukCalendar(), date("2021-07-01 22:59:00 +0000"), date("2021-07-01 23:00:00 +0000")), 1);
}

TEST(NSCalendarNorvik, DescribesItsSettingsALineEach) {
  const std::string text = nk_description(*nk_defaultCalendar()).utf8();
  EXPECT_EQ(text.find("Calendar identifier: gregorian\nCalendar first week day: 2\nCalendar timezone: "), 0u) << text;
  const auto locale = text.find("\nCalendar locale: " + NSLocaleIdentifier.utf8() + " : en_GB\n");
  EXPECT_NE(locale, std::string::npos) << text;
  EXPECT_EQ(text.substr(text.size() - 2), "\n\n");
}

TEST(NSLocaleNorvik, ListsTheNineteenKeysInOrder) {
  const NSString expected[] = {NSLocaleIdentifier,
                               NSLocaleLanguageCode,
                               NSLocaleCountryCode,
                               NSLocaleScriptCode,
                               NSLocaleVariantCode,
                               NSLocaleExemplarCharacterSet,
                               NSLocaleCalendar,
                               NSLocaleCollationIdentifier,
                               NSLocaleUsesMetricSystem,
                               NSLocaleMeasurementSystem,
                               NSLocaleDecimalSeparator,
                               NSLocaleGroupingSeparator,
                               NSLocaleCurrencySymbol,
                               NSLocaleCurrencyCode,
                               NSLocaleCollatorIdentifier,
                               NSLocaleQuotationBeginDelimiterKey,
                               NSLocaleQuotationEndDelimiterKey,
                               NSLocaleAlternateQuotationBeginDelimiterKey,
                               NSLocaleAlternateQuotationEndDelimiterKey};
  const auto keys = nk_allKeys();
  ASSERT_EQ(keys->count(), 19u);
  for (std::size_t i = 0; i < 19; ++i) EXPECT_EQ(keys->objectAtIndex(i), Value(expected[i])) << i;
  EXPECT_NE(nk_allKeys(), keys) << "each call makes a new list";
}

TEST(NSLocaleNorvik, DescribesEachPropertyOnALineOfItsOwn) {
  const std::string text = nk_description(*nk_ukLocale()).utf8();
  const auto line = [](const NSString& key, const char* value) { return "\n" + key.utf8() + " : " + value + "\n"; };
  EXPECT_EQ(text.find(NSLocaleIdentifier.utf8() + " : en_GB\n"), 0u) << text;
  EXPECT_NE(text.find(line(NSLocaleLanguageCode, "en")), std::string::npos);
  EXPECT_NE(text.find(line(NSLocaleCountryCode, "GB")), std::string::npos);
  EXPECT_NE(text.find(line(NSLocaleScriptCode, "(null)")), std::string::npos);
  EXPECT_NE(text.find(line(NSLocaleDecimalSeparator, ".")), std::string::npos);
  EXPECT_NE(text.find(line(NSLocaleGroupingSeparator, ",")), std::string::npos);
  EXPECT_NE(text.find(line(NSLocaleCurrencyCode, "GBP")), std::string::npos);
}
