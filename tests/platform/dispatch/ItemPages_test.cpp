#include "NorvikCore/platform/dispatch/internal/ItemPages.h"

#include "NorvikCore/platform/dispatch/Item.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/internal/WorkerPool.h"
#include "tests/platform/dispatch/Watchdog.h"
#include "tests/support/Sanitizers.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <set>
#include <thread>
#include <vector>

// With the address sanitizer every item is a separate heap allocation, so that each is checked.
#if defined(NK_TEST_ADDRESS_SANITIZER)
#define NK_SKIP_WITHOUT_PAGES() GTEST_SKIP() << "items are no pieces of pages under the address sanitizer"
#else
#define NK_SKIP_WITHOUT_PAGES() static_cast<void>(0)
#endif

namespace norvik::detail {
namespace {

class ItemPages : public test::WatchedTest {
 protected:
  using Pages = detail::ItemPages;

  static std::vector<void*> allocate(int count, std::size_t size) {
    std::vector<void*> items;
    for (int i = 0; i < count; ++i) items.push_back(allocateItem(size));
    return items;
  }
  /// Releases the spare pages and ends the workers, so that no thread trims them later.
  static void letSparesGo() {
    auto& workers = WorkerPool::shared();
    workers.setIdleTime(1'000'000);
    while (workers.workerCount() > 0) std::this_thread::yield();
    while (Pages::spareCount() > 0) Pages::trimSpares();
  }
};

TEST_F(ItemPages, ItemsOfAnySizeAreAlignedAndDoNotOverlap) {
  std::vector<void*> items;
  for (int round = 0; round < 20; ++round) {
    for (const std::size_t size : {1U, 24U, 32U, 40U, 41U, 200U, 480U, 504U, 505U, 4096U, 100'000U}) {
      void* item = allocateItem(size);
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(item) % alignof(std::max_align_t), 0U) << size;
      std::memset(item, static_cast<int>(items.size() % 251), size);
      items.push_back(item);
    }
  }
  for (std::size_t i = 0; i < items.size(); ++i) {
    EXPECT_EQ(*static_cast<unsigned char*>(items[i]), i % 251) << i;
    freeItem(items[i]);
  }
}

TEST_F(ItemPages, APageComesFreeOnceItsThreadIsDoneWithItAndAllItsItemsAreGone) {
  NK_SKIP_WITHOUT_PAGES();
  letSparesGo();
  std::vector<void*> items;
  std::thread([&] { items = allocate(3, 32); }).join();
  EXPECT_EQ(Pages::spareCount(), 0U);
  std::thread([&] {
    freeItem(items[1]);
    freeItem(items[0]);
  }).join();
  EXPECT_EQ(Pages::spareCount(), 0U) << "one item is left";
  std::thread([&] { freeItem(items[2]); }).join();
  EXPECT_EQ(Pages::spareCount(), 1U);
}

TEST_F(ItemPages, APageThatCameFreeIsUsedAgain) {
  NK_SKIP_WITHOUT_PAGES();
  letSparesGo();
  void* first = nullptr;
  void* second = nullptr;
  std::thread([&] { freeItem(first = allocateItem(32)); }).join();
  EXPECT_EQ(Pages::spareCount(), 1U);
  std::thread([&] {
    second = allocateItem(32);
    EXPECT_EQ(Pages::spareCount(), 0U);
    freeItem(second);
  }).join();
  EXPECT_EQ(first, second);
}

TEST_F(ItemPages, TrimmingGivesAPartOfTheSparesBackAndInTheEndAll) {
  NK_SKIP_WITHOUT_PAGES();
  letSparesGo();
  std::thread([] {
    for (void* item : allocate(64'000, 48)) freeItem(item);  // 64 bytes each with their headers: 1016 pages
  }).join();
  const std::size_t before = Pages::spareCount();
  EXPECT_GT(before, 1000U);
  Pages::trimSpares();
  EXPECT_LT(Pages::spareCount(), before);
  EXPECT_GT(Pages::spareCount(), before / 2);
  for (int looks = 0; looks < 60; ++looks) Pages::trimSpares();
  EXPECT_EQ(Pages::spareCount(), 0U);
}

TEST_F(ItemPages, AnIdleProcessKeepsNone) {
  auto queue = dispatch_queue_create(nullptr);
  int count = 0;
  for (int i = 0; i < 20'000; ++i) dispatch_async(queue, [&count] { ++count; });
  dispatch_sync(queue, [] {});
  EXPECT_EQ(count, 20'000);
  while (Pages::spareCount() > 0) std::this_thread::yield();
}

TEST_F(ItemPages, ALastingItemTakesNoPartOfAPage) {
  NK_SKIP_WITHOUT_PAGES();
  letSparesGo();
  void* lasting = nullptr;
  std::thread([&] {
    freeItem(allocateItem(32));
    lasting = allocateItem(32, ItemLife::lasting);
  }).join();
  EXPECT_EQ(Pages::spareCount(), 1U);
  freeItem(lasting);
}

/// Enqueues a block at the end of a thread, when the thread's pages are already released.
struct DispatchAtThreadEnd {
  dispatch_queue_t queue;
  int* count = nullptr;
  ~DispatchAtThreadEnd() {
    for (int i = 0; i < 200; ++i) dispatch_async(queue, [count = count] { ++*count; });
  }
};

TEST_F(ItemPages, AThreadMayDispatchToItsVeryEnd) {
  auto queue = dispatch_queue_create(nullptr);
  int count = 0;
  std::thread([&] {
    thread_local DispatchAtThreadEnd atEnd;  // made before the thread's first item, so destroyed last
    atEnd.queue = queue;
    atEnd.count = &count;
    dispatch_async(queue, [&count] { ++count; });
  }).join();
  EXPECT_EQ(dispatch_sync(queue, [&] { return count; }), 201);
}

TEST_F(ItemPages, ItemsMadeAndFreedByManyThreadsAtOnceAreAllDifferent) {
  constexpr int threadCount = 4;
  std::vector<std::vector<void*>> made(threadCount);
  const auto each = [](const auto& work) {
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < threadCount; ++t) threads.emplace_back([&work, t] { work(t); });
    for (auto& thread : threads) thread.join();
  };
  for (int round = 0; round < 5; ++round) {
    each([&](std::size_t t) { made[t] = allocate(3000, 40); });
    std::set<void*> all;
    for (const auto& items : made) all.insert(items.begin(), items.end());
    EXPECT_EQ(all.size(), 12'000U);
    // Every thread frees a part of the items of every other thread.
    each([&](std::size_t t) {
      for (const auto& items : made) {
        for (std::size_t i = t; i < items.size(); i += threadCount) freeItem(items[i]);
      }
    });
  }
}

}  // namespace
}  // namespace norvik::detail
