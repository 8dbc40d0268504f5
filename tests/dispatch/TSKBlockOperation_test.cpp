#include "NorvikCore/dispatch/TSKBlockOperation.h"

#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/dispatch/Wrappers.h"
#include "tests/support/ExpectRaises.h"
#include "tests/support/InChild.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace norvik {
namespace {

using test::concurrent;
using test::flush;
using test::serial;
using test::Wrapper;

class BlockOperation : public test::WatchedTest {};
class BlockOperationDeathTest : public test::WatchedDeathTest {};

TEST_F(BlockOperation, HeaderExample) {
  bool written = false;
  const Wrapper payroll = serial("payroll");
  auto reports = TSKBlockOperation::dispatchedOperationWithQueue(payroll, [&] { written = true; });
  reports->waitUntilFinished();
  EXPECT_TRUE(written);
}

TEST_F(BlockOperation, RunsItsBlockOnTheTargetInsideBothQueues) {
  const Wrapper target = serial("payroll");
  bool onTarget = false;
  bool inBoth = false;
  Ref<TSKBlockOperation> operation;
  std::latch known(1);
  operation = TSKBlockOperation::dispatchedOperationWithQueue(target, [&] {
    known.wait();
    onTarget = target->isCurrentQueue();
    inBoth = target->isInCurrentQueueStack() && operation->queue()->isInCurrentQueueStack();
  });
  known.count_down();
  operation->waitUntilFinished();
  EXPECT_TRUE(onTarget);
  EXPECT_TRUE(inBoth);
}

TEST_F(BlockOperation, IsDoneOnceItsBlockHasRun) {
  std::latch go(1);
  std::latch running(1);
  const auto operation = TSKBlockOperation::dispatchedOperationWithQueue(serial("a"), [&] {
    running.count_down();
    go.wait();
  });
  EXPECT_FALSE(operation->done());
  running.wait();
  EXPECT_FALSE(operation->done());
  go.count_down();
  operation->waitUntilFinished();
  EXPECT_TRUE(operation->done());
  operation->waitUntilFinished();  // returns at once
  operation->setDone(false);
  EXPECT_FALSE(operation->done());
}

TEST_F(BlockOperation, HasAQueueOfItsOwnNamedAfterTheTarget) {
  const auto operation = TSKBlockOperation::dispatchedOperationWithQueue(serial("payroll"), [] {});
  EXPECT_EQ(operation->queue()->label(), NSString("payroll.block_operation"));
  EXPECT_EQ(operation->queue()->deadlockBehavior(), TSKDeadlockExecuteInline);
  const auto unnamed = TSKBlockOperation::dispatchedOperationWithQueue(
      TSKDispatchQueue::dispatchQueueWithGCDQueue(dispatch_queue_create("bare"), TSKDeadlockSkip), [] {});
  EXPECT_EQ(unnamed->queue()->label(), NSString("TSKDispatchQueue"));
  operation->waitUntilFinished();
  unnamed->waitUntilFinished();
}

TEST_F(BlockOperation, WaitsOnTheQueueItIsGiven) {
  const auto operation = TSKBlockOperation::dispatchedOperationWithQueue(serial("a"), [] {});
  operation->waitUntilFinished();
  const Wrapper other = serial("other");
  operation->setQueue(other);
  EXPECT_EQ(operation->queue(), other);
  std::latch go(1);
  bool ran = false;
  other->dispatchAsynchronously([&] {
    go.wait();
    ran = true;
  });
  go.count_down();
  operation->waitUntilFinished();
  EXPECT_TRUE(ran);
}

TEST_F(BlockOperation, AnyNumberOfThreadsMayWait) {
  std::latch go(1);
  std::atomic<bool> ran{false};
  const auto operation = TSKBlockOperation::dispatchedOperationWithQueue(serial("a"), [&] {
    go.wait();
    ran = true;
  });
  std::atomic<int> early{0};
  std::vector<std::thread> waiters;
  for (int i = 0; i < 8; ++i) {
    waiters.emplace_back([&] {
      operation->waitUntilFinished();
      if (!ran) ++early;
    });
  }
  go.count_down();
  for (std::thread& waiter : waiters) waiter.join();
  EXPECT_EQ(early.load(), 0);
}

TEST_F(BlockOperation, WaitingInsideItselfReturnsAtOnce) {
  Ref<TSKBlockOperation> operation;
  std::latch known(1);
  bool doneInside = true;
  operation = TSKBlockOperation::dispatchedOperationWithQueue(serial("a"), [&] {
    known.wait();
    operation->waitUntilFinished();
    doneInside = operation->done();
  });
  known.count_down();
  operation->waitUntilFinished();
  EXPECT_FALSE(doneInside);
}

TEST_F(BlockOperation, ABlockForABusyTargetWaitsForItsTurn) {
  const Wrapper target = serial("a");
  std::latch go(1);
  std::string seen;
  target->dispatchAsynchronously([&] {
    go.wait();
    seen += "first ";
  });
  const auto operation = TSKBlockOperation::dispatchedOperationWithQueue(target, [&] { seen += "second"; });
  go.count_down();
  operation->waitUntilFinished();
  EXPECT_EQ(seen, "first second");
}

TEST_F(BlockOperation, IsFinishedWhateverTheTargetRefusedInside) {
  const struct {
    TSKDeadlockBehavior behavior;
    int runs;
    std::size_t lines;
  } rows[] = {{TSKDeadlockExecuteInline, 1, 0}, {TSKDeadlockSkip, 0, 0}, {TSKDeadlockSkipAndLog, 0, 1}};
  for (const auto& row : rows) {
    const kernel::SystemLogCapture console;
    const Wrapper target = serial("a", row.behavior);
    int runs = 0;
    const auto operation = TSKBlockOperation::dispatchedOperationWithQueue(
        target, [&] { target->dispatchSynchronously([&] { ++runs; }); });
    operation->waitUntilFinished();
    EXPECT_TRUE(operation->done());
    EXPECT_EQ(runs, row.runs) << row.behavior;
    EXPECT_EQ(console.lines().size(), row.lines) << row.behavior;
  }
}

TEST_F(BlockOperation, OnAConcurrentTargetABlockMayWaitForIt) {
  const Wrapper target = concurrent();
  bool ran = false;
  target->dispatchSynchronously(
      [&] { TSKBlockOperation::dispatchedOperationWithQueue(target, [&] { ran = true; })->waitUntilFinished(); });
  EXPECT_TRUE(ran);
}

TEST_F(BlockOperation, OnASerialTargetSuchAWaitNeverEnds) {
  RUN_IN_CHILD({
    const Wrapper target = serial("a");
    std::atomic<bool> returned{false};
    const auto asked = dispatch_semaphore_create(0);
    target->dispatchAsynchronously([&] {
      const auto operation = TSKBlockOperation::dispatchedOperationWithQueue(target, [] {});
      EXPECT_FALSE(operation->queue()->isInCurrentQueueStack()) << "nothing tells the check that it would hang";
      dispatch_semaphore_signal(asked);
      operation->waitUntilFinished();
      returned = true;
    });
    dispatch_semaphore_wait(asked, DISPATCH_TIME_FOREVER);
    const auto never = dispatch_semaphore_create(0);
    EXPECT_NE(dispatch_semaphore_wait(never, dispatch_time(DISPATCH_TIME_NOW, 200 * NSEC_PER_MSEC)), 0);
    EXPECT_FALSE(returned);
  });
}

TEST_F(BlockOperation, ItsBlockKeepsItUntilItHasRun) {
  std::latch go(1);
  Wrapper target = serial("a");
  const Weak<TSKDispatchQueue> watchedTarget = target;
  Ref<TSKBlockOperation> operation = TSKBlockOperation::dispatchedOperationWithQueue(target, [&] { go.wait(); });
  const Weak<TSKBlockOperation> watched = operation;
  const auto own = operation->queue()->queue();
  target = nullptr;
  operation = nullptr;
  EXPECT_TRUE(watched.lock());
  EXPECT_TRUE(watchedTarget.lock());
  go.count_down();
  dispatch_sync(own, [] {});
  EXPECT_FALSE(watched.lock());
  EXPECT_FALSE(watchedTarget.lock());
}

TEST_F(BlockOperation, WithoutAQueueOfItsOwnThereIsNothingToWaitFor) {
  std::latch go(1);
  const auto operation = TSKBlockOperation::dispatchedOperationWithQueue(serial("a"), [&] { go.wait(); });
  const Wrapper own = operation->queue();
  operation->setQueue(nullptr);
  operation->waitUntilFinished();
  EXPECT_FALSE(operation->done());
  go.count_down();
  flush(own);
  EXPECT_TRUE(operation->done());
}

TEST_F(BlockOperation, AnAbsentQueueOrBlockRaises) {
  EXPECT_RAISES(TSKBlockOperation::dispatchedOperationWithQueue(nullptr, [] {}), "NSInvalidArgumentException");
  const Block<void()> none;
  EXPECT_RAISES(TSKBlockOperation::dispatchedOperationWithQueue(serial("a"), none), "NSInvalidArgumentException");
}

TEST_F(BlockOperationDeathTest, AnExceptionThatLeavesTheBlockEndsTheProcess) {
  EXPECT_DEATH(
      TSKBlockOperation::dispatchedOperationWithQueue(serial("payroll"), [] { throw std::runtime_error("lost"); })
          ->waitUntilFinished(),
      "an exception left an asynchronous block of the queue \"payroll.block_operation\": lost");
}

}  // namespace
}  // namespace norvik
