#include "NorvikCore/platform/values/Date.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <random>
#include <sstream>
#include <unordered_set>

#include "NorvikCore/platform/values/Date_literals.h"
#include "tests/support/Doubles.h"

namespace norvik {
namespace {

using norvik::test::infinity;
using norvik::test::notANumber;

TEST(DateLiterals, HeaderExample) {
  using namespace norvik::literals;
  Date startOfTaxYear = "2021-04-06"_date;
  Date cutOff = "2021-04-01 17:30:00 +0100"_date;
  EXPECT_EQ(startOfTaxYear.description(), "2021-04-06 00:00:00 +0000");
  EXPECT_EQ(cutOff.description(), "2021-04-01 16:30:00 +0000");
}

TEST(Date, HeaderExample) {
  std::optional<Date> payday = Date::dateWithString("2021-05-10 00:00:00 +0000");
  EXPECT_EQ((*payday + 86400).description(), "2021-05-11 00:00:00 +0000");
  EXPECT_EQ(*payday - Date::dateWithTimeIntervalSince1970(0), 1620604800);
  Date now = std::chrono::system_clock::now();
  EXPECT_GT(now, *payday);
  using namespace std::chrono_literals;
  EXPECT_FALSE(*payday < std::chrono::sys_days{2021y / 4 / 30});
}

TEST(Date, SecondsAreAddedAndTakenAway) {
  using namespace norvik::literals;
  constexpr Date start = "2021-04-06"_date;
  static_assert(start + 0.5 - start == 0.5 && 60 + start == start + 60u && start - start == 0);
  EXPECT_EQ(start.dateByAddingTimeInterval(86400), "2021-04-07"_date);
  EXPECT_EQ(start - 86400, "2021-04-05"_date);
  Date date = start;
  date += 3600;
  EXPECT_EQ(date, "2021-04-06 01:00:00 +0000"_date);
  date -= 3600.5;
  EXPECT_EQ(date - start, -0.5);
  EXPECT_TRUE(std::isnan((start + notANumber) - start));
}

TEST(Date, IsEightBytes) { EXPECT_EQ(sizeof(Date), 8u); }

TEST(Date, CountsSecondsFromTheReferenceDate) {
  EXPECT_EQ(Date().timeIntervalSinceReferenceDate(), 0);
  EXPECT_EQ(Date().description(), "2001-01-01 00:00:00 +0000");
  EXPECT_EQ(Date::fromReferenceSeconds(86400.5).timeIntervalSinceReferenceDate(), 86400.5);
  EXPECT_EQ(Date::dateWithTimeIntervalSinceReferenceDate(-1).description(), "2000-12-31 23:59:59 +0000");
}

TEST(Date, CountsSecondsFrom1970) {
  EXPECT_EQ(Date::dateWithTimeIntervalSince1970(0).description(), "1970-01-01 00:00:00 +0000");
  EXPECT_EQ(Date::dateWithTimeIntervalSince1970(1620604800).description(), "2021-05-10 00:00:00 +0000");
  EXPECT_EQ(Date().timeIntervalSince1970(), 978307200);
}

TEST(Date, AnIntervalIsPositiveWhenTheReceiverIsLater) {
  EXPECT_EQ(Date::fromReferenceSeconds(10).timeIntervalSinceDate(Date::fromReferenceSeconds(4)), 6);
  EXPECT_EQ(Date::fromReferenceSeconds(4).timeIntervalSinceDate(Date::fromReferenceSeconds(10)), -6);
}

TEST(Date, ComparesByInstant) {
  const Date early = Date::fromReferenceSeconds(1), late = Date::fromReferenceSeconds(2);
  EXPECT_EQ(early.compare(late), NSOrderedAscending);
  EXPECT_EQ(early.compare(early), NSOrderedSame);
  EXPECT_EQ(late.compare(early), NSOrderedDescending);
  EXPECT_TRUE(early.isEqualToDate(Date::fromReferenceSeconds(1)));
  EXPECT_FALSE(early.isEqualToDate(late));
  EXPECT_EQ(early.earlierDate(late), early);
  EXPECT_EQ(late.earlierDate(early), early);
  EXPECT_EQ(early.laterDate(late), late);
  EXPECT_EQ(late.laterDate(early), late);
}

TEST(Date, NotANumberEqualsItselfAndIsEarlierThanEveryOtherDate) {
  const Date unknown = Date::fromReferenceSeconds(notANumber);
  EXPECT_EQ(unknown, unknown);
  EXPECT_EQ(unknown.compare(unknown), NSOrderedSame);
  EXPECT_LT(unknown, Date::fromReferenceSeconds(-infinity));
  EXPECT_GT(Date::distantPast(), unknown);
  EXPECT_NE(unknown, Date());
}

TEST(Date, EqualDatesHaveEqualHashes) {
  EXPECT_EQ(std::hash<Date>{}(Date::fromReferenceSeconds(0.0)), std::hash<Date>{}(Date::fromReferenceSeconds(-0.0)));
  EXPECT_EQ(Date::fromReferenceSeconds(notANumber).hash(), Date::fromReferenceSeconds(-notANumber).hash());
  std::unordered_set<Date> days;
  for (int day = 0; day < 1000; ++day) days.insert(Date::fromReferenceSeconds(day * 86400.0));
  days.insert(Date::fromReferenceSeconds(0.0));
  EXPECT_EQ(days.size(), 1000u);
}

TEST(Date, DescribesItselfInUtcWithoutFractions) {
  const struct {
    double seconds;
    const char* expected;
  } rows[] = {
      {0.999, "2001-01-01 00:00:00 +0000"},
      {-0.001, "2000-12-31 23:59:59 +0000"},
      {642297600 + 45296.7, "2021-05-10 12:34:56 +0000"},
      {-63113904000.0, "0001-01-01 00:00:00 +0000"},
      {-63113904001.0, "0000-12-31 23:59:59 +0000"},
      {-63145526400.0, "0000-01-01 00:00:00 +0000"},
      {-63145526401.0, "-0001-12-31 23:59:59 +0000"},
      {252423993600.0, "10000-01-01 00:00:00 +0000"},
  };
  for (const auto& row : rows) EXPECT_EQ(Date::fromReferenceSeconds(row.seconds).description(), row.expected);
}

TEST(Date, DescribesDatesBeyondTheCalendarAsItsEnds) {
  const struct {
    double seconds;
    const char* expected;
  } rows[] = {
      {infinity, "95068216-07-10 00:00:00 +0000"},
      {1e300, "95068216-07-10 00:00:00 +0000"},
      {-infinity, "-95064215-06-25 00:00:00 +0000"},
      {notANumber, "2001-01-01 00:00:00 +0000"},
  };
  for (const auto& row : rows) EXPECT_EQ(Date::fromReferenceSeconds(row.seconds).description(), row.expected);
}

TEST(Date, StreamsItsDescription) {
  std::ostringstream out;
  out << Date::fromReferenceSeconds(86399);
  EXPECT_EQ(out.str(), "2001-01-01 23:59:59 +0000");
}

TEST(Date, DistantDatesAreTheYears1And4001) {
  EXPECT_EQ(Date::distantPast().description(), "0001-01-01 00:00:00 +0000");
  EXPECT_EQ(Date::distantFuture().description(), "4001-01-01 00:00:00 +0000");
}

TEST(Date, ReadsItsTextFormsAndIso8601) {
  const struct {
    const char* text;
    double seconds;
  } rows[] = {
      {"2021-05-10 00:00:00 +0000", 642297600},
      {"2021-05-10 01:00:00 +0100", 642297600},
      {"2021-05-09 19:30:00 -0430", 642297600},
      {"2021-05-10", 642297600},
      {"2021-05-10T00:00", 642297600},
      {"2021-05-10T00:00:00", 642297600},
      {"2021-05-10T00:00:00Z", 642297600},
      {"2021-05-10 00:00:00 Z", 642297600},
      {"2021-05-10T01:00:00+01", 642297600},
      {"2021-05-10T01:00:00.25+01:00", 642297600.25},
      {"2021-05-10T01:00:00,5+01:00", 642297600.5},
      {"0000-02-29", -63140428800.0},
      {"-0001-12-31 23:59:59 +0000", -63145526401.0},
      {"+12021-05-10", 316211817600.0},
  };
  for (const auto& row : rows) {
    const std::optional<Date> date = Date::dateWithString(row.text);
    ASSERT_TRUE(date) << row.text;
    EXPECT_EQ(date->timeIntervalSinceReferenceDate(), row.seconds) << row.text;
  }
}

TEST(Date, RefusesTextsThatAreNoDate) {
  const char* const texts[] = {
      "",
      "2021",
      "2021-05",
      "2021-5-10",
      "21-05-10",
      "2021-13-01",
      "2021-00-01",
      "2021-05-00",
      "2021-02-29",
      "1900-02-29",
      "2021-04-31",
      "2021-05-10 ",
      " 2021-05-10",
      "2021-05-10x",
      "2021-05-10 24:00:00 +0000",
      "2021-05-10 00:60:00 +0000",
      "2021-05-10 00:00:60 +0000",
      "2021-05-10 00:00:00 +2400",
      "2021-05-10 00:00:00 +0060",
      "2021-05-10 00:00:00 +000",
      "2021-05-10 00:00:00 +0000 ",
      "2021-05-10 00:00:00 0000",
      "2021-05-10T00:00:00.Z",
      "2021-05-10T00",
      "123456789-01-01",
      "2021/05/10",
      "today",
  };
  for (const char* text : texts) EXPECT_EQ(Date::dateWithString(text), std::nullopt) << '"' << text << '"';
}

TEST(Date, ReadingUndoesDescribingForWholeSeconds) {
  std::mt19937_64 random(20210510);
  std::uniform_int_distribution<std::int64_t> anyYear(-2'999'999'999'999'000, 2'999'999'999'999'000);
  std::uniform_int_distribution<std::int64_t> nearYears(-63'000'000'000, 63'000'000'000);
  for (int i = 0; i < 200'000; ++i) {
    const Date date = Date::fromReferenceSeconds(static_cast<double>(i % 2 ? anyYear(random) : nearYears(random)));
    const std::string text = date.description();
    ASSERT_EQ(Date::dateWithString(text), date) << text;
  }
}

TEST(Date, LiteralsAreConstants) {
  static constexpr Date startOfTaxYear = "2021-04-06"_date;
  static_assert(startOfTaxYear == "2021-04-06 01:00:00 +0100"_date);
  EXPECT_EQ(startOfTaxYear.description(), "2021-04-06 00:00:00 +0000");
}

TEST(Date, TheSystemDateIsThatOfTheClock) {
  const double before = static_cast<double>(std::time(nullptr));
  const double now = Date::systemDate().timeIntervalSince1970();
  const double after = static_cast<double>(std::time(nullptr));
  EXPECT_GE(now, before - 1);
  EXPECT_LE(now, after + 2);
}

class DateCurrentDate : public ::testing::Test {
 protected:
  ~DateCurrentDate() override { Date::setCurrentDateSource(nullptr); }
};

TEST_F(DateCurrentDate, CanBeReplacedAndPutBack) {
  const Date::CurrentDateSource original =
      Date::setCurrentDateSource([]() -> std::optional<Date> { return "2021-04-06"_date; });
  EXPECT_EQ(original, nullptr);
  EXPECT_EQ(NSDate::date(), "2021-04-06"_date);
  EXPECT_GT(Date::systemDate(), "2024-01-01"_date);
  Date::setCurrentDateSource(original);
  EXPECT_GT(NSDate::date(), "2024-01-01"_date);
}

TEST_F(DateCurrentDate, MayBeAbsent) {
  Date::setCurrentDateSource([]() -> std::optional<Date> { return std::nullopt; });
  EXPECT_EQ(NSDate::date(), std::nullopt);
}

}  // namespace
}  // namespace norvik
