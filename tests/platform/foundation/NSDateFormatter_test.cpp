#include "NorvikCore/platform/foundation/NSDateFormatter.h"

#include <gtest/gtest.h>

#include <limits>

#include "NorvikCore/platform/values/Date_literals.h"

namespace norvik {
namespace {

Ref<NSDateFormatter> formatter(const char* zone, const NSString& pattern, const char* locale = "en_GB") {
  auto result = make<NSDateFormatter>();
  result->setLocale(NSLocale::localeWithLocaleIdentifier(locale));
  result->setTimeZone(NSTimeZone::timeZoneWithName(zone));
  result->setDateFormat(pattern);
  return result;
}

TEST(NSDateFormatter, HeaderExample) {
  auto formatter = make<NSDateFormatter>();
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  formatter->setTimeZone(NSTimeZone::timeZoneWithName("Europe/London"));
  formatter->setDateFormat("EEEE d MMMM yyyy, HH:mm");
  EXPECT_EQ(formatter->stringFromDate("2021-07-01"_date), "Thursday 1 July 2021, 01:00");
  EXPECT_EQ(formatter->dateFromString("Thursday 1 July 2021, 01:00"), "2021-07-01 00:00:00 +0000"_date);
}

TEST(NSDateFormatter, PatternsOfDigitsAndOfWordsFollowTheTimeZone) {
  const struct {
    const char *zone, *pattern, *date, *expected;
  } rows[] = {
      {"UTC", "dd/MM/yyyy HH:mm", "2021-07-01", "01/07/2021 00:00"},
      {"Europe/London", "dd/MM/yyyy HH:mm", "2021-07-01", "01/07/2021 01:00"},
      {"Europe/London", "dd/MM/yyyy HH:mm Z", "2021-01-01", "01/01/2021 00:00 +0000"},
      {"Europe/London", "HH:mm zzz", "2021-07-01", "01:00 BST"},
      {"Europe/London", "HH:mm zzz", "2021-01-01", "00:00 GMT"},
      {"Europe/London", "HH:mm xxx", "2021-07-01", "01:00 +01:00"},
      {"Europe/London", "d MMM HH:mm", "2021-10-31 00:59:59", "31 Oct 01:59"},
      {"Europe/London", "d MMM HH:mm", "2021-10-31 01:00:00", "31 Oct 01:00"},
      {"Asia/Kathmandu", "yyyy-MM-dd'T'HH:mm:ssZ", "2021-07-01", "2021-07-01T05:45:00+0545"},
      {"UTC", "h:mm a", "2021-07-01 13:05", "1:05 pm"},
      {"UTC", "YYYY", "2021-01-01", "2020"},
      {"UTC", "yyyy", "2021-01-01", "2021"},
      {"UTC", "YYYY 'W'ww e", "2021-01-03", "2020 W53 7"},
      {"UTC", "QQQ yy", "2021-05-10", "Q2 21"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(formatter(row.zone, row.pattern)->stringFromDate(*Date::dateWithString(row.date)), row.expected)
        << row.zone << ' ' << row.pattern;
}

TEST(NSDateFormatter, OneCalendarHoldsBefore1582) {
  EXPECT_EQ(formatter("UTC", "dd/MM/yyyy")->stringFromDate("1066-10-14"_date), "14/10/1066");
  EXPECT_EQ(formatter("UTC", "EEEE d MMMM y")->stringFromDate("1582-10-10"_date), "Sunday 10 October 1582");
  EXPECT_EQ(formatter("UTC", "d MMMM y G")->stringFromDate("0000-12-31"_date), "31 December 1 BC");
  EXPECT_EQ(formatter("UTC", "yyyy-MM-dd")->stringFromDate("0000-12-31"_date), "0001-12-31");
  EXPECT_EQ(formatter("UTC", "d MMMM y")->dateFromString("10 October 1582"), "1582-10-10"_date);
}

TEST(NSDateFormatter, DatesFarAwayHaveATextToo) {
  for (const double seconds : {1e300, -1e300, std::numeric_limits<double>::quiet_NaN(), 1e12, -1e12})
    EXPECT_FALSE(formatter("Europe/London", "dd/MM/yyyy")->stringFromDate(Date::fromReferenceSeconds(seconds)).empty());
  EXPECT_EQ(formatter("UTC", "dd/MM/yyyy")->stringFromDate("12021-05-10"_date), "10/05/12021");
}

TEST(NSDateFormatter, TimesAreCutToMilliseconds) {
  const auto stamp = formatter("UTC", "HH:mm:ss.SSS");
  EXPECT_EQ(stamp->stringFromDate("2021-05-10T00:00:00.9999+00:00"_date), "00:00:00.999");
  EXPECT_EQ(stamp->stringFromDate("2021-05-10T23:59:59.9999999Z"_date), "23:59:59.999");
  EXPECT_EQ(stamp->stringFromDate("2021-05-10T00:00:00.0005Z"_date), "00:00:00.000");
  for (int millisecond = 0; millisecond < 1000; ++millisecond) {
    char text[64];
    std::snprintf(text, sizeof text, "2021-05-10T13:14:15.%03dZ", millisecond);
    char expected[64];
    std::snprintf(expected, sizeof expected, "13:14:15.%03d", millisecond);
    ASSERT_EQ(stamp->stringFromDate(*Date::dateWithString(text)), expected);
  }
}

TEST(NSDateFormatter, AppendsTheTextToWhatIsThere) {
  const auto stamp = formatter("Europe/London", "d MMM yyyy HH:mm:ss.SSS");
  std::string text = "at ";
  stamp->appendStringFromDate("2021-05-10T12:14:15.016Z"_date, text);
  text += ", ";
  stamp->appendStringFromDate("2021-05-10T12:14:15.999Z"_date, text);
  text += ", ";
  stamp->appendStringFromDate("2021-05-10T12:14:16.000Z"_date, text);
  EXPECT_EQ(text, "at 10 May 2021 13:14:15.016, 10 May 2021 13:14:15.999, 10 May 2021 13:14:16.000");
}

TEST(NSDateFormatter, AppendsWhatOnlyIcuKnows) {
  std::string text;
  formatter("Europe/London", "HH:mm zzz")->appendStringFromDate("2021-07-01"_date, text);
  formatter("UTC", " dd/MM/yyyy")->appendStringFromDate("12021-05-10"_date, text);
  EXPECT_EQ(text, "01:00 BST 10/05/12021");
}

TEST(NSDateFormatter, AppendsNothingWithoutAPattern) {
  std::string text = "kept";
  make<NSDateFormatter>()->appendStringFromDate("2021-07-01"_date, text);
  EXPECT_EQ(text, "kept");
}

TEST(NSDateFormatter, ALoneHalfInThePatternStaysOne) {
  const NSString half = NSString::fromCodePoint(0xD83D);
  const auto odd = formatter("UTC", "HH");
  odd->setDateFormat("HH" + half);
  std::string text;
  odd->appendStringFromDate("2021-07-01"_date, text);
  EXPECT_EQ(text, "00\xEF\xBF\xBD");
  EXPECT_EQ(odd->stringFromDate("2021-07-01"_date), "00" + half);
}

TEST(NSDateFormatter, WhatIsSetIsInForceWithinTheSameSecond) {
  const auto changing = formatter("UTC", "HH:mm:ss.SSS");
  EXPECT_EQ(changing->stringFromDate("2021-07-01T10:11:12.013Z"_date), "10:11:12.013");
  changing->setTimeZone(NSTimeZone::timeZoneWithName("Europe/London"));
  EXPECT_EQ(changing->stringFromDate("2021-07-01T10:11:12.014Z"_date), "11:11:12.014");
  changing->setDateFormat("ss");
  EXPECT_EQ(changing->stringFromDate("2021-07-01T10:11:12.014Z"_date), "12");
}

TEST(NSDateFormatter, StylesAreThoseOfTheLocale) {
  auto styled = make<NSDateFormatter>();
  styled->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  styled->setTimeZone(NSTimeZone::timeZoneWithName("Europe/London"));
  const struct {
    NSDateFormatterStyle date, time;
    const char* expected;
  } rows[] = {
      {NSDateFormatterNoStyle, NSDateFormatterNoStyle, ""},
      {NSDateFormatterShortStyle, NSDateFormatterNoStyle, "10/05/2021"},
      {NSDateFormatterMediumStyle, NSDateFormatterNoStyle, "10 May 2021"},
      {NSDateFormatterLongStyle, NSDateFormatterNoStyle, "10 May 2021"},
      {NSDateFormatterFullStyle, NSDateFormatterNoStyle, "Monday, 10 May 2021"},
      {NSDateFormatterNoStyle, NSDateFormatterShortStyle, "13:14"},
      {NSDateFormatterNoStyle, NSDateFormatterMediumStyle, "13:14:15"},
      {NSDateFormatterNoStyle, NSDateFormatterLongStyle, "13:14:15 BST"},
      {NSDateFormatterNoStyle, NSDateFormatterFullStyle, "13:14:15 British Summer Time"},
      {NSDateFormatterShortStyle, NSDateFormatterShortStyle, "10/05/2021, 13:14"},
      {NSDateFormatterFullStyle, NSDateFormatterMediumStyle, "Monday, 10 May 2021 at 13:14:15"},
  };
  for (const auto& row : rows) {
    styled->setDateStyle(row.date);
    styled->setTimeStyle(row.time);
    EXPECT_EQ(styled->stringFromDate("2021-05-10 12:14:15"_date), row.expected) << row.date << ' ' << row.time;
  }
}

TEST(NSDateFormatter, StylesAndPatternsReplaceEachOther) {
  auto both = formatter("UTC", "yyyy");
  EXPECT_EQ(both->dateFormat(), "yyyy");
  both->setDateStyle(NSDateFormatterShortStyle);
  EXPECT_EQ(both->dateFormat(), "dd/MM/y");
  both->setLocale(NSLocale::localeWithLocaleIdentifier("de_DE"));
  EXPECT_EQ(both->dateFormat(), "dd.MM.yy");
  both->setDateFormat("MM");
  EXPECT_EQ(both->dateStyle(), NSDateFormatterNoStyle);
  EXPECT_EQ(both->stringFromDate("2021-05-10"_date), "05");
}

TEST(NSDateFormatter, AnotherLocaleHasItsWordsAndDigits) {
  EXPECT_EQ(formatter("UTC", "EEEE, d. MMMM", "de_DE")->stringFromDate("2021-05-10"_date), "Montag, 10. Mai");
  EXPECT_EQ(formatter("UTC", "dd/MM", "ar_EG")->stringFromDate("2021-05-10"_date), "١٠/٠٥");
}

TEST(NSDateFormatter, TheCalendarSetsTheWeek) {
  auto weeks = formatter("UTC", "YYYY-ww");
  EXPECT_EQ(weeks->stringFromDate("2021-01-01"_date), "2020-53");
  Ref<NSCalendar> calendar = NSCalendar::calendarWithIdentifier(NSGregorianCalendar);
  calendar->setFirstWeekday(1);
  calendar->setMinimumDaysInFirstWeek(1);
  weeks->setCalendar(calendar);
  EXPECT_EQ(weeks->calendar(), calendar);
  EXPECT_EQ(weeks->stringFromDate("2021-01-01"_date), "2021-01");
  weeks->setDateFormat("YYYY-ww G");
  EXPECT_EQ(weeks->stringFromDate("2021-01-01"_date), "2021-01 AD");
  weeks->setCalendar(nullptr);
  EXPECT_EQ(weeks->stringFromDate("2021-01-01"_date), "2020-53 AD");
}

TEST(NSDateFormatter, ReadsTheWholeTextOrNothing) {
  const struct {
    const char *zone, *pattern, *text;
    std::optional<Date> expected;
  } rows[] = {
      {"UTC", "dd/MM/yyyy", "10/05/2021", "2021-05-10"_date},
      {"UTC", "dd/MM/yyyy", "1/5/2021", std::nullopt},
      {"UTC", "d/M/y", "1/5/2021", "2021-05-01"_date},
      {"UTC", "dd/MM/yyyy", "10/05/2021x", std::nullopt},
      {"UTC", "dd/MM/yyyy", "x10/05/2021", std::nullopt},
      {"UTC", "dd/MM/yyyy", "10/05", std::nullopt},
      {"UTC", "dd/MM/yyyy", "31/02/2021", std::nullopt},
      {"UTC", "dd/MM/yyyy", "10/13/2021", std::nullopt},
      {"UTC", "dd/MM/yyyy", "", std::nullopt},
      {"UTC", "dd/MM/yy", "10/05/21", "2021-05-10"_date},
      {"UTC", "dd/MM/yy", "10/05/49", "2049-05-10"_date},
      {"UTC", "dd/MM/yy", "10/05/50", "1950-05-10"_date},
      {"UTC", "HH:mm", "13:14", "2000-01-01 13:14"_date},
      {"UTC", "HH:mm", "24:00", std::nullopt},
      {"Europe/London", "dd/MM/yyyy HH:mm", "01/07/2021 00:00", "2021-06-30 23:00"_date},
      {"Europe/London", "dd/MM/yyyy HH:mm", "28/03/2021 01:30", "2021-03-28 01:30"_date},
      {"Europe/London", "dd/MM/yyyy HH:mm", "31/10/2021 01:30", "2021-10-31 00:30"_date},
      {"Europe/London", "dd/MM/yyyy HH:mm Z", "01/07/2021 00:00 +0000", "2021-07-01"_date},
      {"Europe/London", "dd/MM/yyyy HH:mm zzz", "31/10/2021 01:30 GMT", "2021-10-31 01:30"_date},
      {"UTC", "yyyy-MM-dd HH:mm:ss.SSS", "2021-05-10 00:00:00.250", "2021-05-10T00:00:00.25Z"_date},
      {"UTC", "d MMMM yyyy", "10 May 2021", "2021-05-10"_date},
      {"UTC", "d MMMM yyyy", "10 Mai 2021", std::nullopt},
  };
  for (const auto& row : rows)
    EXPECT_EQ(formatter(row.zone, row.pattern)->dateFromString(row.text), row.expected)
        << row.pattern << ' ' << row.text;
}

TEST(NSDateFormatter, LenientReadingCarriesFieldsOver) {
  auto lenient = formatter("UTC", "dd/MM/yyyy");
  lenient->setLenient(true);
  EXPECT_TRUE(lenient->lenient());
  EXPECT_EQ(lenient->dateFromString("31/02/2021"), "2021-03-03"_date);
  EXPECT_EQ(lenient->dateFromString("10/13/2021"), "2022-01-10"_date);
  EXPECT_EQ(lenient->dateFromString("1/5/2021"), "2021-05-01"_date);
  EXPECT_EQ(lenient->dateFromString("tomorrow"), std::nullopt);
}

TEST(NSDateFormatter, LenientReadingCarriesTimesOverUpToHour24) {
  auto lenient = formatter("UTC", "dd/MM/yyyy HH:mm");
  lenient->setLenient(true);
  EXPECT_EQ(lenient->dateFromString("01/07/2021 23:61"), "2021-07-02 00:01"_date);
  EXPECT_EQ(lenient->dateFromString("01/07/2021 24:00"), "2021-07-02"_date);
  EXPECT_EQ(lenient->dateFromString("01/07/2021 25:00"), std::nullopt);
}

TEST(NSDateFormatter, LenientReadingForgivesSpacesAroundTheText) {
  auto dates = formatter("UTC", "dd/MM/yyyy");
  EXPECT_EQ(dates->dateFromString("01/07/2021 "), std::nullopt);
  dates->setLenient(true);
  for (const char* text : {"01/07/2021 ", " 01/07/2021", "\u00A001/07/2021\t\n", "01 / 07 / 2021"}) {
    EXPECT_EQ(dates->dateFromString(text), "2021-07-01"_date) << text;
  }
  EXPECT_EQ(dates->dateFromString("  "), std::nullopt);
}

TEST(NSDateFormatter, IsAFormatterOfDates) {
  auto dates = formatter("UTC", "dd/MM/yyyy");
  EXPECT_EQ(dates->stringForObjectValue("2021-05-10"_date), "10/05/2021");
  EXPECT_EQ(dates->stringForObjectValue(5), std::nullopt);
  Value value = 5;
  NSString error;
  EXPECT_TRUE(dates->getObjectValue_forString_errorDescription(value, "10/05/2021", &error));
  EXPECT_EQ(value, Value("2021-05-10"_date));
  EXPECT_FALSE(dates->getObjectValue_forString_errorDescription(value, "soon", &error));
  EXPECT_EQ(value, Value("2021-05-10"_date));
  EXPECT_EQ(error, "\"soon\" is not a date of the form dd/MM/yyyy");
}

TEST(NSDateFormatter, StartsWithTheUsersSettingsAndNoPattern) {
  const auto plain = make<NSDateFormatter>();
  EXPECT_EQ(plain->locale(), NSLocale::currentLocale());
  EXPECT_TRUE(plain->timeZone()->isEqual(*NSTimeZone::defaultTimeZone()));
  EXPECT_EQ(plain->stringFromDate("2021-05-10"_date), "");
  EXPECT_EQ(plain->dateFromString("10/05/2021"), std::nullopt);
  EXPECT_EQ(plain->formatterBehavior(), NSDateFormatterBehaviorDefault);
  plain->setFormatterBehavior(NSDateFormatterBehavior10_4);
  EXPECT_EQ(plain->formatterBehavior(), NSDateFormatterBehavior10_4);
}

}  // namespace
}  // namespace norvik
