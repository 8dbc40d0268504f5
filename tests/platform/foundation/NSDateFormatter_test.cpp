#include "NorvikCore/platform/foundation/NSDateFormatter.h"

#include <gtest/gtest.h>

#include <limits>

#include "NorvikCore/platform/values/CivilDate.h"
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

struct ReadingRow {
  const char *pattern, *text;
  std::optional<Date> expected;
};

void expectReadings(std::initializer_list<ReadingRow> rows, bool isLenient, const char* zone = "UTC",
                    const char* locale = "en_GB") {
  for (const auto& row : rows) {
    const auto dates = formatter(zone, row.pattern, locale);
    dates->setLenient(isLenient);
    EXPECT_EQ(dates->dateFromString(row.text), row.expected) << row.pattern << " of \"" << row.text << '"';
  }
}

TEST(NSDateFormatter, StrictReadingOfNumbersTakesThePatternAndNothingElse) {
  expectReadings(
      {
          {"dd/MM/yyyy", "10/05/2021", "2021-05-10"_date},
          {"dd/MM/yyyy", "10/5/2021", std::nullopt},
          {"dd/MM/yyyy", "1/05/2021", std::nullopt},
          {"dd/MM/yyyy", "010/05/2021", std::nullopt},
          {"dd/MM/yyyy", " 10/05/2021", std::nullopt},
          {"dd/MM/yyyy", "10/ 05/2021", std::nullopt},
          {"dd/MM/yyyy", "10 /05/2021", std::nullopt},
          {"dd/MM/yyyy", "10-05-2021", std::nullopt},
          {"dd/MM/yyyy", "+10/05/2021", std::nullopt},
          {"dd/MM/yyyy", "10/-5/2021", std::nullopt},
          {"dd/MM/yyyy", "10/May/2021", std::nullopt},
          {"dd/MM/yyyy", "\u0661\u0660/\u0660\u0665/\u0662\u0660\u0662\u0661", std::nullopt},
          {"dd/MM/yyyy", "00/05/2021", std::nullopt},
          {"dd/MM/yyyy", "10/00/2021", std::nullopt},
          {"d/M/y", "1/5/2021", "2021-05-01"_date},
          {"d/M/y", "11/12/2021", "2021-12-11"_date},
          {"d/M/y", "01/5/2021", std::nullopt},
          {"d/M/y", "1/05/2021", std::nullopt},
          {"yyyyMMdd", "20210510", "2021-05-10"_date},
          {"yyyyMMdd", "120210510", "12021-05-10"_date},
          {"yyyyMMdd", "2021510", std::nullopt},
          {"HHmmss", "131415", "2000-01-01 13:14:15"_date},
          {"HHmmss", "31415", std::nullopt},
          {"HH:mm:ss", "13:14:60", std::nullopt},
          {"HH:mm:ss", "13:60:14", std::nullopt},
          {"kk:mm", "24:30", "2000-01-01 00:30"_date},
          {"kk:mm", "00:30", std::nullopt},
          {"ss.SSS", "12.250", "2000-01-01T00:00:12.25Z"_date},
          {"ss.SSS", "12.25", std::nullopt},
          {"ss.SSS", "12.2500", std::nullopt},
          {"yyyy-DDD", "2020-366", "2020-12-31"_date},
          {"yyyy-DDD", "2021-366", std::nullopt},
          {"YYYY-'W'ww-e", "2020-W53-5", "2021-01-01"_date},
          {"YYYY-'W'ww-e", "2021-W53-5", std::nullopt},
          {"YYYY", "2021", "2021-01-04"_date},
          {"dd/MM/YYYY", "01/01/2020", "2020-01-01"_date},
          {"dd/MM/YYYY", "10/05/2021", "2021-05-10"_date},
          {"MM/YYYY", "01/2021", "2021-01-04"_date},
          {"Q yyyy", "2 2021", "2021-04-01"_date},
          {"'d' dd''MM''yyyy", "d 10'05'2021", "2021-05-10"_date},
          {"g", "2459345", "2021-05-10"_date},
          {"A", "47655016", "2000-01-01T13:14:15.016Z"_date},
      },
      false);
}

TEST(NSDateFormatter, AYearOfTwoDigitsIsNeverAYearOfTheFirstCentury) {
  expectReadings(
      {
          {"dd/MM/yyyy", "10/05/21", std::nullopt},
          {"dd/MM/yyyy", "10/05/021", std::nullopt},
          {"dd/MM/yyyy", "10/05/0021", "0021-05-10"_date},
          {"dd/MM/yyyy", "10/05/02021", std::nullopt},
          {"dd/MM/y", "10/05/21", std::nullopt},
          {"dd/MM/y", "10/05/0021", std::nullopt},
          {"dd/MM/yy", "10/05/2021", std::nullopt},
          {"dd/MM/yy", "10/05/1", std::nullopt},
          {"d MMMM y G", "10 May 21 AD", "0021-05-10"_date},
      },
      false);
  expectReadings(
      {
          {"dd/MM/yyyy", "10/05/21", "2021-05-10"_date},
          {"dd/MM/yyyy", "10/05/49", "2049-05-10"_date},
          {"dd/MM/yyyy", "10/05/50", "1950-05-10"_date},
          {"dd/MM/y", "10/05/21", "2021-05-10"_date},
          {"dd/MM/yy", "10/05/2021", "2021-05-10"_date},
          {"dd/MM/yyyy", "10/05/0021", "0021-05-10"_date},
          {"dd/MM/yyyy", "10/05/1", std::nullopt},
          {"dd/MM/yyyy", "10/05/202", std::nullopt},
          {"yyyyMMdd", "210510", "2021-05-10"_date},
          {"d MMMM y G", "10 May 21 AD", "0021-05-10"_date},
      },
      true);
}

TEST(NSDateFormatter, StrictReadingOfWordsTakesThePatternsWidthAndCase) {
  expectReadings(
      {
          {"d MMM yyyy", "10 Dec 2021", "2021-12-10"_date},
          {"d MMM yyyy", "10 December 2021", std::nullopt},
          {"d MMMM yyyy", "10 Dec 2021", std::nullopt},
          {"d MMMM yyyy", "10 december 2021", std::nullopt},
          {"d MMMM yyyy", "10  December 2021", std::nullopt},
          {"d MMMM yyyy", "10 12 2021", std::nullopt},
          {"EEEE d MMMM yyyy", "Monday 10 May 2021", "2021-05-10"_date},
          {"EEEE d MMMM yyyy", "Tuesday 10 May 2021", std::nullopt},
          {"EEEE", "Monday", "2000-01-03"_date},
          {"EEEEE dd/MM/yyyy", "T 11/05/2021", "2021-05-11"_date},
          {"EEEEE dd/MM/yyyy", "T 10/05/2021", std::nullopt},
          {"MMMMM yyyy", "J 2021", std::nullopt},
          {"h:mm a", "1:05 pm", "2000-01-01 13:05"_date},
          {"h:mm a", "12:05 am", "2000-01-01 00:05"_date},
          {"h:mm a", "1:05 PM", std::nullopt},
          {"h:mm a", "13:05 pm", std::nullopt},
          {"h:mm a", "0:05 am", std::nullopt},
          {"HH:mm a", "13:05 am", std::nullopt},
          {"h:mm b", "12:00 noon", "2000-01-01 12:00"_date},
          {"h:mm b", "12:05 noon", std::nullopt},
          {"h:mm B", "1:05 in the afternoon", "2000-01-01 13:05"_date},
          {"QQQ yyyy", "Q2 2021", "2021-04-01"_date},
          {"QQQ MM yyyy", "Q2 07 2021", std::nullopt},
          {"d MMMM y G", "15 March 44 BC", dateFromReferenceDay(referenceDay(-43, 3, 15))},
      },
      false);
  expectReadings({{"d. MMMM yyyy", "10. Mai 2021", "2021-05-10"_date}, {"d. MMMM yyyy", "10. May 2021", std::nullopt}},
                 false, "UTC", "de_DE");
  expectReadings({{"dd/MM/yyyy", "\u0661\u0660/\u0660\u0665/\u0662\u0660\u0662\u0661", "2021-05-10"_date},
                  {"dd/MM/yyyy", "10/05/2021", std::nullopt}},
                 false, "UTC", "ar_EG");
}

/// A pattern without a year or month writes the same text for dates of many years or months. A missing year is read as
/// 2000, a missing month as January.
TEST(NSDateFormatter, ThereIsNoYearZero) {
  for (const bool isLenient : {false, true}) {
    expectReadings(
        {
            {"dd/MM/yyyy", "10/05/0000", std::nullopt},
            {"dd/MM/yyyy", "10/05/0001", "0001-05-10"_date},
            {"yyyyMMddHHmmss", "00000426180135", std::nullopt},
            {"d MMMM y G", "10 May 0 AD", std::nullopt},
            {"d MMMM y G", "10 May 0 BC", std::nullopt},
            {"d MMMM y G", "10 May 1 BC", "0000-05-10"_date},
            {"dd/MM/uuuu", "10/05/0000", "0000-05-10"_date},
            {"dd/MM/yy", "10/05/00", "2000-05-10"_date},
        },
        isLenient);
  }
}

TEST(NSDateFormatter, AWeekdayContradictsNoDateWhoseYearIsNotThere) {
  const std::initializer_list<ReadingRow> both = {
      {"EEE d MMM", "Wed 10 May", "2000-05-10"_date}, {"EEE d MMM", "Mon 10 May", "2000-05-10"_date},
      {"EEE d MMM", "Tue 29 Feb", "2000-02-29"_date}, {"EEE d MMM", "Mon 29 Feb", "2000-02-29"_date},
      {"EEE d", "Mon 4", "2000-01-04"_date},          {"EEE d yyyy", "Fri 4 2021", "2021-01-04"_date},
      {"e d/M", "1 10/5", "2000-05-10"_date},         {"D d/M", "61 1/3", "2000-03-01"_date},
      {"D d/M", "60 1/3", "2000-03-01"_date},
  };
  expectReadings(both, false);
  expectReadings(both, true);
  expectReadings(
      {
          {"EEE d MMM", "Mon 30 Feb", std::nullopt},
          {"EEE d MMM", "Mon 0 May", std::nullopt},
          {"EEE d", "Mon 32", std::nullopt},
          {"EEE d yyyy", "Fri 31 2026", "2026-01-31"_date},
          {"EEE d M yyyy", "Fri 31 1 2026", std::nullopt},
          {"e d/M", "8 10/5", std::nullopt},
          {"D d/M", "59 1/3", std::nullopt},
          {"'W'w EEE d MMM", "W1 Mon 10 May", std::nullopt},
          {"'W'w EEE d MMM", "W19 Mon 10 May", "2000-05-10"_date},
          {"QQQ d", "Q2 4", "2000-04-04"_date},
      },
      false);
}

TEST(NSDateFormatter, StrictReadingOfZonesTakesTheFormThatIsWritten) {
  expectReadings(
      {
          {"dd/MM/yyyy HH:mm Z", "01/07/2021 01:30 +0100", "2021-07-01 00:30"_date},
          {"dd/MM/yyyy HH:mm Z", "01/07/2021 01:30 +01:00", std::nullopt},
          {"dd/MM/yyyy HH:mm Z", "01/07/2021 01:30 +1", std::nullopt},
          {"yyyy-MM-dd'T'HH:mmXXX", "2021-07-01T01:30-05:00", "2021-07-01 06:30"_date},
          {"yyyy-MM-dd'T'HH:mmXXX", "2021-07-01T01:30Z", "2021-07-01 01:30"_date},
          {"yyyy-MM-dd'T'HH:mmXXX", "2021-07-01T01:30+00:00", "2021-07-01 01:30"_date},
          {"yyyy-MM-dd'T'HH:mmXXX", "2021-07-01T01:30+0100", std::nullopt},
          {"yyyy-MM-dd'T'HH:mmXXX", "2021-07-01T01:30+01:60", std::nullopt},
          {"yyyy-MM-dd'T'HH:mmXXX", "2021-07-01T01:30+24:00", std::nullopt},
          {"yyyy-MM-dd'T'HH:mmxxx", "2021-07-01T01:30Z", std::nullopt},
          {"yyyy-MM-dd'T'HH:mmX", "2021-07-01T01:30+01", "2021-07-01 00:30"_date},
          {"yyyy-MM-dd'T'HH:mmX", "2021-07-01T01:30+0130", "2021-07-01 00:00"_date},
          {"yyyy-MM-dd'T'HH:mmZZZZZ", "2021-07-01T01:30+01:00", "2021-07-01 00:30"_date},
          {"dd/MM/yyyy HH:mm zzz", "01/07/2021 01:30 BST", "2021-07-01 00:30"_date},
          {"dd/MM/yyyy HH:mm zzz", "01/07/2021 01:30 GMT", "2021-07-01 01:30"_date},
          {"dd/MM/yyyy HH:mm zzz", "01/07/2021 01:30 bst", std::nullopt},
          {"dd/MM/yyyy HH:mm zzz", "01/07/2021 01:30 British Summer Time", std::nullopt},
          {"dd/MM/yyyy HH:mm zzzz", "01/07/2021 01:30 British Summer Time", "2021-07-01 00:30"_date},
          {"dd/MM/yyyy HH:mm ZZZZ", "01/07/2021 01:30 GMT+01:00", "2021-07-01 00:30"_date},
          {"dd/MM/yyyy HH:mm VV", "01/07/2021 01:30 America/New_York", "2021-07-01 05:30"_date},
          {"dd/MM/yyyy HH:mm VV", "28/03/2021 01:30 Europe/London", "2021-03-28 01:30"_date},
      },
      false, "Europe/London");
}

/// The formatter writes no offset as "-00", and omits optional minutes or seconds that are zero.
TEST(NSDateFormatter, StrictReadingOfOffsetsTakesNoneThatIsNotWritten) {
  const std::initializer_list<ReadingRow> unwritten = {
      {"HH:mm Z", "13:14 -0000", "2000-01-01 13:14"_date},
      {"HH:mm ZZZZZ", "13:14 -00:00", "2000-01-01 13:14"_date},
      {"HH:mm X", "13:14 -00", "2000-01-01 13:14"_date},
      {"HH:mm XX", "13:14 -0000", "2000-01-01 13:14"_date},
      {"HH:mm XXXX", "13:14 -000000", "2000-01-01 13:14"_date},
      {"HH:mm XXXXX", "13:14 -00:00:00", "2000-01-01 13:14"_date},
      {"HH:mm x", "13:14 -00", "2000-01-01 13:14"_date},
      {"HH:mm xxx", "13:14 -00:00", "2000-01-01 13:14"_date},
      {"HH:mm x", "13:14 +0100", "2000-01-01 12:14"_date},
      {"HH:mm Z", "13:14 +010000", "2000-01-01 12:14"_date},
      {"HH:mm xxxxx", "13:14 +01:00:00", "2000-01-01 12:14"_date},
  };
  expectReadings(unwritten, true);
  for (const ReadingRow& row : unwritten) expectReadings({{row.pattern, row.text, std::nullopt}}, false);
  expectReadings(
      {
          {"HH:mm Z", "13:14 +0000", "2000-01-01 13:14"_date},
          {"HH:mm x", "13:14 +00", "2000-01-01 13:14"_date},
          {"HH:mm xxx", "13:14 +00:00", "2000-01-01 13:14"_date},
          {"HH:mm ZZZZZ", "13:14 +00:00", "2000-01-01 13:14"_date},
          {"HH:mm x", "13:14 -0030", "2000-01-01 13:44"_date},
          {"HH:mm xxxxx", "13:14 -00:00:30", "2000-01-01 13:14:30"_date},
          {"HH:mm Z", "13:14 +010001", "2000-01-01 12:13:59"_date},
      },
      false);
}

TEST(NSDateFormatter, WhatIsWrittenInUtcIsReadAgain) {
  for (const char* locale : {"en_GB", "en_US", "de_DE", "fi_FI", "mn_MN", "ja_JP"}) {
    for (const char* zone : {"z", "zzz", "zzzz", "v", "vvvv", "VV", "O", "ZZZZ"}) {
      auto dates = formatter("UTC", NSString("d/M/yyyy HH:mm " + std::string(zone)), locale);
      const NSString text = dates->stringFromDate("2021-07-01 12:00"_date);
      EXPECT_EQ(dates->dateFromString(text), "2021-07-01 12:00"_date) << locale << ' ' << zone << ' ' << text;
    }
  }
  auto dates = formatter("UTC", "d MMMM y HH:mm:ss z");
  EXPECT_EQ(dates->dateFromString("1 July 2021 12:00:00 UTC"), "2021-07-01 12:00"_date);
  EXPECT_EQ(dates->dateFromString("1 July 2021 12:00:00 UTC+1"), std::nullopt);
}

TEST(NSDateFormatter, LenientReadingTakesWhatAClerkTypes) {
  expectReadings(
      {
          {"dd/MM/yyyy", "1-5-2021", "2021-05-01"_date},
          {"dd/MM/yyyy", "1.5.2021", "2021-05-01"_date},
          {"dd/MM/yyyy", "1 5 2021", "2021-05-01"_date},
          {"dd/MM/yyyy", "10 May 2021", "2021-05-10"_date},
          {"dd/MM/yyyy", "10May2021", "2021-05-10"_date},
          {"dd/MM/yyyy", "10/-5/2021", std::nullopt},
          {"dd/MM/yyyy", "10//5/2021", std::nullopt},
          {"dd/MM/yyyy", "10052021", std::nullopt},
          {"dd/MM/yyyy", "100/05/2021", std::nullopt},
          {"dd/MM/yyyy", "10/05", std::nullopt},
          {"dd/MM/yyyy", "10/05/2021 or so", std::nullopt},
          {"d MMM yyyy", "10 DECEMBER 2021", "2021-12-10"_date},
          {"d MMM yyyy", "10 sep 2021", "2021-09-10"_date},
          {"d MMM yyyy", "10 Septem. 2021", "2021-09-10"_date},
          {"d MMM yyyy", "10/9/2021", "2021-09-10"_date},
          {"d MMM yyyy", "10/13/2021", std::nullopt},
          {"d MMM yyyy", "10 Ma 2021", std::nullopt},
          {"EEEE, d MMMM yyyy", "tue 10 may 2021", "2021-05-10"_date},
          {"h:mm a", "1:05PM", "2000-01-01 13:05"_date},
          {"h:mm a", "13:05 pm", "2000-01-01 13:05"_date},
          {"h:mm a", "13:05 am", std::nullopt},
          {"h:mm a", "12:05 am", "2000-01-01 00:05"_date},
          {"h:mm a", "0:05 pm", "2000-01-01 12:05"_date},
          {"h:mm a", "24:00 am", "2000-01-02"_date},
          {"h:mm a", "24:00 pm", std::nullopt},
          {"h:mm a", "25:00 am", std::nullopt},
          {"h:mm", "13:05", "2000-01-01 13:05"_date},
          {"HH:mm a", "13:05 pm", "2000-01-01 13:05"_date},
          {"HH:mm a", "13:05 am", std::nullopt},
          {"HH:mm a", "1:05 pm", std::nullopt},
          {"HH:mm a", "1:05 am", "2000-01-01 01:05"_date},
          {"HH:mm", "9.30", "2000-01-01 09:30"_date},
          {"ss.SSS", "12.5", "2000-01-01T00:00:12.5Z"_date},
          {"dd/MM/yyyy 'at' HH:mm", "10/5/2021 AT 13:14", "2021-05-10 13:14"_date},
          {"HH:mm Z", "13:14 -05:00", "2000-01-01 18:14"_date},
          {"HH:mm XXXXX", "13:14 GMT+1", "2000-01-01 12:14"_date},
          {"HH:mm XXXXX", "13:14 utc", "2000-01-01 13:14"_date},
      },
      true);
  expectReadings({{"dd/MM/yyyy", "10/05/2021", "2021-05-10"_date}}, true, "UTC", "ar_EG");
  expectReadings({{"EEEE d MMMM yyyy", "ch\u1EE7 nh\u1EADt 9 th\u00E1ng 5 2021", "2021-05-09"_date}}, true, "UTC",
                 "vi_VN");
  expectReadings({{"EEE'T'd", "Mo.T3", "2000-01-03"_date},
                  {"EEE'T'd", "mo.t3", "2000-01-03"_date},
                  {"EEE'T'd", "Montag T3", "2000-01-03"_date},
                  {"EEE'T'd", "MontagT3", "2000-01-03"_date},
                  {"ccc'T'd", "MiT5", "2000-01-05"_date},
                  {"d.MMM'de'y", "7.Sept.de2021", "2021-09-07"_date}},
                 true, "UTC", "de_DE");
}

/// If the time were quadratic in the length, each of these would take minutes.
TEST(NSDateFormatter, LongJunkIsRefusedInLinearTime) {
  constexpr std::size_t length = 1'000'000;
  for (const bool isLenient : {false, true}) {
    for (const char* pattern : {"dd/MM/yyyy", "EEEE d MMMM yyyy HH:mm:ss zzzz", "yyyyMMdd", "d MMM y h:mm a Z"}) {
      const auto dates = formatter("Europe/London", pattern);
      dates->setLenient(isLenient);
      for (const char* unit : {"1", " ", "/", "a", "J", "0", "1 ", "Monday ", "\u00A0", "+", "10/05/2021"}) {
        std::string junk;
        while (junk.size() < length) junk += unit;
        junk += 'x';
        EXPECT_EQ(dates->dateFromString(junk), std::nullopt) << pattern << ' ' << unit;
        EXPECT_EQ(dates->dateFromString("10/05/2021" + junk), std::nullopt) << pattern << ' ' << unit;
      }
    }
  }
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

TEST(NSDateFormatter, APatternOfMoreThanNineLettersOfAFieldReadsNothing) {
  auto nine = formatter("UTC", "mmmmmmmmm");
  nine->setLenient(true);
  EXPECT_EQ(nine->dateFromString("000000090"), "2000-01-01 01:30"_date);
  EXPECT_EQ(nine->dateFromString("999999999"), "3901-04-29 10:39"_date);
  auto ten = formatter("UTC", "mmmmmmmmmm");
  ten->setLenient(true);
  EXPECT_EQ(ten->dateFromString("0000000090"), std::nullopt);
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
