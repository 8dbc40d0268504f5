#include "NorvikCore/platform/dispatch/internal/TimerHeap.h"

#include "tests/support/LeaksAllowed.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace norvik::detail {
namespace {

struct Entry : TimerEntry {
  int kept = 0;
  void keepUntilFired() noexcept override { ++kept; }
  void fired(std::uint64_t, std::uint32_t, FiredItems&) override {}
};

TEST(TimerHeap, GivesEntriesByDeadlineThenByAge) {
  TimerHeap heap;
  Entry a, b, c;
  heap.add(b, {20, 0, 0, 7});
  heap.add(a, {10, 0, 0, 8});
  heap.add(c, {20, 0, 0, 9});
  EXPECT_EQ(heap.nextDeadline(), 10U);
  std::vector<DueTimer> due;
  heap.takeDue(9, 10, due);
  EXPECT_TRUE(due.empty());
  heap.takeDue(20, 10, due);
  ASSERT_EQ(due.size(), 3U);
  EXPECT_EQ(due[0].entry, &a);
  EXPECT_EQ(due[1].entry, &b);
  EXPECT_EQ(due[2].entry, &c);
  EXPECT_EQ(due[1].setting, 7U);
  EXPECT_EQ(a.kept, 1);
  EXPECT_EQ(heap.nextDeadline(), TimerHeap::noMoment);
}

TEST(TimerHeap, CountsThePeriodsThatHavePassedAndStaysOnTheGrid) {
  TimerHeap heap;
  Entry entry;
  heap.add(entry, {100, 10, 0, 0});
  std::vector<DueTimer> due;
  heap.takeDue(129, 10, due);
  ASSERT_EQ(due.size(), 1U);
  EXPECT_EQ(due[0].count, 3U);
  EXPECT_EQ(heap.nextDeadline(), 130U);
  TimerHeap::remove(entry);
  EXPECT_EQ(heap.size(), 0U);
  TimerHeap::remove(entry);
}

TEST(TimerHeap, AVeryLongPeriodEndsAtTheEndOfTime) {
  TimerHeap heap;
  Entry entry;
  heap.add(entry, {100, TimerHeap::noMoment - 5, 0, 0});
  std::vector<DueTimer> due;
  heap.takeDue(100, 10, due);
  EXPECT_EQ(heap.nextDeadline(), TimerHeap::noMoment);
}

TEST(TimerHeap, TimersWithALeewayMeetAtAMultipleOfTheLargestPowerOfTwoInIt) {
  const struct {
    const char* why;
    std::uint64_t deadline, interval, leeway, expected;
  } rows[] = {
      {"none", 1000, 0, 0, 1000},
      {"too small to move", 1000, 0, 1, 1000},
      {"up to the next multiple of 64", 1000, 0, 100, 1024},
      {"a multiple already", 1024, 0, 100, 1024},
      {"just past one", 1025, 0, 64, 1088},
      {"never by more than the leeway", 1001, 0, 16, 1008},
      {"half a period at most", 1000, 40, 1'000'000, 1008},
      {"a period of one", 1000, 1, 1'000'000, 1000},
      {"the end of time", TimerHeap::noMoment - 3, 0, 1024, TimerHeap::noMoment},
      {"any leeway", 1000, 0, ~std::uint64_t{0}, std::uint64_t{1} << 63},
  };
  for (const auto& row : rows) {
    TimerHeap heap;
    Entry entry;
    heap.add(entry, {row.deadline, row.interval, row.leeway, 0});
    EXPECT_EQ(heap.nextDeadline(), row.expected) << row.why;
    TimerHeap::remove(entry);
  }
}

TEST(TimerHeap, ALeewayDoesNotMoveTheGrid) {
  TimerHeap heap;
  Entry entry;
  heap.add(entry, {1000, 100, 16, 0});
  EXPECT_EQ(heap.nextDeadline(), 1008U);
  std::vector<DueTimer> due;
  heap.takeDue(1008, 10, due);
  EXPECT_EQ(due[0].count, 1U);
  EXPECT_EQ(heap.nextDeadline(), 1104U) << "1100, not 1108";
  heap.takeDue(1104, 10, due);
  EXPECT_EQ(heap.nextDeadline(), 1200U);
}

TEST(TimerHeap, EntriesOfAForgottenHeapCanBeAddedAgain) {
  TimerHeap heap;
  Entry a, b;
  {
    const norvik::test::LeaksAllowed nodes;  // in a child, another thread may have been changing them
    heap.add(a, {10, 0, 0, 0});
    heap.add(b, {20, 0, 0, 0});
  }
  heap.forgetAll();
  EXPECT_EQ(heap.size(), 0U);
  TimerHeap::remove(a);
  EXPECT_EQ(heap.size(), 0U);
  heap.add(b, {30, 0, 0, 0});
  EXPECT_EQ(heap.nextDeadline(), 30U);
  TimerHeap::remove(b);
  EXPECT_EQ(heap.size(), 0U);
}

TEST(TimerHeap, AgreesWithASortedListAfterAnyOperations) {
  std::mt19937 random(20240406);
  std::vector<std::unique_ptr<Entry>> entries;
  for (int i = 0; i < 300; ++i) entries.push_back(std::make_unique<Entry>());
  std::map<std::pair<std::uint64_t, std::uint64_t>, Entry*> model;  // sorted by deadline and age
  std::map<Entry*, std::pair<std::uint64_t, std::uint64_t>> keys;
  TimerHeap heap;
  std::uint64_t age = 0;
  std::uint64_t now = 0;
  for (int step = 0; step < 60000; ++step) {
    Entry* entry = entries[random() % entries.size()].get();
    switch (random() % 8) {
      default: {
        TimerHeap::remove(*entry);
        if (const auto old = keys.find(entry); old != keys.end()) model.erase(old->second);
        const std::uint64_t deadline = now + random() % 50;
        heap.add(*entry, {deadline, 0, 0, 0});
        keys[entry] = {deadline, age};
        model[{deadline, age++}] = entry;
        break;
      }
      case 0:
      case 1:  // remove
        TimerHeap::remove(*entry);
        if (const auto old = keys.find(entry); old != keys.end()) {
          model.erase(old->second);
          keys.erase(old);
        }
        break;
      case 2: {  // time passes
        now += random() % 20;
        std::vector<DueTimer> due;
        heap.takeDue(now, 1000, due);
        for (const DueTimer& timer : due) {
          ASSERT_FALSE(model.empty());
          ASSERT_EQ(model.begin()->second, timer.entry);
          ASSERT_LE(model.begin()->first.first, now);
          keys.erase(model.begin()->second);
          model.erase(model.begin());
        }
        ASSERT_TRUE(model.empty() || model.begin()->first.first > now);
        break;
      }
    }
    ASSERT_EQ(heap.size(), model.size());
  }
}

}  // namespace
}  // namespace norvik::detail
