// NorvikCore/logging/internal/LogLifetime.h - keeps the loggers consistent in forks and flushes them at the end of the
// process. It also detects callers that hold the loggers up: a caller in a block of the logging queue or of a logger's
// queue, and the main thread if a logger runs on it.
//
// Threads: synchronised.
#pragma once

#include "NorvikCore/logging/DDLoggerNode.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/object/Block.h"

#include <atomic>
#include <memory>
#include <vector>

namespace norvik::detail {

class LogLifetime {
 public:
  /// `flush` flushes every logger. It is called on the logging queue.
  LogLifetime(const dispatch_queue_t& loggingQueue, Block<void()> flush);

  /// Registers for forks and the end of the process. Call it once, on the only object.
  void watch();
  /// Stores the current loggers. Call it on the logging queue.
  void rememberLoggers(std::vector<Ref<DDLoggerNode>> nodes);
  /// May be called on any thread.
  [[nodiscard]] std::vector<Ref<DDLoggerNode>> rememberedLoggers();

  /// True if the loggers cannot continue before the calling code returns, or may have to wait for it.
  [[nodiscard]] bool holdsUpLoggers();
  /// Flushes every logger, also if the caller is on a queue for which a flush would wait.
  void flushFromAnyQueue();

 private:
  struct ForkGate;

  /// True if the caller is in a block of the logging queue or of a logger's queue.
  [[nodiscard]] bool isOnAnyQueue(const std::vector<Ref<DDLoggerNode>>& nodes) const;
  /// True if the logging queue or some logger's queue can run no block before the caller's block ends.
  [[nodiscard]] bool holdsUpAny(const std::vector<Ref<DDLoggerNode>>& nodes) const;
  void flushWhileHeld(const std::vector<Ref<DDLoggerNode>>& nodes);
  [[nodiscard]] bool flushUntil(dispatch_time_t deadline);
  void flushAtProcessEnd();

  void prepareFork();
  static void endFork();

  const dispatch_queue_t queue_;
  const Block<void()> flush_;
  std::atomic<bool> runsOnMainThread_{false};  // some logger does

  Mutex mutex_;  // not the queue, because the process may end or fork while the queue is busy
  std::vector<Ref<DDLoggerNode>> loggers_ NK_GUARDED_BY(mutex_);

  static thread_local std::shared_ptr<ForkGate> forkGate;  // of the fork that this thread is making
};

}  // namespace norvik::detail
