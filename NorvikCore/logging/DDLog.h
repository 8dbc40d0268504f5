// NorvikCore/logging/DDLog.h - the dispatcher of the log. Each log call becomes a message, and the dispatcher passes
// the message to every logger whose level admits it.
//
//   DDLog::addLogger(make<DDFileLogger>());
//   DDLogWarn("%d payslips without a payment date", count);      // DDLogMacros.h
//   DDLog::flushLog();
//
// A log call records its arguments, the time, the thread and the queue label. Numbers, texts and the library's plain
// values are copied, and may be formatted later; every other argument is described during the call. The message is
// enqueued on the one serial logging queue, labelled "cocoa.quillmarch". That queue hands each message to the loggers,
// each on the logger's own queue, and handles the next message when all of them are done. So every logger gets every
// message that it admits, once, in the order in which the messages were enqueued.
//
// A logger admits a message if the message's flag, as a number, is not greater than the logger's level.
//
// A call with `asynchronous` false returns when every admitting logger has processed the message. At most 1000 messages
// are queued. A further call blocks until a message is done; if no other thread passes messages to the loggers, the
// blocked call does. Loggers that take runs (DDLogRun.h) may process several messages together.
//
// The bound does not apply to code that logs on the logging queue or on a logger's queue, such as a formatter. Such a
// call does not block, because the queued messages may have to wait for the calling code.
//
// FormatDirective.h describes the format language. The compiler checks a format that is a literal. Mark a format that
// is known only at run time with runtimeFormat(). An absent format (nullptr) logs nothing.
//
// Ownership: the dispatcher retains a logger from addLogger() to its removal. File and function names are borrowed for
//            as long as messages may live: pass literals.
// Threads:   synchronised. Do not call flushLog(), log synchronously or read a logger's settings on the logging queue
//            or on a logger's queue, because such a call would wait for itself. If the calling thread itself is running
//            a block of that queue, this is detected, and the process aborts with a message. If a logger runs on the
//            main queue, the main thread must not wait for a thread that may be blocked by the bound of 1000.
// Errors:    logging itself raises nothing. An exception from the description of an argument reaches the caller.
// At exit:   every logger is flushed when NSApplicationWillTerminateNotification is posted, and once more when the
//            process exits (exit, or return from main), after the destructors of the program's statics. If exit is
//            called on the logging queue or on a logger's queue, messages that are queued behind that block are lost,
//            and the loggers are flushed only as far as this does not wait for the block.
// Crash:     with DDCrashHandler.h nothing is lost. Without it the asynchronous messages of about the last millisecond
//            are lost, or up to 1000 if the loggers cannot keep up. The loggers have already processed the message of a
//            synchronous call that returned.
// Fork:      a fork waits, for at most a tenth of a second, for the message that is being handed out. The child may
//            log, and may create loggers and formatters. Messages that were queued at the fork are handled by the
//            parent alone. A child is not flushed at its exit; it calls flushLog() where it needs to.
#pragma once

#include "NorvikCore/logging/DDLogMessage.h"
#include "NorvikCore/logging/DDLogger.h"
#include "NorvikCore/logging/LogCall.h"
#include "NorvikCore/logging/LogLevel.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/Class.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/values/Format.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace norvik {

class NSNotification;

/// The key and the value of the logging queue's queue-specific value: the address of this variable.
extern NK_EXPORT void* const GlobalLoggingQueueIdentityKey;

class NK_EXPORT DDLog : public NSObject {
  NK_OBJECT(DDLog, NSObject)
  DDLog() = delete;

  /// Every other operation calls this on first use. It takes effect once per process.
  static void initialize();

  /// The serial queue that hands messages out, and on which loggers are added and removed.
  [[nodiscard]] static dispatch_queue_t loggingQueue();

  /// Flushes every logger. Observes NSApplicationWillTerminateNotification.
  static void applicationWillTerminate(const NSNotification& notification);

  /// Adds a logger for every message, or for the messages that the level admits. An empty Ref is ignored. A logger that
  /// is added twice gets every message twice. Returns at once; the logger gets the messages that are logged afterwards.
  static void addLogger(const Ref<DDLogger>& logger);
  static void addLogger(const Ref<DDLogger>& logger, std::uint32_t withLogLevel);
  /// Removes a logger. A logger that was added twice is removed once; a logger that was not added is ignored. Returns
  /// at once. A flushLog() that follows may return before willRemoveLogger() is called.
  static void removeLogger(const Ref<DDLogger>& logger);
  static void removeAllLoggers();
  /// The loggers that are added, in the order in which they were added. A logger that was added twice is listed twice.
  /// Additions and removals that this thread made are certain to be included after a flushLog().
  [[nodiscard]] static std::vector<Ref<DDLogger>> allLoggers();

  /// Enqueues a message that the caller has created; an empty Ref is ignored.
  static void queueLogMessage(const Ref<DDLogMessage>& logMessage, bool asynchronously);

  /// Logs `format` with its arguments: see above. `level` is the level of the calling code, `flag` the kind of the
  /// message. The caller chooses `context` and `tag` freely; pass Value{} or nullptr for no tag.
  template <FormatArgumentType... Args>
  static void log(bool asynchronous, int level, int flag, int context, const char* file, const char* function, int line,
                  const Value& tag, FormatStringFor<Args...> format, const Args&... arguments) {
    detail::logTagged(asynchronous, {level, flag, context, line, file, function}, &tag, format, arguments...);
  }
  template <std::same_as<std::nullptr_t> NoTag, FormatArgumentType... Args>
  static void log(bool asynchronous, int level, int flag, int context, const char* file, const char* function, int line,
                  NoTag, FormatStringFor<Args...> format, const Args&... arguments) {
    detail::logTagged(asynchronous, {level, flag, context, line, file, function}, nullptr, format, arguments...);
  }
  /// The same with a list of arguments, for code that passes its arguments on (FormatArgumentList).
  static void log(bool asynchronous, int level, int flag, int context, const char* file, const char* function, int line,
                  const Value& tag, const RuntimeFormat& format, FormatArguments arguments);
  static void log(bool asynchronous, int level, int flag, int context, const char* file, const char* function, int line,
                  std::nullptr_t, const RuntimeFormat& format, FormatArguments arguments);

  /// Returns when every logger has processed what was logged before and has flushed.
  static void flushLog();

  // Classes with a level of their own. A class is registered if it has the class operations `ddLogLevel` and
  // `ddSetLogLevel:`, its own or inherited.
  //
  //   class Submission : public NSObject {
  //     NK_OBJECT(Submission, NSObject)
  //     static int ddLogLevel();
  //     static void ddSetLogLevel(int level);
  //     NK_CLASS_METHOD(ddLogLevel)
  //     NK_CLASS_METHOD(ddSetLogLevel)
  //   };
  [[nodiscard]] static bool isRegisteredClass(const Class& aClass);
  /// In the order in which the classes became known. Also empty if there is no memory for the list.
  [[nodiscard]] static std::vector<const Class*> registeredClasses();
  /// Registered classes that share a name are listed under their C++ names, such as "pay::Row".
  [[nodiscard]] static std::vector<NSString> registeredClassNames();
  /// Returns 0xFFFFFFFF for a class that is not registered, and for a name that no class or several classes have
  /// (Class::named()).
  [[nodiscard]] static std::uint32_t logLevelForClass(const Class& aClass);
  [[nodiscard]] static std::uint32_t logLevelForClassWithName(const NSString& aClassName);
  /// Does nothing for a class that is not registered. If several classes share the name, none of them is changed, and
  /// the system console lists them.
  static void setLogLevel_forClass(std::uint32_t level, const Class& aClass);
  static void setLogLevel_forClassWithName(std::uint32_t level, const NSString& aClassName);
};

}  // namespace norvik
