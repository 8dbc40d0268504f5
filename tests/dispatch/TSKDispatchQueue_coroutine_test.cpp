#include "NorvikCore/dispatch/TSKDispatchQueue_coroutine.h"

#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/dispatch/Wrappers.h"
#include "tests/platform/dispatch/Job.h"

#include <gtest/gtest.h>

#include <latch>
#include <string>
#include <thread>
#include <vector>

namespace norvik {
namespace {

using test::concurrent;
using test::flush;
using test::Job;
using test::serial;
using test::Wrapper;

class TSKDispatchQueueCoroutine : public test::WatchedTest {};

TEST_F(TSKDispatchQueueCoroutine, HeaderExample) {
  const Wrapper payroll = serial("payroll");
  std::string seen;
  const auto pay = [](Wrapper queue, std::string& text) -> Job {
    co_await queue;
    text += queue->isCurrentQueue() ? "on the queue, " : "elsewhere, ";
    queue->dispatchSynchronously([&] { text += "called in place"; });
  };
  pay(payroll, seen);
  flush(payroll);
  EXPECT_EQ(seen, "on the queue, called in place");
}

TEST_F(TSKDispatchQueueCoroutine, HasAStackThatHoldsTheWrapperAlone) {
  const Wrapper a = serial("a", TSKDeadlockSkip), b = serial("b", TSKDeadlockSkip);
  std::vector<int> stacks;
  std::string seen;
  const auto job = [](Wrapper first, Wrapper second, std::vector<int>& in, std::string& text) -> Job {
    co_await *first;
    in.push_back(first->isInCurrentQueueStack() ? 1 : 0);
    co_await *second;
    in.push_back(first->isInCurrentQueueStack() ? 1 : 0);
    in.push_back(second->isInCurrentQueueStack() ? 1 : 0);
    first->dispatchSynchronously([&] { text += "back in the first, "; });  // which was left, so this is not refused
    second->dispatchSynchronously([&] { text += "never"; });
    text += "ended";
  };
  a->dispatchSynchronously([&] { job(a, b, stacks, seen); });
  flush(a);
  flush(b);
  EXPECT_EQ(stacks, (std::vector<int>{1, 0, 1}));
  EXPECT_EQ(seen, "back in the first, ended");
}

TEST_F(TSKDispatchQueueCoroutine, IsNotRefusedOnAQueueThatItIsInside) {
  const Wrapper skips = serial("skips", TSKDeadlockSkip);
  std::string seen;
  const auto job = [](Wrapper queue, std::string& text) -> Job {
    co_await queue;
    text += "continued";
  };
  skips->dispatchSynchronously([&] {
    job(skips, seen);
    seen += "first, ";
  });
  flush(skips);
  EXPECT_EQ(seen, "first, continued");
}

TEST_F(TSKDispatchQueueCoroutine, HasNoStackOnAConcurrentWrapper) {
  const Wrapper wrapper = concurrent();
  std::latch isDone(1);
  bool isInStack = true, isCurrent = false;
  const auto job = [](Wrapper queue, bool& in, bool& current, std::latch& done) -> Job {
    co_await queue;
    in = queue->isInCurrentQueueStack() || dispatch_get_specific(TSKQueueStackKey) != nullptr;
    current = queue->isCurrentQueue();
    done.count_down();
  };
  job(wrapper, isInStack, isCurrent, isDone);
  isDone.wait();
  EXPECT_FALSE(isInStack);
  EXPECT_TRUE(isCurrent);
}

TEST_F(TSKDispatchQueueCoroutine, AWaitingCoroutineRetainsTheWrapper) {
  Wrapper wrapper = serial("kept");
  const dispatch_queue_t queue = wrapper->queue();
  const Weak<TSKDispatchQueue> watched = wrapper;
  std::string label;
  const auto job = [](Wrapper& released, std::string& text) -> Job {
    co_await *released;
    text = static_cast<TSKDispatchQueue*>(dispatch_get_specific(TSKIsCurrentKey))->label()->str();
  };
  dispatch_suspend(queue);
  job(wrapper, label);
  wrapper = nullptr;
  EXPECT_TRUE(watched.lock());
  dispatch_resume(queue);
  dispatch_barrier_sync(queue, [] {});
  EXPECT_EQ(label, "kept");
  EXPECT_FALSE(watched.lock());
}

TEST_F(TSKDispatchQueueCoroutine, AnEmptyRefRaisesInTheCoroutine) {
  std::string seen;
  const auto job = [](std::string& text) -> Job {
    try {
      co_await Wrapper();
    } catch (const NSException& problem) {
      text = problem.reason().str();
    }
  };
  job(seen);
  EXPECT_EQ(seen, "co_await: the queue is nil");
}

TEST_F(TSKDispatchQueueCoroutine, CoroutinesOfManyThreadsTakeTurns) {
  const Wrapper a = serial("a"), b = serial("b");
  int countA = 0, countB = 0;
  std::latch ended(80);
  const auto job = [](Wrapper first, Wrapper second, int& inFirst, int& inSecond, std::latch& end) -> Job {
    for (int round = 0; round < 10; ++round) {
      co_await first;
      ++inFirst;
      co_await second;
      ++inSecond;
    }
    end.count_down();
  };
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&] {
        for (int n = 0; n < 20; ++n) job(a, b, countA, countB, ended);
      });
    }
  }
  ended.wait();
  EXPECT_EQ(a->dispatchSynchronously([&] { return countA; }), 800);
  EXPECT_EQ(b->dispatchSynchronously([&] { return countB; }), 800);
}

}  // namespace
}  // namespace norvik
