#include "NorvikCore/platform/kernel/Mutex.h"

#include "NorvikCore/platform/kernel/BusyWord.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/OnThreads.h"

namespace norvik {
namespace {

struct Guarded {
  Mutex mutex;
  std::vector<int> items NK_GUARDED_BY(mutex);
};

TEST(BusyWord, HeaderExample) {
  detail::BusyWord word;
  int changes = 0;  // guarded by the word
  test::onThreads(4, [&](int) {
    for (int change = 0; change < 1000; ++change) {
      if (word.exchangeAcquire(1) != 0) waitForBusy(word);
      ++changes;
      if (word.exchangeRelease(0) != 1) wakeForBusy(word);
    }
  });
  EXPECT_EQ(changes, 4000);
}

TEST(Mutex, HeaderExample) {
  Guarded guarded;
  {
    MutexLock lock(guarded.mutex);
    guarded.items.push_back(1);
  }
  MutexLock lock(guarded.mutex);
  EXPECT_EQ(guarded.items, std::vector<int>{1});
}

TEST(Mutex, LetsOneThreadInAtATime) {
  Guarded guarded;
  norvik::test::onThreads(4, [&](int number) {
    for (int round = 0; round < 1000; ++round) {
      MutexLock lock(guarded.mutex);
      guarded.items.push_back(number);
    }
  });
  MutexLock lock(guarded.mutex);
  EXPECT_EQ(guarded.items.size(), 4000U);
}

TEST(Mutex, IsRefusedWhileAnotherThreadHasItAndTakenWhenItIsFree) {
  Mutex mutex;
  const auto isRefused = [&mutex] {
    bool refused = true;
    norvik::test::onThreads(1, [&](int) {
      if (!mutex.try_lock()) return;
      refused = false;
      mutex.unlock();
    });
    return refused;
  };
  {
    MutexLock lock(mutex);
    EXPECT_TRUE(isRefused());
  }
  EXPECT_FALSE(isRefused());
}

}  // namespace
}  // namespace norvik
