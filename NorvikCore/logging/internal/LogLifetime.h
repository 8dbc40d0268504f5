// NorvikCore/logging/internal/LogLifetime.h - the loggers in forks and at the end of the process, and callers that
// stand in their way: those in a block of the logging queue or of a logger's queue, and the main thread where a logger
// runs on it.
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
  /// `flush` flushes every logger, on the logging queue.
  LogLifetime(const dispatch_queue_t& loggingQueue, Block<void()> flush);

  /// From now on, for the one object that there is.
  void watch();
  /// These are the loggers now. On the logging queue.
  void rememberLoggers(std::vector<Ref<DDLoggerNode>> nodes);
  /// From any thread.
  [[nodiscard]] std::vector<Ref<DDLoggerNode>> rememberedLoggers();

  /// The loggers cannot go on before the calling code returns, or may wait for it.
  [[nodiscard]] bool holdsUpLoggers();
  /// Flushes every logger also where the caller is on a queue that a flush would wait for.
  void flushFromAnyQueue();

 private:
  struct ForkGate;

  /// The caller is in a block of the logging queue or of a logger's queue.
  [[nodiscard]] bool isOnAnyQueue(const std::vector<Ref<DDLoggerNode>>& nodes) const;
  /// No block of the logging queue or of some logger's queue can run before the caller's block ends.
  [[nodiscard]] bool holdsUpAny(const std::vector<Ref<DDLoggerNode>>& nodes) const;
  void flushWhileHeld(const std::vector<Ref<DDLoggerNode>>& nodes);
  [[nodiscard]] bool flushUntil(dispatch_time_t deadline);
  void flushAtProcessEnd();

  void prepareFork();
  static void endFork();

  const dispatch_queue_t queue_;
  const Block<void()> flush_;
  std::atomic<bool> runsOnMainThread_{false};  // some logger does

  Mutex mutex_;  // the end of the process, and forks, may come while the queue is busy
  std::vector<Ref<DDLoggerNode>> loggers_ NK_GUARDED_BY(mutex_);

  static thread_local std::shared_ptr<ForkGate> forkGate;  // of the fork that this thread makes
};

}  // namespace norvik::detail
