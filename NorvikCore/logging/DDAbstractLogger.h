// NorvikCore/logging/DDAbstractLogger.h - the base of loggers: a queue of its own and a formatter that may change while
// messages flow. DDLogger.h shows one derived from it.
//
//   logger->setLogFormatter(make<MyFormatter>());     // any thread; later messages use it
//
// Ownership: keeps its formatter and its queue.
// Threads:   setLogFormatter() from anywhere, at once. logFormatter() waits for the logging queue and then for this
//            logger's queue, so it must not be called from either; it sees every change asked for before. Everything
//            else on the logger's queue: there `formatter()` is read directly.
//            Code that runs on both queues enters the logging queue first, never the other way round.
#pragma once

#include "NorvikCore/logging/DDLogger.h"
#include "NorvikCore/platform/export.h"

namespace norvik {

class NK_EXPORT DDAbstractLogger : public DDLogger {
  NK_OBJECT(DDAbstractLogger, DDLogger)

  /// Does nothing; every logger overrides it.
  void logMessage(const DDLogMessage& message) override;

  [[nodiscard]] Ref<DDLogFormatter> logFormatter() override;
  void setLogFormatter(const Ref<DDLogFormatter>& formatter) override;

  [[nodiscard]] dispatch_queue_t loggerQueue() override;
  /// The name of the class, unless a logger has a better one. Labels the queue.
  [[nodiscard]] std::optional<NSString> loggerName() override;

  /// True in a block of the logging queue itself, not in a block of another queue that such a block waits for. The key
  /// is GlobalLoggingQueueIdentityKey.
  [[nodiscard]] bool isOnGlobalLoggingQueue() const;
  /// True in a block of this logger's queue, from any thread. The key is the logger's own address.
  [[nodiscard]] bool isOnInternalLoggerQueue() const;

 protected:
  DDAbstractLogger() = default;
  ~DDAbstractLogger() override;
  bool init() override;

  /// The formatter, or empty; on the logger's queue only.
  [[nodiscard]] const Ref<DDLogFormatter>& formatter() const noexcept { return formatter_; }
  /// Sets the formatter of a logger that is being made, without telling it.
  void initFormatter(Ref<DDLogFormatter> formatter) noexcept { formatter_ = std::move(formatter); }

 private:
  void changeFormatter(const Ref<DDLogFormatter>& formatter);

  Ref<DDLogFormatter> formatter_;
  dispatch_queue_t loggerQueue_;
};

}  // namespace norvik
