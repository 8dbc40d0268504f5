// NorvikCore/logging/internal/LogCrash.h - what the log does when the process crashes: first what still waits is
// written, then a report, by whoever still can.
//
//   1. A thread of its own, which sleeps until then, forms the report, waits until the writer has written the waiting
//      messages, logs the report as any message is logged, and flushes the loggers.
//   2. If the writer has crashed itself, or does not go on for a second, that thread writes the waiting messages and
//      the report to the files of the file loggers, without the loggers.
//   3. Where that thread does not get there either, because the crashed thread holds a lock that it needs, or because
//      this is a forked child that has not logged, the handler of the signal does the same with what a handler may use:
//      without the names of C++, and without values that would have to be described.
//
// Of the report of a crash there is one in a process.
//
// Threads: synchronised.
#pragma once

#include <atomic>

namespace norvik::detail {

class LogCrash {
 public:
  static void install();
  [[nodiscard]] static bool isInstalled() noexcept { return installed.load(std::memory_order_relaxed); }

  /// For the calling thread, now and then: a stack for signal handlers, and in a forked child the thread of step 1.
  static void cover() {
    if (isInstalled()) [[unlikely]]
      coverSlowly();
  }
  static void coverSlowly();

 private:
  static std::atomic<bool> installed;
};

}  // namespace norvik::detail
