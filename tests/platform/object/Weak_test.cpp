#include "NorvikCore/platform/object/Weak.h"

#include "NorvikCore/platform/object/NSObject.h"
#include "tests/support/QuietFork.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

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

TEST(Weak, AForkedChildIsNotHeldUpByWhatOtherThreadsWereAt) {
#ifdef NK_TEST_ADDRESS_SANITIZER
  GTEST_SKIP() << "the address sanitizer's own heap may be locked for ever in a child of a busy process";
#endif
  const Ref<Thing> thing = make<Thing>();
  const Weak<Thing> weak = thing;
  std::atomic<bool> done = false;
  std::thread taking([&] {
    while (!done) (void)Weak<Thing>(thing);
  });
  std::thread reading([&] {
    while (!done) (void)weak.lock();
  });
  int bad = 0;
  for (int i = 0; i < 100 && bad == 0; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      alarm(20);  // ends a child that hangs
      _exit(Weak<Thing>(thing).lock() == thing && weak.lock() == thing ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    bad += status != 0;
  }
  done = true;
  taking.join();
  reading.join();
  EXPECT_EQ(bad, 0);
}
