// NorvikCore/logging/DDLogger.h - the interface of a logger to the dispatcher, and of a formatter to a logger.
//
// A logger of an application, which counts errors:
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
// DDAbstractLogger (DDAbstractLogger.h) provides a queue and a formatter; a class may also derive from DDLogger itself.
//
// Threads: the dispatcher calls a logger only on the logger's queue, so a logger needs no lock for its own state.
// Errors:  an exception that leaves an operation of this header ends the process.
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

  /// Returns the text, or nothing to drop the message. Called on the logger's queue.
  [[nodiscard]] virtual std::optional<NSString> formatLogMessage(const DDLogMessage& message) = 0;

  // Optional. The default does nothing unless stated otherwise.

  /// Appends the text as UTF-8; returns false to drop the message. By default appendLogMessage() calls
  /// formatLogMessage(), and appendLogEntry() calls appendLogMessage() with the message of the entry.
  virtual bool appendLogMessage(std::string& line, const DDLogMessage& message);
  virtual bool appendLogEntry(std::string& line, const DDLogEntry& entry);
  /// True if a text depends only on its message, and forming it has no effect elsewhere. A logger may then form several
  /// lines before it writes the first. A class that overrides formatLogMessage() of a class that returns true must
  /// override this too.
  [[nodiscard]] virtual bool takesRuns() const noexcept;
  virtual void didAddToLogger(DDLogger& logger);
  virtual void willRemoveFromLogger(DDLogger& logger);

 protected:
  ~DDLogFormatter() override;
};

class NK_EXPORT DDLogger : public NSObject {
  NK_OBJECT(DDLogger, NSObject)

  virtual void logMessage(const DDLogMessage& message) = 0;

  // Optional. The default does nothing, or returns an empty result, unless stated otherwise.

  /// True if the logger takes messages by logMessages(), several at once, and not by logMessage(). Called once, when
  /// the logger is added. Such a logger may be one run of messages ahead of other loggers that take runs; it keeps step
  /// with loggers that do not.
  [[nodiscard]] virtual bool takesRuns() const noexcept;
  /// Processes the first messages of the run, and returns their number, at least 1. The remaining messages come again
  /// in the next call. The default passes the first message to logMessage(). A class that overrides only logMessage()
  /// of a class that takes runs must return false from takesRuns().
  [[nodiscard]] virtual std::size_t logMessages(const DDLogRun& run);
  /// The serial queue on which this logger is called. If it is empty, the dispatcher creates one, labelled with
  /// loggerName().
  [[nodiscard]] virtual dispatch_queue_t loggerQueue();
  [[nodiscard]] virtual std::optional<NSString> loggerName();
  /// Called on the logger's queue. didAddLogger() is the first call and willRemoveLogger() the last; flush() writes out
  /// what the logger holds back.
  virtual void didAddLogger();
  virtual void willRemoveLogger();
  virtual void flush();
  [[nodiscard]] virtual Ref<DDLogFormatter> logFormatter();
  virtual void setLogFormatter(const Ref<DDLogFormatter>& formatter);

 protected:
  ~DDLogger() override;
};

}  // namespace norvik
