#include "NorvikCore/platform/values/Date_chrono.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <type_traits>

#include "NorvikCore/Categories/NSDate+Norvik.h"
#include "NorvikCore/platform/values/Date_literals.h"

namespace norvik {
namespace {

using namespace std::chrono_literals;
using std::chrono::system_clock;

TEST(DateChrono, HeaderExample) {
  Date now = std::chrono::system_clock::now();
  std::chrono::year_month_day day{sysDays(now)};
  EXPECT_GT(day, std::chrono::January / 1 / 2024);
  Date payday = dateFromSysDays(std::chrono::May / 10 / 2021);
  EXPECT_EQ(payday, "2021-05-10"_date);
  EXPECT_EQ(timePoint(payday) + 8h, std::chrono::sys_days{std::chrono::May / 10 / 2021} + 8h);
  EXPECT_TRUE(std::chrono::duration<double>(now - payday) > 36h);
}

TEST(TimeInterval, HeaderExample) {
  const Date payday = "2021-05-10"_date;
  Date reminder = payday - std::chrono::days{3};
  EXPECT_EQ(reminder, "2021-05-07"_date);
  EXPECT_LE(nk_startOfDay(std::chrono::system_clock::now()), Date::systemDate());
}

TEST(TimeInterval, IsSecondsOrNanoseconds) {
  using detail::inNanoseconds;
  using detail::inSeconds;
  using Halves = std::chrono::duration<std::int64_t, std::ratio<1, 2>>;
  using Thirds = std::chrono::duration<std::int64_t, std::ratio<1, 3>>;
  using Seconds = std::chrono::duration<double>;
  static_assert(inSeconds(90min) == 5400 && inSeconds(250ms) == 0.25 && inSeconds(2) == 2 && inSeconds(0.5f) == 0.5);
  static_assert(inSeconds(Halves(3)) == 1.5 && inSeconds(Seconds(0.1)) == 0.1 && inSeconds(-1ns) == -1e-9);
  static_assert(inNanoseconds(1s) == 1'000'000'000 && inNanoseconds(-250ms) == -250'000'000);
  static_assert(inNanoseconds(Halves(3)) == 1'500'000'000 && inNanoseconds(Seconds(0.5)) == 500'000'000);
  static_assert(inNanoseconds(Thirds(6)) == 2'000'000'000 && inNanoseconds(Thirds(1)) == 333'333'333);
  static_assert(inNanoseconds(std::chrono::hours::max()) == INT64_MAX &&
                inNanoseconds(std::chrono::hours::min()) == INT64_MIN);
  static_assert(inNanoseconds(std::chrono::nanoseconds::max()) == INT64_MAX);
  static_assert(inNanoseconds(std::chrono::nanoseconds::min()) == INT64_MIN);
  EXPECT_EQ(inNanoseconds(Seconds(1e300)), INT64_MAX);
  EXPECT_EQ(inNanoseconds(Seconds(-1e300)), INT64_MIN);
  EXPECT_EQ(inNanoseconds(Seconds(std::numeric_limits<double>::quiet_NaN())), 0);
}

TEST(TimeInterval, DurationsAreAddedToDatesAndTakenAway) {
  constexpr Date start = "2021-04-06"_date;
  static_assert(start + 90min == "2021-04-06 01:30:00 +0000"_date && 1h + start == start + 1h);
  static_assert(start + 250ms - start == 0.25 && start - 1s - start == -1);
  static_assert(start + std::chrono::duration<double>(0.5) - start == 0.5);
  Date date = start;
  date += std::chrono::days{1};
  EXPECT_EQ(date, "2021-04-07"_date);
  date -= 24h;
  EXPECT_EQ(date, start);
}

TEST(DateChrono, ATimeOfTheSystemClockIsADate) {
  using namespace std::chrono;
  constexpr Date payday = sys_days{2021y / May / 10};
  static_assert(payday == "2021-05-10"_date && payday < sys_days{2021y / May / 11} &&
                sys_days{2021y / May / 10} == payday);
  static_assert(sys_days{2021y / May / 10} + 90min - payday == 5400);
  static_assert(Date(sys_time<milliseconds>(-500ms)) == "1969-12-31 23:59:59.5 +0000"_date);
  static_assert(Date(sys_time<duration<double>>(duration<double>(0.5))) == "1970-01-01 00:00:00.5 +0000"_date);
  static_assert(Date(sys_time<duration<std::int64_t, std::ratio<1, 3>>>(duration<std::int64_t, std::ratio<1, 3>>(6))) ==
                "1970-01-01 00:00:02 +0000"_date);
  static_assert(Date(sys_days::max()) > Date::distantFuture() && Date(sys_days::min()) < Date::distantPast());
  const std::optional<Date> perhaps = sys_days{2021y / May / 10};
  EXPECT_EQ(perhaps, payday);
  EXPECT_EQ(nk_daysBetween(sys_days{2021y / May / 10}, sys_days{2021y / May / 31}), 21);
  // The steady clock has no date, and neither has a local time.
  static_assert(!std::is_constructible_v<Date, steady_clock::time_point> && !std::is_constructible_v<Date, local_days>);
}

TEST(DateChrono, DurationsAreIntervals) {
  constexpr Date start = "2021-04-06"_date;
  static_assert(start.dateByAddingTimeInterval(36h) == "2021-04-07 12:00:00 +0000"_date);
  static_assert(Date::dateWithTimeIntervalSince1970(std::chrono::days{1}) == "1970-01-02"_date);
  static_assert(Date::dateWithTimeIntervalSinceReferenceDate(std::chrono::hours{36}) == "2001-01-02"_date + 43200);
  static_assert(Date::dateWithTimeIntervalSince1970(86400) == "1970-01-02"_date);
  EXPECT_EQ(start.dateByAddingTimeInterval(250ms).timeIntervalSinceDate(start), 0.25);
}

TEST(DateChrono, TimePointsKeepTheirFractions) {
  const system_clock::time_point point = std::chrono::sys_days{std::chrono::May / 10 / 2021} + 12h + 500ms;
  EXPECT_EQ(dateFromTimePoint(point), "2021-05-10 12:00:00.5 +0000"_date);
  EXPECT_EQ(timePoint("2021-05-10 12:00:00.5 +0000"_date), point);
  EXPECT_EQ(timePoint("1969-12-31 23:59:59.5 +0000"_date), system_clock::time_point{-500ms});
  EXPECT_EQ(dateFromTimePoint(system_clock::time_point{-500ms}), "1969-12-31 23:59:59.5 +0000"_date);
}

TEST(DateChrono, DatesBeyondATimePointGiveTheNearestItHolds) {
  EXPECT_EQ(timePoint(Date::distantFuture()), system_clock::time_point::max());
  EXPECT_EQ(timePoint(Date::distantPast()), system_clock::time_point::min());
  EXPECT_EQ(timePoint(Date::fromReferenceSeconds(std::numeric_limits<double>::quiet_NaN())),
            system_clock::time_point{978'307'200s});
}

TEST(DateChrono, TheEndsOfWhatATimePointHoldsAreDates) {
  constexpr Date earliest = dateFromTimePoint(system_clock::time_point::min());  // an overflow would not compile
  constexpr Date latest = dateFromTimePoint(system_clock::time_point::max());
  EXPECT_EQ(earliest.description(), "1677-09-21 00:12:43 +0000");
  EXPECT_EQ(latest.description(), "2262-04-11 23:47:16 +0000");
  EXPECT_EQ(timePoint(earliest), system_clock::time_point::min());
  EXPECT_EQ(timePoint(latest), system_clock::time_point::max());
}

TEST(DateChrono, DaysAgreeForTheYearsOfBoth) {
  for (int year = -32'000; year <= 32'000; year += 7) {
    const std::chrono::sys_days day{std::chrono::year{year} / std::chrono::March / 1};
    const Date date = dateFromReferenceDay(referenceDay(year, 3, 1));
    ASSERT_EQ(dateFromSysDays(day), date) << year;
    ASSERT_EQ(sysDays(date.dateByAddingTimeInterval(86'399)), day) << year;
  }
}

}  // namespace
}  // namespace norvik
