// NorvikCore/logging/DDAbstractLogger.h - the base of loggers: it has a queue of its own, and a formatter that may be
// replaced while messages flow. DDLogger.h shows a derived class.
//
//   logger->setLogFormatter(make<MyFormatter>());     // any thread; later messages use it
//
// Ownership: retains its formatter and its queue.
// Threads:   setLogFormatter() may be called on any thread, and returns at once. logFormatter() waits for the logging
//            queue and then for this logger's queue, so it must not be called on either; it sees every change that was
//            requested before. Everything else runs on the logger's queue, where `formatter()` is read directly.
// Code that runs on both queues enters the logging queue first, never the other way round.
#pragma once

#include "NorvikCore/logging/DDLog.h"  // for DDLog::addLogger()
#include "NorvikCore/logging/DDLogger.h"
#include "NorvikCore/platform/export.h"

namespace norvik {

class NK_EXPORT DDAbstractLogger : public DDLogger {
  NK_OBJECT(DDAbstractLogger, DDLogger)

  /// Does nothing. Derived loggers override it.
  void logMessage(const DDLogMessage& message) override;

  [[nodiscard]] Ref<DDLogFormatter> logFormatter() override;
  void setLogFormatter(const Ref<DDLogFormatter>& formatter) override;

  [[nodiscard]] dispatch_queue_t loggerQueue() override;
  /// The name of the class, unless a derived logger overrides it. The queue is labelled with it.
  [[nodiscard]] std::optional<NSString> loggerName() override;

  /// True in a block of the logging queue itself, but not in a block of another queue for which such a block waits. The
  /// key is GlobalLoggingQueueIdentityKey.
  [[nodiscard]] bool isOnGlobalLoggingQueue() const;
  /// True in a block of this logger's queue, from any thread. The key is the logger's own address.
  [[nodiscard]] bool isOnInternalLoggerQueue() const;

 protected:
  DDAbstractLogger() = default;
  ~DDAbstractLogger() override;
  bool init() override;

  /// The formatter, or empty; on the logger's queue only.
  [[nodiscard]] const Ref<DDLogFormatter>& formatter() const noexcept { return formatter_; }
  /// Sets the formatter of a logger that is being created, without calling didAddToLogger().
  void initFormatter(Ref<DDLogFormatter> formatter) noexcept { formatter_ = std::move(formatter); }

 private:
  void changeFormatter(const Ref<DDLogFormatter>& formatter);

  Ref<DDLogFormatter> formatter_;
  dispatch_queue_t loggerQueue_;
};

}  // namespace norvik
