#include "NorvikCore/platform/values/CivilDate.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

#include "NorvikCore/platform/values/Date_literals.h"

namespace norvik {
namespace {

constexpr std::int64_t maximalInteger = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t minimalInteger = std::numeric_limits<std::int64_t>::min();

/// A calendar that only steps to the next day, with a table of month lengths: slow, simple and independent.
class SteppedCalendar {
 public:
  /// 1583-01-01, a Saturday, in ISO week 52 of 1582.
  static SteppedCalendar startingIn1583() { return {}; }

  void step() {
    ++reference;
    ++dayOfYear;
    weekday = weekday == 7 ? 1 : weekday + 1;
    if (++day > lengthOfMonth()) {
      day = 1;
      if (++month > 12) {
        month = 1;
        dayOfYear = 1;
        ++year;
      }
    }
    if (weekday == 2) stepWeek();
  }

  [[nodiscard]] int lengthOfMonth() const {
    static constexpr std::array<int, 12> lengths = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeap() ? 29 : lengths[static_cast<std::size_t>(month - 1)];
  }

  [[nodiscard]] bool isLeap() const { return year % 400 == 0 || (year % 4 == 0 && year % 100 != 0); }

  std::int64_t reference = -152'672;
  int year = 1583, month = 1, day = 1, dayOfYear = 1;
  int weekday = 7;  // 1 is Sunday
  int weekYear = 1582, week = 52;

 private:
  // The week that begins on this Monday is the first week of a year if it contains 4 January.
  void stepWeek() {
    ++week;
    const bool holdsFourthOfJanuary = (month == 12 && day >= 29) || (month == 1 && day <= 4);
    if (!holdsFourthOfJanuary) return;
    week = 1;
    ++weekYear;
  }
};

TEST(CivilDate, HeaderExample) {
  CivilDate day = civilDate(*Date::dateWithString("2021-01-31"));
  EXPECT_EQ(day, (CivilDate{2021, 1, 31}));
  EXPECT_EQ(civilDate(addMonths(referenceDay(day.year, day.month, day.day), 1)), (CivilDate{2021, 2, 28}));
}

TEST(CivilDate, EveryDayFrom1583To2400AgreesWithASteppedCalendar) {
  int days = 0;
  for (SteppedCalendar model = SteppedCalendar::startingIn1583(); model.year <= 2400; model.step(), ++days) {
    const CivilDate expected{model.year, model.month, model.day};
    const std::int64_t day = referenceDay(model.year, model.month, model.day);
    ASSERT_EQ(day, model.reference) << model.year << '-' << model.month << '-' << model.day;
    ASSERT_EQ(civilDate(day), expected);
    ASSERT_EQ(civilDate(dateFromReferenceDay(day).dateByAddingTimeInterval(86399.5)), expected);
    ASSERT_EQ(weekday(day), model.weekday) << day;
    ASSERT_EQ(dayOfYear(day), model.dayOfYear) << day;
    ASSERT_EQ(isLeapYear(model.year), model.isLeap()) << model.year;
    ASSERT_EQ(daysInMonth(model.year, model.month), model.lengthOfMonth()) << day;
    ASSERT_EQ(isoWeek(day), (CivilWeek{model.weekYear, model.week}))
        << model.year << '-' << model.month << '-' << model.day;
  }
  EXPECT_EQ(days, 298'769);  // 818 years, 199 of them leap years
}

TEST(CivilDate, KnownDays) {
  const struct {
    const char* why;
    CivilDate date;
    std::int64_t day;
    int weekday;
  } rows[] = {
      {"the reference date, a Monday", {2001, 1, 1}, 0, 2},
      {"the epoch of other systems, a Thursday", {1970, 1, 1}, -11'323, 5},
      {"a Monday in May", {2021, 5, 10}, 7'434, 2},
      {"a leap day", {2020, 2, 29}, 6'998, 7},
      {"year 1", {1, 1, 1}, -730'485, 2},
      {"year 0, a leap year", {0, 2, 29}, -730'792, 3},
      {"before year 0", {-1, 12, 31}, -730'852, 6},
      {"the day before the reform, in the one calendar", {1582, 10, 14}, -152'751, 5},
      {"the day of the reform", {1582, 10, 15}, -152'750, 6},
      {"far", {1'000'000, 1, 1}, 364'511'649, 7},
      {"beyond the short road", {90'000'000, 12, 31}, 32'871'094'514, 1},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(referenceDay(row.date.year, row.date.month, row.date.day), row.day) << row.why;
    EXPECT_EQ(civilDate(row.day), row.date) << row.why;
    EXPECT_EQ(weekday(row.day), row.weekday) << row.why;
  }
}

TEST(CivilDate, FieldsOfADayAreThoseOfItsPlaceInThe400YearCycle) {
  for (std::int64_t cycle = -230'000; cycle <= 230'000; cycle += 1'777) {
    for (std::int64_t day = 0; day < 146'097; day += 371) {
      CivilDate expected = civilDate(day);
      expected.year += cycle * 400;
      ASSERT_EQ(civilDate(day + cycle * 146'097), expected);
      ASSERT_EQ(referenceDay(expected.year, expected.month, expected.day), day + cycle * 146'097);
    }
  }
}

TEST(CivilDate, ADayBeginsAtMidnightAndNoFractionEarlier) {
  for (const std::int64_t day : {-1'000'000'000, -500'000'000, -730'792, -1, 0, 1, 7'434, 500'000'000, 1'000'000'000}) {
    const double midnight = static_cast<double>(day) * 86'400;
    EXPECT_EQ(referenceDay(Date::fromReferenceSeconds(midnight)), day);
    EXPECT_EQ(referenceDay(Date::fromReferenceSeconds(std::nextafter(midnight, -HUGE_VAL))), day - 1);
    EXPECT_EQ(referenceDay(Date::fromReferenceSeconds(std::nextafter(midnight, HUGE_VAL))), day);
    EXPECT_EQ(referenceDay(Date::fromReferenceSeconds(midnight + 86'399)), day);
  }
}

TEST(CivilDate, PartsOutOfRangeCarryOver) {
  const struct {
    const char* why;
    std::int64_t year, month, day;
    CivilDate expected;
  } rows[] = {
      {"in range", 2021, 5, 10, {2021, 5, 10}},
      {"month 13", 2021, 13, 1, {2022, 1, 1}},
      {"month 0", 2021, 0, 1, {2020, 12, 1}},
      {"month -11", 2021, -11, 15, {2020, 1, 15}},
      {"month -12", 2021, -12, 15, {2019, 12, 15}},
      {"day 0", 2021, 3, 0, {2021, 2, 28}},
      {"day 0 of a leap March", 2020, 3, 0, {2020, 2, 29}},
      {"day 31 of a short month", 2021, 4, 31, {2021, 5, 1}},
      {"day 366 of a common year", 2021, 1, 366, {2022, 1, 1}},
      {"day -365", 2021, 1, -365, {2020, 1, 1}},
      {"month 25 and day 0", 2021, 25, 0, {2022, 12, 31}},
      {"many months against the year", 1'002'021, -12'000'000 + 5, 10, {2021, 5, 10}},
  };
  for (const auto& row : rows)
    EXPECT_EQ(civilDate(normalizedReferenceDay(row.year, row.month, row.day)), row.expected) << row.why;
}

TEST(CivilDate, PartsBeyondTheRangeGiveItsEnds) {
  EXPECT_EQ(normalizedReferenceDay(maximalInteger, maximalInteger, maximalInteger), maximalReferenceDay);
  EXPECT_EQ(normalizedReferenceDay(minimalInteger, minimalInteger, minimalInteger), -maximalReferenceDay);
  EXPECT_EQ(normalizedReferenceDay(2021, maximalInteger, 1), maximalReferenceDay);
  EXPECT_EQ(normalizedReferenceDay(2021, 1, minimalInteger), -maximalReferenceDay);
  EXPECT_EQ(normalizedReferenceDay(2021, minimalInteger, 1), -maximalReferenceDay);
}

TEST(CivilDate, DaysBeyondTheRangeCountAsItsEnds) {
  const CivilDate last{95'068'216, 7, 10}, first{-95'064'215, 6, 25};
  EXPECT_EQ(civilDate(maximalReferenceDay), last);
  EXPECT_EQ(civilDate(maximalInteger), last);
  EXPECT_EQ(civilDate(minimalInteger), first);
  EXPECT_EQ(civilDate(Date::fromReferenceSeconds(1e300)), last);
  EXPECT_EQ(civilDate(Date::fromReferenceSeconds(-1e300)), first);
  EXPECT_EQ(weekday(maximalInteger), weekday(maximalReferenceDay));
  EXPECT_EQ(isoWeek(minimalInteger), isoWeek(-maximalReferenceDay));
  EXPECT_EQ(dayOfYear(maximalInteger), dayOfYear(maximalReferenceDay));
  EXPECT_EQ(addMonths(maximalInteger, maximalInteger), maximalReferenceDay);
  EXPECT_EQ(addMonths(minimalInteger, minimalInteger), -maximalReferenceDay);
  EXPECT_EQ(dateFromReferenceDay(maximalInteger).timeIntervalSinceReferenceDate(), 34'722'222'222 * 86'400.0);
}

TEST(CivilDate, TimesOfDaySplitTowardsThePast) {
  const struct {
    double seconds;
    CivilDateTime expected;
  } rows[] = {
      {0, {{2001, 1, 1}, {0, 0, 0, 0}}},
      {86'399.5, {{2001, 1, 1}, {23, 59, 59, 500'000'000}}},
      {-0.25, {{2000, 12, 31}, {23, 59, 59, 750'000'000}}},
      {-86'400, {{2000, 12, 31}, {0, 0, 0, 0}}},
      {-86'400.5, {{2000, 12, 30}, {23, 59, 59, 500'000'000}}},
      {-1e-300, {{2000, 12, 31}, {23, 59, 59, 999'999'999}}},
      {642'297'600 + 13 * 3600 + 14 * 60 + 15, {{2021, 5, 10}, {13, 14, 15, 0}}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(civilDateTime(Date::fromReferenceSeconds(row.seconds)), row.expected) << row.seconds;
  }
}

TEST(CivilDate, AnInstantIsPutTogetherFromFields) {
  EXPECT_EQ(dateFromCivil({{2021, 5, 10}, {12, 34, 56, 0}}), "2021-05-10 12:34:56"_date);
  EXPECT_EQ(dateFromCivil({{2021, 5, 10}, {12, 34, 56, 500'000'000}}), "2021-05-10 12:34:56.5 +0000"_date);
  EXPECT_EQ(dateFromCivil({{2021, 5, 10}, {24, 0, -1, 0}}), "2021-05-10 23:59:59"_date);
  EXPECT_EQ(dateFromCivil({{2021, 14, 31}, {-1, 0, 0, 0}}), "2022-03-02 23:00:00"_date);
}

TEST(CivilDate, AddingMonthsStaysInTheMonth) {
  const struct {
    CivilDate from;
    std::int64_t months;
    CivilDate expected;
  } rows[] = {
      {{2021, 1, 31}, 1, {2021, 2, 28}},   {{2020, 1, 31}, 1, {2020, 2, 29}},  {{2021, 1, 31}, 0, {2021, 1, 31}},
      {{2021, 1, 31}, -1, {2020, 12, 31}}, {{2021, 3, 31}, -1, {2021, 2, 28}}, {{2020, 2, 29}, 12, {2021, 2, 28}},
      {{2020, 2, 29}, 48, {2024, 2, 29}},  {{2021, 12, 15}, 1, {2022, 1, 15}}, {{2021, 5, 31}, 1, {2021, 6, 30}},
      {{2021, 1, 1}, -12, {2020, 1, 1}},   {{1, 1, 31}, -11, {0, 2, 29}},
  };
  for (const auto& row : rows) {
    const std::int64_t day = referenceDay(row.from.year, row.from.month, row.from.day);
    EXPECT_EQ(civilDate(addMonths(day, row.months)), row.expected) << row.from.year << ' ' << row.months;
  }
}

TEST(CivilDate, WeeksFollowTheirFirstDayAndTheDaysOfTheFirstWeek) {
  const std::int64_t newYear = referenceDay(2021, 1, 1);  // a Friday
  EXPECT_EQ(isoWeek(newYear), (CivilWeek{2020, 53}));
  EXPECT_EQ(weekOfYear(newYear, 1, 1), (CivilWeek{2021, 1}));
  EXPECT_EQ(weekOfYear(newYear, 6, 7), (CivilWeek{2021, 1})) << "a week from Friday, all of it in the year";
  EXPECT_EQ(weekOfYear(newYear, 2, 7), (CivilWeek{2020, 52}));
  EXPECT_EQ(weekOfYear(newYear + 1, 1, 1), (CivilWeek{2021, 1}));
  EXPECT_EQ(weekOfYear(newYear + 2, 1, 1), (CivilWeek{2021, 2}));
}

TEST(CivilDate, WorksAtCompileTime) {
  static_assert(civilDate("2021-05-10 12:00:00"_date) == CivilDate{2021, 5, 10});
  static_assert(civilDateTime("2021-05-10 12:00:00"_date).time.hour == 12);
  static_assert(isoWeek(referenceDay(2021, 1, 1)) == CivilWeek{2020, 53});
}

}  // namespace
}  // namespace norvik
