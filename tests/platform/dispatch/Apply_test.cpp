#include "NorvikCore/platform/dispatch/Apply.h"

#include "NorvikCore/platform/dispatch/MainQueue.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/platform/dispatch/Watchdog.h"
#include "tests/support/LittleMemory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <new>
#include <stdexcept>
#include <thread>
#include <vector>

namespace norvik {
namespace {

class Apply : public test::WatchedTest {};

struct Payslip {
  Decimal pay, deductions;
};
Decimal netPay(const Payslip& payslip) { return payslip.pay - payslip.deductions; }

TEST_F(Apply, HeaderExample) {
  const std::vector<Payslip> payslips = {{Decimal(1000), Decimal(250)}, {Decimal(900), Decimal(200)}};
  std::vector<Decimal> net(payslips.size());
  dispatch_apply(payslips.size(), dispatch_get_global_queue(), [&](std::size_t i) { net[i] = netPay(payslips[i]); });
  EXPECT_EQ(net, (std::vector<Decimal>{Decimal(750), Decimal(700)}));
}

TEST_F(Apply, EveryRoundRunsOnceAndAllHaveRunAtTheEnd) {
  for (const std::size_t rounds : {1U, 2U, 3U, 100U, 8'191U, 8'193U, 100'000U, 999'983U}) {
    for (const auto& queue : {dispatch_get_global_queue(), dispatch_queue_create("serial"),
                              dispatch_queue_create("concurrent", DISPATCH_QUEUE_CONCURRENT)}) {
      std::vector<char> runs(rounds, 0);
      dispatch_apply(rounds, queue, [&](std::size_t i) { ++runs.at(i); });
      EXPECT_EQ(runs, std::vector<char>(rounds, 1)) << rounds << " on " << dispatch_queue_get_label(queue);
    }
  }
}

TEST_F(Apply, RoundsRunSideBySide) {
  for (const auto& queue : {dispatch_get_global_queue(), dispatch_queue_create(nullptr, DISPATCH_QUEUE_CONCURRENT)}) {
    std::latch both(2);
    std::vector<std::thread::id> threads(2);
    dispatch_apply(2, queue, [&](std::size_t i) {
      threads[i] = std::this_thread::get_id();
      both.arrive_and_wait();
    });
    EXPECT_NE(threads[0], threads[1]);
  }
}

TEST_F(Apply, OnASerialQueueRoundsRunInOrderOnTheCallersThread) {
  std::vector<std::size_t> seen;
  dispatch_apply(5, dispatch_queue_create(nullptr), [&, caller = std::this_thread::get_id()](std::size_t i) {
    EXPECT_EQ(std::this_thread::get_id(), caller);
    seen.push_back(i);
  });
  EXPECT_EQ(seen, (std::vector<std::size_t>{0, 1, 2, 3, 4}));
}

TEST_F(Apply, OnAConcurrentQueueThatTargetsASerialOneRoundsRunInOrder) {
  auto queue = dispatch_queue_create("readers", DISPATCH_QUEUE_CONCURRENT, dispatch_queue_create("one"));
  std::vector<std::size_t> seen;
  dispatch_apply(5, queue, [&](std::size_t i) { seen.push_back(i); });
  EXPECT_EQ(seen, (std::vector<std::size_t>{0, 1, 2, 3, 4}));
}

TEST_F(Apply, OnTheMainQueueRoundsRunOnTheMainThread) {
  std::vector<std::thread::id> seen;
  std::atomic<bool> over{false};
  std::thread caller([&] {
    dispatch_apply(3, dispatch_get_main_queue(), [&](std::size_t) { seen.push_back(std::this_thread::get_id()); });
    over = true;
  });
  while (!over) dispatch_main_queue_drain();
  caller.join();
  EXPECT_EQ(seen, std::vector<std::thread::id>(3, std::this_thread::get_id()));
}

TEST_F(Apply, EveryRoundIsABlockOfTheQueue) {
  static const char key = 0;
  int value = 7;
  auto queue = dispatch_queue_create("readers", DISPATCH_QUEUE_CONCURRENT);
  dispatch_queue_set_specific(queue, &key, &value);
  std::vector<void*> seen(100);
  dispatch_apply(seen.size(), queue, [&](std::size_t i) { seen[i] = dispatch_get_specific(&key); });
  EXPECT_EQ(seen, std::vector<void*>(100, &value));
}

TEST_F(Apply, WithoutRoundsNothingIsCalled) {
  bool called = false;
  dispatch_apply(0, dispatch_get_global_queue(), [&](std::size_t) { called = true; });
  EXPECT_FALSE(called);
}

TEST_F(Apply, TheBlockMayBeAFunctionOrConstantAndGiveAResult) {
  static std::atomic<int> sum{0};
  struct Adder {
    int operator()(std::size_t i) const { return sum += static_cast<int>(i); }
  };
  const Adder adder;
  dispatch_apply(4, dispatch_get_global_queue(), adder);
  EXPECT_EQ(sum.load(), 6);
  struct Function {
    static void add(std::size_t i) { sum += static_cast<int>(i); }
  };
  dispatch_apply(4, dispatch_get_global_queue(), Function::add);
  EXPECT_EQ(sum.load(), 12);
}

TEST_F(Apply, ARoundMayApplyAgain) {
  auto queue = dispatch_queue_create("readers", DISPATCH_QUEUE_CONCURRENT);
  std::vector<char> runs(400, 0);
  dispatch_apply(20, queue, [&](std::size_t row) {
    dispatch_apply(20, queue, [&](std::size_t column) { ++runs[row * 20 + column]; });
  });
  EXPECT_EQ(runs, std::vector<char>(400, 1));
}

TEST_F(Apply, AnExceptionReachesTheCallerAndTheLaterRoundsOfASerialQueueDoNotBegin) {
  auto queue = dispatch_queue_create(nullptr);
  std::vector<std::size_t> seen;
  EXPECT_THROW(dispatch_apply(10, queue,
                              [&](std::size_t i) {
                                seen.push_back(i);
                                if (i == 3) throw std::runtime_error("no such employee");
                              }),
               std::runtime_error);
  EXPECT_EQ(seen, (std::vector<std::size_t>{0, 1, 2, 3}));
  EXPECT_EQ(dispatch_sync(queue, [] { return 5; }), 5) << "the queue goes on";
}

TEST_F(Apply, AnExceptionReachesTheCallerOnceTheRoundsThatHadBegunHaveEnded) {
  auto queue = dispatch_queue_create(nullptr, DISPATCH_QUEUE_CONCURRENT);
  std::latch both(2);
  std::atomic<int> ended{0};
  std::string caught;
  try {
    dispatch_apply(2, queue, [&](std::size_t i) {
      both.arrive_and_wait();
      if (i == 1) throw std::runtime_error("line 7");
      ++ended;
    });
  } catch (const std::runtime_error& error) {
    caught = error.what();
    EXPECT_EQ(ended.load(), 1);
  }
  EXPECT_EQ(caught, "line 7");
  dispatch_barrier_sync(queue, [] {});
}

TEST_F(Apply, OfSeveralExceptionsOneReachesTheCallerAndTheRestOfTheRoundsDoesNotBegin) {
  auto queue = dispatch_queue_create(nullptr, DISPATCH_QUEUE_CONCURRENT);
  std::atomic<std::size_t> calls{0};
  EXPECT_THROW(dispatch_apply(100'000, queue,
                              [&](std::size_t) {
                                ++calls;
                                throw std::runtime_error("no such employee");
                              }),
               std::runtime_error);
  dispatch_barrier_sync(queue, [] {});
  EXPECT_LE(calls.load(), std::max(2U, std::thread::hardware_concurrency())) << "one for each thread at most";
}

TEST_F(Apply, AnExceptionEndsTheShareOfRoundsThatAnotherThreadIsRunning) {
  auto queue = dispatch_queue_create(nullptr, DISPATCH_QUEUE_CONCURRENT);
  constexpr std::size_t rounds = 200'000'000;  // so many that the caller's first share takes a second and more
  const std::size_t firstShare = rounds / (8 * std::max(2U, std::thread::hardware_concurrency()));
  std::latch both(2);
  std::atomic_flag thrown;
  std::size_t calls = 0;
  EXPECT_THROW(dispatch_apply(rounds, queue,
                              [&, caller = std::this_thread::get_id()](std::size_t) {
                                if (std::this_thread::get_id() != caller) {
                                  if (thrown.test_and_set()) return;
                                  both.arrive_and_wait();
                                  throw std::runtime_error("no such employee");
                                }
                                if (calls++ == 0) both.arrive_and_wait();
                                std::this_thread::yield();
                              }),
               std::runtime_error);
  EXPECT_LT(calls, firstShare / 2);
  dispatch_barrier_sync(queue, [] {});
}

TEST_F(Apply, AHelperThatComesLateFindsNothingToDo) {
  auto queue = dispatch_queue_create(nullptr, DISPATCH_QUEUE_CONCURRENT);
  for (int round = 0; round < 50; ++round) {
    auto block = std::make_unique<std::atomic<int>>(0);
    std::atomic_flag suspended;
    dispatch_apply(2, queue, [&](std::size_t) {
      if (!suspended.test_and_set()) dispatch_suspend(queue);
      ++*block;
    });
    EXPECT_EQ(block->load(), 2);
    block.reset();  // the sanitizers would detect a call after this
    dispatch_resume(queue);
    dispatch_barrier_sync(queue, [] {});
  }
}

TEST_F(Apply, LoopsOfManyThreadsAtOnceLoseNothing) {
  auto queue = dispatch_queue_create(nullptr, DISPATCH_QUEUE_CONCURRENT);
  std::atomic<int> sum{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int loop = 0; loop < 50; ++loop) {
        int parts[20] = {};
        dispatch_apply(20, queue, [&](std::size_t part) { parts[part] = 1; });
        for (const int part : parts) sum += part;
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(sum.load(), 4000);
}

TEST_F(Apply, WithoutMemoryForAHelperTheCallerRunsEveryRound) {
  auto queue = dispatch_queue_create(nullptr, DISPATCH_QUEUE_CONCURRENT);
  auto full = dispatch_queue_create("keeps the memory of its blocks");
  dispatch_suspend(full);
  for (int loop = 0; loop < 500; ++loop) {
    dispatch_async(full, [] {});  // so that helpers soon need new memory
    std::atomic<int> rounds{0};
    const test::LittleMemory memory(1);  // for the loop itself
    dispatch_apply(10, queue, [&](std::size_t) { ++rounds; });
    EXPECT_EQ(rounds.load(), 10);
  }
  {
    bool called = false;
    const test::LittleMemory memory(0);
    EXPECT_THROW(dispatch_apply(10, queue, [&](std::size_t) { called = true; }), std::bad_alloc);
    EXPECT_FALSE(called);
  }
  dispatch_resume(full);
  dispatch_sync(full, [] {});
}

TEST_F(Apply, AnEmptyHandleRaises) {
  EXPECT_THROW(dispatch_apply(1, nullptr, [](std::size_t) {}), NSException);
  EXPECT_THROW(dispatch_apply(0, nullptr, [](std::size_t) {}), NSException);
}

}  // namespace
}  // namespace norvik
