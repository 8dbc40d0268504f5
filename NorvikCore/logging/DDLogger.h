// NorvikCore/logging/DDLogger.h - what a logger is to the dispatcher, and what a formatter is to a logger.
//
// A logger of your own, which counts errors:
//
//   class ErrorCounter : public DDAbstractLogger {
//     NK_OBJECT(ErrorCounter, DDAbstractLogger)
//     void logMessage(const DDLogMessage& message) override {
//       if (message.logFlag() == LOG_FLAG_ERROR) ++errors;
//     }
//     std::atomic<int> errors = 0;
//   };
//   auto counter = make<ErrorCounter>();
//   DDLog::addLogger(counter);
//
// DDAbstractLogger (DDAbstractLogger.h) brings a queue and a formatter; a class may also derive from DDLogger itself.
//
// Threads: the dispatcher calls a logger on the logger's queue only, so a logger needs no lock for its own state.
// Errors:  an exception that leaves an operation here ends the process.
#pragma once

#include "NorvikCore/logging/DDLogMessage.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/NSObject.h"

#include <optional>

namespace norvik {

class DDLogger;

/// Turns a message into the text that a logger writes.
class NK_EXPORT DDLogFormatter : public NSObject {
  NK_OBJECT(DDLogFormatter, NSObject)

  /// The text, or nothing to drop the message. Called on the logger's queue.
  [[nodiscard]] virtual std::optional<NSString> formatLogMessage(const DDLogMessage& message) = 0;

  // Optional: what is not overridden does nothing.
  virtual void didAddToLogger(DDLogger& logger);
  virtual void willRemoveFromLogger(DDLogger& logger);

 protected:
  ~DDLogFormatter() override;
};

class NK_EXPORT DDLogger : public NSObject {
  NK_OBJECT(DDLogger, NSObject)

  virtual void logMessage(const DDLogMessage& message) = 0;

  // Optional: what is not overridden does nothing, or answers that there is nothing.

  /// The serial queue to call this logger on. Without one the dispatcher makes one, labelled with the name.
  [[nodiscard]] virtual dispatch_queue_t loggerQueue();
  [[nodiscard]] virtual std::optional<NSString> loggerName();
  /// Called on the logger's queue: first of all, last of all, and to write out what is held back.
  virtual void didAddLogger();
  virtual void willRemoveLogger();
  virtual void flush();
  [[nodiscard]] virtual Ref<DDLogFormatter> logFormatter();
  virtual void setLogFormatter(const Ref<DDLogFormatter>& formatter);

 protected:
  ~DDLogger() override;
};

}  // namespace norvik
