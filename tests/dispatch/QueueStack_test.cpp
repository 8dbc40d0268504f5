// The queue stack that the running code gets by the stack's key.
#include "NorvikCore/dispatch/TSKDispatchQueue.h"

#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "tests/dispatch/Wrappers.h"

#include <gtest/gtest.h>

#include <latch>
#include <thread>

namespace norvik {
namespace {

using test::concurrent;
using test::flush;
using test::serial;
using test::whileMainDrains;
using test::Wrapper;

class QueueStack : public test::WatchedTest {
 protected:
  static NSMutableArray* stack() { return static_cast<NSMutableArray*>(dispatch_get_specific(TSKQueueStackKey)); }
  /// The labels of the stack, outermost first; "none" without a stack.
  static std::string labels() {
    const NSMutableArray* seen = stack();
    if (seen == nullptr) return "none";
    std::string text;
    for (const Value& wrapper : *seen) {
      if (!text.empty()) text += " ";
      text += wrapper.as<Ref<TSKDispatchQueue>>()->label()->str();
    }
    return text;
  }

  const Wrapper a_ = serial("a"), b_ = serial("b"), c_ = serial("c");
};

TEST_F(QueueStack, OutsideThereIsNone) { EXPECT_EQ(labels(), "none"); }

TEST_F(QueueStack, ItListsTheSerialWrappersFromTheOutermost) {
  a_->dispatchSynchronously([&] {
    EXPECT_EQ(labels(), "a");
    b_->dispatchSynchronously([&] { c_->dispatchSynchronously([&] { EXPECT_EQ(labels(), "a b c"); }); });
    EXPECT_EQ(labels(), "a");
  });
  EXPECT_EQ(labels(), "none");
}

TEST_F(QueueStack, ItIsOneArrayForTheWholeChainThatGrowsAndShrinks) {
  Ref<NSMutableArray> kept;
  a_->dispatchSynchronously([&] {
    b_->dispatchSynchronously([&] {
      kept = ref(*stack());
      EXPECT_EQ(kept->count(), 2U);
      c_->dispatchSynchronously([&] {
        EXPECT_EQ(stack(), kept.get());
        EXPECT_EQ(kept->count(), 3U);
      });
      EXPECT_EQ(kept->count(), 2U);
    });
    EXPECT_EQ(stack(), kept.get());
    EXPECT_EQ(kept->count(), 1U);
  });
  EXPECT_EQ(kept->count(), 0U) << "whoever kept it sees that nothing runs any more";
}

TEST_F(QueueStack, ItHoldsTheWrappersThemselves) {
  a_->dispatchSynchronously([&] {
    ASSERT_NE(stack(), nullptr);
    EXPECT_EQ(stack()->objectAtIndex(0).object(), a_.get());
    EXPECT_EQ(dispatch_get_specific(TSKIsCurrentKey), a_.get());
  });
}

TEST_F(QueueStack, AnAsynchronousBlockAndATimersBlockHaveStacksOfTheirOwn) {
  NSMutableArray* outer = nullptr;
  a_->dispatchSynchronously([&] {
    outer = stack();
    std::latch fired(1);
    b_->dispatchAsynchronously([&] {
      EXPECT_EQ(labels(), "b");
      EXPECT_NE(stack(), outer);
    });
    b_->scheduleTimerWithName("timer", 0, TSKTimerRestart, [&] {
      EXPECT_EQ(labels(), "b");
      fired.count_down();
    });
    fired.wait();
    EXPECT_EQ(labels(), "a");
  });
  flush(b_);
}

TEST_F(QueueStack, AConcurrentWrapperHandsItOnUnlisted) {
  const Wrapper many = concurrent();
  a_->dispatchSynchronously([&] {
    NSMutableArray* outer = stack();
    many->dispatchSynchronously([&] {
      EXPECT_EQ(stack(), outer);
      EXPECT_EQ(labels(), "a");
      b_->dispatchSynchronously([&] { EXPECT_EQ(labels(), "a b"); });
    });
  });
  many->dispatchSynchronously([&] {
    ASSERT_NE(stack(), nullptr);
    EXPECT_EQ(labels(), "") << "a stack without a serial wrapper is an empty one";
  });
}

TEST_F(QueueStack, AnAsynchronousBlockOfAConcurrentWrapperHasNone) {
  const Wrapper many = concurrent();
  std::string seen;
  a_->dispatchSynchronously([&] { many->dispatchAsynchronously([&] { seen = labels(); }); });
  flush(many);
  EXPECT_EQ(seen, "none");
}

TEST_F(QueueStack, BarriersAndTheBareQueueHaveNone) {
  std::string seen;
  a_->dispatchSynchronously([&] {
    b_->dispatchBarrierSynchronously([&] { seen += labels(); });
    dispatch_sync(c_->queue(), [&] {
      seen += " " + labels();
      b_->dispatchSynchronously([&] { seen += " " + labels(); });
    });
  });
  b_->dispatchBarrierAsynchronously([&] { seen += " " + labels(); });
  flush(b_);
  EXPECT_EQ(seen, "none none b none");
}

TEST_F(QueueStack, ItGoesAlongToTheMainThread) {
  std::string seen;
  whileMainDrains([&] {
    a_->dispatchSynchronously([&] {
      TSKDispatchQueue::mainDispatchQueue()->dispatchSynchronously([&] {
        seen = labels();
        b_->dispatchSynchronously([&] { seen += ", " + labels(); });
      });
      seen += ", " + labels();
    });
  });
  EXPECT_EQ(seen, "a com.norvik.main-thread, a com.norvik.main-thread b, a");
}

TEST_F(QueueStack, TheCheckGoesByTheArrayOnceItWasAskedFor) {
  const Wrapper skips = serial("skips", TSKDeadlockSkip);
  skips->dispatchSynchronously([&] {
    b_->dispatchSynchronously([&] {
      EXPECT_TRUE(skips->isInCurrentQueueStack());
      stack()->removeObject(skips);
      EXPECT_FALSE(skips->isInCurrentQueueStack());
      stack()->insertObject(skips, 0);
      skips->dispatchSynchronously([] { FAIL(); });
    });
  });
}

TEST_F(QueueStack, AWrapperThatWasTakenOutTakesNoOtherAlongWhenItIsLeft) {
  a_->dispatchSynchronously([&] {
    b_->dispatchSynchronously([&] {
      stack()->removeObject(b_);
      EXPECT_EQ(labels(), "a");
    });
    EXPECT_EQ(labels(), "a");
    b_->dispatchSynchronously([&] {
      EXPECT_EQ(labels(), "a b");
      stack()->removeAllObjects();
    });
    EXPECT_EQ(labels(), "");
  });
  EXPECT_EQ(labels(), "none");
}

TEST_F(QueueStack, TheQueueItselfHasNone) {
  a_->dispatchSynchronously([&] { EXPECT_EQ(dispatch_queue_get_specific(a_->queue(), TSKQueueStackKey), nullptr); });
}

TEST_F(QueueStack, ManyCallersOfAConcurrentQueueHaveOneEach) {
  const Wrapper many = concurrent();
  std::latch inside(4);
  std::vector<std::thread> callers;
  for (int i = 0; i < 4; ++i) {
    callers.emplace_back([&, own = serial(std::string(1, static_cast<char>('w' + i)).c_str())] {
      own->dispatchSynchronously([&] {
        many->dispatchSynchronously([&] {
          inside.arrive_and_wait();
          for (int turn = 0; turn < 500; ++turn) {
            ASSERT_EQ(labels(), own->label()->str());
            b_->dispatchSynchronously([&] { ASSERT_EQ(labels(), own->label()->str() + " b"); });
          }
        });
      });
    });
  }
  for (std::thread& caller : callers) caller.join();
}

}  // namespace
}  // namespace norvik
