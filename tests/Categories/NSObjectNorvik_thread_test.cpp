// Bindings and observations that several threads create, use and end through the helpers of NSObject+Norvik.
#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>
#include <vector>

#include "NorvikCore/Categories/NSObject+Norvik_Binding.h"
#include "NorvikCore/Categories/NSObject+Norvik_Observing.h"
#include "NorvikCore/dispatch/TSKDispatchQueue.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/dispatch/Source.h"
#include "tests/platform/appkit/BindingModels.h"
#include "tests/support/WarningRecorder.h"

namespace norvik::test {
namespace {

class SharedSlip : public NSObject {
  NK_OBJECT(SharedSlip, NSObject)
  NK_ATOMIC_PROPERTY(Value, value, setValue)
  NK_ATOMIC_PROPERTY(Value, note, setNote)
};

class CountingObserver : public NSObject {
 public:
  void observeValueForKeyPath(const NSString&, NSObject&, const KeyValueChange&, void*) override { ++calls; }
  std::atomic<int> calls{0};
};

/// Runs work(0) to work(count - 1), each on its own thread, all starting at the same time.
template <class Work>
void onThreads(int count, const Work& work) {
  std::latch start(count);
  std::vector<std::jthread> threads;
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([&, i] {
      start.arrive_and_wait();
      work(i);
    });
  }
}

class NSObjectNorvikThreads : public ::testing::Test {
 protected:
  WarningRecorder warnings;
  Ref<SharedSlip> slip = make<SharedSlip>();
};

TEST_F(NSObjectNorvikThreads, ObserversComeAndGoOnAllThreadsWhileTheObjectChanges) {
  const auto paths = NSArray::arrayWithObjects("value", "note");
  onThreads(4, [&](int thread) {
    const auto observer = make<CountingObserver>();
    for (int i = 0; i < 100; ++i) {
      nk_addObserver(*slip, *observer, *paths, NSKeyValueObservingOptionNew, &slip);
      slip->setValue(thread * 1000 + i);
      nk_safelyRemoveObserver(*slip, *observer, *paths, &slip);
    }
    EXPECT_GE(observer->calls, 100) << "of its own changes at least";
  });
  EXPECT_FALSE(slip->isObserved());
  EXPECT_TRUE(warnings.take().empty());
}

TEST_F(NSObjectNorvikThreads, ObserversThatOtherThreadsLetGoAreNotMissed) {
  onThreads(3, [&](int thread) {
    for (int i = 0; i < 300; ++i) {
      if (thread == 0) {
        slip->setValue(i);
      } else {
        const auto observer = make<CountingObserver>();
        nk_addObserver(*slip, *observer, *NSArray::arrayWithObjects("value"), NSKeyValueObservingOptionNew, nullptr);
      }
    }
  });
  slip->setValue("once more, so that what is gone is taken away");
  EXPECT_FALSE(slip->isObserved());
}

TEST_F(NSObjectNorvikThreads, OfTwoThreadsThatRemoveOneObservationOneIsWarned) {
  const auto observer = make<CountingObserver>();
  for (int round = 0; round < 50; ++round) {
    slip->addObserver(*observer, "value", NSKeyValueObservingOptionNew, &slip);
    onThreads(2, [&](int) { nk_safelyRemoveObserver(*slip, *observer, "value", &slip); });
    ASSERT_EQ(warnings.take().size(), 1U) << round;
    ASSERT_FALSE(slip->isObserved()) << round;
  }
}

TEST_F(NSObjectNorvikThreads, ChangesByHandReachTheOwnersObservers) {
  const auto owner = make<SharedSlip>();
  slip->setValue(owner);
  const auto observer = make<CountingObserver>();
  owner->addObserver(*observer, "note", NSKeyValueObservingOptionNew);
  onThreads(4, [&](int) {
    for (int i = 0; i < 100; ++i) {
      nk_willChangeValueForKeyPath(*slip, "value.note");
      nk_didChangeValueForKeyPath(*slip, "value.note");
    }
  });
  EXPECT_EQ(observer->calls, 400);
  owner->removeObserver(*observer, "note");
}

TEST_F(NSObjectNorvikThreads, ClosuresGoWithTheirBindings) {
  Weak<NSObject> closureGone;
  {
    const Ref<NSObject> captured = make<SharedSlip>();
    closureGone = captured;
    onThreads(4, [&](int thread) {
      for (int i = 0; i < 100; ++i) {
        const auto field = make<SharedSlip>();
        nk_bind_toObject_withKeyPath_block_reverseBlock(
            *field, NSValueBinding, *slip, "value", [captured](const Value& value) { return value; },
            [captured](const Value& value) { return value; });
        slip->setValue(thread * 1000 + i);
        if (i % 2 == 0) unbind(*field, NSValueBinding);
      }
    });
  }
  EXPECT_FALSE(closureGone.lock());
  EXPECT_FALSE(slip->isObserved());
}

TEST_F(NSObjectNorvikThreads, EditsOfManyViewsReachOneModel) {
  std::atomic<int> taken{0};
  onThreads(4, [&](int thread) {
    const auto field = make<SharedSlip>();
    nk_bind_toObject_withKeyPath_options(*field, NSValueBinding, *slip, "value", nullptr);
    for (int i = 0; i < 100; ++i) taken += nk_updateBoundValue(*field, thread * 1000 + i) ? 1 : 0;
  });
  EXPECT_EQ(taken, 400);
  EXPECT_EQ(slip->value().as<int>() % 1000, 99) << "the last edit of one of them";
  EXPECT_FALSE(slip->isObserved());
}

TEST_F(NSObjectNorvikThreads, BindingsMoveToAndFroWhileTheModelChanges) {
  const auto left = make<SharedSlip>(), right = make<SharedSlip>();
  const auto names = NSArray::arrayWithObjects(NSValueBinding);
  nk_bind_toObject_withKeyPath_options(*left, NSValueBinding, *slip, "value", nullptr);
  onThreads(2, [&](int thread) {
    for (int i = 0; i < 200; ++i) {
      if (thread == 0) {
        slip->setNote(i);
        slip->setValue(slip->note());
      } else {
        nk_transferBindingsTo(i % 2 == 0 ? *left : *right, i % 2 == 0 ? *right : *left, *names);
      }
    }
  });
  EXPECT_TRUE(infoForBinding(*left, NSValueBinding));
  EXPECT_FALSE(infoForBinding(*right, NSValueBinding));
  slip->setValue("settled");
  EXPECT_EQ(left->value(), Value("settled"));
}

// A change that a timer makes later, on a queue.

class ChangeOnAQueue : public NSObjectNorvikThreads {
 protected:
  ChangeOnAQueue() { queue->setTimerClock(clock); }

  void changeInTwoSeconds(const Value& value) {
    queue->scheduleTimerWithName("change", 2, TSKTimerRestart, [this, value] { slip->setValue(value); });
    queue->dispatchSynchronously([] {});  // the timer is armed
  }
  void passTwoSeconds() {
    clock.advance(2'000'000'000);         // nanoseconds
    queue->dispatchSynchronously([] {});  // the change is made
  }

  dispatch_manual_clock clock;
  Ref<TSKDispatchQueue> queue = TSKDispatchQueue::dispatchQueueWithLabel("tests.binding");
};

TEST_F(ChangeOnAQueue, IsCarriedToTheViewBeforeItsBlockReturns) {
  const auto field = make<SharedSlip>();
  nk_bind_toObject_withKeyPath_block(*field, NSValueBinding, *slip, "value", [](const Value& value) -> Value {
    return value.isAbsent() ? Value("none") : Value(value.as<Decimal>() / Decimal(100));
  });
  changeInTwoSeconds(1250);
  EXPECT_EQ(field->value(), Value("none"));
  passTwoSeconds();
  EXPECT_EQ(field->value(), Value(12.5));
}

TEST_F(ChangeOnAQueue, FindsAViewGone) {
  auto field = make<SharedSlip>();
  const Weak<SharedSlip> gone = field;
  nk_bind_toObject_withKeyPath_options(*field, NSValueBinding, *slip, "value", nullptr);
  changeInTwoSeconds(1250);
  field = nullptr;
  EXPECT_FALSE(gone.lock());
  passTwoSeconds();
  EXPECT_EQ(slip->value(), Value(1250));
  EXPECT_FALSE(slip->isObserved());
}

TEST_F(ChangeOnAQueue, FindsAnObserverSafelyRemoved) {
  const auto observer = make<CountingObserver>();
  slip->addObserver(*observer, "value", NSKeyValueObservingOptionNew, &slip);
  changeInTwoSeconds(1250);
  nk_safelyRemoveObserver(*slip, *observer, "value", &slip);
  passTwoSeconds();
  EXPECT_EQ(observer->calls, 0);
}

}  // namespace
}  // namespace norvik::test
