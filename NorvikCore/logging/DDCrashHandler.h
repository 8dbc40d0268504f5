// NorvikCore/logging/DDCrashHandler.h - leaves the whole log, and a report, when the process crashes.
//
//   int main() {
//     DDLog::addLogger(make<DDFileLogger>());
//     DDCrashHandler::install();
//     ...
//   }
//
// A crash is a signal SIGSEGV, SIGBUS, SIGFPE, SIGILL or SIGABRT, and std::terminate. All messages that were logged
// before are written; then, as error messages, what happened: the signal's name and reason, the exception's type and
// text, and the stack, of which `addr2line -e FILE OFFSET` tells the lines:
//
//   *** SIGABRT, in thread 4713 of process 4711
//   *** std::terminate: std::out_of_range: vector::_M_range_check
//   *** #0 /usr/lib/x86_64-linux-gnu/libc.so.6+0x8aedc
//   *** #1 /usr/bin/payrun+0x12f4 pay::run(pay::Employer const&) + 84
//
// Offsets of callers are those of their calls. Functions that a program does not export have an offset and no name.
//
// Two seconds at most pass until the signal goes to the handler that was there before, or does what it would have
// done: the core and the exit status are those of the crash. Of several threads that crash at once, one is reported.
// Other signals, such as SIGTERM, remain the application's.
//
// Where the writer of the log goes on, all loggers get everything. Where it does not, since a logger has crashed or
// waits for the crashed thread, the file loggers' files get it, with a time of the report's own form in place of their
// formatter's; messages of synchronous calls that have not returned are lost, and so is what loggers and formatters
// have logged themselves. Where there is no file either, the report goes to the system console. If memory or its locks
// are damaged too, names are those of the linker, and values other than numbers and texts show as "(value)".
//
// After a stack overflow this works on threads with a stack for signal handlers: the one that called install() or
// coverThread(), the library's workers, once they have slept after that, and threads that log outside of queues, from
// their first message on (a second later where that was before install()). Elsewhere a stack overflow ends the process
// as without a handler.
//
// A forked child reports its own crash: as the parent does once it has logged, else with the linker's names.
//
// Sanitizers handle these signals themselves; install() then takes their place.
//
// Threads: synchronised.
#pragma once

#include "NorvikCore/platform/export.h"

namespace norvik {

class NK_EXPORT DDCrashHandler {
 public:
  DDCrashHandler() = delete;

  /// From now on, for the life of the process; a second call does nothing. A handler that the application sets
  /// afterwards comes first, and decides whether it calls this one.
  static void install();
  [[nodiscard]] static bool isInstalled() noexcept;

  /// Gives the calling thread a stack for signal handlers (half a megabyte of addresses, of which memory is used in a
  /// crash only) until it ends. One that it has already is kept. Does nothing before install().
  static void coverThread();
};

}  // namespace norvik
