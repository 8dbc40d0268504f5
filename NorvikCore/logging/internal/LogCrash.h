// NorvikCore/logging/internal/LogCrash.h - writes the queued messages and then a report when the process crashes.
//
//   1. A thread of its own, which sleeps until a crash, forms the report, waits until the writer has written the queued
//      messages, logs the report as any message is logged, and flushes the loggers. The writer is the thread that hands
//      messages out to the loggers.
//   2. If the writer has crashed itself, or does not continue within a second, that thread writes the queued messages
//      and the report to the files of the file loggers, without the loggers. If the writer stops within the report, the
//      lines that were logged are among the queued messages, and only the others are added.
//   3. If that thread cannot do this either, because the crashed thread holds a lock that it needs, or because this is
//      a forked child that has not logged, the signal handler does the same with what a handler may use: without
//      demangled C++ names, and without values that would have to be described.
//
// A process reports one crash.
//
// Threads: synchronised.
#pragma once

#include <atomic>

namespace norvik::detail {

class LogCrash {
 public:
  static void install();
  [[nodiscard]] static bool isInstalled() noexcept { return installed.load(std::memory_order_relaxed); }

  /// Each thread calls this now and then: it gets a stack for signal handlers and, in a forked child, starts the thread
  /// of step 1.
  static void cover() {
    if (isInstalled()) [[unlikely]]
      coverSlowly();
  }
  static void coverSlowly();

 private:
  static std::atomic<bool> installed;
};

}  // namespace norvik::detail
