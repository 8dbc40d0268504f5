// NorvikCore/logging/internal/LogPipeline.h - the one pipeline behind DDLog, from the call to the loggers.
//
//   LogIntake    a log call becomes a letter in the mailbox of the logging queue
//   LogFanOut    letters become messages, and go to the loggers
//   LogLifetime  forks, and the end of the process
//
// Made on first use, never destroyed.
#pragma once

#include "NorvikCore/logging/internal/LogFanOut.h"
#include "NorvikCore/logging/internal/LogLifetime.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/internal/Mailbox.h"
#include "NorvikCore/platform/kernel/internal/TickClock.h"

#include <atomic>
#include <cstdint>

namespace norvik::detail {

class LogPipeline {
 public:
  static LogPipeline& shared() {
    LogPipeline* const made = pipeline.load(std::memory_order_acquire);
    return made ? *made : makeShared();
  }

  [[nodiscard]] const dispatch_queue_t& queue() const noexcept { return loggingQueue; }
  [[nodiscard]] LogLifetime& lifetime() noexcept { return lifetime_; }
  [[nodiscard]] const LogFanOut& fanOut() const noexcept { return fanOut_; }

  void addLogger(const Ref<DDLogger>& logger, int level);
  void removeLogger(const Ref<DDLogger>& logger);
  void removeAllLoggers();
  void log(const DDLogMessage& message);
  void flush();
  /// Returns at once; when every logger has flushed, it counts `word` up and wakes a thread that sleeps on it.
  void flushLater(std::atomic<std::uint32_t>& word);

  /// All that a call needs, in one cache line. The mailbox is null until there is a pipeline.
  struct alignas(64) Way {
    Mailbox* mailbox;
    const kernel::TickClock* clock;
  };
  static Way way;

 private:
  LogPipeline();
  static LogPipeline& makeShared();
  static std::atomic<LogPipeline*> pipeline;

  kernel::TickClock clock_;
  Mailbox& mailbox_;
  const dispatch_queue_t loggingQueue;
  LogFanOut fanOut_;
  LogLifetime lifetime_;
};

}  // namespace norvik::detail
