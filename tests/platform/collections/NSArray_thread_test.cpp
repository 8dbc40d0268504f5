#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/collections/NSSet.h"

#include <gtest/gtest.h>

#include <latch>
#include <thread>
#include <vector>

namespace norvik {
namespace {

constexpr int threadCount = 4;

/// Runs `body(number)` on several threads that start together.
template <class Body>
void onThreads(Body body) {
  std::latch start(threadCount);
  std::vector<std::thread> threads;
  for (int number = 0; number < threadCount; ++number) {
    threads.emplace_back([&, number] {
      start.arrive_and_wait();
      body(number);
    });
  }
  for (auto& thread : threads) thread.join();
}

TEST(NSArrayThreads, ManyThreadsReadTheSameCollections) {
  const auto rates = NSDictionary::dictionaryWith({{"basic", 0.20_dec}, {"higher", 0.40_dec}});
  const auto codes = NSSet::setWithObjects("1257L", "BR");
  const auto all = NSArray::arrayWithObjects(rates, codes, 3);
  std::vector<int> found(threadCount);
  onThreads([&](int number) {
    for (int i = 0; i < 500; ++i) {
      for (const Value& each : *all) {
        if (const auto* dictionary = each.object<NSDictionary>())
          found[static_cast<std::size_t>(number)] += dictionary->objectForKey("basic") == Value(0.2);
        if (const auto* set = each.object<NSSet>())
          found[static_cast<std::size_t>(number)] += set->containsObject("BR");
      }
      found[static_cast<std::size_t>(number)] +=
          all->copy()->isEqualToArray(*all) && all->hash() != 0 && all->mutableCopy()->count() == 3;
    }
  });
  EXPECT_EQ(found, std::vector<int>(threadCount, 1500));
}

TEST(NSArrayThreads, EachThreadChangesItsOwnCollectionOfSharedElements) {
  const auto shared = NSArray::arrayWithObjects("a", NSArray::arrayWith({1}));
  std::vector<std::size_t> counts(threadCount);
  onThreads([&](int number) {
    auto own = NSMutableArray::array();
    auto byNumber = NSMutableDictionary::dictionary();
    for (int i = 0; i < 300; ++i) {
      own->addObjectsFromArray(*shared);
      byNumber->setObject(shared, i % 20);
      if (i % 3 == 0) own->removeLastObject();
    }
    counts[static_cast<std::size_t>(number)] = own->count() + byNumber->count();
  });
  EXPECT_EQ(counts, std::vector<std::size_t>(threadCount, 520));
}

TEST(NSArrayThreads, TheLastRefGoesOnAnyThread) {
  for (int round = 0; round < 50; ++round) {
    Ref<NSArray> nested = NSArray::array();
    for (int i = 0; i < 200; ++i) nested = NSArray::arrayWith({Value(nested)});
    std::vector<Ref<NSArray>> refs(threadCount, nested);
    const Weak<NSArray> watched = nested;
    nested = nullptr;
    onThreads([&](int number) { refs[static_cast<std::size_t>(number)] = nullptr; });
    EXPECT_FALSE(watched.lock());
  }
}

}  // namespace
}  // namespace norvik
