#include "NorvikCore/platform/values/NSMutableString.h"
#include "NorvikCore/platform/values/NSString.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>
#include <vector>

namespace norvik {
namespace {

constexpr int threads = 8;

template <class Body>
void atOnce(Body body) {
  std::latch start(threads);
  std::vector<std::thread> running;
  for (int i = 0; i < threads; ++i) {
    running.emplace_back([&start, &body, i] {
      start.arrive_and_wait();
      body(i);
    });
  }
  for (std::thread& thread : running) thread.join();
}

TEST(NSStringThread, TheFirstLookUpsOnManyThreadsAllSeeTheSameText) {
  for (int round = 0; round < 50; ++round) {
    NSMutableString builder;
    for (int i = 0; i < 500; ++i) builder.appendString("\u00E9\U0001F4B7");
    const NSString text = builder.string();
    std::atomic<int> wrong = 0;
    atOnce([&](int thread) {
      const std::size_t at = 3 * static_cast<std::size_t>(thread * 60);
      const NSString mine = text;
      wrong += mine.characterAtIndex(at) != 0x00E9 || mine.characterAtIndex(at + 2) != 0xDCB7 || mine.length() != 1500;
    });
    EXPECT_EQ(wrong, 0);
  }
}

TEST(NSStringThread, TheFirstLookUpsInPermanentTextTooSeeTheSameText) {
  static const std::string& permanent = *new std::string([] {
    std::string text;
    for (int i = 0; i < 500; ++i) text += "\u00E9\U0001F4B7";
    return text;
  }());
  std::atomic<int> wrong = 0;
  atOnce([&](int) { wrong += NSString::borrowing(permanent).characterAtIndex(1499) != 0xDCB7; });
  EXPECT_EQ(wrong, 0);
}

TEST(NSStringThread, CopiesAreMadeAndDroppedOnManyThreads) {
  NSString text = std::string("shared by all of them");
  atOnce([&text](int) {
    std::vector<NSString> copies;
    for (int i = 0; i < 2000; ++i) {
      copies.push_back(text);
      if (copies.size() > 10) copies.clear();
    }
  });
  EXPECT_EQ(text, "shared by all of them");
}

}  // namespace
}  // namespace norvik
