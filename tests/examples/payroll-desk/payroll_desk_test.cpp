// The parts of the payroll desk: what is edited, validated, searched, added up and saved.
#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QEventLoop>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <QTimer>

#include "InputReader.h"
#include "NorvikCore/platform/values/Decimal_literal.h"
#include "NorvikCore/qt/NKMainQueueRunner.h"
#include "NorvikCore/qt/QtConversions.h"
#include "payroll-desk/Counted.h"
#include "payroll-desk/Desk.h"
#include "payroll-desk/DeskWindow.h"
#include "payroll-desk/PayslipSheet.h"
#include "tests/support/DefaultsFolder.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using namespace norvik;
using desk::Desk;
using desk::Person;

class PayrollDesk : public ::testing::Test {
 protected:
  PayrollDesk() {
    folder.write("employer.ini",
                 "[employer]\nname = Caffi\npaye_reference = 1/A\ntax_year = 2024-25\n[departments]\nOPS = "
                 "Operations\nSAL = Sales\n");
    folder.write("employees.csv",
                 "employee,name,department,sort_code,account,address\n"
                 "E1,Si\u00e2n O'Brien,OPS,20-12-52,12345678,\"1 High Street, Bangor\"\n"
                 "E2,\"Hughes, Dai\",SAL,20-12-53,87654321,\n");
    folder.write("items.csv",
                 "employee,date,kind,description,amount\n"
                 "E1,2024-04-30,pay,Salary,2000.00\n"
                 "E1,2024-04-30,deduction,PAYE,400.00\n"
                 "E2,2024-04-30,pay,Salary,1000.10\n"
                 "E2,2024-05-30,pay,Salary,1000.10\n");
  }
  /// Runs the event loop until the condition is true.
  template <class Condition>
  static bool runUntil(Condition condition) {
    return QTest::qWaitFor(condition, 10000);
  }
  void open(int month = 1) const {
    desk->open(folder.path(), month);
    ASSERT_TRUE(runUntil([&] { return !desk->isBusy(); }));
  }
  Person& person(std::size_t index) const { return *desk->people()->objectAtIndex(index).object<Person>(); }

  const test::StandardDefaults preferences;
  const test::TemporaryFolder folder;
  const NKMainQueueRunner runner;
  const Ref<Desk> desk = make<Desk>();
};

TEST_F(PayrollDesk, OpensAFolderAndAddsItsPeopleUp) {
  open();
  EXPECT_EQ(desk->employer(), "Caffi");
  EXPECT_EQ(desk->period(), "Tax month 1 of 2024-25, 6 April 2024 to 5 May 2024");
  EXPECT_EQ(desk->status(), "Opened 2 people");
  EXPECT_EQ(desk->totals()->gross(), 3000.10_dec);
  EXPECT_EQ(desk->totals()->net(), 2600.10_dec);
  EXPECT_EQ(desk->selected()->name(), "Si\u00e2n O'Brien");
  open(2);
  EXPECT_EQ(desk->totals()->net(), 1000.10_dec);
}

TEST_F(PayrollDesk, AFolderThatCannotBeReadLeavesTheFormerOne) {
  open();
  desk->open(folder.path("nowhere"), 1);
  ASSERT_TRUE(runUntil([&] { return !desk->isBusy(); }));
  EXPECT_TRUE(desk->status().containsString("employer.ini"));
  EXPECT_EQ(desk->people()->count(), 2);
}

TEST_F(PayrollDesk, ARateMakesABonusAndTheTotalsFollow) {
  open();
  person(1).setBonusRate(7.5_dec);
  EXPECT_EQ(person(1).bonus(), 75.01_dec) << "half a penny is rounded up";
  EXPECT_EQ(person(1).bonusRate(), 7.5_dec) << "as it was typed";
  EXPECT_EQ(desk->totals()->net(), 2675.11_dec);
  person(1).setBonus(100_dec);
  EXPECT_EQ(person(1).bonusRate(), 10.00_dec);
  person(1).setBonus(0_dec);
  EXPECT_EQ(desk->totals()->net(), 2600.10_dec);
}

TEST_F(PayrollDesk, EditsAreValidated) {
  auto one = make<Person>(0U);
  const struct {
    const char *key, *why;
    Value value;
    bool isValid;
  } rows[] = {{"sortCode", "in pairs", "20-12-52", true},      {"sortCode", "five digits", "20-12-5", false},
              {"sortCode", "a letter", "20-12-5x", false},     {"account", "eight digits", "01234567", true},
              {"account", "seven digits", "0123456", false},   {"name", "blank", "  ", false},
              {"name", "a name", " Zo\u00eb ", true},          {"bonus", "none", Value(), true},
              {"bonus", "below zero", -0.01_dec, false},       {"bonus", "the greatest", 999999_dec, true},
              {"bonus", "too much", 999999.01_dec, false},     {"bonusRate", "all of it", 100, true},
              {"bonusRate", "more than all", 100.1_dec, false}};
  for (const auto& row : rows) {
    Value value = row.value;
    Ref<NSError> error;
    EXPECT_EQ(one->validateValue_forKey_error(value, row.key, &error), row.isValid) << row.key << ": " << row.why;
    EXPECT_EQ(error != nullptr, !row.isValid) << row.why;
  }
}

TEST_F(PayrollDesk, ASearchShowsWhoHasEachWord) {
  open();
  const auto found = [&](const char* words) {
    desk->search(words);
    EXPECT_TRUE(runUntil([&] { return !desk->isSearching(); }));
    std::string names;
    const Ref<NSArray> shown = desk->shown();
    for (const Value& each : *shown) names += each.object<Person>()->number().str();
    return names;
  };
  EXPECT_EQ(found("SI\u00c2N"), "E1");
  EXPECT_EQ(found("dai sales"), "E2");
  EXPECT_EQ(found("dai operations"), "");
  EXPECT_EQ(found("e"), "E1E2");
  desk->search("dai");
  open();
  EXPECT_TRUE(runUntil([&] { return !desk->isSearching(); }));
  EXPECT_EQ(desk->shown()->count(), 1) << "the search is repeated in a new folder";
}

TEST_F(PayrollDesk, SavingWritesWhatThePayRunReads) {
  open();
  desk->setSelected(ref(person(1)));
  person(1).setName("Hughes \"Dai\"");
  person(1).setSortCode("99-88-77");
  person(1).setBonus(50_dec);
  person(1).setBonusReason("Spring, at last");
  EXPECT_TRUE(desk->isEdited());
  desk->save();
  ASSERT_TRUE(runUntil([&] { return !desk->isEdited() && !desk->isBusy(); }));
  EXPECT_EQ(folder.read(folder.path("employees.csv")),
            "employee,name,department,sort_code,account,address\n"
            "E1,Si\u00e2n O'Brien,OPS,20-12-52,12345678,\"1 High Street, Bangor\"\n"
            "E2,\"Hughes \"\"Dai\"\"\",SAL,99-88-77,87654321,\n");
  EXPECT_TRUE(folder.read(folder.path("items.csv")).ends_with("\nE2,2024-05-05,bonus,\"Spring, at last\",50.00\n"));
  EXPECT_EQ(desk->selected()->number(), "E2");
  EXPECT_EQ(desk->selected()->pay(), 1050.10_dec);
  EXPECT_EQ(desk->selected()->bonus(), 0);
}

TEST_F(PayrollDesk, ThePayslipShowsTheEditsAsTextAndNotAsMarkup) {
  open();
  desk->setSelected(ref(person(0)));
  person(0).setBonus(12.5_dec);
  person(0).setBonusReason("<b>&");
  QString sheet;
  desk->preview([&](const QString& html) { sheet = html; });
  ASSERT_TRUE(runUntil([&] { return !sheet.isEmpty(); }));
  EXPECT_TRUE(sheet.contains("&lt;b&gt;&amp;"));
  EXPECT_TRUE(sheet.contains("2,012.50"));
}

TEST_F(PayrollDesk, APayslipIsPrinted) {
  open();
  desk->print(folder.path());
  ASSERT_TRUE(runUntil([&] { return !desk->isBusy(); }));
  EXPECT_EQ(desk->status(), "Printed E1 Si\u00e2n O'Brien 2024-25 month 1.pdf");
  EXPECT_TRUE(folder.read(folder.path("E1 Si\u00e2n O'Brien 2024-25 month 1.pdf")).starts_with("%PDF"));
}

TEST_F(PayrollDesk, TheWindowKeepsTheSelectedPersonDuringASearch) {
  desk::DeskWindow window(desk);
  window.show();
  open();
  auto& search = *window.findChild<QLineEdit*>("search");
  auto& table = *window.findChild<QTableView*>("people");
  EXPECT_EQ(table.currentIndex().row(), 0);
  QTest::keyClicks(&search, "dai");
  ASSERT_TRUE(runUntil([&] { return !desk->isSearching(); }));
  EXPECT_EQ(desk->selected()->number(), "E1");
  EXPECT_FALSE(table.currentIndex().isValid());
  EXPECT_EQ(window.findChild<QLineEdit*>("name")->text(), QString::fromUtf8("Si\u00e2n O'Brien"));
  search.clear();
  ASSERT_TRUE(runUntil([&] { return !desk->isSearching(); }));
  EXPECT_EQ(table.currentIndex().row(), 0);
  QTest::keyClick(&table, Qt::Key_Down);
  EXPECT_EQ(desk->selected()->number(), "E2");
  EXPECT_EQ(window.findChild<QLineEdit*>("sortCode")->text(), "20-12-53");
  EXPECT_FALSE(desk->isEdited()) << "nothing was typed";
}

TEST_F(PayrollDesk, AClickOnATitleSortsThePeople) {
  desk::DeskWindow window(desk);
  window.show();
  open();
  auto& table = *window.findChild<QTableView*>("people");
  const auto first = [&] { return table.model()->index(0, 1).data().toString(); };
  const auto click = [&](int column) {
    const QHeaderView& header = *table.horizontalHeader();
    QTest::mouseClick(header.viewport(), Qt::LeftButton, {},
                      {header.sectionViewportPosition(column) + header.sectionSize(column) / 2, header.height() / 2});
  };
  EXPECT_EQ(first(), "E1");
  click(3);
  EXPECT_EQ(first(), "E2") << "1,000.10 is less than 1,600.00";
  EXPECT_EQ(table.currentIndex().row(), 1) << "the selected person stays selected";
  EXPECT_EQ(desk->selected()->number(), "E1");
  click(3);
  EXPECT_EQ(first(), "E1");
  click(0);
  EXPECT_EQ(first(), "E2") << "Hughes, Dai";
}

TEST_F(PayrollDesk, EditsAreNotDiscardedWithoutAQuestion) {
  desk::DeskWindow window(desk);
  window.show();
  open();
  person(0).setBonus(5_dec);
  const auto answer = [](QMessageBox::StandardButton button) {
    QTimer::singleShot(0, [button] {
      auto* const question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      ASSERT_NE(question, nullptr);
      question->button(button)->click();
    });
  };
  auto& months = *window.findChild<QComboBox*>("months");
  answer(QMessageBox::Cancel);
  months.setFocus();
  QTest::keyClick(&months, Qt::Key_Down);
  EXPECT_EQ(months.currentIndex(), 0);
  EXPECT_TRUE(desk->isEdited());
  answer(QMessageBox::Cancel);
  EXPECT_FALSE(window.close());
  answer(QMessageBox::Discard);
  QTest::keyClick(&months, Qt::Key_Down);
  ASSERT_TRUE(runUntil([&] { return !desk->isBusy(); }));
  EXPECT_EQ(desk->month(), 2);
  EXPECT_FALSE(desk->isEdited());
}

TEST_F(PayrollDesk, TheKeyForSavingSavesWhatIsStillBeingTyped) {
  desk::DeskWindow window(desk);
  window.show();
  open();
  QApplication::setActiveWindow(&window);
  auto& bonus = *window.findChild<QLineEdit*>("bonus");
  bonus.setFocus();
  bonus.selectAll();
  QTest::keyClicks(&bonus, "7.5");
  EXPECT_FALSE(desk->isEdited()) << "editing has not ended";
  QTest::keyClick(&window, Qt::Key_S, Qt::ControlModifier);
  ASSERT_TRUE(runUntil([&] { return !desk->isBusy() && !desk->isEdited(); }));
  EXPECT_TRUE(folder.read(folder.path("items.csv")).ends_with("\nE1,2024-05-05,bonus,Bonus,7.50\n"));
}

TEST_F(PayrollDesk, TheWindowRemembersItsSize) {
  {
    desk::DeskWindow window(desk);
    window.resize(1500, 900);
    window.show();
    EXPECT_TRUE(window.close());
  }
  const desk::DeskWindow window(desk);
  EXPECT_EQ(window.size(), QSize(1500, 900));
}

TEST(PayrollDeskCounted, NumbersAreGrouped) {
  EXPECT_EQ(desk::grouped(0), "0");
  EXPECT_EQ(desk::grouped(999), "999");
  EXPECT_EQ(desk::grouped(1234567), "1,234,567");
  EXPECT_EQ(desk::counted(1, "person", "people"), "1 person");
}

}  // namespace
