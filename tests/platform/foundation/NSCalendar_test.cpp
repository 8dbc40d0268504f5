#include "NorvikCore/platform/foundation/NSCalendar.h"

#include <gtest/gtest.h>

#include <limits>

#include "NorvikCore/platform/values/Date_literals.h"
#include "NorvikCore/platform/values/NSException.h"

namespace norvik {
namespace {

Ref<NSCalendar> britishCalendar(const char* zone) {
  Ref<NSCalendar> calendar = NSCalendar::calendarWithIdentifier(NSGregorianCalendar);
  calendar->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  calendar->setTimeZone(NSTimeZone::timeZoneWithName(zone));
  return calendar;
}

const Ref<NSCalendar> utc = britishCalendar("UTC"), london = britishCalendar("Europe/London");

Ref<NSDateComponents> parts(std::initializer_list<std::pair<NSCalendarUnit, NSInteger>> fields) {
  auto result = make<NSDateComponents>();
  for (const auto& [unit, value] : fields) result->setValue_forComponent(value, unit);
  return result;
}

TEST(NSCalendar, HeaderExample) {
  Ref<NSCalendar> calendar = NSCalendar::calendarWithIdentifier(NSGregorianCalendar);
  calendar->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  calendar->setTimeZone(NSTimeZone::timeZoneWithName("Europe/London"));
  EXPECT_EQ(calendar->component(NSCalendarUnitHour, "2021-07-01"_date), 1);
  EXPECT_EQ(calendar->dateByAddingUnit(NSCalendarUnitMonth, 1, "2021-01-31"_date), "2021-02-28"_date);
}

TEST(NSCalendar, KnowsTheGregorianAndTheIsoCalendarOnly) {
  EXPECT_EQ(NSCalendar::initWithCalendarIdentifier(NSGregorianCalendar)->calendarIdentifier(), "gregorian");
  EXPECT_FALSE(NSCalendar::calendarWithIdentifier("hebrew"));
  const Ref<NSCalendar> iso = NSCalendar::calendarWithIdentifier(NSISO8601Calendar);
  iso->setLocale(NSLocale::localeWithLocaleIdentifier("en_US"));
  EXPECT_EQ(iso->firstWeekday(), 2u);
  EXPECT_EQ(iso->minimumDaysInFirstWeek(), 4u);
}

TEST(NSCalendar, TheLocaleSetsTheWeekUnlessItWasSet) {
  Ref<NSCalendar> calendar = NSCalendar::calendarWithIdentifier(NSGregorianCalendar);
  calendar->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  EXPECT_EQ(calendar->firstWeekday(), 2u);
  EXPECT_EQ(calendar->minimumDaysInFirstWeek(), 4u);
  calendar->setLocale(NSLocale::localeWithLocaleIdentifier("en_US"));
  EXPECT_EQ(calendar->firstWeekday(), 1u);
  EXPECT_EQ(calendar->minimumDaysInFirstWeek(), 1u);
  calendar->setFirstWeekday(4);
  calendar->setMinimumDaysInFirstWeek(7);
  calendar->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  EXPECT_EQ(calendar->firstWeekday(), 4u);
  EXPECT_EQ(calendar->minimumDaysInFirstWeek(), 7u);
}

TEST(NSCalendar, WeekSettingsOutOfRangeRaise) {
  Ref<NSCalendar> calendar = NSCalendar::currentCalendar();
  EXPECT_THROW(calendar->setFirstWeekday(0), NSException);
  EXPECT_THROW(calendar->setFirstWeekday(8), NSException);
  EXPECT_THROW(calendar->setMinimumDaysInFirstWeek(0), NSException);
  EXPECT_THROW(calendar->setMinimumDaysInFirstWeek(8), NSException);
}

TEST(NSCalendar, ReadsEveryFieldInItsTimeZone) {
  const Date date = "2021-12-31 23:59:58.25 +0000"_date;
  const struct {
    NSCalendarUnit unit;
    NSInteger expected;
  } rows[] = {
      {NSCalendarUnitEra, 1},
      {NSCalendarUnitYear, 2021},
      {NSCalendarUnitMonth, 12},
      {NSCalendarUnitDay, 31},
      {NSCalendarUnitHour, 23},
      {NSCalendarUnitMinute, 59},
      {NSCalendarUnitSecond, 58},
      {NSCalendarUnitNanosecond, 250'000'000},
      {NSWeekCalendarUnit, 52},
      {NSCalendarUnitWeekday, 6},
      {NSCalendarUnitWeekdayOrdinal, 5},
      {NSCalendarUnitQuarter, 4},
      {NSCalendarUnitWeekOfMonth, 5},
      {NSCalendarUnitWeekOfYear, 52},
      {NSCalendarUnitYearForWeekOfYear, 2021},
  };
  for (const auto& row : rows) EXPECT_EQ(utc->component(row.unit, date), row.expected) << row.unit;
  EXPECT_EQ(utc->component(NSCalendarUnitDay | NSCalendarUnitMonth, date), NSUndefinedDateComponent);
  EXPECT_EQ(london->component(NSCalendarUnitDay, "2021-06-30 23:30:00"_date), 1);
}

TEST(NSCalendar, YearsBeforeYear1CountBackwardsInEra0) {
  EXPECT_EQ(utc->component(NSCalendarUnitEra, "0001-01-01"_date), 1);
  EXPECT_EQ(utc->component(NSCalendarUnitYear, "0001-01-01"_date), 1);
  EXPECT_EQ(utc->component(NSCalendarUnitEra, "0000-12-31"_date), 0);
  EXPECT_EQ(utc->component(NSCalendarUnitYear, "0000-12-31"_date), 1);
  EXPECT_EQ(utc->component(NSCalendarUnitYear, "-0099-01-01"_date), 100);
  EXPECT_EQ(utc->dateFromComponents(*parts({{NSCalendarUnitEra, 0}, {NSCalendarUnitYear, 100}})), "-0099-01-01"_date);
}

TEST(NSCalendar, OneCalendarHoldsBefore1582) {
  EXPECT_EQ(utc->dateByAddingUnit(NSCalendarUnitDay, 1, "1582-10-04"_date), "1582-10-05"_date);
  EXPECT_EQ(utc->component(NSCalendarUnitDay, "1582-10-10"_date), 10);
  EXPECT_EQ(utc->component(NSCalendarUnitWeekday, "1582-10-14"_date), 5);
  EXPECT_EQ(utc->rangeOfUnit(NSCalendarUnitDay, NSCalendarUnitYear, "1500-01-01"_date), (NSRange{1, 365}));
}

TEST(NSCalendar, ComponentsSetOnlyWhatIsAskedFor) {
  const auto components =
      utc->components(NSCalendarUnitYear | NSCalendarUnitMonth | NSCalendarUnitDay, "2021-05-10"_date);
  EXPECT_EQ(components->description(), "<NSDateComponents: year 2021, month 5, day 10>");
  EXPECT_EQ(utc->components(NSWeekCalendarUnit, "2021-05-10"_date)->weekOfYear(), 19);
  EXPECT_TRUE(london->components(NSCalendarUnitTimeZone, "2021-05-10"_date)->timeZone()->isEqual(*london->timeZone()));
}

TEST(NSCalendar, DatesAreMadeOfFields) {
  const struct {
    const char* why;
    Ref<NSDateComponents> fields;
    const char* expected;
  } rows[] = {
      {"nothing set", parts({}), "0001-01-01"},
      {"a day", parts({{NSCalendarUnitYear, 2021}, {NSCalendarUnitMonth, 5}, {NSCalendarUnitDay, 10}}), "2021-05-10"},
      {"month 13", parts({{NSCalendarUnitYear, 2021}, {NSCalendarUnitMonth, 13}}), "2022-01-01"},
      {"day 0", parts({{NSCalendarUnitYear, 2021}, {NSCalendarUnitMonth, 3}, {NSCalendarUnitDay, 0}}), "2021-02-28"},
      {"hour 25 and minute -1",
       parts({{NSCalendarUnitYear, 2021}, {NSCalendarUnitHour, 25}, {NSCalendarUnitMinute, -1}}), "2021-01-02 00:59"},
      {"nanoseconds", parts({{NSCalendarUnitYear, 2021}, {NSCalendarUnitNanosecond, -500'000'000}}),
       "2020-12-31T23:59:59.5"},
      {"week 1 of 2021",
       parts({{NSCalendarUnitYearForWeekOfYear, 2021}, {NSCalendarUnitWeekOfYear, 1}, {NSCalendarUnitWeekday, 2}}),
       "2021-01-04"},
      {"its Sunday, the last day",
       parts({{NSCalendarUnitYearForWeekOfYear, 2021}, {NSCalendarUnitWeekOfYear, 1}, {NSCalendarUnitWeekday, 1}}),
       "2021-01-10"},
      {"the old week", parts({{NSCalendarUnitYear, 2021}, {NSWeekCalendarUnit, 19}}), "2021-05-10"},
      {"the second Monday in May",
       parts({{NSCalendarUnitYear, 2021},
              {NSCalendarUnitMonth, 5},
              {NSCalendarUnitWeekday, 2},
              {NSCalendarUnitWeekdayOrdinal, 2}}),
       "2021-05-10"},
      {"Monday in the third week of May",
       parts({{NSCalendarUnitYear, 2021},
              {NSCalendarUnitMonth, 5},
              {NSCalendarUnitWeekday, 2},
              {NSCalendarUnitWeekOfMonth, 2}}),
       "2021-05-10"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(utc->dateFromComponents(*row.fields), *Date::dateWithString(row.expected)) << row.why;
}

TEST(NSCalendar, FieldsCountInTheirOwnTimeZoneWhereTheyHaveOne) {
  const auto fields = parts({{NSCalendarUnitYear, 2021}, {NSCalendarUnitMonth, 7}, {NSCalendarUnitDay, 1}});
  EXPECT_EQ(london->dateFromComponents(*fields), "2021-06-30 23:00:00"_date);
  fields->setTimeZone(NSTimeZone::timeZoneWithName("UTC"));
  EXPECT_EQ(london->dateFromComponents(*fields), "2021-07-01"_date);
}

TEST(NSCalendar, ASkippedTimeMovesForwardAndOfTwoTheFirstCounts) {
  const auto skipped = parts({{NSCalendarUnitYear, 2021},
                              {NSCalendarUnitMonth, 3},
                              {NSCalendarUnitDay, 28},
                              {NSCalendarUnitHour, 1},
                              {NSCalendarUnitMinute, 30}});
  EXPECT_EQ(london->dateFromComponents(*skipped), "2021-03-28 01:30:00"_date);
  const auto twice = parts({{NSCalendarUnitYear, 2021},
                            {NSCalendarUnitMonth, 10},
                            {NSCalendarUnitDay, 31},
                            {NSCalendarUnitHour, 1},
                            {NSCalendarUnitMinute, 30}});
  EXPECT_EQ(london->dateFromComponents(*twice), "2021-10-31 00:30:00"_date);
}

TEST(NSCalendar, AddsUnits) {
  const struct {
    const char* why;
    const Ref<NSCalendar>& calendar;
    NSCalendarUnit unit;
    NSInteger value;
    const char *from, *expected;
  } rows[] = {
      {"month end", utc, NSCalendarUnitMonth, 1, "2021-01-31", "2021-02-28"},
      {"leap month end", utc, NSCalendarUnitMonth, 1, "2020-01-31", "2020-02-29"},
      {"year from a leap day", utc, NSCalendarUnitYear, 1, "2020-02-29", "2021-02-28"},
      {"quarter", utc, NSCalendarUnitQuarter, -1, "2021-05-31", "2021-02-28"},
      {"week", utc, NSCalendarUnitWeekOfYear, -1, "2021-01-04", "2020-12-28"},
      {"old week", utc, NSWeekCalendarUnit, 1, "2021-01-04", "2021-01-11"},
      {"day", utc, NSCalendarUnitDay, 1, "2020-02-28 12:00", "2020-02-29 12:00"},
      {"hour", utc, NSCalendarUnitHour, 25, "2020-02-28", "2020-02-29 01:00"},
      {"minute", utc, NSCalendarUnitMinute, -1, "2020-02-28", "2020-02-27 23:59"},
      {"second", utc, NSCalendarUnitSecond, 90, "2020-02-28", "2020-02-28 00:01:30"},
      {"nanosecond", utc, NSCalendarUnitNanosecond, 500'000'000, "2020-02-28", "2020-02-28T00:00:00.5"},
      {"week 53 to a year that has 52", utc, NSCalendarUnitYearForWeekOfYear, 1, "2020-12-28", "2021-12-27"},
      {"week 53 to a year that has 53", utc, NSCalendarUnitYearForWeekOfYear, 6, "2020-12-28", "2026-12-28"},
      {"era adds nothing", utc, NSCalendarUnitEra, 1, "2020-02-28", "2020-02-28"},
      {"a day over the change keeps the time", london, NSCalendarUnitDay, 1, "2021-03-27 12:00", "2021-03-28 11:00"},
      {"24 hours over the change do not", london, NSCalendarUnitHour, 24, "2021-03-27 12:00", "2021-03-28 12:00"},
      {"nothing added to the second of two times", london, NSCalendarUnitDay, 0, "2021-10-31 01:30",
       "2021-10-31 01:30"},
      {"fractions stay", utc, NSCalendarUnitMonth, 1, "2021-01-31T00:00:00.25", "2021-02-28T00:00:00.25"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(row.calendar->dateByAddingUnit(row.unit, row.value, *Date::dateWithString(row.from)),
              *Date::dateWithString(row.expected))
        << row.why;
}

TEST(NSCalendar, OptionsOtherThanNoneRaise) {
  EXPECT_THROW((void)utc->dateByAddingUnit(NSCalendarUnitDay, 1, "2021-01-01"_date, 1), NSException);
}

TEST(NSCalendar, HugeValuesGiveTheEndsOfTheCalendar) {
  constexpr NSInteger huge = std::numeric_limits<NSInteger>::max(), tiny = std::numeric_limits<NSInteger>::min();
  for (NSUInteger bit = NSCalendarUnitYear; bit <= NSCalendarUnitYearForWeekOfYear; bit <<= 1) {
    const auto unit = static_cast<NSCalendarUnit>(bit);
    EXPECT_GT(utc->dateByAddingUnit(unit, huge, "2021-01-01"_date), "9999-01-01"_date) << bit;
    EXPECT_LT(london->dateByAddingUnit(unit, tiny, "2021-01-01"_date), "0001-01-01"_date) << bit;
  }
  EXPECT_GT(utc->dateFromComponents(*parts({{NSCalendarUnitYear, huge - 1}, {NSCalendarUnitHour, huge - 1}})),
            "9999-01-01"_date);
  const Date unknown = Date::fromReferenceSeconds(std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(utc->component(NSCalendarUnitYear, unknown), 2001);
  EXPECT_EQ(utc->component(NSCalendarUnitYear, Date::fromReferenceSeconds(1e300)), 95'068'216);
}

TEST(NSCalendar, AddsComponentsTheLargestFirst) {
  // A year after 2020-02-29 is 2021-02-28.
  EXPECT_EQ(utc->dateByAddingComponents(*parts({{NSCalendarUnitYear, 1}, {NSCalendarUnitMonth, 1}}), "2020-02-29"_date),
            "2021-03-28"_date);
  EXPECT_EQ(utc->dateByAddingComponents(*parts({{NSCalendarUnitMonth, 1}, {NSCalendarUnitDay, 1}}), "2021-01-31"_date),
            "2021-03-01"_date);
  EXPECT_EQ(
      utc->dateByAddingComponents(*parts({{NSCalendarUnitWeekOfYear, 1}, {NSCalendarUnitHour, -1}}), "2021-01-31"_date),
      "2021-02-06 23:00:00"_date);
  EXPECT_EQ(utc->dateByAddingComponents(*parts({}), "2021-01-31"_date), "2021-01-31"_date);
}

TEST(NSCalendar, DifferencesFillTheLargestUnitFirst) {
  const auto all = NSCalendarUnitYear | NSCalendarUnitMonth | NSCalendarUnitDay | NSCalendarUnitHour;
  const struct {
    NSCalendarUnit units;
    const char *from, *to, *expected;
  } rows[] = {
      {all, "2021-01-31", "2022-03-01 05:00", "<NSDateComponents: year 1, month 1, day 1, hour 5>"},
      {all, "2022-03-01 05:00", "2021-01-31", "<NSDateComponents: year -1, month -1, day -1, hour -5>"},
      {NSCalendarUnitDay, "2020-12-31 23:59", "2021-01-01", "<NSDateComponents: day 0>"},
      {NSCalendarUnitDay, "2020-01-01", "2021-01-01", "<NSDateComponents: day 366>"},
      {NSCalendarUnitMonth, "2021-01-31", "2021-02-27", "<NSDateComponents: month 0>"},
      {NSCalendarUnitMonth, "2021-01-31", "2021-02-28", "<NSDateComponents: month 1>"},
      {NSCalendarUnitWeekOfYear, "2021-01-01", "2021-12-31", "<NSDateComponents: weekOfYear 52>"},
      {NSCalendarUnitMinute | NSCalendarUnitSecond, "2021-01-01", "2021-01-01 01:00:59",
       "<NSDateComponents: minute 60, second 59>"},
      {all, "2021-01-01", "2021-01-01", "<NSDateComponents: year 0, month 0, day 0, hour 0>"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(utc->components(row.units, *Date::dateWithString(row.from), *Date::dateWithString(row.to))->description(),
              row.expected)
        << row.from << ' ' << row.to;
}

TEST(NSCalendar, TheDifferenceFromALeapDayLeadsBack) {
  const Date from = "2020-02-29"_date, to = "2021-03-29"_date;
  const auto all = NSCalendarUnitYear | NSCalendarUnitMonth | NSCalendarUnitDay;
  const Ref<NSDateComponents> between = utc->components(all, from, to);
  EXPECT_EQ(between->description(), "<NSDateComponents: year 1, month 1, day 1>");
  EXPECT_EQ(utc->dateByAddingComponents(*between, from), to);
}

TEST(NSCalendar, TheTwoNamesOfTheWeekAreOneUnit) {
  const Date from = "2021-01-01"_date, to = "2021-12-31 05:00"_date;
  const auto both = utc->components(NSWeekCalendarUnit | NSCalendarUnitWeekOfYear | NSCalendarUnitHour, from, to);
  EXPECT_EQ(both->description(), "<NSDateComponents: hour 5, week 52, weekOfYear 52>");
  EXPECT_EQ(utc->dateByAddingComponents(*both, from), to);
  const auto old = utc->components(NSWeekCalendarUnit | NSCalendarUnitHour, from, to);
  EXPECT_EQ(old->description(), "<NSDateComponents: hour 5, week 52, weekOfYear 52>");
}

TEST(NSCalendar, NanosecondsAreCountedExactly) {
  const Date from = Date::fromReferenceSeconds(0.1), to = Date::fromReferenceSeconds(0.3);
  EXPECT_EQ(utc->components(NSCalendarUnitNanosecond, from, to)->nanosecond(), 200'000'000);
  EXPECT_EQ(utc->components(NSCalendarUnitNanosecond, to, from)->nanosecond(), -200'000'000);
  const Date payday = "2021-05-28T09:30:00.123456789Z"_date, start = "2001-05-28T09:30:00.5Z"_date;
  const auto all = utc->components(NSCalendarUnitNanosecond, start, payday);
  EXPECT_EQ(utc->dateByAddingComponents(*all, start), payday);
  // A difference just below a second is not a whole second.
  const Date almost = Date::fromReferenceSeconds(0.99999999999);
  EXPECT_EQ(utc->components(NSCalendarUnitSecond | NSCalendarUnitNanosecond, Date(), almost)->description(),
            "<NSDateComponents: second 0, nanosecond 999999999>");
}

TEST(NSCalendar, DifferencesOfTheEndsOfTheCalendarAreFound) {
  const Date first = Date::fromReferenceSeconds(-1e300), last = Date::fromReferenceSeconds(1e300);
  EXPECT_EQ(utc->components(NSCalendarUnitDay, first, last)->day(), 69'444'444'444);
  EXPECT_EQ(utc->components(NSCalendarUnitNanosecond, first, last)->nanosecond(), INT64_MAX);
}

TEST(NSCalendar, RangesOfUnits) {
  const struct {
    const char* why;
    NSCalendarUnit smaller, larger;
    const char* date;
    NSRange expected;
  } rows[] = {
      {"February", NSCalendarUnitDay, NSCalendarUnitMonth, "2021-02-10", {1, 28}},
      {"leap February", NSCalendarUnitDay, NSCalendarUnitMonth, "2020-02-10", {1, 29}},
      {"April", NSCalendarUnitDay, NSCalendarUnitMonth, "2021-04-30", {1, 30}},
      {"year", NSCalendarUnitDay, NSCalendarUnitYear, "2021-04-30", {1, 365}},
      {"leap year", NSCalendarUnitDay, NSCalendarUnitYear, "2020-04-30", {1, 366}},
      {"first quarter", NSCalendarUnitDay, NSCalendarUnitQuarter, "2021-02-10", {1, 90}},
      {"months", NSCalendarUnitMonth, NSCalendarUnitYear, "2021-02-10", {1, 12}},
      {"months of a quarter", NSCalendarUnitMonth, NSCalendarUnitQuarter, "2021-05-10", {4, 3}},
      {"52 weeks", NSCalendarUnitWeekOfYear, NSCalendarUnitYear, "2021-05-10", {1, 52}},
      {"53 weeks", NSCalendarUnitWeekOfYear, NSCalendarUnitYear, "2020-05-10", {1, 53}},
      {"weeks of the year of the week",
       NSCalendarUnitWeekOfYear,
       NSCalendarUnitYearForWeekOfYear,
       "2021-01-01",
       {1, 53}},
      {"weeks of a month that begins before its first",
       NSCalendarUnitWeekOfMonth,
       NSCalendarUnitMonth,
       "2021-05-10",
       {0, 6}},
      {"weekdays", NSCalendarUnitWeekday, NSCalendarUnitWeekOfYear, "2021-05-10", {1, 7}},
      {"hours", NSCalendarUnitHour, NSCalendarUnitDay, "2021-03-28", {0, 24}},
      {"minutes", NSCalendarUnitMinute, NSCalendarUnitHour, "2021-03-28", {0, 60}},
      {"seconds", NSCalendarUnitSecond, NSCalendarUnitMinute, "2021-03-28", {0, 60}},
      {"the wrong way round", NSCalendarUnitYear, NSCalendarUnitDay, "2021-03-28", {NSNotFound, 0}},
  };
  for (const auto& row : rows)
    EXPECT_EQ(utc->rangeOfUnit(row.smaller, row.larger, *Date::dateWithString(row.date)), row.expected) << row.why;
}

TEST(NSCalendar, OrdinalsOfUnits) {
  const struct {
    const char* why;
    NSCalendarUnit smaller, larger;
    const char* date;
    NSInteger expected;
  } rows[] = {
      {"the first day of the era", NSCalendarUnitDay, NSCalendarUnitEra, "0001-01-01", 1},
      {"the day before it", NSCalendarUnitDay, NSCalendarUnitEra, "0000-12-31 23:59", 0},
      {"a day of the era", NSCalendarUnitDay, NSCalendarUnitEra, "2021-05-10 23:59:59", 737'920},
      {"month of the era", NSCalendarUnitMonth, NSCalendarUnitEra, "2021-05-10", 24'245},
      {"year of the era", NSCalendarUnitYear, NSCalendarUnitEra, "2021-05-10", 2021},
      {"day of the year", NSCalendarUnitDay, NSCalendarUnitYear, "2020-12-31", 366},
      {"day of the quarter", NSCalendarUnitDay, NSCalendarUnitQuarter, "2021-05-10", 40},
      {"day of the month", NSCalendarUnitDay, NSCalendarUnitMonth, "2021-05-10", 10},
      {"day of the week from Monday", NSCalendarUnitDay, NSCalendarUnitWeekOfYear, "2021-05-10", 1},
      {"Sunday is the seventh", NSCalendarUnitWeekday, NSCalendarUnitWeekOfYear, "2021-05-16", 7},
      {"week of the year", NSCalendarUnitWeekOfYear, NSCalendarUnitYear, "2021-05-10", 19},
      {"week of the month", NSCalendarUnitWeekOfMonth, NSCalendarUnitMonth, "2021-05-10", 2},
      {"the second Monday", NSCalendarUnitWeekday, NSCalendarUnitMonth, "2021-05-10", 2},
      {"hour of the day", NSCalendarUnitHour, NSCalendarUnitDay, "2021-05-10 13:14:15", 14},
      {"minute of the hour", NSCalendarUnitMinute, NSCalendarUnitHour, "2021-05-10 13:14:15", 15},
      {"minute of the day", NSCalendarUnitMinute, NSCalendarUnitDay, "2021-05-10 13:14:15", 795},
      {"second of the minute", NSCalendarUnitSecond, NSCalendarUnitMinute, "2021-05-10 13:14:15", 16},
      {"quarter", NSCalendarUnitQuarter, NSCalendarUnitYear, "2021-05-10", 2},
      {"month of the quarter", NSCalendarUnitMonth, NSCalendarUnitQuarter, "2021-05-10", 2},
      {"the wrong way round", NSCalendarUnitYear, NSCalendarUnitDay, "2021-05-10", INT64_MAX},
  };
  for (const auto& row : rows)
    EXPECT_EQ(utc->ordinalityOfUnit(row.smaller, row.larger, *Date::dateWithString(row.date)), row.expected) << row.why;
}

TEST(NSCalendar, ADayStartsInItsTimeZone) {
  EXPECT_EQ(london->startOfDayForDate("2021-07-01 12:00:00"_date), "2021-06-30 23:00:00"_date);
  EXPECT_EQ(utc->startOfDayForDate("2021-07-01 12:00:00.5 +0000"_date), "2021-07-01"_date);
  // Cuba moves its clocks at midnight: the day starts at 01:00.
  EXPECT_EQ(britishCalendar("America/Havana")->startOfDayForDate("2021-03-14 12:00:00"_date),
            "2021-03-14 05:00:00"_date);
}

TEST(NSCalendar, ADayWhoseMidnightIsSkippedStartsBehindTheGap) {
  const struct {
    const char *why, *zone, *date, *expected;
  } rows[] = {
      {"a gap that begins before midnight: 23:30 is 00:30", "America/Toronto", "1919-03-31 04:30", "1919-03-31 04:30"},
      {"later on that day", "America/Toronto", "1919-03-31 18:00", "1919-03-31 04:30"},
      {"the day before it", "America/Toronto", "1919-03-31 04:29:59", "1919-03-30 05:00"},
      {"the day behind a skipped day", "Pacific/Apia", "2011-12-30 12:00", "2011-12-30 10:00"},
      {"the day before a skipped day", "Pacific/Apia", "2011-12-30 09:59:59", "2011-12-29 10:00"},
      {"midnight comes twice: 00:01 is 23:01", "America/St_Johns", "2006-10-29 02:30:30", "2006-10-29 02:30"},
      {"the evening before comes twice", "America/St_Johns", "2006-10-29 02:31", "2006-10-28 02:30"},
      {"the second midnight", "America/St_Johns", "2006-10-29 03:30", "2006-10-29 02:30"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(britishCalendar(row.zone)->startOfDayForDate(*Date::dateWithString(row.date)),
              *Date::dateWithString(row.expected))
        << row.why;
}

TEST(NSCalendar, AddingNothingGivesExactlyTheDate) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const auto nothing = parts({{NSCalendarUnitYear, 0}, {NSCalendarUnitDay, 0}, {NSCalendarUnitNanosecond, 0}});
  for (const double seconds : {0.1, -0.1, 1e-300, -5e-324, 643'000'000.123456789, 1e15 + 0.5, -1e15, 1e300, -1e300,
                               infinity, -infinity, std::numeric_limits<double>::quiet_NaN()}) {
    const Date date = Date::fromReferenceSeconds(seconds);
    for (NSUInteger bit = NSCalendarUnitEra; bit <= NSCalendarUnitNanosecond; bit <<= 1)
      EXPECT_EQ(london->dateByAddingUnit(static_cast<NSCalendarUnit>(bit), 0, date), date) << bit << ' ' << seconds;
    EXPECT_EQ(london->dateByAddingComponents(*nothing, date), date) << seconds;
  }
}

TEST(NSCalendar, EqualityCountsEverySetting) {
  EXPECT_TRUE(utc->isEqual(*britishCalendar("UTC")));
  EXPECT_EQ(utc->hash(), britishCalendar("UTC")->hash());
  EXPECT_FALSE(utc->isEqual(*london));
  const Ref<NSCalendar> other = britishCalendar("UTC");
  other->setFirstWeekday(1);
  EXPECT_FALSE(utc->isEqual(*other));
  EXPECT_EQ(london->description(), "<NSCalendar: gregorian, locale en_GB, time zone Europe/London>");
}

class NSCalendarToday : public ::testing::Test {
 protected:
  ~NSCalendarToday() override { Date::setCurrentDateSource(nullptr); }
};

TEST_F(NSCalendarToday, IsTheDayOfTheCurrentDateInTheTimeZone) {
  Date::setCurrentDateSource([]() -> std::optional<Date> { return "2021-06-30 23:30:00"_date; });
  EXPECT_TRUE(utc->isDateInToday("2021-06-30 00:00:00"_date));
  EXPECT_FALSE(utc->isDateInToday("2021-07-01 00:00:00"_date));
  EXPECT_FALSE(london->isDateInToday("2021-06-30 00:00:00"_date));
  EXPECT_TRUE(london->isDateInToday("2021-07-01 00:00:00"_date));
}

TEST_F(NSCalendarToday, IsNoDayWithoutACurrentDate) {
  Date::setCurrentDateSource([]() -> std::optional<Date> { return std::nullopt; });
  EXPECT_FALSE(utc->isDateInToday("2021-06-30"_date));
}

}  // namespace
}  // namespace norvik
