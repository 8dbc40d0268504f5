#include "NorvikCore/platform/values/Date_fmt.h"

#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "NorvikCore/platform/values/Date_literals.h"

namespace norvik {
namespace {

TEST(DateFmt, HeaderExample) {
  Date payday = "2021-05-10"_date;
  EXPECT_EQ(fmt::format("{}", payday), "2021-05-10 00:00:00 +0000");
  EXPECT_EQ(fmt::format("{:%Y-%m-%d}", payday), "2021-05-10");
  EXPECT_EQ(fmt::format("{:%a %e %B %Y, %H:%M}", payday), "Mon 10 May 2021, 00:00");
  EXPECT_EQ(fmt::format("{:>12%d/%m/%y}", payday), "    10/05/21");
  EXPECT_EQ(fmt::format("{:.10}", payday), "2021-05-10");
}

TEST(DateFields, HeaderExample) { EXPECT_EQ(detail::dateText("2021-05-10"_date, "%d/%m/%Y"), "10/05/2021"); }

TEST(DateFmt, APatternShowsEveryFieldInUTC) {
  const Date summer = "2021-07-04 15:07:09.9 +0100"_date, newYear = "2021-01-01 00:30:00 +0000"_date;
  const struct {
    const char* pattern;
    const char* summer;
    const char* newYear;
  } rows[] = {
      {"%Y %C %y", "2021 20 21", "2021 20 21"},
      {"%m %d %e", "07 04  4", "01 01  1"},
      {"%B %b %h", "July Jul Jul", "January Jan Jan"},
      {"%A %a", "Sunday Sun", "Friday Fri"},
      {"%H %I %M %S %p", "14 02 07 09 PM", "00 12 30 00 AM"},
      {"%F %D %T %R", "2021-07-04 07/04/21 14:07:09 14:07", "2021-01-01 01/01/21 00:30:00 00:30"},
      {"%G %g %V", "2021 21 26", "2020 20 53"},
      {"%j %u %w", "185 7 0", "001 5 5"},
      {"%z %Z", "+0000 UTC", "+0000 UTC"},
      {"%s", "1625407629", "1609461000"},
      {"%n%t%%", "\n\t%", "\n\t%"},
      {"%dth day", "04th day", "01th day"},
  };
  for (const auto& row : rows) {
    const std::string format = std::string("{:") + row.pattern + "}";
    EXPECT_EQ(fmt::format(fmt::runtime(format), summer), row.summer) << format;
    EXPECT_EQ(fmt::format(fmt::runtime(format), newYear), row.newYear) << format;
  }
}

TEST(DateFmt, EveryDateHasFields) {
  EXPECT_EQ(fmt::format("{:%F}", Date::distantPast()), "0001-01-01");
  EXPECT_EQ(fmt::format("{:%Y %C %y}", "-0044-03-15"_date), "-0044 -01 56");
  EXPECT_EQ(fmt::format("{:%F %T}", Date::fromReferenceSeconds(-0.5)), "2000-12-31 23:59:59");
  EXPECT_EQ(fmt::format("{:%F}", Date::fromReferenceSeconds(std::numeric_limits<double>::quiet_NaN())), "2001-01-01");
  EXPECT_EQ(fmt::format("{:%Y}", Date::fromReferenceSeconds(std::numeric_limits<double>::infinity())),
            fmt::format("{:%Y}", Date::fromReferenceSeconds(1e300)));
}

TEST(DateFmt, APatternHasWidthAndFill) {
  const Date payday = "2021-05-10"_date;
  EXPECT_EQ(fmt::format("{:*^14%d %b}|{:10%d %b}|", payday, payday), "****10 May****|10 May    |");
}

TEST(DateFmt, IsNotQuotedWithinARange) {
  EXPECT_EQ(fmt::format("{::%F}", std::vector<Date>{"2021-05-10"_date, Date()}), "[2021-05-10, 2001-01-01]");
  EXPECT_EQ(fmt::format("{}", std::vector<Date>{Date()}), "[2001-01-01 00:00:00 +0000]");
}

TEST(DateFmt, AWrongPatternIsRefused) {
  for (const char* format : {"{:%Q}", "{:%}", "{:%Y %k}", "{:.3%Y}", "{:{}%Y}", "{:x}", "{:%Y"})
    EXPECT_THROW((void)fmt::format(fmt::runtime(format), "2021-05-10"_date, 5), fmt::format_error) << format;
}

TEST(DateFmt, TakesWidthAndFill) {
  EXPECT_EQ(fmt::format("{:*>27}", "2021-05-10"_date), "**2021-05-10 00:00:00 +0000");
}

}  // namespace
}  // namespace norvik
