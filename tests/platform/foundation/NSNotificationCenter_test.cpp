#include "NorvikCore/platform/foundation/NSNotificationCenter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "NorvikCore/platform/foundation/NSLog.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/platform/values/NSException.h"

namespace norvik {
namespace {

using ::testing::ElementsAre;
using Names = std::vector<std::string>;

class PayRun : public NSObject {
  NK_OBJECT(PayRun, NSObject)
  NSString description() const override { return "April"; }
};

/// Records the notifications that it gets.
class Listener : public NSObject {
  NK_OBJECT(Listener, NSObject)
  void payRunDidEnd(const Ref<NSNotification>& notification) { heard.push_back(notification->name().str()); }
  NK_METHOD(payRunDidEnd)
  void somethingHappened() { heard.emplace_back("something"); }
  NK_METHOD(somethingHappened)
  void takeBoth(const Value&, const Value&) {}
  NK_METHOD_AS(takeBoth, "take:both:")

  Names heard;
};

class NSNotificationCenterTest : public ::testing::Test {
 protected:
  Ref<NSObject> add(std::optional<NSString> name, const std::string& label, const Ref<NSObject>& sender = nullptr) {
    return center.addObserverForName(std::move(name), sender,
                                     [this, label](const NSNotification&) { heard.push_back(label); });
  }

  Ref<NSNotificationCenter> owned = make<NSNotificationCenter>();
  NSNotificationCenter& center = *owned;
  Names heard;
};

TEST(NSNotificationCenter, HeaderExample) {
  const kernel::SystemLogCapture capture;
  const Ref<NSObject> payRun = make<PayRun>();
  NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
  Ref<NSObject> token = center.addObserverForName("PayRunDidEnd", nullptr,
                                                  [](const NSNotification& note) { NSLog("%@ ended", note.object()); });
  center.postNotificationName("PayRunDidEnd", payRun);
  center.removeObserver(*token);
  center.postNotificationName("PayRunDidEnd", payRun);
  EXPECT_THAT(capture.lines(), ElementsAre("April ended"));
}

TEST_F(NSNotificationCenterTest, ThereIsOneDefaultCenter) {
  EXPECT_EQ(&NSNotificationCenter::defaultCenter(), &NSNotificationCenter::defaultCenter());
  EXPECT_NE(&NSNotificationCenter::defaultCenter(), &center);
}

TEST_F(NSNotificationCenterTest, ObserversAreCalledInTheOrderInWhichTheyWereAdded) {
  for (const char* label : {"first", "second", "third"}) add("Paid", label);
  center.postNotificationName("Paid");
  EXPECT_EQ(heard, (Names{"first", "second", "third"}));
}

TEST_F(NSNotificationCenterTest, OnlyTheNameThatWasAskedForIsHeard) {
  add("Paid", "paid");
  add(std::nullopt, "any");
  center.postNotificationName("Closed");
  center.postNotificationName("Paid");
  center.postNotificationName("paid");
  EXPECT_EQ(heard, (Names{"any", "paid", "any", "any"}));
}

TEST_F(NSNotificationCenterTest, OnlyTheSenderThatWasAskedForIsHeard) {
  const Ref<NSObject> april = make<PayRun>(), may = make<PayRun>();
  add("Paid", "april", april);
  add("Paid", "any");
  center.postNotificationName("Paid", april);
  center.postNotificationName("Paid", may);
  center.postNotificationName("Paid");
  EXPECT_EQ(heard, (Names{"april", "any", "any", "any"}));
}

TEST_F(NSNotificationCenterTest, ANotificationCarriesNameSenderAndUserInformation) {
  const Ref<NSObject> sender = make<PayRun>();
  const Ref<NSDictionary> information = NSDictionary::dictionaryWith({{"month", 4}});
  Ref<NSNotification> seen;
  center.addObserverForName("Paid", nullptr, [&](const NSNotification& notification) {
    seen = NSNotification::notificationWithName(notification.name(), notification.object(), notification.userInfo());
  });
  center.postNotificationName("Paid", sender, information);
  ASSERT_TRUE(seen);
  EXPECT_EQ(seen->name(), "Paid");
  EXPECT_EQ(seen->object(), sender);
  EXPECT_EQ(seen->userInfo(), information);
}

TEST_F(NSNotificationCenterTest, AnObjectIsToldByAnOperationWithOrWithoutTheNotification) {
  const Ref<Listener> listener = make<Listener>();
  center.addObserver(*listener, "payRunDidEnd:", "Paid", nullptr);
  center.addObserver(*listener, "somethingHappened", "Paid", nullptr);
  center.postNotificationName("Paid");
  EXPECT_EQ(listener->heard, (Names{"Paid", "something"}));
}

TEST_F(NSNotificationCenterTest, AnOperationThatCannotBeToldIsRefused) {
  const Ref<Listener> listener = make<Listener>();
  EXPECT_THROW(center.addObserver(*listener, "unknown:", "Paid", nullptr), NSException);
  EXPECT_THROW(center.addObserver(*listener, "take:both:", "Paid", nullptr), NSException);
  EXPECT_THROW(center.addObserverForName("Paid", nullptr, nullptr), NSException);
}

TEST_F(NSNotificationCenterTest, WhatIsAddedTwiceIsCalledTwice) {
  const Ref<Listener> listener = make<Listener>();
  center.addObserver(*listener, "somethingHappened", "Paid", nullptr);
  center.addObserver(*listener, "somethingHappened", "Paid", nullptr);
  center.postNotificationName("Paid");
  EXPECT_EQ(listener->heard.size(), 2U);
}

TEST_F(NSNotificationCenterTest, ARemovedObserverHearsNothingMore) {
  const Ref<NSObject> token = add("Paid", "removed");
  add("Paid", "stays");
  center.removeObserver(*token);
  center.removeObserver(*token);
  center.postNotificationName("Paid");
  EXPECT_EQ(heard, (Names{"stays"}));
}

TEST_F(NSNotificationCenterTest, OneNameOrSenderOfAnObserverCanBeRemoved) {
  const Ref<Listener> listener = make<Listener>();
  const Ref<NSObject> april = make<PayRun>(), may = make<PayRun>();
  for (const char* name : {"Paid", "Closed"}) {
    for (const auto& sender : {april, may}) center.addObserver(*listener, "payRunDidEnd:", name, sender);
  }
  const auto postAll = [&] {
    listener->heard.clear();
    for (const char* name : {"Paid", "Closed"}) {
      for (const auto& sender : {april, may}) center.postNotificationName(name, sender);
    }
    return listener->heard;
  };
  center.removeObserver(*listener, "Paid", april);
  EXPECT_EQ(postAll(), (Names{"Paid", "Closed", "Closed"}));
  center.removeObserver(*listener, std::nullopt, may);
  EXPECT_EQ(postAll(), (Names{"Closed"}));
  center.removeObserver(*listener, "Closed", nullptr);
  EXPECT_EQ(postAll(), Names());
}

TEST_F(NSNotificationCenterTest, AnObserverThatIsGoneIsNotCalled) {
  Ref<Listener> listener = make<Listener>();
  const Weak<Listener> watched = listener;
  center.addObserver(*listener, "somethingHappened", "Paid", nullptr);
  listener = nullptr;
  EXPECT_FALSE(watched.lock()) << "the center keeps no observer";
  center.postNotificationName("Paid");
  add("Paid", "alive");
  center.postNotificationName("Paid");
  EXPECT_EQ(heard, (Names{"alive"}));
}

TEST_F(NSNotificationCenterTest, ASenderThatIsGoneIsNotMistakenForAnother) {
  Ref<NSObject> sender = make<PayRun>();
  add("Paid", "april", sender);
  sender = nullptr;
  for (int i = 0; i < 100; ++i) center.postNotificationName("Paid", make<PayRun>());  // often at the former address
  EXPECT_EQ(heard, Names());
}

TEST_F(NSNotificationCenterTest, AClosureIsKeptUntilItIsRemoved) {
  Ref<PayRun> kept = make<PayRun>();
  const Weak<PayRun> watched = kept;
  const Ref<NSObject> token = center.addObserverForName("Paid", nullptr, [kept](const NSNotification&) {});
  kept = nullptr;
  EXPECT_TRUE(watched.lock());
  center.removeObserver(*token);
  EXPECT_FALSE(watched.lock());
}

TEST_F(NSNotificationCenterTest, AnObserverMayRemoveItself) {
  Ref<NSObject> token;
  token = center.addObserverForName("Paid", nullptr, [&](const NSNotification&) {
    heard.emplace_back("once");
    center.removeObserver(*token);
  });
  add("Paid", "after");
  center.postNotificationName("Paid");
  center.postNotificationName("Paid");
  EXPECT_EQ(heard, (Names{"once", "after", "after"}));
}

TEST_F(NSNotificationCenterTest, AnObserverRemovedDuringThePostingIsNotCalledAnyMore) {
  Ref<NSObject> later;
  center.addObserverForName("Paid", nullptr, [&](const NSNotification&) {
    heard.emplace_back("removes");
    center.removeObserver(*later);
  });
  later = add("Paid", "later");
  center.postNotificationName("Paid");
  EXPECT_EQ(heard, (Names{"removes"}));
}

TEST_F(NSNotificationCenterTest, AnObserverAddedDuringThePostingHearsOfTheNext) {
  bool added = false;
  center.addObserverForName("Paid", nullptr, [&](const NSNotification&) {
    heard.emplace_back("adds");
    if (!added) add("Paid", "added");
    added = true;
  });
  center.postNotificationName("Paid");
  EXPECT_EQ(heard, (Names{"adds"}));
  center.postNotificationName("Paid");
  EXPECT_EQ(heard, (Names{"adds", "adds", "added"}));
}

TEST_F(NSNotificationCenterTest, AnObserverMayPost) {
  center.addObserverForName("Paid", nullptr, [&](const NSNotification&) {
    heard.emplace_back("begin");
    center.postNotificationName("Closed");
    heard.emplace_back("end");
  });
  add("Closed", "closed");
  center.postNotificationName("Paid");
  EXPECT_EQ(heard, (Names{"begin", "closed", "end"}));
}

TEST_F(NSNotificationCenterTest, AnExceptionLeavesThePosting) {
  add("Paid", "before");
  center.addObserverForName("Paid", nullptr,
                            [](const NSNotification&) { throw NSException("PayrollException", "closed"); });
  add("Paid", "after");
  EXPECT_THROW(center.postNotificationName("Paid"), NSException);
  EXPECT_EQ(heard, (Names{"before"}));
}

/// Removes itself in its destructor, as many classes do.
class Leaver : public NSObject {
  NK_OBJECT(Leaver, NSObject)
  explicit Leaver(NSNotificationCenter& center) : center_(center) {}
  ~Leaver() override { center_.removeObserver(*this); }
  void somethingHappened() {}
  NK_METHOD(somethingHappened)

 private:
  NSNotificationCenter& center_;
};

TEST_F(NSNotificationCenterTest, AnObserverMayRemoveItselfInItsDestructor) {
  Ref<Leaver> leaver = make<Leaver>(center);
  center.addObserver(*leaver, "somethingHappened", std::nullopt, nullptr);
  center.addObserverForName("Paid", nullptr, [&](const NSNotification&) { leaver = nullptr; });
  center.postNotificationName("Paid");
  EXPECT_FALSE(leaver);
}

TEST_F(NSNotificationCenterTest, AClosureMayHoldTheLastRefToAnObserver) {
  Ref<NSObject> token;
  {
    const Ref<Leaver> leaver = make<Leaver>(center);
    token = center.addObserverForName("Paid", nullptr, [leaver](const NSNotification&) {});
  }
  center.removeObserver(*token);  // destroys the closure and with it the Leaver, which calls back
  center.postNotificationName("Paid");
}

TEST_F(NSNotificationCenterTest, ManyThreadsMayPostAddAndRemove) {
  constexpr int rounds = 300;
  std::atomic<int> calls{0};
  center.addObserverForName("Paid", nullptr, [&](const NSNotification&) { ++calls; });
  std::latch start(4);
  std::vector<std::thread> threads;
  for (int i = 0; i < 2; ++i) {
    threads.emplace_back([&] {
      start.arrive_and_wait();
      for (int round = 0; round < rounds; ++round) center.postNotificationName("Paid");
    });
    threads.emplace_back([&] {
      start.arrive_and_wait();
      for (int round = 0; round < rounds; ++round) {
        const Ref<Listener> gone = make<Listener>();
        center.addObserver(*gone, "payRunDidEnd:", "Closed", nullptr);
        const Ref<NSObject> token = center.addObserverForName("Paid", nullptr, [](const NSNotification&) {});
        center.removeObserver(*token);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(calls, 2 * rounds);
}

TEST_F(NSNotificationCenterTest, NobodyIsCalledAfterARemovalThatNoCallWasUnderWayFor) {
  std::atomic<bool> removed{false}, calledLate{false};
  std::thread poster;
  for (int round = 0; round < 200; ++round) {
    removed = false;
    std::latch start(2);
    const Ref<NSObject> token = center.addObserverForName("Paid", nullptr, [&](const NSNotification&) {
      if (removed) calledLate = true;
    });
    poster = std::thread([&] {
      start.arrive_and_wait();
      center.postNotificationName("Closed");
    });
    start.arrive_and_wait();
    center.removeObserver(*token);
    removed = true;
    center.postNotificationName("Paid");
    poster.join();
  }
  EXPECT_FALSE(calledLate);
}

}  // namespace
}  // namespace norvik
