#include "NorvikCore/platform/collections/NSMapTable.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSHashTable.h"

#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using namespace norvik;

namespace {

/// Equal to every other Twin, so that only identity distinguishes them.
class Twin : public NSObject {
  NK_OBJECT(Twin, NSObject)
  bool isEqual(const NSObject&) const override { return true; }
  std::size_t hash() const override { return 1; }
};

/// Counts its destruction.
class Mortal : public NSObject {
  NK_OBJECT(Mortal, NSObject)
  explicit Mortal(int* ends) : ends_(ends) {}
  ~Mortal() override { ++*ends_; }

 private:
  int* ends_;
};

Ref<NSMapTable> table(NSMapTableOptions keys, NSMapTableOptions values) {
  return NSMapTable::mapTableWithKeyOptions(keys, values);
}

constexpr auto Strong = NSMapTableStrongMemory, WeakMemory = NSMapTableWeakMemory;

}  // namespace

TEST(NSMapTable, HeaderExample) {
  auto slip = make<Twin>();
  const auto rows = NSMapTable::mapTableWithKeyOptions(NSMapTableWeakMemory, NSMapTableStrongMemory);
  rows->setObject(7, *slip);
  EXPECT_EQ(rows->objectForKey(*slip), Value(7));
  slip = nullptr;
  EXPECT_EQ(rows->count(), 0u);
}

TEST(NSMapTable, KeysAreComparedByIdentity) {
  const auto one = make<Twin>(), other = make<Twin>();
  const auto rows = table(Strong, Strong);
  rows->setObject(1, *one);
  EXPECT_TRUE(rows->objectForKey(*other).isAbsent());
  rows->setObject(2, *other);
  rows->setObject(3, *one);
  EXPECT_EQ(rows->objectForKey(*one), Value(3));
  EXPECT_EQ(rows->objectForKey(*other), Value(2));
  EXPECT_EQ(rows->count(), 2u);
  EXPECT_EQ(rows->allKeys()->count(), 2u);
}

TEST(NSMapTable, StrongKeysAndValuesAreKeptUntilTheyAreRemoved) {
  int ends = 0;
  const auto rows = table(Strong, Strong);
  auto key = make<Mortal>(&ends);
  rows->setObject(make<Mortal>(&ends), *key);
  const Mortal& address = *key;
  key = nullptr;
  EXPECT_EQ(ends, 0);
  rows->removeObjectForKey(address);
  EXPECT_EQ(ends, 2);
  const auto other = make<Twin>();
  rows->setObject(make<Mortal>(&ends), *other);
  rows->setObject(5, *other);
  EXPECT_EQ(ends, 3);
  rows->removeAllObjects();
  EXPECT_TRUE(rows->objectForKey(*other).isAbsent());
}

TEST(NSMapTable, WeakValuesReadAbsentOnceTheyAreGone) {
  const auto key = make<Twin>();
  auto value = make<Twin>();
  const auto rows = table(Strong, WeakMemory);
  rows->setObject(value, *key);
  EXPECT_EQ(rows->objectForKey(*key).object(), value.get());
  value = nullptr;
  EXPECT_TRUE(rows->objectForKey(*key).isAbsent());
  EXPECT_EQ(rows->allKeys()->count(), 0u);
  EXPECT_EQ(rows->count(), 0u);
}

TEST(NSMapTable, RefusesWhatItCannotHold) {
  const auto key = make<Twin>();
  EXPECT_RAISES(table(Strong, Strong)->setObject(Value(), *key), "NSInvalidArgumentException");
  EXPECT_RAISES(table(Strong, WeakMemory)->setObject(5, *key), "NSInvalidArgumentException");
  table(Strong, Strong)->removeObjectForKey(*key);  // there is no entry, so no effect
}

TEST(NSMapTable, ANewObjectAtTheAddressOfAGoneKeyIsNotTakenForIt) {
  const auto rows = table(WeakMemory, Strong);
  const void* address = nullptr;
  bool wasReused = false;
  for (int i = 0; i < 1000 && !wasReused; ++i) {
    const auto key = make<Twin>();
    wasReused = key.get() == address;
    if (wasReused) {
      EXPECT_TRUE(rows->objectForKey(*key).isAbsent());
      rows->setObject(2, *key);
      EXPECT_EQ(rows->objectForKey(*key), Value(2));
      EXPECT_EQ(rows->count(), 1u);
    } else {
      rows->setObject(1, *key);
      address = key.get();
    }
  }
}

TEST(NSMapTable, ValuesOfKeysThatAreGoneDoNotPileUp) {
  int ends = 0;
  const auto rows = table(WeakMemory, Strong);
  std::vector<Ref<Twin>> keys;
  for (int i = 0; i < 10000; ++i) {
    keys.push_back(make<Twin>());
    if (keys.size() == 8) keys.clear();
    if (!keys.empty()) rows->setObject(make<Mortal>(&ends), *keys.back());
  }
  EXPECT_GT(ends, 8000);
}

TEST(NSMapTable, ManyEntriesAreFoundAndRemoved) {
  const auto rows = table(Strong, Strong);
  std::vector<Ref<Twin>> keys;
  for (int i = 0; i < 3000; ++i) {
    keys.push_back(make<Twin>());
    rows->setObject(i, *keys.back());
  }
  for (std::size_t i = 0; i < 3000; i += 3) rows->removeObjectForKey(*keys[i]);
  EXPECT_EQ(rows->count(), 2000u);
  for (std::size_t i = 0; i < 3000; ++i) {
    ASSERT_EQ(rows->objectForKey(*keys[i]), i % 3 == 0 ? Value() : Value(i)) << i;
  }
  for (const auto& key : keys) rows->removeObjectForKey(*key);
  EXPECT_EQ(rows->count(), 0u);
}

TEST(NSMapTable, KeysMayGoOnAnotherThread) {
  const auto rows = table(WeakMemory, Strong);
  std::vector<Ref<Twin>> keys;
  for (int i = 0; i < 2000; ++i) keys.push_back(make<Twin>());
  const auto staying = make<Twin>();
  rows->setObject(1, *staying);
  for (const auto& key : keys) rows->setObject(0, *key);
  std::jthread killer([&] { keys.clear(); });
  for (int i = 0; i < 200; ++i) {
    rows->setObject(i, *staying);
    const auto present = rows->allKeys();
    for (const Value& key : *present) (void)rows->objectForKey(*key.object());
  }
  killer.join();
  EXPECT_EQ(rows->count(), 1u);
  EXPECT_EQ(rows->objectForKey(*staying), Value(199));
}

TEST(NSHashTable, HeaderExample) {
  auto view = make<Twin>();
  auto views = NSHashTable::weakObjectsHashTable();
  views->addObject(*view);
  EXPECT_TRUE(views->containsObject(*view));
  view = nullptr;
  EXPECT_EQ(views->count(), 0u);
}

TEST(NSHashTable, HoldsObjectsByIdentityUntilTheyAreGone) {
  auto one = make<Twin>(), other = make<Twin>();
  const auto views = NSHashTable::weakObjectsHashTable();
  views->addObject(*one);
  views->addObject(*one);
  EXPECT_TRUE(views->containsObject(*one));
  EXPECT_FALSE(views->containsObject(*other));
  EXPECT_EQ(views->count(), 1u);
  views->addObject(*other);
  EXPECT_EQ(views->allObjects()->count(), 2u);
  one = nullptr;
  EXPECT_EQ(views->count(), 1u);
  EXPECT_EQ(views->allObjects()->objectAtIndex(0).object(), other.get());
  views->removeObject(*other);
  views->removeObject(*other);
  EXPECT_EQ(views->count(), 0u);
  views->addObject(*other);
  views->removeAllObjects();
  EXPECT_FALSE(views->containsObject(*other));
}
