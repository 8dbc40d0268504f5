#include "NorvikCore/platform/object/AssociatedObjects.h"

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/object/Weak.h"

#include <gtest/gtest.h>

#include <latch>
#include <thread>
#include <vector>

namespace norvik {
namespace {

class Owner : public NSObject {
  NK_OBJECT(Owner, NSObject)
};

const char firstKey = 0, secondKey = 0;

TEST(AssociatedObjects, HeaderExample) {
  auto view = make<Owner>();
  auto controller = NSArray::arrayWith({1});
  setAssociatedValue(*view, &firstKey, controller);
  EXPECT_EQ(associatedValue(*view, &firstKey).object<NSArray>(), controller.get());
}

TEST(AssociatedObjects, KeysAreToldApartByAddress) {
  auto owner = make<Owner>();
  EXPECT_TRUE(associatedValue(*owner, &firstKey).isAbsent());
  setAssociatedValue(*owner, &firstKey, 1);
  setAssociatedValue(*owner, &secondKey, "two");
  setAssociatedValue(*owner, &firstKey, 3);
  EXPECT_EQ(associatedValue(*owner, &firstKey), Value(3));
  EXPECT_EQ(associatedValue(*owner, &secondKey), Value("two"));
  EXPECT_TRUE(associatedValue(*make<Owner>(), &firstKey).isAbsent());
}

TEST(AssociatedObjects, AnAbsentValueRemoves) {
  auto owner = make<Owner>();
  setAssociatedValue(*owner, &firstKey, 1);
  setAssociatedValue(*owner, &secondKey, 2);
  setAssociatedValue(*owner, &firstKey, {});
  EXPECT_TRUE(associatedValue(*owner, &firstKey).isAbsent());
  EXPECT_EQ(associatedValue(*owner, &secondKey), Value(2));
  removeAssociatedValues(*owner);
  EXPECT_TRUE(associatedValue(*owner, &secondKey).isAbsent());
}

TEST(AssociatedObjects, RetainKeepsTheObjectAsLongAsItsOwner) {
  auto owner = make<Owner>();
  Weak<NSArray> kept;
  {
    auto array = NSArray::array();
    kept = array;
    setAssociatedValue(*owner, &firstKey, array, AssociationPolicy::Retain);
  }
  EXPECT_TRUE(kept.lock());
  owner = nullptr;
  EXPECT_FALSE(kept.lock());
}

TEST(AssociatedObjects, AssignDoesNotKeepTheObjectAndReadsAbsentOnceItIsGone) {
  auto owner = make<Owner>();
  auto array = NSArray::array();
  setAssociatedValue(*owner, &firstKey, array, AssociationPolicy::Assign);
  setAssociatedValue(*owner, &secondKey, 5, AssociationPolicy::Assign);
  EXPECT_EQ(associatedValue(*owner, &firstKey).object(), array.get());
  array = nullptr;
  EXPECT_TRUE(associatedValue(*owner, &firstKey).isAbsent());
  EXPECT_EQ(associatedValue(*owner, &secondKey), Value(5));
}

class Caller : public NSObject {
  NK_OBJECT(Caller, NSObject)
  Caller() = default;
  explicit Caller(NSObject& owner) : owner_(&owner) {}
  ~Caller() override {
    if (!owner_) return;
    seen = associatedValue(*owner_, &firstKey).isAbsent();
    setAssociatedValue(*owner_, &secondKey, 1);
  }
  static inline bool seen = false;

 private:
  NSObject* owner_ = nullptr;
};

TEST(AssociatedObjects, AValueThatGoesMayCallBack) {
  auto owner = make<Owner>();
  setAssociatedValue(*owner, &firstKey, make<Caller>(*owner));
  setAssociatedValue(*owner, &firstKey, 7);
  EXPECT_EQ(associatedValue(*owner, &secondKey), Value(1));
}

TEST(AssociatedObjects, AnObjectThatIsGoingTakesNoNewAssociations) {
  Caller::seen = false;
  auto owner = make<Owner>();
  setAssociatedValue(*owner, &firstKey, make<Caller>(*owner));
  owner = nullptr;
  EXPECT_TRUE(Caller::seen);
  for (int i = 0; i < 100; ++i) {  // one of these likely has the same address
    EXPECT_TRUE(associatedValue(*make<Owner>(), &secondKey).isAbsent());
  }
}

TEST(AssociatedObjects, ManyThreadsShareOneObject) {
  auto owner = make<Owner>();
  std::latch start(4);
  std::vector<std::thread> threads;
  static const char keys[4] = {};
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([&, number] {
      start.arrive_and_wait();
      for (int i = 1; i <= 500; ++i) {
        setAssociatedValue(*owner, &keys[number], NSArray::arrayWith({i}));
        setAssociatedValue(*make<Owner>(), &keys[number], i);
        (void)associatedValue(*owner, &keys[(number + 1) % 4]);
      }
    });
  }
  for (auto& thread : threads) thread.join();
  for (const char& key : keys) EXPECT_EQ(associatedValue(*owner, &key), Value(NSArray::arrayWith({500})));
}

}  // namespace
}  // namespace norvik
