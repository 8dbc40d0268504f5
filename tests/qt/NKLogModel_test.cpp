#include "NorvikCore/qt/NKLogModel.h"

#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/qt/NKLogView.h"
#include "tests/qt/QtModels.h"
#include "tests/support/RecordingLogger.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QTest>

#include <thread>

namespace {

using namespace norvik;
using norvik::test::runUntil;
using norvik::test::say;

class NKLogModelTest : public norvik::test::CleanDDLog {};
using NKLogViewTest = NKLogModelTest;

std::vector<std::string> texts(const NKLogModel& model) {
  std::vector<std::string> texts;
  for (int i = 0; i < model.rowCount(); ++i) {
    texts.push_back(model.index(i, NKLogModel::TextColumn).data().toString().toStdString());
  }
  return texts;
}

TEST_F(NKLogModelTest, HeaderExample) {
  QTableView table;
  QTableView *const window = &table, *const view = &table;
  auto* log = new NKLogModel(window);
  log->setLevel(LOG_LEVEL_WARN);
  view->setModel(log);
  say("read", LOG_FLAG_INFO);
  say("late", LOG_FLAG_WARN);
  ASSERT_TRUE(runUntil([&] { return view->model()->rowCount() == 1; }));
  EXPECT_EQ(texts(*log), std::vector<std::string>{"late"});
  log->setLevel(LOG_LEVEL_VERBOSE);
  EXPECT_EQ(texts(*log), (std::vector<std::string>{"read", "late"}));
}

TEST_F(NKLogModelTest, FollowsTheLogAndShowsWhatTheLevelAdmits) {
  NKLogModel model;
  const QAbstractItemModelTester tester(&model, norvik::test::failing);
  say("lost\ngiro", LOG_FLAG_ERROR);
  say("late", LOG_FLAG_WARN);
  say("read", LOG_FLAG_VERBOSE);
  ASSERT_TRUE(runUntil([&] { return model.rowCount() == 3; }));
  EXPECT_EQ(texts(model), (std::vector<std::string>{"lost\\ngiro", "late", "read"}));
  EXPECT_EQ(model.index(1, NKLogModel::LevelColumn).data().toString(), "Warning");
  EXPECT_EQ(model.index(1, 0).data(NKLogModel::levelRole).toInt(), LOG_FLAG_WARN);
  EXPECT_EQ(model.index(1, 0).data(Qt::ToolTipRole).toString(), "<p>late<br>\nfile:1</p>");
  model.setLevel(LOG_LEVEL_WARN);
  EXPECT_EQ(texts(model), (std::vector<std::string>{"lost\\ngiro", "late"}));
  say("read again", LOG_FLAG_INFO);
  say("late again", LOG_FLAG_WARN);
  ASSERT_TRUE(runUntil([&] { return model.rowCount() == 3; }));
  model.setLevel(LOG_LEVEL_VERBOSE);
  EXPECT_EQ(texts(model), (std::vector<std::string>{"lost\\ngiro", "late", "read", "read again", "late again"}));
  model.clear();
  EXPECT_EQ(model.rowCount(), 0);
  say("new", LOG_FLAG_ERROR);
  EXPECT_TRUE(runUntil([&] { return model.rowCount() == 1; }));
}

TEST_F(NKLogModelTest, KeepsTheNewestMessagesOfManyThreadsInBoundedMemory) {
  NKLogModel model(100, nullptr);
  const QAbstractItemModelTester tester(&model, norvik::test::failing);
  model.setLevel(LOG_LEVEL_WARN);
  for (int round = 0; round < 3; ++round) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([] {
        for (int i = 0; i < 500; ++i) say(stringWithFormat("%d", i), i % 2 == 0 ? LOG_FLAG_WARN : LOG_FLAG_INFO);
      });
    }
    for (std::thread& thread : threads) thread.join();
    say("last", LOG_FLAG_WARN);
    DDLog::flushLog();
    ASSERT_TRUE(runUntil([&] { return model.rowCount() > 0 && texts(model).back() == "last"; }));
    EXPECT_LE(model.rowCount(), 100);
    model.setLevel(LOG_LEVEL_VERBOSE);
    EXPECT_EQ(model.rowCount(), 100);
    model.setLevel(LOG_LEVEL_WARN);
  }
}

TEST_F(NKLogModelTest, CutsALongText) {
  NKLogModel model;
  say(NSString(std::string(1000000, 'x')), LOG_FLAG_ERROR);
  ASSERT_TRUE(runUntil([&] { return model.rowCount() == 1; }));
  EXPECT_EQ(model.index(0, NKLogModel::TextColumn).data().toString().size(), 2001);
}

TEST_F(NKLogModelTest, ADestroyedModelLeavesTheLogWhileThreadsLog) {
  std::atomic<bool> isDone = false;
  std::thread logs([&] {
    while (!isDone) say("again");
  });
  for (int i = 0; i < 50; ++i) {
    const NKLogModel model;
    runUntil([&] { return model.rowCount() > 0; });
  }
  isDone = true;
  logs.join();
  DDLog::flushLog();
  EXPECT_TRUE(DDLog::allLoggers().empty());
}

TEST_F(NKLogViewTest, HeaderExample) {
  QTabWidget pages;
  QTabWidget *const window = &pages, *const tabs = &pages;
  auto* log = new NKLogView(new NKLogModel(window));
  tabs->addTab(log, "Log");
  EXPECT_EQ(tabs->tabText(0), "Log");
  say("late", LOG_FLAG_WARN);
  EXPECT_TRUE(runUntil([&] { return log->model().rowCount() == 1; }));
}

TEST_F(NKLogViewTest, OffersTheLevelsAndCopiesTheSelectedMessages) {
  NKLogView view(new NKLogModel);
  view.show();
  say("lost", LOG_FLAG_ERROR);
  say("late", LOG_FLAG_WARN);
  say("read", LOG_FLAG_INFO);
  ASSERT_TRUE(runUntil([&] { return view.model().rowCount() == 3; }));
  auto& level = *view.findChild<QComboBox*>("level");
  auto& messages = *view.findChild<QTableView*>("messages");
  EXPECT_EQ(level.currentText(), "Everything");
  level.setCurrentIndex(level.findText("Errors"));
  EXPECT_EQ(view.level(), LOG_LEVEL_ERROR);
  EXPECT_EQ(view.model().rowCount(), 1);
  view.setLevel(static_cast<LogLevel>(2));
  EXPECT_EQ(view.level(), LOG_LEVEL_WARN);
  EXPECT_EQ(view.model().rowCount(), 2);
  messages.selectAll();
  QTest::keyClick(&messages, Qt::Key_C, Qt::ControlModifier);
  const QStringList lines = view.selectedText().split('\n');
  ASSERT_EQ(lines.size(), 3);
  EXPECT_TRUE(lines[0].endsWith("\tlost"));
  EXPECT_TRUE(lines[1].contains("\tWarning\t"));
  EXPECT_EQ(QApplication::clipboard()->text(), view.selectedText());
  QTest::mouseClick(view.findChild<QPushButton*>("clear"), Qt::LeftButton);
  EXPECT_EQ(view.model().rowCount(), 0);
}

}  // namespace
