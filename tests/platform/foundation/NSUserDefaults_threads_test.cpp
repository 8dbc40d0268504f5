#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "NorvikCore/platform/foundation/NSUserDefaults.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"
#include "tests/support/DefaultsFolder.h"
#include "tests/support/QuietFork.h"

namespace norvik {
namespace {

using norvik::test::DefaultsFolder;

NSString numbered(const char* name, int number) { return NSString(name + std::to_string(number)); }

class Counter : public NSObject {
  NK_OBJECT(Counter, NSObject)
  void observeValueForKeyPath(const NSString&, NSObject&, const KeyValueChange&, void*) override { ++count; }
  std::atomic<int> count{0};
};

TEST(NSUserDefaultsThreads, ManyReadAndWriteOneObject) {
  constexpr int threads = 4, values = 40;
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  defaults->registerDefaults(*NSDictionary::dictionaryWith({{"registered", 1}}));
  const auto counter = make<Counter>();
  defaults->addObserver(*counter, "shared", NSKeyValueObservingOptionNew);
  std::latch start(threads);
  std::vector<std::thread> running;
  for (int thread = 0; thread < threads; ++thread) {
    running.emplace_back([&, thread] {
      start.arrive_and_wait();
      for (int i = 0; i < values; ++i) {
        const NSString key = numbered("key", thread * values + i);
        defaults->setInteger(i, key);
        EXPECT_EQ(defaults->integerForKey(key), i);
        EXPECT_EQ(defaults->integerForKey("registered"), 1);
        defaults->setInteger(thread, "shared");
        EXPECT_LT(defaults->integerForKey("shared"), threads);
        if (i % 10 == 0) {
          EXPECT_TRUE(defaults->synchronize());
        }
      }
    });
  }
  for (std::thread& thread : running) thread.join();
  defaults->removeObserver(*counter, "shared");
  EXPECT_EQ(counter->count, threads * values);
  EXPECT_EQ(folder.open()->dictionaryRepresentation()->count(), 161u);
}

TEST(NSUserDefaultsThreads, ManyObjectsOnOneDatabaseLoseNothing) {
  constexpr int threads = 3, values = 30;
  const DefaultsFolder folder;
  std::latch start(threads);
  std::vector<std::thread> running;
  for (int thread = 0; thread < threads; ++thread) {
    running.emplace_back([&, thread] {
      const Ref<NSUserDefaults> defaults = folder.open();
      start.arrive_and_wait();
      for (int i = 0; i < values; ++i) defaults->setInteger(i, numbered("key", thread * values + i));
    });
  }
  for (std::thread& thread : running) thread.join();
  EXPECT_EQ(folder.open()->dictionaryRepresentation()->count(), 90u);
}

TEST(NSUserDefaultsThreads, TheFirstReadsOfManyThreadsFindWhatIsThere) {
  constexpr int threads = 4;
  const DefaultsFolder folder;
  folder.open()->setInteger(7, "rate");
  for (int round = 0; round < 20; ++round) {
    const Ref<NSUserDefaults> defaults = folder.open();
    std::latch start(threads);
    std::vector<std::thread> running;
    for (int thread = 0; thread < threads; ++thread) {
      running.emplace_back([&] {
        start.arrive_and_wait();
        EXPECT_EQ(defaults->integerForKey("rate"), 7);
      });
    }
    for (std::thread& thread : running) thread.join();
  }
}

TEST(NSUserDefaultsThreads, AllThreadsGetOneStandardObject) {
  constexpr int threads = 4;
  std::latch start(threads);
  std::vector<NSUserDefaults*> found(threads);
  std::vector<std::thread> running;
  for (int thread = 0; thread < threads; ++thread) {
    running.emplace_back([&, thread] {
      start.arrive_and_wait();
      found[static_cast<std::size_t>(thread)] = &NSUserDefaults::standardUserDefaults();
    });
  }
  for (std::thread& thread : running) thread.join();
  for (const NSUserDefaults* each : found) EXPECT_EQ(each, found.front());
}

TEST(NSUserDefaultsThreads, AForkInTheMiddleOfWritesOfAnotherThreadLeavesBothSidesWhole) {
#ifdef NK_TEST_ADDRESS_SANITIZER
  GTEST_SKIP() << "the address sanitizer's own heap may be locked for ever in a child of a busy process: QuietFork.h";
#endif
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  std::atomic<bool> isOver{false};
  std::int64_t last = 0;
  std::thread writer([&] {
    while (!isOver) defaults->setInteger(++last, "busy");
  });
  for (int round = 0; round < 50; ++round) {
    const pid_t child = fork();
    if (child == 0) {
      defaults->setInteger(round, numbered("child", round));
      _exit(defaults->synchronize() && defaults->integerForKey(numbered("child", round)) == round ? 0 : 1);
    }
    int status = 1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "round " << round;
  }
  isOver = true;
  writer.join();
  EXPECT_EQ(folder.open()->dictionaryRepresentation()->count(), 51u);
  EXPECT_EQ(folder.open()->integerForKey("busy"), last);
}

}  // namespace
}  // namespace norvik
