#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"

#include "NorvikCore/platform/object/Weak.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <latch>
#include <thread>
#include <utility>
#include <vector>

using namespace norvik;

namespace {

class Account : public NSObject {
  NK_OBJECT(Account, NSObject)
  NK_ATOMIC_PROPERTY(int, balance, setBalance)
  NK_ATOMIC_PROPERTY(Ref<Account>, next, setNext)
};

class Counter : public NSObject {
  NK_OBJECT(Counter, NSObject)
  void observeValueForKeyPath(const NSString&, NSObject&, const KeyValueChange& change, void*) override {
    ++calls;
    if (const auto* object = change.newValue().object()) (void)object->classObject();
  }
  std::atomic<int> calls{0};
};

/// Calls a function with itself at each change, and counts its destruction.
class Caller : public NSObject {
  NK_OBJECT(Caller, NSObject)
  Caller(std::atomic<int>& destroyed, std::function<void(Caller&)> call)
      : destroyed_(destroyed), call_(std::move(call)) {}
  ~Caller() override { ++destroyed_; }
  void observeValueForKeyPath(const NSString&, NSObject&, const KeyValueChange&, void*) override { call_(*this); }

 private:
  std::atomic<int>& destroyed_;
  const std::function<void(Caller&)> call_;
};

constexpr auto New = NSKeyValueObservingOptionNew, Old = NSKeyValueObservingOptionOld;

/// Runs the steps concurrently; all start together.
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

constexpr int rounds = 2000;

}  // namespace

TEST(KeyValueObservingThreads, ObserversComeAndGoWhileAnotherThreadChangesTheObject) {
  const auto account = make<Account>();
  const auto staying = make<Counter>();
  account->addObserver(*staying, "balance", New | Old);
  together(
      [&] {
        for (int i = 0; i < rounds; ++i) account->setBalance(i);
      },
      [&] {
        for (int i = 0; i < rounds; ++i) {
          const auto passing = make<Counter>();
          account->addObserver(*passing, "balance", New);
          if (i % 3 != 0) account->removeObserver(*passing, "balance", nullptr);  // otherwise it is destroyed
        }
      });
  EXPECT_EQ(staying->calls, rounds);
  account->setBalance(0);
  account->removeObserver(*staying, "balance");
  EXPECT_FALSE(account->isObserved());
}

TEST(KeyValueObservingThreads, SeveralThreadsChangeOneObjectWhileObserversComeAndGo) {
  const auto account = make<Account>();
  const auto staying = make<Counter>(), other = make<Counter>();
  account->addObserver(*staying, "balance", {});
  const auto change = [&] {
    for (int i = 0; i < 10 * rounds; ++i) account->setBalance(i);
  };
  const auto addAndRemove = [&](const Ref<Counter>& observer) {
    for (int i = 0; i < rounds; ++i) {
      account->addObserver(*observer, "balance", {});
      account->removeObserver(*observer, "balance");
    }
  };
  together(
      change, change, change, [&] { addAndRemove(staying); }, [&] { addAndRemove(other); });
  EXPECT_GE(staying->calls, 3 * 10 * rounds);
  account->removeObserver(*staying, "balance");
  EXPECT_FALSE(account->isObserved());
  const int heard = staying->calls + other->calls;
  account->setBalance(0);
  EXPECT_EQ(staying->calls + other->calls, heard);
}

TEST(KeyValueObservingThreads, ObjectsAlongThePathAreExchangedFromTwoThreads) {
  const auto root = make<Account>(), a = make<Account>(), b = make<Account>();
  const auto counter = make<Counter>();
  root->setNext(a);
  root->addObserver(*counter, "next.balance", New);
  together(
      [&] {
        for (int i = 0; i < rounds; ++i) root->setNext(i % 2 == 0 ? b : a);
      },
      [&] {
        for (int i = 0; i < rounds; ++i) root->setNext(i % 2 == 0 ? a : b);
      },
      [&] {
        for (int i = 0; i < rounds; ++i) a->setBalance(i), b->setBalance(i);
      });
  // Whichever thread was last, exactly the current object is observed, once.
  counter->calls = 0;
  a->setBalance(-1);
  b->setBalance(-1);
  EXPECT_EQ(counter->calls, 1);
  root->removeObserver(*counter, "next.balance");
  EXPECT_FALSE(root->isObserved() || a->isObserved() || b->isObserved());
}

TEST(KeyValueObservingThreads, APathIsRemovedWhileItsObjectsAreExchanged) {
  for (int round = 0; round < 300; ++round) {
    const auto root = make<Account>(), a = make<Account>(), b = make<Account>();
    const auto counter = make<Counter>();
    root->setNext(a);
    root->addObserver(*counter, "next.next.balance", New);
    together([&] { root->setNext(b); }, [&] { a->setNext(b); },
             [&] { root->removeObserver(*counter, "next.next.balance"); });
    ASSERT_FALSE(root->isObserved() || a->isObserved() || b->isObserved()) << round;
  }
}

TEST(KeyValueObservingThreads, ObserverAndObjectsGoWhileAnotherThreadChangesWhatIsLeft) {
  for (int round = 0; round < 300; ++round) {
    auto root = make<Account>();
    const auto shared = make<Account>();
    auto counter = make<Counter>();
    root->setNext(shared);
    root->addObserver(*counter, "next.balance", New);
    together([&] { root = nullptr; }, [&] { counter = nullptr; }, [&] { shared->setBalance(1); });
    shared->setBalance(2);
    ASSERT_FALSE(shared->isObserved()) << round;
  }
}

TEST(KeyValueObservingThreads, OnlyOneOfTwoThreadsRemovesARegistration) {
  for (int round = 0; round < 300; ++round) {
    const auto account = make<Account>();
    const auto counter = make<Counter>();
    account->addObserver(*counter, "balance", New);
    std::atomic<int> refused{0};
    const auto remove = [&] {
      try {
        account->removeObserver(*counter, "balance", nullptr);
      } catch (const std::exception&) {
        ++refused;
      }
    };
    together(remove, remove);
    ASSERT_EQ(refused, 1) << round;
  }
}

TEST(KeyValueObservingThreads, AnObserverThatAnotherThreadReleasesDuringItsCallIsDestroyedAfterIt) {
  const auto account = make<Account>();
  std::atomic<int> destroyed = 0;
  int destroyedInTheCall = -1;
  Ref<Caller> observer;
  observer = make<Caller>(destroyed, [&](Caller&) {
    std::jthread([&] { observer = nullptr; }).join();
    destroyedInTheCall = destroyed;
  });
  account->addObserver(*observer, "balance", {});
  account->setBalance(1);
  EXPECT_EQ(destroyedInTheCall, 0);
  EXPECT_EQ(destroyed, 1);
  account->setBalance(2);
  EXPECT_FALSE(account->isObserved());
}

TEST(KeyValueObservingThreads, ARefThatACallTakesToItsObserverOutlivesTheReleaseOnAnotherThread) {
  const auto account = make<Account>();
  std::atomic<int> destroyed = 0;
  Ref<Caller> observer, kept;
  observer = make<Caller>(destroyed, [&](Caller& self) {
    std::jthread([&] {
      observer = nullptr;
      kept = ref(self);
    }).join();
  });
  account->addObserver(*observer, "balance", {});
  account->setBalance(1);
  EXPECT_EQ(destroyed, 0);
  account->removeObserver(*kept, "balance");
  std::jthread([&] { kept = nullptr; }).join();
  EXPECT_EQ(destroyed, 1);
}

TEST(KeyValueObservingThreads, AnObjectThatAnotherThreadReleasesDuringItsChangeIsDestroyedAfterIt) {
  Ref<Account> account = make<Account>();
  const Weak<Account> weak = account;
  std::atomic<int> destroyed = 0;
  bool livesInTheCall = false;
  const auto observer = make<Caller>(destroyed, [&](Caller&) {
    std::jthread([&] { account = nullptr; }).join();
    livesInTheCall = weak.lock() != nullptr;
  });
  account->addObserver(*observer, "balance", {});
  account.get()->setBalance(1);
  EXPECT_TRUE(livesInTheCall);
  EXPECT_TRUE(weak.isGone());
}

TEST(KeyValueObservingThreads, ObserversThatAnotherThreadAddsAndRemovesDuringACallCountFromThenOn) {
  const auto account = make<Account>();
  const auto removed = make<Counter>(), staying = make<Counter>(), added = make<Counter>(), nested = make<Counter>();
  std::atomic<int> destroyed = 0;
  int depth = 0;
  const auto first = make<Caller>(destroyed, [&](Caller&) {
    if (depth++ > 0) return;
    std::jthread([&] {
      account->removeObserver(*removed, "balance");
      for (int i = 0; i < 100; ++i) account->addObserver(*added, "balance", {});
    }).join();
    account->setBalance(2);  // a change within the change
    std::jthread([&] { account->addObserver(*nested, "balance", {}); }).join();
  });
  account->addObserver(*first, "balance", {});
  account->addObserver(*removed, "balance", {});
  account->addObserver(*staying, "balance", {});
  account->setBalance(1);
  EXPECT_EQ(removed->calls, 0);
  EXPECT_EQ(staying->calls, 2);
  EXPECT_EQ(added->calls, 100);
  EXPECT_EQ(nested->calls, 0);
  account->setBalance(3);
  EXPECT_EQ(staying->calls, 3);
  EXPECT_EQ(added->calls, 200);
  EXPECT_EQ(nested->calls, 1);
}

TEST(KeyValueObservingThreads, EachObserverIsDestroyedOnceHoweverItsReleaseMeetsTheCalls) {
  const auto account = make<Account>(), other = make<Account>();
  std::atomic<int> destroyed = 0;
  std::atomic<bool> isDone = false;
  const auto change = [&] {
    for (int i = 0; !isDone; ++i) account->setBalance(i), other->setBalance(i);
  };
  together(change, change, [&] {
    for (int i = 0; i < 10 * rounds; ++i) {
      // Calls on two threads take Refs to the observer and release them, while this thread releases the last of its
      // own.
      auto observer = make<Caller>(destroyed, [](Caller& self) { const Ref<Caller> passing = ref(self); });
      account->addObserver(*observer, "balance", {});
      other->addObserver(*observer, "balance", {});
      const Weak<Caller> weak = observer;
      if (i % 2 == 0) observer = nullptr;
      const Ref<Caller> locked = weak.lock();
    }
    isDone = true;
  });
  EXPECT_EQ(destroyed, 10 * rounds);
}

TEST(KeyValueObservingThreads, ChangesByHandMayEndInAnyOrder) {
  const auto account = make<Account>();
  const auto counter = make<Counter>();
  account->addObserver(*counter, "balance", {});
  account->addObserver(*counter, "next", {});
  std::atomic<bool> isDone = false;
  together(
      [&] {
        for (int i = 0; i < rounds; ++i) {
          account->willChangeValueForKey("balance");
          account->willChangeValueForKey("next");
          account->didChangeValueForKey("balance");
          account->didChangeValueForKey("next");
        }
        isDone = true;
      },
      [&] {
        while (!isDone) {
          const auto passing = make<Counter>();
          account->addObserver(*passing, "next", {});
          account->removeObserver(*passing, "next");
        }
      });
  EXPECT_EQ(counter->calls, 2 * rounds);
}
