#include "PayRun.h"

#include <gtest/gtest.h>

#include "tests/examples/payrun/SmallEmployer.h"

namespace payrun_test {
namespace {

using namespace norvik;
using payrun::ItemKind;
using payrun::PayRun;

TEST(PayRun, AnEmployerOfNobodyPaysNothing) {
  const payrun::Employer employer = smallEmployer();
  const PayRun run(employer, 1);
  EXPECT_EQ(run.total().people, 0U);
  EXPECT_EQ(run.total().month.net(), 0);
  ASSERT_EQ(run.departmentTotals().size(), 2U);
  EXPECT_EQ(run.departmentTotals()[1].toDate.pay, 0);
  EXPECT_TRUE(run.employeesBelowZero().empty());
}

TEST(PayRun, TotalsAreOfEachDepartmentAlsoOfAnEmptyOneAndOfAll) {
  payrun::Employer employer = smallEmployer();
  employer.add(payrun::Department{"FIN", "Finance"});
  for (const char* number : {"E1", "E2", "E3"}) employer.add(person(number, "Somebody"));
  payrun::Employee inFinance = person("E4", "Ann");
  inFinance.department = 2;
  employer.add(inFinance);
  PayRun run(employer, 2);
  run.add(item(0, 4, 28, ItemKind::Pay, 100.10_dec, "Salary"));
  run.add(item(0, 5, 28, ItemKind::Pay, 200.20_dec, "Salary"));
  run.add(item(1, 5, 28, ItemKind::Deduction, 50_dec, "Tax"));
  run.add(item(3, 5, 28, ItemKind::Bonus, 7.77_dec, "Bonus"));
  run.add(item(3, 6, 28, ItemKind::Pay, 1000_dec, "of a later month"));
  const auto totals = run.departmentTotals();
  ASSERT_EQ(totals.size(), 3U);
  EXPECT_EQ(totals[0].people, 3U);
  EXPECT_EQ(totals[0].month.pay, 200.20_dec);
  EXPECT_EQ(totals[0].month.deductions, 50_dec);
  EXPECT_EQ(totals[0].toDate.pay, 300.30_dec);
  EXPECT_EQ(totals[1].people, 0U);
  EXPECT_EQ(totals[1].month.pay, 0);
  EXPECT_EQ(totals[2].people, 1U);
  EXPECT_EQ(totals[2].month.pay, 7.77_dec);
  EXPECT_EQ(run.total().people, 4U);
  EXPECT_EQ(run.total().month.net(), 157.97_dec);
  EXPECT_EQ(run.total().toDate.net(), 258.07_dec);
  EXPECT_EQ(run.employeesBelowZero(), (std::vector<std::size_t>{1}));
}

TEST(PayRun, KeepsTheMonthsItemsByTheirDaysAndThoseOfADayInTheirOrder) {
  payrun::Employer employer = smallEmployer();
  employer.add(person("E1", "Zoë"));
  employer.add(person("E2", "Ann"));
  PayRun run(employer, 1);
  run.add(item(0, 4, 28, ItemKind::Pay, 3_dec, "third"));
  run.add(item(1, 4, 28, ItemKind::Pay, 9_dec, "Ann's"));
  run.add(item(0, 4, 6, ItemKind::Bonus, 1_dec, "first"));
  run.add(item(0, 4, 28, ItemKind::Deduction, 4_dec, "fourth"));
  run.add(item(0, 5, 6, ItemKind::Pay, 5_dec, "of the next month"));
  run.add(item(0, 4, 7, ItemKind::Pay, 2_dec, std::string("sec") + "ond"));
  const auto items = run.itemsOf(0);
  ASSERT_EQ(items.size(), 4U);
  EXPECT_EQ(items[0].description, "first");
  EXPECT_EQ(items[0].kind, ItemKind::Bonus);
  EXPECT_EQ(items[0].day, nk_dateWithYear(2024, 4, 6));
  EXPECT_EQ(items[1].description, "second") << "the text that was read is gone";
  EXPECT_EQ(items[2].description, "third");
  EXPECT_EQ(items[3].description, "fourth");
  EXPECT_EQ(items[3].amount, 4_dec);
  ASSERT_EQ(run.itemsOf(1).size(), 1U);
}

TEST(PayRun, AMovedItemIsOfTheMonthThatItLeftAndOfTheOneInWhichItCounts) {
  payrun::Employer employer = smallEmployer();
  employer.add(person("E1", "Zoë"));
  payrun::PayItem moved = item(0, 5, 6, ItemKind::Pay, 1_dec, "Salary");
  moved.moved = payrun::MovedFrom{17, nk_dateWithYear(2024, 5, 5), "2024-05-05 14:30:00"};
  for (const int month : {1, 2, 3}) {
    PayRun run(employer, month);
    run.add(moved);
    ASSERT_EQ(run.movedItems().size(), month < 3 ? 1U : 0U) << month;
    if (month == 3) continue;
    EXPECT_EQ(run.movedItems()[0].line, 17U);
    EXPECT_EQ(run.movedItems()[0].from, "2024-05-05 14:30:00");
    EXPECT_EQ(run.movedItems()[0].to, nk_dateWithYear(2024, 5, 6));
    EXPECT_EQ(run.total().month.pay, month == 2 ? 1_dec : 0_dec);
  }
}

}  // namespace
}  // namespace payrun_test
