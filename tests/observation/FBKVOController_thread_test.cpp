#include "NorvikCore/observation/FBKVOController.h"

#include "NorvikCore/observation/NSObject+FBKVOController.h"
#include "NorvikCore/observation/internal/_FBKVOSharedController.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <mutex>
#include <thread>
#include <vector>

using namespace norvik;

namespace {

class Account : public NSObject {
  NK_OBJECT(Account, NSObject)
  NK_ATOMIC_PROPERTY(int, balance, setBalance)
};

class Auditor : public NSObject {
  NK_OBJECT(Auditor, NSObject)
};

constexpr auto New = NSKeyValueObservingOptionNew;

/// Runs the steps concurrently, all starting at the same time.
template <class... Steps>
void together(Steps... steps) {
  std::latch start(sizeof...(Steps));
  std::vector<std::jthread> threads;
  (threads.emplace_back([&start, steps] {
    start.arrive_and_wait();
    steps();
  }),
   ...);
}

struct FBKVOControllerThreads : testing::Test {
  Ref<Auditor> auditor = make<Auditor>();
  Ref<Account> account = make<Account>();
  std::atomic<int> calls{0};

  FBKVONotificationBlock counting() {
    return [this](NSObject&, NSObject&, const NSDictionary&) { ++calls; };
  }
};

}  // namespace

TEST_F(FBKVOControllerThreads, HandlersRunOnTheThreadThatMakesTheChange) {
  const auto controller = FBKVOController::controllerWithObserver(*auditor);
  std::thread::id handler;
  controller->observe_keyPath_options_block(account, "balance", New, [&](NSObject&, NSObject&, const NSDictionary&) {
    handler = std::this_thread::get_id();
  });
  std::thread changer([&] { account->setBalance(1); });
  const std::thread::id expected = changer.get_id();
  changer.join();
  EXPECT_EQ(handler, expected);
}

TEST_F(FBKVOControllerThreads, AnUnobserveThatOvertakesARegistrationLeavesNothing) {
  const auto controller = FBKVOController::controllerWithObserver(*auditor);
  for (int round = 0; round < 2000; ++round) {
    together([&] { controller->observe_keyPath_options_block(account, "balance", New, counting()); },
             [&] { controller->unobserve(account, "balance"); });
    controller->unobserve(account, "balance");
    ASSERT_FALSE(account->isObserved()) << round;
  }
}

TEST_F(FBKVOControllerThreads, ObservationsComeAndGoOnOneControllerFromTwoThreads) {
  const auto controller = FBKVOController::controllerWithObserver(*auditor);
  const auto churn = [&] {
    for (int i = 0; i < 1000; ++i) {
      const auto passing = make<Account>();
      controller->observe_keyPath_options_block(passing, "balance", New, counting());
      passing->setBalance(i);
      if (i % 2 == 0) controller->unobserve(passing);
    }
  };
  together(churn, churn);
  EXPECT_EQ(calls, 2000);
  controller->unobserveAll();
}

TEST_F(FBKVOControllerThreads, ControllersGoWhileAllObservationsAreDescribed) {
  const auto come = [&] {
    for (int i = 0; i < 2000; ++i) {
      const auto controller = FBKVOController::controllerWithObserver(*auditor);
      if (i % 2 == 0) controller->observe_keyPath_options_block(account, "balance", New, counting());
    }
  };
  together(come, come, [&] {
    for (int i = 0; i < 1000; ++i) {
      EXPECT_FALSE(_FBKVOSharedController::sharedController().debugDescription().empty());
    }
  });
  EXPECT_FALSE(account->isObserved());
}

TEST_F(FBKVOControllerThreads, ControllersGoWhileTheirObjectsChange) {
  together(
      [&] {
        for (int i = 0; i < 1000; ++i) {
          const auto controller = FBKVOController::controllerWithObserver(*auditor);
          controller->observe_keyPath_options_block(account, "balance", New, counting());
        }
      },
      [&] {
        for (int i = 0; i < 3000; ++i) account->setBalance(i);
      });
  EXPECT_FALSE(account->isObserved());
}

TEST_F(FBKVOControllerThreads, ObserverObjectAndControllerGoOnThreeThreadsDuringChanges) {
  for (int round = 0; round < 500; ++round) {
    auto observer = make<Auditor>();
    auto object = make<Account>();
    auto controller = FBKVOController::initWithObserver(*observer, round % 2 == 0);
    controller->observe_keyPath_options_block(object, "balance", New | NSKeyValueObservingOptionPrior, counting());
    together([&] { observer = nullptr; }, [&] { controller = nullptr; },
             [changing = object] {
               for (int i = 0; i < 20; ++i) changing->setBalance(i);
             },
             [&] { object = nullptr; });
  }
}

TEST_F(FBKVOControllerThreads, HandlersOnTwoThreadsMayEndTheirObservationAndBeginItAgain) {
  const auto controller = FBKVOController::controllerWithObserver(*auditor);
  FBKVONotificationBlock again = [&](NSObject&, NSObject& object, const NSDictionary&) {
    ++calls;
    controller->unobserve(object, "balance");
    controller->observe_keyPath_options_block(object, "balance", New, again);
  };
  controller->observe_keyPath_options_block(account, "balance", New, again);
  const auto change = [&] {
    for (int i = 0; i < 1000; ++i) account->setBalance(i);
  };
  together(change, change);
  EXPECT_GT(calls, 0);
  controller->unobserveAll();
  EXPECT_FALSE(account->isObserved());
}

TEST_F(FBKVOControllerThreads, AHandlerMayLetGoOfObserverObjectAndControllerWhileAnotherThreadChangesTheObject) {
  for (int round = 0; round < 300; ++round) {
    std::mutex mutex;
    auto observer = make<Auditor>();
    auto object = make<Account>();
    auto controller = FBKVOController::controllerWithObserver(*observer);
    const Weak<Auditor> observerLeft(observer);
    const Weak<Account> objectLeft(object);
    const Weak<FBKVOController> controllerLeft(controller);
    controller->observe_keyPath_options_block(object, "balance", New, [&](NSObject&, NSObject&, const NSDictionary&) {
      ++calls;
      const std::lock_guard lock(mutex);
      observer = nullptr;
      object = nullptr;
      controller = nullptr;
    });
    const auto changing = [](const Ref<Account>& changed) {
      return [changed] {
        for (int i = 0; i < 20; ++i) changed->setBalance(i);
      };
    };
    together(changing(object), changing(object));
    ASSERT_FALSE(observerLeft.lock() || controllerLeft.lock()) << round;
    ASSERT_EQ(objectLeft.lock(), nullptr) << round;
  }
  EXPECT_GE(calls, 300);
}

TEST_F(FBKVOControllerThreads, ObjectsThatAreNotKeptGoWhileTheirControllerEnds) {
  for (int round = 0; round < 500; ++round) {
    auto object = make<Account>();
    auto controller = FBKVOController::initWithObserver(*auditor, false);
    controller->observe_keyPath_options_block(object, "balance", New, counting());
    together([&] { object = nullptr; }, [&] { controller = nullptr; });
  }
  EXPECT_EQ(calls, 0);
}

TEST_F(FBKVOControllerThreads, ThreadsThatAskForAnObjectsControllerAtOnceGetTheSameOne) {
  for (int round = 0; round < 300; ++round) {
    const auto owner = make<Auditor>();
    Ref<FBKVOController> first, second;
    together([&] { first = KVOController(*owner); }, [&] { second = KVOController(*owner); });
    ASSERT_EQ(first, second);
  }
}
