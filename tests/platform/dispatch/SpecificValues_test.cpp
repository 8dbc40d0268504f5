#include "NorvikCore/platform/dispatch/MainQueue.h"
#include "tests/platform/dispatch/Watchdog.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <thread>

namespace norvik {
namespace {

class SpecificValues : public test::WatchedTest {};

struct Counted {
  std::atomic<int> destroyed{0};
  static void destroy(void* value) {
    auto* self = static_cast<Counted*>(value);
    self->destroyed.fetch_add(1);
    self->destroyed.notify_all();
  }
};

TEST_F(SpecificValues, AKeyHasTheValueThatWasSetLast) {
  static const char key = 0;
  int a = 0;
  int b = 0;
  auto queue = dispatch_queue_create(nullptr);
  EXPECT_EQ(dispatch_queue_get_specific(queue, &key), nullptr);
  dispatch_queue_set_specific(queue, &key, &a);
  EXPECT_EQ(dispatch_queue_get_specific(queue, &key), &a);
  dispatch_queue_set_specific(queue, &key, &b);
  EXPECT_EQ(dispatch_queue_get_specific(queue, &key), &b);
  dispatch_queue_set_specific(queue, &key, nullptr);
  EXPECT_EQ(dispatch_queue_get_specific(queue, &key), nullptr);
  EXPECT_EQ(dispatch_queue_get_specific(queue, nullptr), nullptr);
}

TEST_F(SpecificValues, ManyKeysKeepTheirOwnValues) {
  std::array<char, 40> keys{};
  auto queue = dispatch_queue_create(nullptr);
  for (char& key : keys) dispatch_queue_set_specific(queue, &key, &key);
  for (char& key : keys) EXPECT_EQ(dispatch_queue_get_specific(queue, &key), &key);
}

TEST_F(SpecificValues, OffAnyQueueThereIsNone) {
  static const char key = 0;
  int value = 0;
  dispatch_queue_set_specific(dispatch_get_main_queue(), &key, &value);
  void* seen = &value;
  std::thread([&] { seen = dispatch_get_specific(&key); }).join();
  EXPECT_EQ(seen, nullptr);
  dispatch_queue_set_specific(dispatch_get_main_queue(), &key, nullptr);
}

TEST_F(SpecificValues, TheMainThreadOffAnyQueueSeesTheMainQueues) {
  static const char key = 0;
  int value = 0;
  EXPECT_EQ(dispatch_get_specific(&key), nullptr);
  dispatch_queue_set_specific(dispatch_get_main_queue(), &key, &value);
  EXPECT_EQ(dispatch_get_specific(&key), &value);
  auto queue = dispatch_queue_create(nullptr);
  EXPECT_EQ(dispatch_sync(queue, [] { return dispatch_get_specific(&key); }), nullptr);
  dispatch_queue_set_specific(dispatch_get_main_queue(), &key, nullptr);
  EXPECT_EQ(dispatch_get_specific(&key), nullptr);
}

TEST_F(SpecificValues, ADestructorIsCalledWhenTheValueIsReplaced) {
  static const char key = 0;
  Counted first;
  Counted second;
  int plain = 0;
  auto queue = dispatch_queue_create(nullptr);
  dispatch_queue_set_specific(queue, &key, &first, &Counted::destroy);
  dispatch_queue_set_specific(queue, &key, &second, &Counted::destroy);
  first.destroyed.wait(0);
  EXPECT_EQ(second.destroyed.load(), 0);
  dispatch_queue_set_specific(queue, &key, &plain);
  second.destroyed.wait(0);
  EXPECT_EQ(dispatch_queue_get_specific(queue, &key), &plain);
  EXPECT_EQ(first.destroyed.load(), 1);
  EXPECT_EQ(second.destroyed.load(), 1);
}

TEST_F(SpecificValues, ADestructorIsCalledWhenTheQueueIsGone) {
  static const char key = 0;
  static const char otherKey = 0;
  Counted value;
  Counted after;
  auto queue = dispatch_queue_create(nullptr);
  dispatch_queue_set_specific(queue, &otherKey, &after);  // a plain value first, then one with a destructor
  dispatch_queue_set_specific(queue, &otherKey, &after, &Counted::destroy);
  dispatch_queue_set_specific(queue, &key, &value, &Counted::destroy);
  queue = nullptr;
  value.destroyed.wait(0);
  after.destroyed.wait(0);
  EXPECT_EQ(value.destroyed.load(), 1);
  EXPECT_EQ(after.destroyed.load(), 1);
}

TEST_F(SpecificValues, ValuesMayBeSetAndReadFromManyThreads) {
  static const std::array<char, 6> keys{};
  std::array<int, 2> values{};
  auto queue = dispatch_queue_create(nullptr);
  std::array<std::thread, 3> threads;
  std::atomic<bool> strange{false};
  for (auto& thread : threads) {
    thread = std::thread([&] {
      for (int i = 0; i < 3000; ++i) {
        const void* key = &keys[static_cast<std::size_t>(i) % keys.size()];
        dispatch_queue_set_specific(queue, key, &values[static_cast<std::size_t>(i) % 2]);
        const void* seen = dispatch_queue_get_specific(queue, key);
        if (seen != &values[0] && seen != &values[1]) strange = true;
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_FALSE(strange.load());
}

}  // namespace
}  // namespace norvik
