#include "NorvikCore/platform/runtime/Weak.h"

#include "NorvikCore/platform/runtime/NSObject.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>

using namespace norvik;

namespace {

class Thing : public NSObject {
  NK_OBJECT(Thing, NSObject)
  std::atomic<int> touched{0};
};

class WeakInDestructor : public NSObject {
  NK_OBJECT(WeakInDestructor, NSObject)
  explicit WeakInDestructor(bool* wasEmpty) : wasEmpty_(wasEmpty) {}
  ~WeakInDestructor() override { *wasEmpty_ = !Weak<WeakInDestructor>(this).lock(); }

 private:
  bool* wasEmpty_;
};

}  // namespace

TEST(Weak, HeaderExample) {
  Ref<Thing> slip = make<Thing>();
  Weak<Thing> watched = slip;
  EXPECT_EQ(watched.lock(), slip);
  slip = nullptr;
  EXPECT_FALSE(watched.lock());
}

TEST(Weak, ReadsTheObjectWhileItLivesAndEmptyAfterwards) {
  Ref<Thing> thing = make<Thing>();
  const Weak<Thing> weak = thing;
  EXPECT_EQ(weak.lock(), thing);
  thing = nullptr;
  EXPECT_FALSE(weak.lock());
}

TEST(Weak, DoesNotKeepButALockedRefDoes) {
  Ref<Thing> thing = make<Thing>();
  const Weak<Thing> weak = thing;
  const Ref<Thing> locked = weak.lock();
  thing = nullptr;
  EXPECT_EQ(weak.lock(), locked);
}

TEST(Weak, AnEmptyOneReadsEmpty) {
  EXPECT_FALSE(Weak<Thing>().lock());
  EXPECT_FALSE(Weak<Thing>(Ref<Thing>()).lock());
}

TEST(Weak, TwoToOneObjectAreEqualAlsoAfterItIsGone) {
  Ref<Thing> thing = make<Thing>();
  const Weak<Thing> a = thing, b = thing;
  const Ref<Thing> other = make<Thing>();
  EXPECT_EQ(a, b);
  EXPECT_FALSE(a == Weak<Thing>(other));
  thing = nullptr;
  EXPECT_EQ(a, b);
}

TEST(Weak, TakenInTheDestructorReadsEmpty) {
  bool wasEmpty = false;
  (void)make<WeakInDestructor>(&wasEmpty);
  EXPECT_TRUE(wasEmpty);
}

TEST(Weak, ReadOnOneThreadWhileTheObjectGoesOnAnother) {
  for (int round = 0; round < 100; ++round) {
    Ref<Thing> thing = make<Thing>();
    const Weak<Thing> weak = thing;
    std::latch start(2);
    std::thread reader([&] {
      start.arrive_and_wait();
      while (const Ref<Thing> alive = weak.lock()) alive->touched.fetch_add(1);
    });
    start.arrive_and_wait();
    thing = nullptr;
    reader.join();
    EXPECT_FALSE(weak.lock());
  }
}
