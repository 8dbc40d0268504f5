// NorvikCore/logging/DDCrashHandler.h - writes the whole log, and a report, when the process crashes.
//
//   int main() {
//     DDLog::addLogger(make<DDFileLogger>());
//     DDCrashHandler::install();
//     ...
//   }
//
// A crash is a signal SIGSEGV, SIGBUS, SIGFPE, SIGILL or SIGABRT, or a call of std::terminate. The handler writes all
// messages that were logged before. Then it writes a report as error messages: the signal's name and reason, the
// exception's type and text, and the stack. `addr2line -e FILE OFFSET` prints the source lines of a stack entry:
//
//   *** SIGABRT, in thread 4713 of process 4711
//   *** std::terminate: std::out_of_range: vector::_M_range_check
//   *** #0 /usr/lib/x86_64-linux-gnu/libc.so.6+0x8aedc
//   *** #1 /usr/bin/payrun+0x12f4 pay::run(pay::Employer const&) + 84
//
// The offset of a caller is that of its call. Functions that a program does not export have an offset and no name.
//
// After at most two seconds the signal is passed to the previous handler, or has its default effect: the core and the
// exit status are those of the crash. If several threads crash at once, one is reported. Other signals, such as
// SIGTERM, are left to the application.
//
// If the thread that writes the log can continue, all loggers get everything. It cannot if a logger has crashed or
// waits for the crashed thread. Then the messages are written to the files of the file loggers, with a time in the
// report's own form instead of their formatter's; messages of synchronous calls that have not returned are lost, and so
// are messages that loggers and formatters logged themselves. If there is no file either, the report is written to the
// system console. If memory or its locks are damaged too, names are the linker's (mangled), and values other than
// numbers and texts show as "(value)".
//
// After a stack overflow the handler works only on threads with a stack for signal handlers: the thread that called
// install() or coverThread(), the library's workers once they have slept after that, and threads that log outside any
// queue, from their first message on (if that was before install(), about a second after install()). On other threads a
// stack overflow ends the process as without a handler.
//
// A forked child reports its own crash: as the parent does if the child has logged, otherwise with the linker's names.
//
// Sanitizers handle these signals themselves; install() replaces their handlers.
//
// Threads: synchronised.
#pragma once

#include "NorvikCore/platform/export.h"

namespace norvik {

class NK_EXPORT DDCrashHandler {
 public:
  DDCrashHandler() = delete;

  /// Installs the handler until the process ends; a second call does nothing. A handler that the application sets
  /// afterwards is called first, and decides whether it calls this one.
  static void install();
  [[nodiscard]] static bool isInstalled() noexcept;

  /// Gives the calling thread a stack for signal handlers until the thread ends (half a megabyte of addresses, of which
  /// memory is used only in a crash). An existing one is kept. Does nothing before install().
  static void coverThread();
};

}  // namespace norvik
