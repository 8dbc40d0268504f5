#include "NorvikCore/Categories/NSDate+Norvik.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "NorvikCore/Categories/NSCalendar+Norvik.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/values/Date_literals.h"
#include "NorvikCore/platform/values/NSException.h"

namespace norvik {
namespace {

/// A fixed current date for one test.
class NSDateNorvikToday : public ::testing::Test {
 protected:
  ~NSDateNorvikToday() override { Date::setCurrentDateSource(nullptr); }

  static void setToday(std::optional<Date> date) {
    current_ = date;
    Date::setCurrentDateSource([]() { return current_; });
  }

 private:
  inline static std::optional<Date> current_;
};

TEST(NSDateNorvik, HeaderExample) {
  Date payday = nk_dateWithYear(2021, 1, 31);
  EXPECT_EQ(nk_addMonths(payday, 1), "2021-02-28"_date);
  EXPECT_EQ(nk_daysBetween(payday, nk_dateWithYear(2021, 4, 6)), 65);
  EXPECT_TRUE(nk_isLessThan(payday, nk_dateWithYear(2021, 4, 6)));
}

TEST(NSDateNorvik, PartsOutOfRangeCarryOver) {
  EXPECT_EQ(nk_dateWithYear(2021, 5, 10), "2021-05-10"_date);
  EXPECT_EQ(nk_dateWithYear(2021, 13, 1), "2022-01-01"_date);
  EXPECT_EQ(nk_dateWithYear(2021, 3, 0), "2021-02-28"_date);
  EXPECT_EQ(nk_dateWithYear(2020, 0, 31), "2019-12-31"_date);
  EXPECT_EQ(nk_dateWithYear(2021, 2, 29), "2021-03-01"_date);
  EXPECT_EQ(nk_dateWithDay(10, 5, 2021), "2021-05-10"_date);
}

TEST_F(NSDateNorvikToday, TodayIsTheStartOfTheCurrentDay) {
  setToday("2021-05-10 23:59:59"_date);
  EXPECT_EQ(nk_today(), "2021-05-10"_date);
  EXPECT_EQ(nk_tomorrow(), "2021-05-11"_date);
}

TEST_F(NSDateNorvikToday, WithoutACurrentDateTodayRaises) {
  setToday(std::nullopt);
  EXPECT_THROW((void)nk_today(), NSException);
  EXPECT_THROW((void)nk_tomorrow(), NSException);
  EXPECT_THROW((void)nk_startOfNextTaxMonth(), NSException);
  EXPECT_FALSE(nk_isLocalCalendarToday("2021-05-10"_date));
}

TEST_F(NSDateNorvikToday, TheNextTaxMonthStartsOnTheSixthAndTodayCounts) {
  const struct {
    const char* why;
    Date today, expected;
  } rows[] = {
      {"on the 6th", "2021-04-06"_date, "2021-04-06"_date},
      {"late on the 6th", "2021-04-06 23:59:59"_date, "2021-04-06"_date},
      {"on the 5th", "2021-04-05"_date, "2021-04-06"_date},
      {"the day after", "2021-04-07"_date, "2021-05-06"_date},
      {"over the new year", "2021-12-31"_date, "2022-01-06"_date},
      {"as many days before it as can be", "2021-01-07"_date, "2021-02-06"_date},
      {"at the calendar's end, which is no 6th", Date::fromReferenceSeconds(1e300), "95068216-07-10"_date},
  };
  for (const auto& row : rows) {
    setToday(row.today);
    EXPECT_EQ(nk_startOfNextTaxMonth(), row.expected) << row.why;
  }
}

TEST_F(NSDateNorvikToday, ThePayrollCalendarStartsTodayOrLater) {
  setToday("2021-05-10 15:00:00"_date);
  EXPECT_EQ(nk_todayOrStartOfPayrollCalendar("2021-06-01 12:30:00"_date), "2021-06-01"_date);
  EXPECT_EQ(nk_todayOrStartOfPayrollCalendar("2021-04-01"_date), "2021-05-10"_date);
  EXPECT_EQ(nk_todayOrStartOfPayrollCalendar("2021-05-10"_date), "2021-05-10"_date);
}

TEST_F(NSDateNorvikToday, TheLocalTodayIsTheUsers) {
  setToday("2021-06-30 23:30:00"_date);
  NSTimeZone::setDefaultTimeZone(NSTimeZone::timeZoneWithName("Europe/London"));
  EXPECT_TRUE(nk_isLocalCalendarToday("2021-07-01 12:00:00"_date));
  EXPECT_FALSE(nk_isLocalCalendarToday("2021-06-30 12:00:00"_date));
  NSTimeZone::setDefaultTimeZone(NSTimeZone::timeZoneWithName("UTC"));
  EXPECT_TRUE(nk_isLocalCalendarToday("2021-06-30 12:00:00"_date));
  NSTimeZone::setDefaultTimeZone(nullptr);
}

TEST(NSDateNorvik, WeekdaysHaveTheirNames) {
  EXPECT_EQ(nk_weekday("2021-05-10"_date), 2);
  EXPECT_EQ(nk_weekday("2021-05-09"_date), 1);
  EXPECT_EQ(nk_weekday("2021-05-15"_date), 7);
  const char* const names[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
  ASSERT_EQ(nk_weekDayNames()->count(), 7u);
  for (NSUInteger i = 0; i < 7; ++i) EXPECT_EQ(nk_weekDayNames()->objectAtIndex(i), Value(names[i]));
  EXPECT_EQ(nk_weekDayNames(), nk_weekDayNames());
}

TEST(NSDateNorvik, Adds) {
  EXPECT_EQ(nk_addHours("2021-05-10"_date, 25), "2021-05-11 01:00"_date);
  EXPECT_EQ(nk_addHours("2021-05-10"_date, -1), "2021-05-09 23:00"_date);
  EXPECT_EQ(nk_addDays("2020-02-28 12:30"_date, 1), "2020-02-29 12:30"_date);
  EXPECT_EQ(nk_addDays("2021-03-01"_date, -1), "2021-02-28"_date);
  EXPECT_EQ(nk_addWeeks("2021-05-10"_date, 2), "2021-05-24"_date);
  EXPECT_EQ(nk_addWeeks("2021-05-10"_date, -1), "2021-05-03"_date);
  EXPECT_EQ(nk_addMonths("2021-01-31"_date, 1), "2021-02-28"_date);
  EXPECT_EQ(nk_addMonths("2020-01-31 23:59:59"_date, 1), "2020-02-29 23:59:59"_date);
  EXPECT_EQ(nk_addMonths("2021-01-31"_date, -2), "2020-11-30"_date);
  EXPECT_EQ(nk_addYears("2020-02-29"_date, 1), "2021-02-28"_date);
  EXPECT_EQ(nk_addYears("2020-02-29"_date, 4), "2024-02-29"_date);
  EXPECT_EQ(nk_addYears("2020-02-29"_date, -1), "2019-02-28"_date);
}

TEST(NSDateNorvik, AddingNothingGivesExactlyTheDate) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  for (const double seconds : {0.1, -0.1, 1e-300, -5e-324, 643'000'000.123456789, 1e15 + 0.5, -1e15, 1e300, -1e300,
                               infinity, -infinity, std::numeric_limits<double>::quiet_NaN()}) {
    const Date date = Date::fromReferenceSeconds(seconds);
    EXPECT_EQ(nk_addHours(date, 0), date) << seconds;
    EXPECT_EQ(nk_addDays(date, 0), date) << seconds;
    EXPECT_EQ(nk_addWeeks(date, 0), date) << seconds;
    EXPECT_EQ(nk_addMonths(date, 0), date) << seconds;
    EXPECT_EQ(nk_addYears(date, 0), date) << seconds;
  }
}

TEST(NSDateNorvik, SubtractingADateGivesAnInstantEqualToIt) {
  EXPECT_EQ(nk_subtractDate("2021-05-10"_date, "2020-01-01 12:00"_date), "2020-01-01 12:00"_date);
  EXPECT_EQ(nk_subtractDate("2020-01-01"_date, "2021-05-10"_date), "2021-05-10"_date);
  const Date fine = Date::fromReferenceSeconds(0.1);
  EXPECT_EQ(nk_subtractDate(Date::distantFuture(), fine), fine);
}

TEST(NSDateNorvik, StartsOfDaysMonthsAndYears) {
  const Date date = "2020-02-10 13:14:15.75 +0000"_date;
  EXPECT_EQ(nk_startOfDay(date), "2020-02-10"_date);
  EXPECT_EQ(nk_startOfDay("1999-12-31 23:59:59.5 +0000"_date), "1999-12-31"_date);
  EXPECT_EQ(nk_startOfFirstDayOfMonth(date), "2020-02-01"_date);
  EXPECT_EQ(nk_startOfLastDayOfMonth(date), "2020-02-29"_date);
  EXPECT_EQ(nk_startOfFirstDayOfYear(date), "2020-01-01"_date);
  EXPECT_EQ(nk_startOfLastDayOfYear(date), "2020-12-31"_date);
}

TEST(NSDateNorvik, LengthsOfMonthsAndYears) {
  EXPECT_EQ(nk_numberOfDaysInMonth("2021-02-10"_date), 28);
  EXPECT_EQ(nk_numberOfDaysInMonth("2020-02-10"_date), 29);
  EXPECT_EQ(nk_numberOfDaysInMonth("2021-04-30"_date), 30);
  EXPECT_EQ(nk_numberOfDaysInMonth("2021-12-31"_date), 31);
  EXPECT_EQ(nk_daysInYear("2020-07-01"_date), 366);
  EXPECT_EQ(nk_daysInYear("2021-07-01"_date), 365);
}

TEST(NSDateNorvik, LeapYears) {
  EXPECT_TRUE(nk_isYearLeapYear("2000-06-01"_date));
  EXPECT_TRUE(nk_isYearLeapYear("2024-06-01"_date));
  EXPECT_FALSE(nk_isYearLeapYear("2023-06-01"_date));
  EXPECT_FALSE(nk_isYearLeapYear("1900-06-01"_date));
  EXPECT_FALSE(nk_isYearLeapYear("2100-06-01"_date));
}

TEST(NSDateNorvik, FieldsAreThoseOfUtc) {
  const Date date = "2020-12-31 23:59:59.9 +0000"_date;
  EXPECT_EQ(nk_year(date), 2020);
  EXPECT_EQ(nk_month(date), 12);
  EXPECT_EQ(nk_day(date), 31);
  EXPECT_EQ(nk_dayOfYear(date), 366);
  EXPECT_EQ(nk_dayOfYear("2021-01-01"_date), 1);
  EXPECT_EQ(nk_weekday(date), 5);
}

TEST(NSDateNorvik, WeeksStartOnMondayAndTheFirstHasFourDays) {
  const struct {
    Date date;
    NSInteger week;
  } rows[] = {{"2020-12-31"_date, 53}, {"2021-01-01"_date, 53}, {"2021-01-03"_date, 53}, {"2021-01-04"_date, 1},
              {"2021-05-10"_date, 19}, {"2019-12-30"_date, 1},  {"2021-12-31"_date, 52}};
  for (const auto& row : rows) {
    EXPECT_EQ(nk_weekOfYear(row.date), row.week) << row.date;
    EXPECT_EQ(nk_week(row.date), row.week) << row.date;
  }
}

TEST(NSDateNorvik, DaysBetweenIgnoreTheTimeOfDay) {
  EXPECT_EQ(nk_daysBetween("2021-05-10 23:59:59"_date, "2021-05-11 00:00:00"_date), 1);
  EXPECT_EQ(nk_daysBetween("2021-05-10 00:00:00"_date, "2021-05-10 23:59:59"_date), 0);
  EXPECT_EQ(nk_daysBetween("2021-05-11"_date, "2021-05-10"_date), -1);
  EXPECT_EQ(nk_daysWithinEraFromDate("2020-01-01"_date, "2021-01-01"_date), 366);
  EXPECT_TRUE(nk_dateIsSameDay("2021-05-10 00:00:00"_date, "2021-05-10 23:59:59"_date));
  EXPECT_FALSE(nk_dateIsSameDay("2021-05-10 23:59:59"_date, "2021-05-11 00:00:00"_date));
  EXPECT_FALSE(nk_dateIsSameDay("2021-05-10"_date, "2020-05-10"_date));
}

TEST(NSDateNorvik, Compares) {
  const Date early = "2021-05-10"_date, late = "2021-05-11"_date;
  EXPECT_TRUE(nk_isLessThan(early, late));
  EXPECT_FALSE(nk_isLessThan(early, early));
  EXPECT_FALSE(nk_isLessThan(late, early));
  EXPECT_TRUE(nk_isLessThanOrEqualTo(early, early));
  EXPECT_FALSE(nk_isLessThanOrEqualTo(late, early));
  EXPECT_TRUE(nk_isGreaterThan(late, early));
  EXPECT_FALSE(nk_isGreaterThan(early, early));
  EXPECT_TRUE(nk_isGreaterThanOrEqualTo(early, early));
  EXPECT_FALSE(nk_isGreaterThanOrEqualTo(early, late));
  EXPECT_EQ(nk_max(early, late), late);
  EXPECT_EQ(nk_max(late, early), late);
  EXPECT_EQ(nk_min(early, late), early);
  EXPECT_EQ(nk_min(late, early), early);
  EXPECT_EQ(nk_MinDate(early, late), early);
  EXPECT_EQ(nk_MinDate(late, early), early);
  EXPECT_EQ(nk_MaxDate(early, late), late);
  EXPECT_EQ(nk_MaxDate(late, early), late);
}

// Both zeros are the same instant; their signs show which of two equal arguments was returned.
TEST(NSDateNorvik, ATieGivesTheReceiverTheSecondToMinDateAndTheFirstToMaxDate) {
  const Date a = Date::fromReferenceSeconds(0.0), b = Date::fromReferenceSeconds(-0.0);
  ASSERT_EQ(a, b);
  const auto isB = [](std::optional<Date> date) { return std::signbit(date->timeIntervalSinceReferenceDate()); };
  EXPECT_FALSE(isB(nk_max(a, b)));
  EXPECT_FALSE(isB(nk_min(a, b)));
  EXPECT_TRUE(isB(nk_MinDate(a, b)));
  EXPECT_FALSE(isB(nk_MaxDate(a, b)));
}

TEST(NSDateNorvik, HugeCountsGiveTheEndsOfTheCalendar) {
  constexpr NSInteger huge = std::numeric_limits<NSInteger>::max(), tiny = std::numeric_limits<NSInteger>::min();
  for (Date (*add)(Date, NSInteger) noexcept : {nk_addHours, nk_addDays, nk_addWeeks, nk_addMonths, nk_addYears}) {
    EXPECT_GT(add("2021-05-10"_date, huge), "9999-01-01"_date);
    EXPECT_LT(add("2021-05-10"_date, tiny), "0001-01-01"_date);
  }
  EXPECT_GT(nk_dateWithYear(huge, huge, huge), "9999-01-01"_date);
  EXPECT_LT(nk_dateWithYear(tiny, tiny, tiny), "0001-01-01"_date);
  EXPECT_EQ(nk_year(Date::fromReferenceSeconds(std::numeric_limits<double>::quiet_NaN())), 2001);
}

TEST(NSDateNorvik, AgreesWithTheDefaultCalendar) {
  const NSCalendar& calendar = *nk_defaultCalendar();
  std::mt19937_64 random(6);
  std::uniform_real_distribution<double> anySeconds(-6.3e10, 2.5e11);
  std::uniform_int_distribution<NSInteger> anyCount(-5000, 5000);
  for (int i = 0; i < 20'000; ++i) {
    const Date date = Date::fromReferenceSeconds(std::floor(anySeconds(random)) + 0.25);
    const NSInteger count = anyCount(random);
    ASSERT_EQ(nk_year(date), calendar.component(NSCalendarUnitYear, date)) << date;
    ASSERT_EQ(nk_month(date), calendar.component(NSCalendarUnitMonth, date)) << date;
    ASSERT_EQ(nk_day(date), calendar.component(NSCalendarUnitDay, date)) << date;
    ASSERT_EQ(nk_weekday(date), calendar.component(NSCalendarUnitWeekday, date)) << date;
    ASSERT_EQ(nk_weekOfYear(date), calendar.component(NSCalendarUnitWeekOfYear, date)) << date;
    ASSERT_EQ(nk_dayOfYear(date), calendar.ordinalityOfUnit(NSCalendarUnitDay, NSCalendarUnitYear, date)) << date;
    ASSERT_EQ(nk_startOfDay(date), calendar.startOfDayForDate(date)) << date;
    ASSERT_EQ(nk_addHours(date, count), calendar.dateByAddingUnit(NSCalendarUnitHour, count, date)) << date;
    ASSERT_EQ(nk_addDays(date, count), calendar.dateByAddingUnit(NSCalendarUnitDay, count, date)) << date;
    ASSERT_EQ(nk_addMonths(date, count), calendar.dateByAddingUnit(NSCalendarUnitMonth, count, date)) << date;
    ASSERT_EQ(nk_addYears(date, count), calendar.dateByAddingUnit(NSCalendarUnitYear, count, date)) << date;
    ASSERT_EQ(nk_numberOfDaysInMonth(date),
              static_cast<NSInteger>(calendar.rangeOfUnit(NSCalendarUnitDay, NSCalendarUnitMonth, date).length));
  }
}

}  // namespace
}  // namespace norvik
