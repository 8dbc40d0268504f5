#include "NorvikCore/platform/kernel/AtomicWord.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <latch>
#include <thread>
#include <vector>

using norvik::detail::AtomicWord;

TEST(AtomicWord, ChangesGiveTheValueBefore) {
  AtomicWord<std::uint32_t> word{5};
  EXPECT_EQ(word.addRelaxed(2), 5u);
  EXPECT_EQ(word.subtractAcquireRelease(1), 7u);
  EXPECT_EQ(word.orRelease(8), 6u);
  EXPECT_EQ(word.andRelease(~2u), 14u);
  EXPECT_EQ(word.exchangeAcquire(1), 12u);
  EXPECT_EQ(word.exchangeRelease(3), 1u);
  EXPECT_EQ(word.loadRelaxed(), 3u);
  word.storeRelease(9);
  EXPECT_EQ(word.loadAcquire(), 9u);
}

TEST(AtomicWord, AComparedExchangeTellsWhatStoodInItsWay) {
  AtomicWord<const char*> word;
  const char* expected = "other";
  EXPECT_FALSE(word.compareExchange(expected, "text"));
  EXPECT_EQ(expected, nullptr);
  EXPECT_TRUE(word.compareExchange(expected, "text"));
  EXPECT_STREQ(word.loadRelaxed(), "text");
}

TEST(AtomicWord, NoAdditionIsLostBetweenThreads) {
  AtomicWord<std::uint64_t> word;
  std::latch start(4);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      start.arrive_and_wait();
      for (int n = 0; n < 10'000; ++n) word.addRelaxed(1);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(word.loadRelaxed(), 40'000u);
}
