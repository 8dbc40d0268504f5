// tests/platform/dispatch/Watchdog.h - ends a test that hangs, and reports its name.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>

namespace norvik::test {

/// Aborts with the test's name unless it is destroyed in time.
class Watchdog {
 public:
  explicit Watchdog(std::chrono::seconds limit = std::chrono::seconds(60)) {
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    name_ = std::string(test->test_suite_name()) + "." + test->name();
    thread_ = std::thread([this, limit] {
      std::unique_lock lock(mutex_);
      if (over_.wait_for(lock, limit, [this] { return done_; })) return;
      std::fprintf(stderr, "%s hangs\n", name_.c_str());
      std::abort();
    });
  }
  ~Watchdog() {
    {
      const std::lock_guard lock(mutex_);
      done_ = true;
    }
    over_.notify_one();
    thread_.join();
  }
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

 private:
  std::string name_;
  std::mutex mutex_;
  std::condition_variable over_;
  bool done_ = false;
  std::thread thread_;
};

/// A test that fails if it hangs.
class WatchedTest : public ::testing::Test {
 private:
  Watchdog watchdog_;
};

/// A test of how a process ends: the part that ends it runs in a process of its own from the start.
class WatchedDeathTest : public WatchedTest {
 protected:
  WatchedDeathTest() { ::testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};

}  // namespace norvik::test
