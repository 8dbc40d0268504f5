// NorvikCore/platform/kernel/Fork.h - what happens around fork().
//
// Only the thread that calls fork() continues in the child. A lock that another thread held would stay locked there
// until the child ends, and that thread's changes would stay incomplete. One rule prevents this: a fork waits until no
// other thread holds a lock of the library, and no thread takes one until the fork is over. So in a child every lock is
// free and everything that a lock guards is complete, and the child can do whatever its parent could. Mutex and
// WordMutex follow the rule by themselves. Code that calls a library with locks of its own must state it:
//
//   const kernel::ForkHold hold;      // while this lives, no other thread can fork
//   zone = icu::TimeZone::createTimeZone(name);
//
// A thread must therefore not hold a lock while it waits for another thread, unless that thread needs no lock of the
// library. Forks impose no order on nested locks. The activities of the parent's threads (queues, workers, timers, the
// writer of the log) do not continue in the child; handlers reset them there.
//
// Threads: synchronised.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstdint>

namespace norvik::kernel {

using ForkHandler = void (*)();

/// Registers handlers for every later fork, until the process ends. They run on the thread that calls fork(). `before`
/// runs before the fork, while other threads still run and may be waited for; `inParent` and `inChild` run after it;
/// null: none. The `before` handlers run in reverse order of registration, the others in the order of registration.
/// Handlers must not throw. A handler in the child may call what a signal handler may, and whatever it knows to be
/// free: that includes everything that this library guards. If `before` takes a lock, no holder of that lock may call
/// the library. Raises std::bad_alloc if there is no memory to record them.
NK_EXPORT void atFork(ForkHandler before, ForkHandler inParent, ForkHandler inChild);

/// The same for handlers that must run alone: they are called after all `before` handlers of atFork(), and before its
/// other handlers, while no other thread holds a lock of the library. They must not wait for another thread.
NK_EXPORT void atForkAlone(ForkHandler before, ForkHandler inParent, ForkHandler inChild);

/// Delays forks by other threads until releaseForks(), and waits for a fork that is in progress. Calls nest. Costs
/// about three nanoseconds.
NK_EXPORT void holdForks() noexcept;
NK_EXPORT void releaseForks() noexcept;

/// Delays forks by other threads from construction to destruction.
class ForkHold {
 public:
  ForkHold() noexcept { holdForks(); }
  ~ForkHold() { releaseForks(); }
  ForkHold(const ForkHold&) = delete;
  ForkHold& operator=(const ForkHold&) = delete;
};

/// The number of forks between the first process that loaded the library and this one: 0, and one more in each child.
/// Threads of an earlier generation do not exist in this process. The number is already raised in handlers of the
/// child.
[[nodiscard]] NK_EXPORT std::uint32_t forkGeneration() noexcept;

}  // namespace norvik::kernel
