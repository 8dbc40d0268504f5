// NorvikCore/platform/kernel/FatalSignals.h - steps that the process runs after a fatal signal, within a limited time,
// before the signal has its usual effect.
//
//   constexpr kernel::FatalStep steps[] = {&writeReport, &waitForTheLog};
//   kernel::watchFatalSignals(steps, 2'000'000'000);
//
// The signals are SIGSEGV, SIGBUS, SIGFPE, SIGILL and SIGABRT. The first thread that receives one runs the steps; other
// threads that receive one meanwhile wait for it. If a step itself crashes, it is abandoned and the next one runs. When
// all steps are done, or the time is over, the signal is passed to the previous handler, with all the information from
// the kernel; so the core, the exit status and a debugger see the original fault. If that handler returns, the process
// continues. The steps run once in a process, and once in each forked child.
//
// A step may call only what a signal handler may call. It runs on an alternate stack if its thread has one. Without one
// a thread that has overflowed its stack cannot run a handler. coverThread() provides one, unless the program has set
// an alternate stack itself.
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
  const char* reason = nullptr;  ///< in words: "no memory at"; null if there is none
  bool hasAddress = false;       ///< the text of the reason must be followed by the address
  std::uintptr_t address = 0;
  std::int32_t sender = 0;   ///< the process that sent it; 0 if no other process did
  bool isTerminate = false;  ///< std::terminate, which is about to raise it
  std::uint32_t threadId = 0;
  /// The place of the fault, then its return addresses, innermost first. 64 at most.
  std::span<const std::uintptr_t> stack;
};

using FatalStep = void (*)(const FatalSignal& signal);

/// Installs the steps, once per process: a later call has no effect. The steps must live until the process ends.
NK_EXPORT void watchFatalSignals(std::span<const FatalStep> steps, std::int64_t patienceNanoseconds);

/// Runs the steps immediately, for code that knows that the process is about to end by this signal.
NK_EXPORT void runFatalSteps(int number);

/// Gives the calling thread an alternate stack for signal handlers until it ends, if signals are watched. Costs one
/// test if it already has one. If there is no memory for the stack, the thread has none.
NK_EXPORT void coverThread() noexcept;

}  // namespace norvik::kernel
