// NorvikCore/logging/internal/LogPipeline.h - the one pipeline of DDLog, from the log call to the loggers.
//
//   LogIntake    turns a log call into a letter in the mailbox of the logging queue
//   LogFanOut    turns letters into messages, and hands them to the loggers
//   LogLifetime  handles forks and the end of the process
//
// Created on first use, never destroyed.
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
  /// Returns at once. When every logger has flushed, it increments `word` and wakes a thread that waits on it.
  void flushLater(std::atomic<std::uint32_t>& word);

  /// Everything that a call needs, in one cache line. The mailbox is null until the pipeline exists.
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
