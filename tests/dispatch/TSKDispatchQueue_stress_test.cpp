// Many wrappers and many threads with random nesting. Every block must run exactly once, or be refused according to its
// queue's behaviour.
#include "NorvikCore/dispatch/TSKDispatchQueue.h"

#include "NorvikCore/platform/kernel/SystemLog.h"
#include "tests/dispatch/Wrappers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace norvik {
namespace {

using test::concurrent;
using test::serial;
using test::Wrapper;

constexpr std::size_t queueCount = 64;
constexpr std::size_t threadCount = 8;
constexpr std::size_t turns = 1000;
constexpr int depthLimit = 5;
constexpr std::size_t mostHops = threadCount * turns * ((1 << depthLimit) - 1);  // each makes at most two hops
constexpr std::size_t timerNames = 4;

/// Compares a model of the hierarchy with the real one. In the model, each block knows the queues that it is inside.
///
/// Threads that wait for one another's queues in a circle would deadlock, and no check can detect it. Therefore code
/// inside queue n enters only higher queues synchronously. Queues that are already in the stack are an exception: they
/// are entered, and refused.
class Hops {
 public:
  Hops() {
    for (std::size_t i = 0; i < queueCount; ++i) {
      queues_[i] = isConcurrent(i) ? concurrent() : serial("stress", static_cast<TSKDeadlockBehavior>(i % 4));
    }
  }

  void run() {
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < threadCount; ++i) {
      threads.emplace_back([this, i] {
        std::mt19937 random(static_cast<unsigned>(i));
        for (std::size_t turn = 0; turn < turns; ++turn) hop(random, {}, depthLimit);
      });
    }
    for (std::thread& thread : threads) thread.join();
    for (int left = waiting_; left > 0; left = waiting_) waiting_.wait(left);
    for (const Wrapper& queue : queues_) queue->cancelAllTimers();
    for (const Wrapper& queue : queues_) test::flush(queue);
    for (std::size_t block = 0; block < asynchronousBlocks_; ++block) expect(runsOfBlock_[block] == 1);
  }

  std::atomic<int> wrong{0}, posted{0}, ran{0}, refused{0}, inPlace{0}, logged{0}, timersSet{0}, timersFired{0};

 private:
  using Stack = std::vector<std::size_t>;

  static bool isConcurrent(std::size_t queue) { return queue % 16 == 15; }
  static bool contains(const Stack& stack, std::size_t queue) {
    return std::find(stack.begin(), stack.end(), queue) != stack.end();
  }
  void expect(bool right) {
    if (!right) ++wrong;
  }

  void hop(std::mt19937& random, const Stack& stack, int depth) {
    if (depth == 0) return;
    const std::size_t target = random() % queueCount;
    switch (random() % 8) {
      case 0:
        return setTimer(random, target);
      case 1:
        return queues_[target]->cancelTimerWithName(timerName(random));
      case 2:
      case 3:
        return hopAsynchronously(random, target, depth);
      default:
        break;
    }
    if (contains(stack, target) && !isConcurrent(target)) return expectRefusal(target, stack);
    if (stack.empty() || *std::max_element(stack.begin(), stack.end()) < target)
      return hopSynchronously(random, target, stack, depth);
    if (random() % 2 == 0) expectRefusal(stack[random() % stack.size()], stack);
    hopAsynchronously(random, target, depth);
  }

  void hopSynchronously(std::mt19937& random, std::size_t target, const Stack& stack, int depth) {
    int runs = 0;
    ++posted;
    queues_[target]->dispatchSynchronously([&] {
      ++runs;
      ++ran;
      Stack inner = stack;
      inner.push_back(target);
      check(inner, target);
      hop(random, inner, depth - 1);
      hop(random, inner, depth - 1);
      check(inner, target);
    });
    expect(runs == 1);
  }

  void hopAsynchronously(std::mt19937& random, std::size_t target, int depth) {
    ++posted;
    ++waiting_;
    queues_[target]->dispatchAsynchronously([this, target, depth, block = asynchronousBlocks_++, seed = random()] {
      std::mt19937 own(seed);
      ++runsOfBlock_[block];
      ++ran;
      const Stack stack{target};
      check(stack, target);
      hop(own, stack, depth - 1);
      if (--waiting_ == 0) waiting_.notify_all();
    });
  }

  void expectRefusal(std::size_t target, const Stack& stack) {
    if (isConcurrent(target)) return;
    int runs = 0;
    queues_[target]->dispatchSynchronously([&] {
      ++runs;
      for (const std::size_t each : stack) expect(isConcurrent(each) || queues_[each]->isInCurrentQueueStack());
    });
    const bool calls = target % 4 == TSKDeadlockExecuteInline;
    expect(runs == (calls ? 1 : 0));
    ++(calls ? inPlace : refused);
    if (target % 4 == TSKDeadlockSkipAndLog) ++logged;
  }

  /// Checks that the real stack equals the model's stack.
  void check(const Stack& stack, std::size_t current) {
    expect(queues_[current]->isCurrentQueue());
    expect(queues_[current]->timerCount() <= timerNames);
    for (std::size_t i = 0; i < queueCount; i += 3)
      expect(queues_[i]->isInCurrentQueueStack() == (contains(stack, i) && !isConcurrent(i)));
  }

  static NSString timerName(std::mt19937& random) { return NSString(std::to_string(random() % timerNames)); }
  void setTimer(std::mt19937& random, std::size_t target) {
    ++timersSet;
    const double seconds = static_cast<double>(random() % 2000) * 1e-6;
    const auto behavior = static_cast<TSKTimerBehavior>(random() % 3);
    queues_[target]->scheduleTimerWithName(timerName(random), seconds, behavior, [this, target] {
      ++timersFired;
      check(isConcurrent(target) ? Stack{} : Stack{target}, target);
    });
  }

  std::array<Wrapper, queueCount> queues_;
  std::atomic<int> waiting_{0};
  std::vector<std::atomic<unsigned char>> runsOfBlock_ = std::vector<std::atomic<unsigned char>>(mostHops);
  std::atomic<std::size_t> asynchronousBlocks_{0};
};

TEST(TSKDispatchQueueStress, EveryBlockRunsOnceOrIsRefusedAsItsQueueSays) {
  const test::Watchdog watchdog(std::chrono::seconds(250));
  const kernel::SystemLogCapture console;
  Hops hops;
  hops.run();
  EXPECT_EQ(hops.wrong.load(), 0);
  EXPECT_EQ(hops.ran.load(), hops.posted.load());
  EXPECT_EQ(console.lines().size(), static_cast<std::size_t>(hops.logged.load()));
  EXPECT_LE(hops.timersFired.load(), hops.timersSet.load());
  // Checks that enough blocks ran for the test to be meaningful.
  EXPECT_GT(hops.ran.load(), 8000);
  EXPECT_GT(hops.refused.load(), 500);
  EXPECT_GT(hops.inPlace.load(), 100);
  EXPECT_GT(hops.timersFired.load(), 100);
}

}  // namespace
}  // namespace norvik
