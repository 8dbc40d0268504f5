#include "NorvikCore/observation/ObservingClosure.h"

#include "NorvikCore/observation/FBKVOController.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>
#include <vector>

using namespace norvik;

namespace {

class Till : public NSObject {
  NK_OBJECT(Till, NSObject)
  NK_ATOMIC_PROPERTY(int, takings, setTakings)
};

class Cashier : public NSObject {
  NK_OBJECT(Cashier, NSObject)

 public:
  std::atomic<int> calls{0};
};

}  // namespace

TEST(ObservingClosureThreads, RunsOnTheThreadThatMakesTheChange) {
  const auto cashier = make<Cashier>();
  const auto till = make<Till>();
  const auto controller = FBKVOController::controllerWithObserver(*cashier);
  std::thread::id closure;
  controller->observe(till, keyPath<&Till::takings>(), [&](int) { closure = std::this_thread::get_id(); });
  std::thread changer([&] { till->setTakings(1); });
  const std::thread::id expected = changer.get_id();
  changer.join();
  EXPECT_EQ(closure, expected);
}

TEST(ObservingClosureThreads, SeveralThreadsChangeWhatIsObserved) {
  const auto cashier = make<Cashier>();
  const auto till = make<Till>();
  const auto controller = FBKVOController::controllerWithObserver(*cashier);
  controller->observe(till, keyPath<&Till::takings>(), [](Cashier& observer, Till&, int takings, const Value& before) {
    if (takings > 0 && before.isNumber()) ++observer.calls;
  });
  constexpr int threads = 4, changes = 500;
  std::latch start(threads);
  {
    std::vector<std::jthread> changers;
    for (int i = 0; i < threads; ++i) {
      changers.emplace_back([&] {
        start.arrive_and_wait();
        for (int n = 1; n <= changes; ++n) till->setTakings(n);
      });
    }
  }
  EXPECT_EQ(cashier->calls, threads * changes);
}

TEST(ObservingClosureThreads, AfterUnobserveReturnsNoCallBegins) {
  const auto cashier = make<Cashier>();
  const auto till = make<Till>();
  const auto controller = FBKVOController::controllerWithObserver(*cashier);
  std::latch isCalled(1), isUnobserved(1);
  std::atomic<int> calls{0};
  controller->observe(till, keyPath<&Till::takings>(), [&](const Cashier& observer, int) {
    ++calls;
    isCalled.count_down();
    isUnobserved.wait();
    EXPECT_EQ(observer.calls, 0);
  });
  std::thread changer([&] {
    till->setTakings(1);
    till->setTakings(2);
  });
  isCalled.wait();
  controller->unobserve(till, keyPath<&Till::takings>());
  till->setTakings(3);
  isUnobserved.count_down();
  changer.join();
  EXPECT_EQ(calls, 1);
}

TEST(ObservingClosureThreads, TheControllerEndsWhileTheObjectChanges) {
  const auto till = make<Till>();
  std::atomic<bool> isDone{false};
  std::jthread changer([&] {
    for (int n = 1; !isDone; ++n) till->setTakings(n);
  });
  for (int round = 0; round < 200; ++round) {
    auto cashier = make<Cashier>();
    auto controller = FBKVOController::controllerWithObserver(*cashier);
    controller->observe(till, keyPath<&Till::takings>(),
                        [](Cashier& observer, Till& object, int) { observer.calls += object.takings() >= 0 ? 1 : 0; });
    if (round % 2 == 0) cashier = nullptr;
    controller = nullptr;
  }
  isDone = true;
}
