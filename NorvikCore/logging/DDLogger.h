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
#include "NorvikCore/logging/DDLogRun.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/NSObject.h"

#include <cstddef>
#include <optional>
#include <string>

namespace norvik {

class DDLogger;

/// Turns a message into the text that a logger writes.
class NK_EXPORT DDLogFormatter : public NSObject {
  NK_OBJECT(DDLogFormatter, NSObject)

  /// The text, or nothing to drop the message. Called on the logger's queue.
  [[nodiscard]] virtual std::optional<NSString> formatLogMessage(const DDLogMessage& message) = 0;

  // Optional: what is not overridden does nothing.

  /// Appends the text as UTF-8; false drops the message. Unless overridden the first asks formatLogMessage(), and the
  /// second, for a message of a run, the first.
  virtual bool appendLogMessage(std::string& line, const DDLogMessage& message);
  virtual bool appendLogEntry(std::string& line, const DDLogEntry& entry);
  /// True where a text depends on its message alone and forming it has no effect elsewhere: then a logger may form
  /// several lines before it writes the first. A class that overrides formatLogMessage() of one that says so overrides
  /// this too.
  [[nodiscard]] virtual bool takesRuns() const noexcept;
  virtual void didAddToLogger(DDLogger& logger);
  virtual void willRemoveFromLogger(DDLogger& logger);

 protected:
  ~DDLogFormatter() override;
};

class NK_EXPORT DDLogger : public NSObject {
  NK_OBJECT(DDLogger, NSObject)

  virtual void logMessage(const DDLogMessage& message) = 0;

  // Optional: what is not overridden does nothing, or answers that there is nothing.

  /// True where messages come by logMessages(), several at once, and not by logMessage(). Asked once, when the logger
  /// is added. Such a logger may be a run of messages ahead of others that take runs; with others it keeps step.
  [[nodiscard]] virtual bool takesRuns() const noexcept;
  /// Takes the first messages of the run, and tells how many, one at least: these are done with, and the others come
  /// again in the next call. Unless overridden it hands the first to logMessage(). A class that overrides only
  /// logMessage() of one that takes runs must not take them.
  [[nodiscard]] virtual std::size_t logMessages(const DDLogRun& run);
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
