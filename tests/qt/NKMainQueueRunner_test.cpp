#include "NorvikCore/qt/NKMainQueueRunner.h"

#include "NorvikCore/dispatch/TSKDispatchQueue.h"
#include "NorvikCore/platform/dispatch/MainQueue.h"
#include "tests/qt/QtModels.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <QDialog>
#include <QThread>
#include <QTimer>

#include <string>
#include <thread>
#include <vector>

namespace {

using namespace norvik;
using norvik::test::runUntil;

TEST(NKMainQueueRunner, HeaderExample) {
  const auto import = TSKDispatchQueue::dispatchQueueWithLabel("import");
  const auto readEmployees = [] { return std::vector<std::string>{"Ann", "Bob"}; };
  std::vector<std::string> shown;
  const auto show = [&shown](const std::vector<std::string>& people) { shown = people; };
  NKMainQueueRunner runner;
  import->dispatchAsynchronously([&] {
    const auto people = readEmployees();
  EXPECT_NE(QThread::currentThread(), QCoreApplication::instance()->thread());
  TSKDispatchQueue::mainDispatchQueue()->dispatchAsynchronously([people, &show] { show(people); });
});
EXPECT_TRUE(runUntil([&] { return !shown.empty(); }));
EXPECT_EQ(shown, (std::vector<std::string>{"Ann", "Bob"}));
}  // namespace

TEST(NKMainQueueRunner, RunsTheBlocksOfOtherThreadsOnTheMainThreadInOrder) {
  const NKMainQueueRunner runner;
  std::vector<int> order;
  auto reader = TSKDispatchQueue::dispatchQueueWithLabel("reader");
  reader->dispatchAsynchronously([&order] {
    for (int i = 0; i < 100; ++i) {
      TSKDispatchQueue::mainDispatchQueue()->dispatchAsynchronously([&order, i] {
        EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
        order.push_back(i);
      });
    }
  });
  ASSERT_TRUE(runUntil([&] { return order.size() == 100; }));
  for (int i = 0; i < 100; ++i) EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST(NKMainQueueRunner, ASynchronousBlockOfAnotherThreadGetsItsAnswer) {
  const NKMainQueueRunner runner;
  int answer = 0;
  std::atomic<bool> isDone = false;
  std::thread asker([&] {
    TSKDispatchQueue::mainDispatchQueue()->dispatchSynchronously([&] { answer = 42; });
    isDone = true;
  });
  EXPECT_TRUE(runUntil([&] { return isDone.load(); }));
  asker.join();
  EXPECT_EQ(answer, 42);
}

TEST(NKMainQueueRunner, BlocksRunInTheLoopOfADialogThatAnEventShows) {
  const NKMainQueueRunner runner;
  int ran = 0;
  bool isClosed = false;
  QTimer::singleShot(0, [&] {
    QDialog dialog;
    dispatch_async(dispatch_get_main_queue(), [&] {
      ++ran;
      dialog.accept();
    });
    EXPECT_EQ(dialog.exec(), QDialog::Accepted);
    isClosed = true;
  });
  EXPECT_TRUE(runUntil([&] { return isClosed; }));
  EXPECT_EQ(ran, 1);
}

TEST(NKMainQueueRunner, ABlockThatShowsADialogHoldsUpTheBlocksBehindItButNotQt) {
  const NKMainQueueRunner runner;
  std::vector<std::string> order;
  dispatch_async(dispatch_get_main_queue(), [&] {
    dispatch_async(dispatch_get_main_queue(), [&] { order.emplace_back("next block"); });
    QDialog dialog;
    QTimer::singleShot(0, [&] {
      order.emplace_back("timer of Qt");
      dialog.accept();
    });
    dialog.exec();
    order.emplace_back("dialog closed");
  });
  EXPECT_TRUE(runUntil([&] { return order.size() == 3; }));
  EXPECT_EQ(order, (std::vector<std::string>{"timer of Qt", "dialog closed", "next block"}));
}

TEST(NKMainQueueRunner, LaterRunsADialogInWhichBlocksRun) {
  const NKMainQueueRunner runner;
  bool isClosed = false;
  dispatch_async(dispatch_get_main_queue(), [&] {
    NKMainQueueRunner::later([&] {
      QDialog dialog;
      dispatch_async(dispatch_get_main_queue(), [&] { dialog.accept(); });
      dialog.exec();
      isClosed = true;
    });
  });
  EXPECT_TRUE(runUntil([&] { return isClosed; }));
}

TEST(NKMainQueueRunner, AnEndlessChainOfBlocksLeavesQtItsTurns) {
  const NKMainQueueRunner runner;
  bool isOver = false;
  std::function<void()> again = [&] {
    if (!isOver) dispatch_async(dispatch_get_main_queue(), again);
  };
  again();
  QTimer::singleShot(20, [&] { isOver = true; });
  EXPECT_TRUE(runUntil([&] { return isOver; }));
  runUntil([] { return dispatch_main_queue_drain() == 0; });
}

TEST(NKMainQueueRunner, ABlockMayDestroyTheRunner) {
  auto* runner = new NKMainQueueRunner;
  bool isDone = false, isLeft = false;
  dispatch_async(dispatch_get_main_queue(), [&] {
    delete runner;
    isDone = true;
  });
  dispatch_async(dispatch_get_main_queue(), [&] { isLeft = true; });
  EXPECT_TRUE(runUntil([&] { return isDone; }));
  QCoreApplication::processEvents();
  EXPECT_FALSE(isLeft);
  dispatch_main_queue_drain();
  EXPECT_TRUE(isLeft);
}

TEST(NKMainQueueRunner, ASecondOneAndOneOnAnotherThreadRaise) {
  std::thread([] { EXPECT_RAISES(NKMainQueueRunner(), "NSInvalidArgumentException"); }).join();
  const NKMainQueueRunner runner;
  EXPECT_RAISES(NKMainQueueRunner(), "NSInvalidArgumentException");
}

}  // namespace
