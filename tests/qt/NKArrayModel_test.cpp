#include "NorvikCore/qt/NKArrayModel.h"

#include "NorvikCore/formatters/NKMonetaryTermDecimalNumberFormatter.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/qt/QtModels.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QSortFilterProxyModel>

#include <algorithm>
#include <random>
#include <thread>

namespace {

using namespace norvik;
using norvik::test::payslipOf;
using norvik::test::runUntil;

std::vector<NKArrayModel::Column> payslipColumns() {
  return {{.keyPath = "name", .title = "Name", .isEditable = true},
          {.keyPath = "grossPay",
           .title = "Gross pay",
           .formatter = make<NKMonetaryTermDecimalNumberFormatter>(),
           .alignment = Qt::AlignRight | Qt::AlignVCenter,
           .isEditable = true}};
}

/// A view: it follows the model only by its signals, and so must show the same.
class Follower : public QObject {
 public:
  explicit Follower(NKArrayModel& model) : model_(model) {
    reset();
    connect(&model, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex&, int first, int last) {
      ++changes;
      for (int i = first; i <= last; ++i) shown_.insert(shown_.begin() + i, nameAt(i));
    });
    connect(&model, &QAbstractItemModel::rowsRemoved, this, [this](const QModelIndex&, int first, int last) {
      ++changes;
      shown_.erase(shown_.begin() + first, shown_.begin() + last + 1);
    });
    connect(&model, &QAbstractItemModel::dataChanged, this, [this](const QModelIndex& cell) {
      ++cells;
      shown_[static_cast<std::size_t>(cell.row())] = nameAt(cell.row());
    });
    connect(&model, &QAbstractItemModel::layoutChanged, this, [this] {
      ++changes;
      reset();
    });
  }
  [[nodiscard]] const std::vector<std::string>& shown() const { return shown_; }
  int changes = 0, cells = 0;

 private:
  std::string nameAt(int row) const { return model_.index(row, 0).data().toString().toStdString(); }
  void reset() {
    shown_.clear();
    for (int i = 0; i < model_.rowCount(); ++i) shown_.push_back(nameAt(i));
  }
  NKArrayModel& model_;
  std::vector<std::string> shown_;
};

std::vector<std::string> namesOf(const QtPayRun& run) {
  std::vector<std::string> names;
  const Ref<NSArray> payslips = run.payslips();
  for (const Value& slip : *payslips) names.push_back(slip.object<QtPayslip>()->name().str());
  return names;
}

class NKArrayModelTest : public ::testing::Test {
 protected:
  NKArrayModelTest() {
    run->setPayslips(NSArray::arrayWithObjects(ann, bob, cid, dee));
    model.setColumns(payslipColumns());
    model.setContent(*run, "payslips");
  }
  Ref<QtPayslip> ann = payslipOf("Ann", 1200_dec), bob = payslipOf("Bob", 950.5_dec), cid = payslipOf("Cid"),
                 dee = payslipOf("Dee");
  Ref<QtPayRun> run = make<QtPayRun>();
  NKArrayModel model;
  QAbstractItemModelTester tester{&model, norvik::test::failing};
};

TEST_F(NKArrayModelTest, ShowsAKeyPathInEachColumn) {
  EXPECT_EQ(model.rowCount(), 4);
  EXPECT_EQ(model.headerData(1, Qt::Horizontal).toString(), "Gross pay");
  EXPECT_EQ(model.index(0, 1).data().toString(), "1,200.00");
  EXPECT_EQ(model.index(1, 1).data(Qt::EditRole).value<Decimal>(), 950.5_dec);
  EXPECT_EQ(model.index(1, 1).data(Qt::TextAlignmentRole).toInt(), Qt::AlignRight | Qt::AlignVCenter);
  EXPECT_EQ(model.index(1, 0).data(NKArrayModel::objectRole).value<Value>(), Value(bob));
  EXPECT_EQ(model.rowOfObject(*cid), 2);
  EXPECT_EQ(model.rowOfObject(*run), -1);
  EXPECT_EQ(model.objectAtRow(3), Value(dee));
  EXPECT_RAISES(static_cast<void>(model.objectAtRow(4)), "NSRangeException");
}

TEST_F(NKArrayModelTest, ReportsExactlyTheRowsThatWereInsertedAndRemoved) {
  QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted), removed(&model, &QAbstractItemModel::rowsRemoved),
      moved(&model, &QAbstractItemModel::layoutChanged), reset(&model, &QAbstractItemModel::modelReset);
  auto eve = payslipOf("Eve"), fay = payslipOf("Fay");
  run->setPayslips(NSArray::arrayWithObjects(ann, eve, cid, dee, fay));
  ASSERT_EQ(removed.size(), 1);
  EXPECT_EQ(removed[0][1].toInt(), 1);
  EXPECT_EQ(removed[0][2].toInt(), 1);
  ASSERT_EQ(inserted.size(), 2);
  EXPECT_EQ(inserted[0][1].toInt(), 1);
  EXPECT_EQ(inserted[1][1].toInt(), 4);
  run->setPayslips(NSArray::arrayWithObjects(ann, eve, cid, dee, fay));
  EXPECT_EQ(removed.size() + inserted.size(), 3) << "an equal array changes nothing";
  run->setPayslips(nullptr);
  EXPECT_EQ(model.rowCount(), 0);
  EXPECT_EQ(moved.size() + reset.size(), 0);
}

TEST_F(NKArrayModelTest, PersistentIndexesStayWithTheirElements) {
  const QPersistentModelIndex ofAnn = model.index(0, 1), ofBob = model.index(1, 0), ofDee = model.index(3, 0);
  run->setPayslips(NSArray::arrayWithObjects(dee, payslipOf("Eve"), cid, ann));
  EXPECT_EQ(ofAnn.row(), 3);
  EXPECT_EQ(ofAnn.column(), 1);
  EXPECT_FALSE(ofBob.isValid());
  EXPECT_EQ(ofDee.row(), 0);
}

TEST_F(NKArrayModelTest, AChangedPropertyIsReportedInEveryRowOfItsElement) {
  run->setPayslips(NSArray::arrayWithObjects(ann, bob, ann));
  const Follower follower(model);
  QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
  ann->setName("Anne");
  EXPECT_EQ(follower.shown(), (std::vector<std::string>{"Anne", "Bob", "Anne"}));
  ASSERT_EQ(changed.size(), 2);
  EXPECT_EQ(changed[1][0].toModelIndex(), model.index(2, 0));
  run->setPayslips(NSArray::arrayWithObjects(bob));
  ann->setName("Annie");
  EXPECT_EQ(changed.size(), 2) << "a removed element is not followed";
  EXPECT_FALSE(ann->isObserved());
}

TEST_F(NKArrayModelTest, AnElementIsObservedOnlyAfterItWasRead) {
  NKArrayModel other;
  other.setColumns({{.keyPath = "name", .title = "Name"}});
  auto quiet = make<QtPayRun>();
  auto eve = payslipOf("Eve");
  quiet->setPayslips(NSArray::arrayWithObjects(eve));
  other.setContent(*quiet, "payslips");
  EXPECT_FALSE(eve->isObserved());
  EXPECT_EQ(other.index(0, 0).data().toString(), "Eve");
  EXPECT_TRUE(eve->isObserved());
}

TEST_F(NKArrayModelTest, AfterAnyChangesAFollowerOfTheSignalsShowsTheArray) {
  Follower follower(model);
  std::mt19937 random(20240406);
  std::vector<Ref<QtPayslip>> all;
  for (int i = 0; i < 60; ++i) all.push_back(payslipOf(stringWithFormat("%d", i)));
  std::vector<Ref<QtPayslip>> present;
  const auto below = [&](std::size_t count) { return random() % count; };
  for (int round = 0; round < 400; ++round) {
    const std::size_t edits = round % 4 == 0 ? 40 : 3;
    for (std::size_t i = 0; i < edits; ++i) {
      const auto place = static_cast<std::ptrdiff_t>(below(present.size() + 1));
      switch (below(3)) {
        case 0:
          present.insert(present.begin() + place, all[below(all.size())]);
          break;
        case 1:
          if (place < std::ssize(present)) present.erase(present.begin() + place);
          break;
        default:
          if (place < std::ssize(present)) std::swap(present[static_cast<std::size_t>(place)], present.front());
      }
    }
    if (present.size() > 80) present.resize(30);
    const QPersistentModelIndex kept = model.index(model.rowCount() - 1, 0);
    const Value element = kept.isValid() ? model.objectAtRow(kept.row()) : Value();
    run->setPayslips(NSArray::arrayFrom(present));
    ASSERT_EQ(follower.shown(), namesOf(*run)) << round;
    if (kept.isValid()) {
      ASSERT_EQ(model.objectAtRow(kept.row()), element) << round;
    }
    all[below(all.size())]->setName(stringWithFormat("%d of round %d", 1, round));
    ASSERT_EQ(follower.shown(), namesOf(*run)) << round;
  }
}

TEST_F(NKArrayModelTest, SortsByTheValuesOfAColumn) {
  const auto shown = [this] {
    std::string names;
    for (int row = 0; row < model.rowCount(); ++row) names += model.index(row, 0).data().toString().toStdString() + " ";
    return names;
  };
  auto van = payslipOf("van A10", 100_dec), vanNine = payslipOf("Van A9", 20_dec), other = payslipOf("Ann", 20.00_dec);
  run->setPayslips(NSArray::arrayWithObjects(van, ann, vanNine, cid, other));
  model.sort(1);
  EXPECT_EQ(shown(), "Cid Van A9 Ann van A10 Ann ");
  EXPECT_EQ(model.rowOfObject(*vanNine), 1) << "equal amounts keep the array's order";
  model.sort(1, Qt::DescendingOrder);
  EXPECT_EQ(shown(), "Ann van A10 Van A9 Ann Cid ");
  EXPECT_EQ(model.rowOfObject(*ann), 0);
  model.sort(0);
  EXPECT_EQ(shown(), "Ann Ann Cid Van A9 van A10 ");

  const QPersistentModelIndex ofCid = model.index(2, 0);
  run->setPayslips(NSArray::arrayWithObjects(van, payslipOf("Bea"), cid));
  EXPECT_EQ(shown(), "Bea Cid van A10 ") << "a later array is sorted too";
  EXPECT_EQ(ofCid.row(), 1);
  cid->setName("Zoe");
  EXPECT_EQ(shown(), "Bea Zoe van A10 ") << "an edit moves no row";
  model.sort(-1);
  EXPECT_EQ(shown(), "van A10 Bea Zoe ");
  model.sort(7);
  EXPECT_EQ(shown(), "van A10 Bea Zoe ") << "no such column";
  model.sort(0, Qt::DescendingOrder);
  EXPECT_EQ(shown(), "Zoe van A10 Bea ");
  model.setColumns(payslipColumns());
  EXPECT_EQ(shown(), "van A10 Bea Zoe ");
  EXPECT_FALSE(ann->isObserved());
}

TEST_F(NKArrayModelTest, ValuesOfSeveralKindsHaveAnOrder) {
  run->setPayslips(NSArray::arrayWithObjects("b", Date(), 2, 1.5_dec, "a", Value::null(), Date() - 1));
  model.setColumns({{.keyPath = "self", .title = "Value"}});
  model.sort(0);
  const Value expected[] = {Value::null(), 1.5_dec, 2, Date() - 1, Date(), "a", "b"};
  for (int row = 0; row < 7; ++row) EXPECT_EQ(model.objectAtRow(row), expected[row]) << row;
}

TEST_F(NKArrayModelTest, AFilterOfManyRowsIsAFewChangesAndKeepsTheSelection) {
  std::vector<Ref<QtPayslip>> people, chosen;
  for (int i = 0; i < 10000; ++i) {
    people.push_back(payslipOf(stringWithFormat("%d", i)));
    if (i % 3 == 0) chosen.push_back(people.back());
  }
  run->setPayslips(NSArray::arrayFrom(people));
  const Follower follower(model);
  const QPersistentModelIndex selected = model.index(9, 0);
  run->setPayslips(NSArray::arrayFrom(chosen));
  EXPECT_EQ(follower.changes, 2);
  EXPECT_EQ(selected.row(), 3);
  run->setPayslips(NSArray::arrayFrom(people));
  EXPECT_EQ(follower.changes, 4);
  EXPECT_EQ(selected.row(), 9);
  EXPECT_EQ(follower.shown(), namesOf(*run));
}

TEST_F(NKArrayModelTest, AMutableArrayIsComparedOnReload) {
  auto array = NSMutableArray::arrayWithObjects(ann, bob);
  run->setPayslips(array);
  array->addObject(cid);
  array->removeObjectAtIndex(0);
  EXPECT_EQ(model.rowCount(), 2);
  EXPECT_EQ(model.objectAtRow(0), Value(ann)) << "the rows are a copy";
  model.reload();
  EXPECT_EQ(model.objectAtRow(0), Value(bob));
  EXPECT_EQ(model.objectAtRow(1), Value(cid));
}

TEST_F(NKArrayModelTest, AnEditedCellIsReadValidatedAndSet) {
  QSignalSpy refused(&model, &NKArrayModel::editRefused);
  EXPECT_TRUE(model.setData(model.index(0, 1), "1,300.555"));
  EXPECT_EQ(ann->grossPay(), 1300.56_dec) << "the validation rounds";
  EXPECT_EQ(model.index(0, 1).data().toString(), "1,300.56");
  EXPECT_FALSE(model.setData(model.index(0, 1), "-3"));
  EXPECT_FALSE(model.setData(model.index(0, 1), "much"));
  ASSERT_EQ(refused.size(), 2);
  EXPECT_EQ(refused[0][1].toString(), "Pay is not below zero.");
  EXPECT_NE(refused[1][1].toString(), "");
  EXPECT_EQ(ann->grossPay(), 1300.56_dec);
  EXPECT_FALSE(model.setData(model.index(0, 1), "1", Qt::DisplayRole));
}

TEST_F(NKArrayModelTest, ValuesThatAreNoObjectsAndKeysThatAreMissing) {
  run->setPayslips(NSArray::arrayWithObjects("one", 2, 3.50_dec, "one"));
  model.setColumns({{.keyPath = "self", .title = "Value"}, {.keyPath = "missing", .title = "Missing"}});
  EXPECT_EQ(model.index(2, 0).data().toString(), "3.50");
  EXPECT_FALSE(model.index(2, 1).data().isValid() && !model.index(2, 1).data().toString().isEmpty());
  EXPECT_FALSE(model.flags(model.index(0, 0)) & Qt::ItemIsEditable);
  run->setPayslips(NSArray::arrayWithObjects(2, "one", "one", "one"));
  EXPECT_EQ(model.index(3, 0).data().toString(), "one");
}

TEST_F(NKArrayModelTest, AnArrayThatAnotherThreadSetsArrivesInTheEventLoop) {
  Follower follower(model);
  std::thread([&] {
    for (int i = 0; i < 100; ++i) run->setPayslips(NSArray::arrayWithObjects(dee, payslipOf("Eve"), bob));
    dee->setName("Di");
  }).join();
  EXPECT_EQ(model.rowCount(), 4);
  EXPECT_TRUE(runUntil([&] { return follower.shown() == std::vector<std::string>{"Di", "Eve", "Bob"}; }));
  std::thread([&] { run->setPayslips(NSArray::arrayWithObjects(ann)); }).join();
  run->setPayslips(NSArray::arrayWithObjects(bob));
  QCoreApplication::processEvents();
  EXPECT_EQ(model.objectAtRow(0), Value(bob)) << "an older change does not overtake";
}

TEST_F(NKArrayModelTest, TheModelIsDestroyedWhileAnotherThreadChangesTheArray) {
  std::atomic<bool> isDone = false;
  std::thread changes([&] {
    for (int i = 0; !isDone; ++i) {
      run->setPayslips(i % 2 == 0 ? NSArray::arrayWithObjects(ann, bob) : NSArray::arrayWithObjects(cid));
      ann->setName(stringWithFormat("%d", i));
    }
  });
  for (int i = 0; i < 100; ++i) {
    NKArrayModel brief;
    brief.setColumns(payslipColumns());
    brief.setContent(*run, "payslips");
    for (int row = 0; row < brief.rowCount(); ++row) brief.index(row, 0).data();
    QCoreApplication::processEvents();
  }
  isDone = true;
  changes.join();
}

TEST_F(NKArrayModelTest, TheOwnerMayBeDestroyedFirstAndWhatIsNoArrayRaises) {
  run = nullptr;
  EXPECT_EQ(model.rowCount(), 4);
  model.reload();
  model.removeContent();
  EXPECT_EQ(model.rowCount(), 0);
  EXPECT_RAISES(model.setContent(*ann, "name"), "NSInvalidArgumentException");
  EXPECT_RAISES(model.setContent(*ann, "nane"), NSUndefinedKeyException.utf8());
  EXPECT_FALSE(ann->isObserved());
}

}  // namespace
