// Classes are registered at the first look-up of any class, by whichever thread asks first.
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/Value.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <latch>
#include <thread>
#include <vector>

using namespace norvik;

namespace {

class AskedForFirst : public NSObject {
  NK_OBJECT(AskedForFirst, NSObject)
  NK_PROPERTY(int, number, setNumber)
};

class AskedForNext : public AskedForFirst {
  NK_OBJECT(AskedForNext, AskedForFirst)
};

int doubled(const AskedForFirst& object) { return 2 * object.number(); }
NK_CATEGORY_READONLY_PROPERTY(AskedForFirst, int, doubled)

constexpr int threads = 8;

/// Calls body(thread) on several threads at once.
template <class Body>
void together(Body body) {
  std::latch start(threads);
  std::vector<std::thread> all;
  for (int i = 0; i < threads; ++i) {
    all.emplace_back([&, i] {
      start.arrive_and_wait();
      body(static_cast<std::size_t>(i));
    });
  }
  for (std::thread& each : all) each.join();
}

}  // namespace

// Each test is a process of its own if ctest runs it, so no class was asked for before.
TEST(ClassRegistration, EveryThreadFindsEveryClassWhicheverAsksFirst) {
  std::array<std::size_t, threads> counts{};
  std::array<const Class*, threads> found{};
  std::array<bool, threads> hasProperty{};
  together([&](std::size_t i) {
    switch (i % 4) {
      case 0:
        found[i] = Class::named("AskedForNext");
        break;
      case 1:
        found[i] = &AskedForNext::staticClass();
        break;
      case 2:
        found[i] = &make<AskedForNext>()->classObject();
        break;
      default:
        (void)Value(1).classObject();
        found[i] = Class::named("AskedForNext");
    }
    counts[i] = Class::all().size();
    hasProperty[i] = found[i] && found[i]->property("doubled") != nullptr;
  });
  for (std::size_t i = 0; i < threads; ++i) {
    EXPECT_EQ(found[i], &AskedForNext::staticClass()) << i;
    EXPECT_EQ(counts[i], Class::all().size()) << i;
    EXPECT_TRUE(hasProperty[i]) << i;
  }
  EXPECT_EQ(AskedForNext::staticClass().superclass(), &AskedForFirst::staticClass());
}

TEST(ClassRegistration, AClassIsListedAfterItsSuperclassAndTheClassesOfValuesAreListed) {
  std::vector<const Class*> listed;
  for (const Class* each : Class::all()) {
    const Class* superclass = each->superclass();
    EXPECT_TRUE(!superclass || std::ranges::find(listed, superclass) != listed.end()) << each->name();
    listed.push_back(each);
  }
  for (const char* name : {"NSObject", "NSNull", "NSString", "NSDate", "NSNumber", "NSDecimalNumber"})
    EXPECT_NE(Class::named(name), nullptr) << name;
}
