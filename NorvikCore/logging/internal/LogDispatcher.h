// NorvikCore/logging/internal/LogDispatcher.h - the one dispatcher behind DDLog: its state, and what runs on its queue.
//
// `loggers` is read and changed on `loggingQueue` only, so it needs no lock; operations that begin with lt_ run there.
#pragma once

#include "NorvikCore/logging/DDLogMessage.h"
#include "NorvikCore/logging/DDLoggerNode.h"
#include "NorvikCore/logging/internal/LogRecordPool.h"
#include "NorvikCore/platform/dispatch/Group.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/kernel/Mutex.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

namespace norvik::detail {

class SerialQueue;

class LogDispatcher {
 public:
  /// Made on first use, never destroyed.
  static LogDispatcher& shared() {
    LogDispatcher* const made = way.dispatcher.load(std::memory_order_acquire);
    return made ? *made : makeShared();
  }

  [[nodiscard]] const dispatch_queue_t& queue() const noexcept { return loggingQueue; }

  void addLogger(const Ref<DDLogger>& logger, int level);
  void removeLogger(const Ref<DDLogger>& logger);
  void removeAllLoggers();
  void queueLogMessage(const Ref<DDLogMessage>& message, bool asynchronously);
  /// Queues what a message will be made of; the calling thread's part of it is as it is now.
  static void queueCall(const LogSite& site, const LogContent& content);
  void flush();
  /// Flushes every logger also where the caller is on a queue that flush() would wait for.
  void flushFromAnyQueue();

  static constexpr std::intptr_t maximumQueueSize = 1000;

 private:
  LogDispatcher();
  static LogDispatcher& makeShared();

  void lt_addLogger(const Ref<DDLogger>& logger, int level);
  void lt_removeLogger(const Ref<DDLogger>& logger);
  void lt_removeAllLoggers();
  void lt_log(const DDLogMessage& message);
  void lt_flush();

  static void queueCallOfUnknown(const LogSite& site, std::int64_t now, const LogContent& content);
  static void queueCallOf(const LogCaller& caller, const LogSite& site, const LogContent& content);
  [[nodiscard]] static LogRecord* recordOf(const LogSite& site, const LogCaller& caller, const LogContent& content);
  [[nodiscard]] static LogRecord* recordOnHeap(LogRecord* record, const LogSite& site, const LogCaller& caller,
                                               const LogContent& content);
  /// Where no permit is free. False for a caller that needs none: see DDLog.h.
  [[nodiscard]] bool waitForPermit();
  static void runRecords(Item* first, Cursor& cursor);
  /// Tells how many of the run are done: all, unless there is a reason to stop.
  [[nodiscard]] std::size_t logRun(DDLoggerNode& node, LogRecord* const* run, std::size_t count,
                                   const dispatch_semaphore_t& permits);
  [[nodiscard]] bool mustStop(const dispatch_semaphore_t& permits) const noexcept;
  void leave(LogRecord* record, const dispatch_semaphore_t& permits) noexcept;
  enum class Admittance : std::uint8_t { nobody, oneTakesRuns, others };
  /// Who admits a message; `sole` is then the one logger that does and takes several at once.
  [[nodiscard]] Admittance admittance(const LogRecord& record, DDLoggerNode*& sole) const noexcept;
  void logInParallel(const DDLogMessage& message, DDLoggerNode* const* nodes, std::size_t count);
  void rememberLoggers();
  [[nodiscard]] std::vector<Ref<DDLoggerNode>> rememberedLoggers();
  /// The caller is in a block of the logging queue or of a logger's queue.
  [[nodiscard]] bool isOnAnyQueue(const std::vector<Ref<DDLoggerNode>>& nodes) const;
  /// No block of the logging queue or of some logger's queue can run before the caller's block ends.
  [[nodiscard]] bool holdsUpAny(const std::vector<Ref<DDLoggerNode>>& nodes) const;
  void flushWhileHeld(const std::vector<Ref<DDLoggerNode>>& nodes);
  [[nodiscard]] bool flushUntil(dispatch_time_t deadline);
  static void flushAtProcessEnd();

  Mutex knownMutex;  // for the end of the process and for forks, which may come while the queue is busy
  void prepareFork();
  void endFork();
  void endForkInChild();

  /// All that a call needs of the dispatcher, in one cache line: what loggingQueue and queueSemaphore stand for, and
  /// the records. `dispatcher` is set last, and null before there is one.
  struct alignas(64) Way {
    std::atomic<LogDispatcher*> dispatcher;
    SerialQueue* queue;
    SemaphoreCore* permits;
    LogRecordPool* records;
  };
  static Way way;

  dispatch_queue_t loggingQueue;
  dispatch_semaphore_t queueSemaphore;
  std::uint32_t numProcessors;
  dispatch_group_t loggingGroup;
  std::vector<Ref<DDLoggerNode>> loggers;
  std::atomic<bool> runsOnMainThread{false};  // some logger does

  std::vector<Ref<DDLoggerNode>> knownLoggers NK_GUARDED_BY(knownMutex);

  struct ForkGate;
  static thread_local std::shared_ptr<ForkGate> forkGate;  // of the fork that this thread makes
};

}  // namespace norvik::detail
