#include "NorvikCore/Categories/NSDate+Norvik_TaxYear.h"

#include <gtest/gtest.h>

#include "NorvikCore/Categories/NSDate+Norvik.h"
#include "NorvikCore/platform/values/Date_literals.h"

namespace norvik {
namespace {

TEST(NSDateNorvikTaxYear, HeaderExample) {
  const Date payday = nk_dateWithYear(2024, 7, 5);
  EXPECT_EQ(nk_taxYear(payday), 2024);
  EXPECT_EQ(nk_taxYearName(payday), "2024-25");
  EXPECT_EQ(nk_taxMonth(payday), 3);
  EXPECT_EQ(nk_taxWeek(payday), 13);
  EXPECT_EQ(nk_startOfTaxMonth(payday), "2024-06-06"_date);
  EXPECT_EQ(nk_startOfLastDayOfTaxMonth(payday), "2024-07-05"_date);
}

TEST(NSDateNorvikTaxYear, BothSidesOfEachBoundary) {
  const struct {
    Date date;
    NSInteger year, month, week;
    Date monthStart, weekStart;
  } rows[] = {
      {"2024-04-05"_date, 2023, 12, 53, "2024-03-06"_date, "2024-04-04"_date},
      {"2024-04-06"_date, 2024, 1, 1, "2024-04-06"_date, "2024-04-06"_date},
      {"2024-04-12"_date, 2024, 1, 1, "2024-04-06"_date, "2024-04-06"_date},
      {"2024-04-13"_date, 2024, 1, 2, "2024-04-06"_date, "2024-04-13"_date},
      {"2024-05-05"_date, 2024, 1, 5, "2024-04-06"_date, "2024-05-04"_date},
      {"2024-05-06"_date, 2024, 2, 5, "2024-05-06"_date, "2024-05-04"_date},
      {"2024-12-31"_date, 2024, 9, 39, "2024-12-06"_date, "2024-12-28"_date},
      {"2025-01-05"_date, 2024, 9, 40, "2024-12-06"_date, "2025-01-04"_date},
      {"2025-01-06"_date, 2024, 10, 40, "2025-01-06"_date, "2025-01-04"_date},
      {"2025-04-04"_date, 2024, 12, 52, "2025-03-06"_date, "2025-03-29"_date},
      {"2025-04-05"_date, 2024, 12, 53, "2025-03-06"_date, "2025-04-05"_date},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(nk_taxYear(row.date), row.year) << row.date;
    EXPECT_EQ(nk_taxMonth(row.date), row.month) << row.date;
    EXPECT_EQ(nk_taxWeek(row.date), row.week) << row.date;
    EXPECT_EQ(nk_startOfTaxMonth(row.date), row.monthStart) << row.date;
    EXPECT_EQ(nk_startOfTaxWeek(row.date), row.weekStart) << row.date;
    EXPECT_EQ(nk_startOfTaxYear(row.date), nk_dateWithYear(row.year, 4, 6)) << row.date;
    EXPECT_EQ(nk_taxMonth(row.date + 86399.5), row.month) << "the end of the day, " << row.date;
    EXPECT_EQ(nk_startOfTaxWeek(row.date + 86399.5), row.weekStart) << row.date;
  }
}

TEST(NSDateNorvikTaxYear, LastDays) {
  const struct {
    Date date, year, month, week;
  } rows[] = {
      {"2024-04-05"_date, "2024-04-05"_date, "2024-04-05"_date, "2024-04-05"_date},
      {"2024-04-04"_date, "2024-04-05"_date, "2024-04-05"_date, "2024-04-05"_date},
      {"2024-04-03"_date, "2024-04-05"_date, "2024-04-05"_date, "2024-04-03"_date},
      {"2024-04-06"_date, "2025-04-05"_date, "2024-05-05"_date, "2024-04-12"_date},
      {"2024-12-31"_date, "2025-04-05"_date, "2025-01-05"_date, "2025-01-03"_date},
      {"2025-01-05"_date, "2025-04-05"_date, "2025-01-05"_date, "2025-01-10"_date},
      {"2025-01-06"_date, "2025-04-05"_date, "2025-02-05"_date, "2025-01-10"_date},
      {"2025-04-05"_date, "2025-04-05"_date, "2025-04-05"_date, "2025-04-05"_date},
      {"0700-01-01"_date, "0700-04-05"_date, "0700-01-05"_date, "0700-01-03"_date},
  };
  for (const auto& row : rows) {
    for (const Date time : {row.date, row.date + 86399.5}) {
      EXPECT_EQ(nk_startOfLastDayOfTaxYear(time), row.year) << time;
      EXPECT_EQ(nk_startOfLastDayOfTaxMonth(time), row.month) << time;
      EXPECT_EQ(nk_startOfLastDayOfTaxWeek(time), row.week) << time;
    }
  }
}

TEST(NSDateNorvikTaxYear, NamesOfYears) {
  EXPECT_EQ(nk_taxYearName("2000-04-05"_date), "1999-00");
  EXPECT_EQ(nk_taxYearName("2009-04-06"_date), "2009-10");
  EXPECT_EQ(nk_taxYearName("0700-01-01"_date), "0699-00");
}

}  // namespace
}  // namespace norvik
