// tests/support/RecordingLogger.h - a logger that stores its messages, and a latch for tests that synchronise with the
// threads of loggers.
#pragma once

#include "NorvikCore/logging/DDAbstractLogger.h"
#include "NorvikCore/logging/DDLog.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace norvik::test {

/// Opens once. A thread that waits continues when it opens.
class Latch {
 public:
  void open() {
    const std::lock_guard lock(mutex_);
    open_ = true;
    changed_.notify_all();
  }
  void wait() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return open_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool open_ = false;
};

/// Records events in order, from any thread.
class Events {
 public:
  void add(std::string event) {
    const std::lock_guard lock(mutex_);
    events_.push_back(std::move(event));
  }
  [[nodiscard]] std::vector<std::string> all() const {
    const std::lock_guard lock(mutex_);
    return events_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> events_;
};

class RecordingLogger : public DDAbstractLogger {
  NK_OBJECT(RecordingLogger, DDAbstractLogger)

  void logMessage(const DDLogMessage& message) override {
    if (onMessage) onMessage(message);
    events.add(message.logMsg().str());
  }
  void didAddLogger() override { events.add("[added]"); }
  void willRemoveLogger() override { events.add("[removed]"); }
  void flush() override { events.add("[flushed]"); }

  /// The texts of the messages in order, and the other calls in brackets.
  [[nodiscard]] std::vector<std::string> all() const { return events.all(); }

  Events events;
  std::function<void(const DDLogMessage&)> onMessage;  // set before the logger is added
};

/// Makes sure that there is no logger before a test and none after it.
class CleanDDLog : public ::testing::Test {
 protected:
  void SetUp() override { clean(); }
  void TearDown() override { clean(); }
  /// Waits until the dispatcher and its loggers have done all requested work.
  static void settle() { DDLog::flushLog(); }
  /// Waits until the removed loggers have done their last work, such as archiving files of the test.
  static void clean() {
    DDLog::flushLog();
    const std::vector<Ref<DDLogger>> loggers = DDLog::allLoggers();
    DDLog::removeAllLoggers();
    DDLog::flushLog();
    for (const Ref<DDLogger>& logger : loggers) {
      if (const dispatch_queue_t queue = logger->loggerQueue()) dispatch_sync(queue, [] {});
    }
    ddLogLevel = LOG_LEVEL_WARN;
  }
};

/// Logs a plain text.
inline void say(const NSString& text, int flag = LOG_FLAG_ERROR, bool asynchronous = true) {
  DDLog::log(asynchronous, LOG_LEVEL_VERBOSE, flag, 0, "file.m", "function", 1, Value(), "%@", text);
}

}  // namespace norvik::test
