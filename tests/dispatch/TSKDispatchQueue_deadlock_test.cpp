// A synchronous block on a queue that the running code is inside. Without the check, each of these tests would hang, or
// abort if the bare queue detects it.
#include "NorvikCore/dispatch/TSKDispatchQueue.h"

#include "NorvikCore/platform/dispatch/internal/ThreadStart.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "tests/dispatch/Wrappers.h"
#include "tests/support/InChild.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <latch>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace norvik {
namespace {

using test::concurrent;
using test::flush;
using test::serial;
using test::whileMainDrains;
using test::Wrapper;

class DeadlockCheck : public test::WatchedTest {};
class DeadlockCheckDeathTest : public test::WatchedDeathTest {};

using Work = std::function<void()>;

constexpr TSKDeadlockBehavior behaviors[] = {TSKDeadlockExecuteInline, TSKDeadlockSkip, TSKDeadlockSkipAndLog,
                                             TSKDeadlockReserved, TSKDeadlockNoCheck};

/// Situations in which the running code is inside the queue `a`. Each then runs `last` on `a` synchronously.
struct Situation {
  const char* name;
  void (*run)(const Wrapper& a, const Work& last);
};

const Situation situations[] = {
    {"on the queue itself",
     [](const Wrapper& a, const Work& last) { a->dispatchSynchronously([&] { a->dispatchSynchronously(last); }); }},
    {"in an asynchronous block of it",
     [](const Wrapper& a, const Work& last) {
       a->dispatchAsynchronously([&] { a->dispatchSynchronously(last); });
       flush(a);
     }},
    {"a round trip",
     [](const Wrapper& a, const Work& last) {
       const Wrapper b = serial("b");
       a->dispatchSynchronously([&] { b->dispatchSynchronously([&] { a->dispatchSynchronously(last); }); });
     }},
    {"a round trip from an asynchronous block",
     [](const Wrapper& a, const Work& last) {
       const Wrapper b = serial("b");
       a->dispatchAsynchronously([&] { b->dispatchSynchronously([&] { a->dispatchSynchronously(last); }); });
       flush(a);
     }},
    {"three deep, back to the first",
     [](const Wrapper& a, const Work& last) {
       const Wrapper b = serial("b");
       const Wrapper c = serial("c");
       a->dispatchSynchronously([&] {
         b->dispatchSynchronously([&] { c->dispatchSynchronously([&] { a->dispatchSynchronously(last); }); });
       });
     }},
    {"three deep, back to the one in the middle",
     [](const Wrapper& a, const Work& last) {
       const Wrapper b = serial("b");
       const Wrapper c = serial("c");
       b->dispatchSynchronously([&] {
         a->dispatchSynchronously([&] { c->dispatchSynchronously([&] { a->dispatchSynchronously(last); }); });
       });
     }},
    {"after an asynchronous hop to it",
     [](const Wrapper& a, const Work& last) {
       const Wrapper b = serial("b");
       const Wrapper c = serial("c");
       b->dispatchSynchronously([&] {
         a->dispatchAsynchronously([&] { c->dispatchSynchronously([&] { a->dispatchSynchronously(last); }); });
       });
       flush(a);
     }},
    {"through the global queue",
     [](const Wrapper& a, const Work& last) {
       const Wrapper& global = TSKDispatchQueue::globalDispatchQueue();
       a->dispatchSynchronously([&] { global->dispatchSynchronously([&] { a->dispatchSynchronously(last); }); });
     }},
    {"through a concurrent queue and a serial one",
     [](const Wrapper& a, const Work& last) {
       const Wrapper b = serial("b");
       const Wrapper& shared = TSKDispatchQueue::sharedConcurrentQueue();
       a->dispatchSynchronously([&] {
         shared->dispatchSynchronously([&] { b->dispatchSynchronously([&] { a->dispatchSynchronously(last); }); });
       });
     }},
    {"through a block called in place",
     [](const Wrapper& a, const Work& last) {
       const Wrapper b = serial("b");
       b->dispatchSynchronously([&] {
         a->dispatchSynchronously([&] { b->dispatchSynchronously([&] { a->dispatchSynchronously(last); }); });
       });
     }},
    {"in a timer's block",
     [](const Wrapper& a, const Work& last) {
       std::latch fired(1);
       a->scheduleTimerWithName("timer", 0, TSKTimerRestart, [&] {
         a->dispatchSynchronously(last);
         fired.count_down();
       });
       fired.wait();
       flush(a);
     }},
    {"through the main queue",
     [](const Wrapper& a, const Work& last) {
       whileMainDrains([&] {
         a->dispatchSynchronously([&] {
           TSKDispatchQueue::mainDispatchQueue()->dispatchSynchronously([&] { a->dispatchSynchronously(last); });
         });
       });
     }},
};

TEST_F(DeadlockCheck, RefusesAsTheQueuesBehaviourSays) {
  const struct {
    TSKDeadlockBehavior behavior;
    int runs;
    std::vector<std::string> console;
  } rows[] = {
      {TSKDeadlockExecuteInline, 1, {}},
      {TSKDeadlockSkip, 0, {}},
      {TSKDeadlockSkipAndLog,
       0,
       {"Synchronous dispatch can not be executed on the queue with label 'payroll' because it is already part of the "
        "current dispatch queue hierarchy"}},
      {TSKDeadlockReserved, 0, {}},
      {static_cast<TSKDeadlockBehavior>(7), 0, {}},
  };
  for (const auto& row : rows) {
    for (const Situation& situation : situations) {
      const kernel::SystemLogCapture console;
      const Wrapper wrapper = serial("payroll", row.behavior);
      int runs = 0;
      situation.run(wrapper, [&] { ++runs; });
      EXPECT_EQ(runs, row.runs) << situation.name << ", behaviour " << row.behavior;
      EXPECT_EQ(console.lines(), row.console) << situation.name << ", behaviour " << row.behavior;
    }
  }
}

TEST_F(DeadlockCheck, ARefusedBlockHasNoResult) {
  const struct {
    TSKDeadlockBehavior behavior;
    bool hasResult;
  } rows[] = {{TSKDeadlockExecuteInline, true},
              {TSKDeadlockSkip, false},
              {TSKDeadlockSkipAndLog, false},
              {TSKDeadlockReserved, false},
              {static_cast<TSKDeadlockBehavior>(7), false}};
  for (const auto& row : rows) {
    const kernel::SystemLogCapture console;
    const Wrapper wrapper = serial("payroll", row.behavior);
    int count = 5;
    const auto results = wrapper->dispatchSynchronously([&] {
      return std::pair(wrapper->dispatchSynchronously([&] { return count; }),
                       wrapper->dispatchSynchronously([&]() -> int& { return count; }));
    });
    ASSERT_TRUE(results) << row.behavior;
    EXPECT_EQ(results->first, row.hasResult ? std::optional(5) : std::nullopt) << row.behavior;
    EXPECT_EQ(results->second, row.hasResult ? &count : nullptr) << row.behavior;
  }
}

TEST_F(DeadlockCheckDeathTest, WithoutTheCheckTheBareQueueFindsItOut) {
  for (const Situation& situation : {situations[0], situations[2], situations[4], situations[7]}) {
    EXPECT_DEATH(situation.run(serial("payroll", TSKDeadlockNoCheck), [] {}), "BUG: .*\\(queue \"payroll\"\\)")
        << situation.name;
  }
}

TEST_F(DeadlockCheck, ARefusalOfAQueueWithoutALabelNamesNone) {
  const kernel::SystemLogCapture console;
  const Wrapper wrapper =
      TSKDispatchQueue::dispatchQueueWithGCDQueue(dispatch_queue_create("bare"), TSKDeadlockSkipAndLog);
  wrapper->dispatchSynchronously([&] { wrapper->dispatchSynchronously([] { FAIL(); }); });
  EXPECT_EQ(console.lines(), std::vector<std::string>{
                                 "Synchronous dispatch can not be executed on the queue with label '(null)' because it "
                                 "is already part of the current dispatch queue hierarchy"});
}

TEST_F(DeadlockCheck, ABlockCalledInPlaceLeavesTheQueueAndTheStackAlone) {
  const Wrapper a = serial("a");
  const Wrapper b = serial("b");
  a->dispatchSynchronously([&] {
    b->dispatchSynchronously([&] {
      a->dispatchSynchronously([&] {
        EXPECT_TRUE(b->isCurrentQueue()) << "still b's block";
        EXPECT_TRUE(a->isInCurrentQueueStack());
        EXPECT_TRUE(b->isInCurrentQueueStack());
      });
    });
  });
}

TEST_F(DeadlockCheck, TheRefusedQueuesBehaviourCountsNotTheRunningOnes) {
  const Wrapper skips = serial("skips", TSKDeadlockSkip);
  const Wrapper calls = serial("calls", TSKDeadlockExecuteInline);
  std::string seen;
  skips->dispatchSynchronously([&] {
    calls->dispatchSynchronously([&] {
      skips->dispatchSynchronously([&] { seen += "skips "; });
      calls->dispatchSynchronously([&] { seen += "calls"; });
    });
  });
  EXPECT_EQ(seen, "calls");
}

TEST_F(DeadlockCheck, AnAsynchronousHopStartsANewStack) {
  for (const TSKDeadlockBehavior behavior : behaviors) {
    const Wrapper a = serial("a", behavior);
    const Wrapper b = serial("b", behavior);
    std::string seen;
    std::latch waits(1);
    a->dispatchSynchronously([&] {
      b->dispatchAsynchronously([&] {
        EXPECT_TRUE(b->isInCurrentQueueStack());
        EXPECT_FALSE(a->isInCurrentQueueStack()) << "a's block does not wait for this one";
        waits.count_down();
        a->dispatchSynchronously([&] { seen += a->isCurrentQueue() ? "b on a" : "in place"; });
      });
      waits.wait();
      seen += "a, ";
    });
    flush(b);
    EXPECT_EQ(seen, "a, b on a") << behavior;
  }
}

TEST_F(DeadlockCheck, AQueueThatWasLeftIsNotInTheStack) {
  const Wrapper a = serial("a", TSKDeadlockSkip);
  const Wrapper b = serial("b", TSKDeadlockSkip);
  int runs = 0;
  a->dispatchSynchronously([&] { ++runs; });
  b->dispatchSynchronously([&] { a->dispatchSynchronously([&] { ++runs; }); });
  a->dispatchSynchronously([&] { b->dispatchSynchronously([&] { ++runs; }); });
  EXPECT_EQ(runs, 3);
}

TEST_F(DeadlockCheck, OnTheMainThreadTheMainQueueCallsInPlace) {
  const Wrapper& main = TSKDispatchQueue::mainDispatchQueue();
  const Wrapper a = serial("a");
  std::string seen;
  main->dispatchAsynchronously([&] { seen += "queued before"; });
  EXPECT_TRUE(main->isInCurrentQueueStack());
  main->dispatchSynchronously([&] { seen += "in place, "; });
  a->dispatchSynchronously([&] { main->dispatchSynchronously([&] { seen += "through a, "; }); });
  EXPECT_EQ(seen, "in place, through a, ") << "the queue is not touched";
  dispatch_main_queue_drain();
  EXPECT_EQ(seen, "in place, through a, queued before");
  main->dispatchAsynchronously([&] { main->dispatchSynchronously([&] { seen += ", in a block of its own"; }); });
  dispatch_main_queue_drain();
  EXPECT_EQ(seen, "in place, through a, queued before, in a block of its own");
}

TEST_F(DeadlockCheck, FromOtherThreadsTheMainQueueRunsItsBlockOnTheMainThread) {
  const Wrapper& main = TSKDispatchQueue::mainDispatchQueue();
  const auto mainThread = std::this_thread::get_id();
  const Wrapper a = serial("a", TSKDeadlockSkip);
  int blocks = 0;
  whileMainDrains([&] {
    EXPECT_FALSE(main->isInCurrentQueueStack());
    main->dispatchSynchronously([&] {
      EXPECT_EQ(std::this_thread::get_id(), mainThread);
      ++blocks;
    });
    a->dispatchSynchronously([&] {
      EXPECT_FALSE(main->isInCurrentQueueStack()) << "nobody on the main thread waits";
      main->dispatchSynchronously([&] {
        EXPECT_EQ(std::this_thread::get_id(), mainThread);
        EXPECT_TRUE(a->isInCurrentQueueStack()) << "the stack came along";
        main->dispatchSynchronously([&] { ++blocks; });
        a->dispatchSynchronously([&] { FAIL() << "a waits for this block"; });
      });
    });
  });
  EXPECT_EQ(blocks, 2);
}

TEST_F(DeadlockCheck, AWrapperOfTheMainQueueWithABehaviourOfItsOwnGoesByTheStack) {
  const struct {
    TSKDeadlockBehavior behavior;
    int runs;
    std::size_t lines;
  } rows[] = {{TSKDeadlockExecuteInline, 2, 0},
              {TSKDeadlockSkip, 0, 0},
              {TSKDeadlockSkipAndLog, 0, 2},
              {TSKDeadlockReserved, 0, 0}};
  for (const auto& row : rows) {
    const kernel::SystemLogCapture console;
    const Wrapper wrapper = TSKDispatchQueue::dispatchQueueWithGCDQueue(dispatch_get_main_queue(), row.behavior);
    const Wrapper b = serial("b");
    int runs = 0;
    EXPECT_FALSE(wrapper->isInCurrentQueueStack()) << "the main thread alone does not count for it";
    whileMainDrains([&] {
      wrapper->dispatchSynchronously([&] {
        wrapper->dispatchSynchronously([&] { ++runs; });
        b->dispatchSynchronously([&] { wrapper->dispatchSynchronously([&] { ++runs; }); });
      });
    });
    EXPECT_EQ(runs, row.runs) << row.behavior;
    EXPECT_EQ(console.lines().size(), row.lines) << row.behavior;
  }
  // Later tests find mainDispatchQueue() there again.
  dispatch_queue_set_specific(dispatch_get_main_queue(), TSKIsCurrentKey, TSKDispatchQueue::mainDispatchQueue().get());
}

TEST_F(DeadlockCheck, AConcurrentWrapperIsNeverInTheStack) {
  for (const TSKDeadlockBehavior behavior : behaviors) {
    const Wrapper wrapper = concurrent(behavior);
    int runs = 0;
    wrapper->dispatchSynchronously([&] {
      EXPECT_FALSE(wrapper->isInCurrentQueueStack());
      wrapper->dispatchSynchronously([&] { ++runs; });
    });
    std::latch over(1);
    wrapper->dispatchAsynchronously([&] {
      EXPECT_FALSE(wrapper->isInCurrentQueueStack());
      wrapper->dispatchSynchronously([&] { ++runs; });
      over.count_down();
    });
    over.wait();
    EXPECT_EQ(runs, 2) << behavior;
  }
}

TEST_F(DeadlockCheck, ABlockOfAConcurrentQueueSeesTheStackOfItsOwnCaller) {
  const Wrapper shared = concurrent();
  const Wrapper a = serial("a", TSKDeadlockSkip);
  const Wrapper b = serial("b", TSKDeadlockSkip);
  std::latch inside(2);
  std::latch looked(2);
  const auto cross = [&](const Wrapper& own, const Wrapper& other) {
    own->dispatchSynchronously([&] {
      shared->dispatchSynchronously([&] {
        inside.arrive_and_wait();  // both threads are in blocks of the same concurrent queue
        for (int i = 0; i < 1000; ++i) {
          ASSERT_TRUE(own->isInCurrentQueueStack());
          ASSERT_FALSE(other->isInCurrentQueueStack());
          own->dispatchSynchronously([] { FAIL() << "this would never have returned"; });
        }
        looked.arrive_and_wait();
      });
    });
  };
  std::thread first([&] { cross(a, b); });
  cross(b, a);
  first.join();
}

TEST_F(DeadlockCheck, AWrapperThatDoesNotKnowItsQueueIsConcurrentRefusesByTheCallersStack) {
  const Wrapper wrapper = TSKDispatchQueue::dispatchQueueWithGCDQueue(
      dispatch_queue_create(nullptr, DISPATCH_QUEUE_CONCURRENT), TSKDeadlockSkip);
  std::latch inside(2);
  const auto work = [&] {
    wrapper->dispatchSynchronously([&] {
      inside.arrive_and_wait();
      for (int i = 0; i < 1000; ++i) {
        ASSERT_TRUE(wrapper->isInCurrentQueueStack());
        wrapper->dispatchSynchronously([] { FAIL(); });
      }
    });
  };
  std::thread other(work);
  work();
  other.join();
}

TEST_F(DeadlockCheck, BarriersHaveNoStackAndNoCheck) {
  for (const TSKDeadlockBehavior behavior : behaviors) {
    const Wrapper a = serial("a", behavior);
    const Wrapper b = serial("b", behavior);
    const Wrapper many = concurrent(behavior);
    int runs = 0;
    a->dispatchSynchronously([&] {
      many->dispatchBarrierSynchronously([&] {
        EXPECT_FALSE(a->isInCurrentQueueStack()) << "not seen across a barrier";
        ++runs;
      });
      b->dispatchBarrierSynchronously([&] {
        EXPECT_TRUE(b->isCurrentQueue());
        EXPECT_FALSE(b->isInCurrentQueueStack());
        ++runs;
      });
      b->dispatchBarrierAsynchronously([&] {
        EXPECT_FALSE(b->isInCurrentQueueStack());
        EXPECT_FALSE(a->isInCurrentQueueStack());
        ++runs;
      });
      EXPECT_TRUE(a->isInCurrentQueueStack()) << "back in a's own block";
    });
    flush(b);
    EXPECT_EQ(runs, 3) << behavior;
  }
}

TEST_F(DeadlockCheckDeathTest, ABlockBehindABarrierThatWaitsForTheRunningBlockIsFoundOut) {
  EXPECT_DEATH(
      {
        const Wrapper wrapper = concurrent();
        wrapper->dispatchSynchronously([&] {
          wrapper->dispatchBarrierAsynchronously([] {});
          wrapper->dispatchSynchronously([] {});
        });
      },
      "BUG: a synchronous block for a queue that the calling code holds would never run");
}

TEST_F(DeadlockCheckDeathTest, ABarrierForAHeldQueueIsFoundOutByTheBareQueue) {
  const struct {
    const char* why;
    void (*run)(const Wrapper& a);
  } rows[] = {
      {"a barrier is not checked",
       [](const Wrapper& a) { a->dispatchSynchronously([&] { a->dispatchBarrierSynchronously([] {}); }); }},
      {"a barrier's block has no stack",
       [](const Wrapper& a) { a->dispatchBarrierSynchronously([&] { a->dispatchSynchronously([] {}); }); }},
      {"nor has a block that came through the bare queue",
       [](const Wrapper& a) { dispatch_sync(a->queue(), [&] { a->dispatchSynchronously([] {}); }); }},
  };
  for (const auto& row : rows)
    EXPECT_DEATH(row.run(serial("payroll", TSKDeadlockSkip)), "BUG: .*\\(queue \"payroll\"\\)") << row.why;
}

TEST_F(DeadlockCheck, ABarrierOfAConcurrentWrapperRunsAlone) {
  const Wrapper many = concurrent();
  std::atomic<int> before{0};
  std::atomic<int> running{0};
  int inBarrier = -1;
  std::latch go(1);
  for (int i = 0; i < 4; ++i) {
    many->dispatchAsynchronously([&] {
      ++running;
      go.wait();
      ++before;
      --running;
    });
  }
  many->dispatchBarrierAsynchronously([&] { inBarrier = before.load() * 10 + running.load(); });
  many->dispatchAsynchronously([&] { ++running; });
  go.count_down();
  many->dispatchBarrierSynchronously([&] { EXPECT_EQ(running.load(), 1) << "what was queued before has run"; });
  EXPECT_EQ(inBarrier, 40);
}

TEST_F(DeadlockCheck, WrappersOfOneQueueCountAsQueuesOfTheirOwn) {
  const auto queue = dispatch_queue_create("shared");
  const Wrapper first = TSKDispatchQueue::dispatchQueueWithGCDQueue(queue, TSKDeadlockSkip);
  const Wrapper second = TSKDispatchQueue::dispatchQueueWithGCDQueue(queue, TSKDeadlockSkip);
  first->dispatchSynchronously([&] {
    EXPECT_TRUE(first->isInCurrentQueueStack());
    EXPECT_FALSE(second->isInCurrentQueueStack());
  });
}

TEST_F(DeadlockCheck, ABlockThatAWaitingThreadRunsForWantOfThreadsHasAHierarchyOfItsOwn) {
  RUN_IN_CHILD({
    const detail::ThreadStartsFail shortage;
    auto a = TSKDispatchQueue::dispatchQueueWithLabel("a");
    auto b = TSKDispatchQueue::dispatchQueueWithLabel("b");
    std::string seen;
    a->dispatchSynchronously([&] {
      b->dispatchAsynchronously([&] {
        EXPECT_FALSE(a->isInCurrentQueueStack())
            << "an asynchronous block begins a hierarchy, on whichever thread it runs";
        EXPECT_FALSE(a->isCurrentQueue());
        EXPECT_TRUE(b->isInCurrentQueueStack());
        EXPECT_TRUE(b->isCurrentQueue());
        b->dispatchSynchronously([&] { seen += "1"; });
      });
      b->dispatchSynchronously([&] {
        EXPECT_TRUE(a->isInCurrentQueueStack());
        EXPECT_TRUE(b->isInCurrentQueueStack());
        a->dispatchSynchronously([&] { seen += "2"; });
      });
      EXPECT_TRUE(a->isCurrentQueue());
      EXPECT_FALSE(b->isInCurrentQueueStack());
    });
    EXPECT_EQ(seen, "12");
  });
}

}  // namespace
}  // namespace norvik
