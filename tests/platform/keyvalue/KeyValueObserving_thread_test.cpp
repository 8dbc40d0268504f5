#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>
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
