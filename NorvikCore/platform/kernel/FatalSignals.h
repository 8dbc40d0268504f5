// NorvikCore/platform/kernel/FatalSignals.h - what the process does between a fatal signal and its end: some steps, in
// a time that is bounded, and then what would have happened without them.
//
//   constexpr kernel::FatalStep steps[] = {&writeReport, &waitForTheLog};
//   kernel::watchFatalSignals(steps, 2'000'000'000);
//
// The signals are SIGSEGV, SIGBUS, SIGFPE, SIGILL and SIGABRT. The first thread that gets one runs the steps; others
// that get one meanwhile wait for it. A step that crashes itself is left, and the next one is run. When all are done,
// or the time is over, the signal goes to the handler that was there before, with all that the kernel said of it; so
// the core, the status of the exit and a debugger see the original fault. Where that handler returns, the process goes
// on. The steps are run once in a process, and once in each forked child.
//
// A step calls what a signal handler may call. It runs on a stack of its own where its thread has one: a thread that
// has overflowed its stack cannot run a handler otherwise. coverThread() gives it one; a stack that the program has set
// itself is kept.
//
// Threads: synchronised.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace norvik::kernel {

struct FatalSignal {
  int number = 0;
  const char* name = nullptr;    ///< "SIGSEGV"
  const char* reason = nullptr;  ///< in words: "no memory at"; null where there is none
  bool hasAddress = false;       ///< the reason goes on with the address
  std::uintptr_t address = 0;
  std::int32_t sender = 0;   ///< the process that has sent it; 0 where it came by itself
  bool isTerminate = false;  ///< std::terminate, which is about to raise it
  std::uint32_t threadId = 0;
  /// Where it happened, then what that returns to, and so on. 64 at most.
  std::span<const std::uintptr_t> stack;
};

using FatalStep = void (*)(const FatalSignal& signal);

/// From now on, once per process: a later call does nothing. The steps live as long as the process.
NK_EXPORT void watchFatalSignals(std::span<const FatalStep> steps, std::int64_t patienceNanoseconds);

/// Runs the steps here and now, for code that knows that the process is about to end by this signal.
NK_EXPORT void runFatalSteps(int number);

/// Gives the calling thread a stack for signal handlers, once signals are watched, until it ends. One test when it has
/// one. If there is no memory for it, the thread has none.
NK_EXPORT void coverThread() noexcept;

}  // namespace norvik::kernel
