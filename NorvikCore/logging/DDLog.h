// NorvikCore/logging/DDLog.h - the dispatcher: makes a message of each log call and hands it to every logger whose
// level admits it.
//
//   DDLog::addLogger(make<DDFileLogger>());
//   DDLogWarn("%d payslips without a payment date", count);      // DDLogMacros.h
//   DDLog::flushLog();
//
// A log call fixes text, time, thread and queue label: numbers, texts and the library's plain values are copied, and
// may be put into the format later; everything else is described during the call. It queues the message on the one
// serial logging queue, labelled "cocoa.quillmarch". There each message goes to the loggers, each on its own queue, and
// the next message follows when all of them are done: every logger gets every message that it admits, once, in the
// order of the queueing.
//
// A logger admits a message whose flag is not greater than the logger's level, compared as numbers.
//
// A call with `asynchronous` false returns when every admitting logger has processed the message. At most 1000 messages
// wait: a call beyond that waits until one is done, or hands messages out itself if no other thread does. Messages that
// loggers take in one run (DDLogRun.h) may be done together.
// What code on the logging queue or on a logger's queue logs, such as a formatter, is not held up and does not count:
// the messages that it would wait for may themselves wait for it.
//
// Formats: FormatDirective.h has the language. A literal is checked by the compiler; a format known only at run time is
// marked with runtimeFormat(). An absent format (nullptr) logs nothing.
//
// Ownership: loggers are kept from addLogger() to their removal. File and function names are borrowed for as long as
//            messages may live: pass literals.
// Threads:   synchronised. flushLog(), synchronous log calls and the reading of settings of loggers must not be called
//            on the logging queue or on a logger's queue: they would wait for themselves for ever. Where the calling
//            thread itself holds the queue this is noticed, and the process aborts with a line. With a logger on the
//            main queue the main thread must not wait for a thread that may be held up by the bound of 1000.
// Errors:    logging itself raises nothing; what the description of an argument raises reaches the caller.
// At exit:   when NSApplicationWillTerminateNotification is posted every logger is flushed; and once more when the
//            process exits (exit, or return from main), after the destructors of the program's statics. Where exit
//            is called on the logging queue or on a logger's queue, what is queued behind that block is lost, and the
//            loggers are flushed as far as this does not wait for the block itself.
// Crash:     with DDCrashHandler.h nothing is lost. Without it asynchronous calls of about the last millisecond are, or
//            up to 1000 where the loggers cannot keep up. What a synchronous call said is with the loggers.
// Fork:      a fork waits (a tenth of a second at most) for the message that is being handed out. The child may log,
//            and make loggers and formatters. Messages that were waiting are the parent's. A child flushes by
//            flushLog() where it wants to, not at its exit.
#pragma once

#include "NorvikCore/logging/DDLogMessage.h"
#include "NorvikCore/logging/DDLogger.h"
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

/// The key, and the value, of the queue-specific value of the logging queue: its own address.
extern NK_EXPORT void* const GlobalLoggingQueueIdentityKey;

class NK_EXPORT DDLog : public NSObject {
  NK_OBJECT(DDLog, NSObject)
  DDLog() = delete;

  /// Done by every other operation on first use; once per process.
  static void initialize();

  /// The queue on which messages are handed out and loggers are added and removed.
  [[nodiscard]] static dispatch_queue_t loggingQueue();

  /// Flushes every logger. The observer of NSApplicationWillTerminateNotification.
  static void applicationWillTerminate(const NSNotification& notification);

  /// Adds a logger, for every message or for those that the level admits. An empty one is ignored. A logger added twice
  /// gets every message twice. Returns at once: the logger gets what is logged afterwards.
  static void addLogger(const Ref<DDLogger>& logger);
  static void addLogger(const Ref<DDLogger>& logger, std::uint32_t withLogLevel);
  /// Removes a logger, once if it was added twice; one that was not added is ignored. Returns at once; its
  /// willRemoveLogger() may come after a flushLog() that follows.
  static void removeLogger(const Ref<DDLogger>& logger);
  static void removeAllLoggers();
  /// Those that are added, in their order; one that was added twice, twice. What this thread added or removed counts
  /// after a flushLog().
  [[nodiscard]] static std::vector<Ref<DDLogger>> allLoggers();

  /// Queues a message that was made elsewhere; an empty one is ignored.
  static void queueLogMessage(const Ref<DDLogMessage>& logMessage, bool asynchronously);

  /// Logs `format` with its arguments: see above. `level` is that of the calling code, `flag` the kind of the message,
  /// `context` and `tag` (Value{} or nullptr for none) are the caller's own.
  template <FormatArgumentType... Args>
  static void log(bool asynchronous, int level, int flag, int context, const char* file, const char* function, int line,
                  const Value& tag, FormatStringFor<Args...> format, const Args&... arguments) {
    logTagged(asynchronous, {level, flag, context, line, file, function}, &tag, format, arguments...);
  }
  template <std::same_as<std::nullptr_t> NoTag, FormatArgumentType... Args>
  static void log(bool asynchronous, int level, int flag, int context, const char* file, const char* function, int line,
                  NoTag, FormatStringFor<Args...> format, const Args&... arguments) {
    logTagged(asynchronous, {level, flag, context, line, file, function}, nullptr, format, arguments...);
  }
  /// The same with a list of arguments, for code that hands them on (FormatArgumentList).
  static void log(bool asynchronous, int level, int flag, int context, const char* file, const char* function, int line,
                  const Value& tag, const RuntimeFormat& format, FormatArguments arguments);
  static void log(bool asynchronous, int level, int flag, int context, const char* file, const char* function, int line,
                  std::nullptr_t, const RuntimeFormat& format, FormatArguments arguments);

  /// Waits until every logger has processed what was logged before, and has flushed.
  static void flushLog();

  // Classes that have a level of their own: those with the class operations `ddLogLevel` and `ddSetLogLevel:`, their
  // own or inherited.
  //
  //   class Submission : public NSObject {
  //     NK_OBJECT(Submission, NSObject)
  //     static int ddLogLevel();
  //     static void ddSetLogLevel(int level);
  //     NK_CLASS_METHOD(ddLogLevel)
  //     NK_CLASS_METHOD(ddSetLogLevel)
  //   };
  [[nodiscard]] static bool isRegisteredClass(const Class& aClass);
  /// In the order in which the classes became known; empty also where there is no memory for the list.
  [[nodiscard]] static std::vector<const Class*> registeredClasses();
  /// Where registered classes share a name: their C++ names, as in "pay::Row".
  [[nodiscard]] static std::vector<NSString> registeredClassNames();
  /// 0xFFFFFFFF for a class that is not registered, and for a name that no class has, or several: Class::named().
  [[nodiscard]] static std::uint32_t logLevelForClass(const Class& aClass);
  [[nodiscard]] static std::uint32_t logLevelForClassWithName(const NSString& aClassName);
  /// Nothing happens to a class that is not registered. A name that several classes share changes none of them, and the
  /// system console says which they are.
  static void setLogLevel_forClass(std::uint32_t level, const Class& aClass);
  static void setLogLevel_forClassWithName(std::uint32_t level, const NSString& aClassName);

 private:
  template <class... Args>
  static void logTagged(bool asynchronous, const detail::LogSite& site, const Value* tag,
                        FormatStringFor<Args...> format, const Args&... arguments) {
    if (format.isAbsent()) return;
    const FormatArgumentList list(arguments...);
    if (asynchronous && format.canWait()) {
      logLater(site, tag, format.view().data(), {static_cast<std::uint32_t>(format.view().size()), sizeof...(Args)},
               FormatArguments(list).data());
    } else {
      logNow(asynchronous, site, tag, format.view(), list);
    }
  }
  /// How long a literal format is, and how many arguments it has: one register, for calls are to be small.
  struct Sizes {
    std::uint32_t format, arguments;
  };
  NK_NO_PLT static void logLater(const detail::LogSite& site, const Value* tag, const char* format, Sizes sizes,
                                 const detail::FormatArgument* arguments);
  static void logNow(bool asynchronous, const detail::LogSite& site, const Value* tag, std::string_view format,
                     FormatArguments arguments);
};

}  // namespace norvik
