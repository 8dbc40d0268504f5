// NorvikCore/logging/internal/LogDispatcher.h - the one dispatcher behind DDLog: its state, and what runs on its queue.
//
// `loggers` is read and changed on `loggingQueue` only, so it needs no lock; operations that begin with lt_ run there.
#pragma once

#include "NorvikCore/logging/DDLogMessage.h"
#include "NorvikCore/logging/DDLoggerNode.h"
#include "NorvikCore/platform/dispatch/Group.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/kernel/Mutex.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace norvik::detail {

class LogDispatcher {
 public:
  /// Made on first use, never destroyed.
  static LogDispatcher& shared();

  [[nodiscard]] const dispatch_queue_t& queue() const noexcept { return loggingQueue; }

  void addLogger(const Ref<DDLogger>& logger, int level);
  void removeLogger(const Ref<DDLogger>& logger);
  void removeAllLoggers();
  void queueLogMessage(const Ref<DDLogMessage>& message, bool asynchronously);
  /// The same for a message of this dispatcher's own making, which is queued as it is.
  void queueNewMessage(DDLogMessage::Fields&& fields, bool asynchronously);
  void flush();
  /// Flushes every logger also where the caller is on a queue that flush() would wait for.
  void flushFromAnyQueue();

  static constexpr std::intptr_t maximumQueueSize = 1000;

 private:
  class QueuedMessage;

  LogDispatcher();

  void lt_addLogger(const Ref<DDLogger>& logger, int level);
  void lt_removeLogger(const Ref<DDLogger>& logger);
  void lt_removeAllLoggers();
  void lt_log(const DDLogMessage& message);
  void lt_flush();

  static void runMessages(Item* first, Cursor& cursor);
  /// The one logger that admits the message, where it takes several at once; else null.
  [[nodiscard]] DDLoggerNode* soleRunLogger(const DDLogMessage& message) const noexcept;
  void logInParallel(const DDLogMessage& message, DDLoggerNode* const* nodes, std::size_t count);
  void rememberLoggers();
  [[nodiscard]] std::vector<Ref<DDLoggerNode>> rememberedLoggers();
  /// The caller is in a block of the logging queue or of a logger's queue.
  [[nodiscard]] bool isOnAnyQueue(const std::vector<Ref<DDLoggerNode>>& nodes) const;
  void flushWhileHeld(const std::vector<Ref<DDLoggerNode>>& nodes);
  static void flushAtProcessEnd();

  Mutex knownMutex;  // for the end of the process and for forks, which may come while the queue is busy
  // The first takes knownMutex and one of the others lets go of it, after the fork.
  void prepareFork() NK_NO_THREAD_SAFETY_ANALYSIS;
  void endFork() NK_NO_THREAD_SAFETY_ANALYSIS;
  void endForkInChild() NK_NO_THREAD_SAFETY_ANALYSIS;

  std::vector<Ref<DDLoggerNode>> loggers;
  dispatch_queue_t loggingQueue;
  dispatch_group_t loggingGroup;
  dispatch_semaphore_t queueSemaphore;
  std::uint32_t numProcessors;

  std::vector<Ref<DDLoggerNode>> knownLoggers NK_GUARDED_BY(knownMutex);

  struct ForkGate;
  static thread_local std::shared_ptr<ForkGate> forkGate;  // of the fork that this thread makes
};

}  // namespace norvik::detail
