// NorvikCore/platform/kernel/Fork.h - what happens around fork().
//
// Only the thread that calls fork() runs on in the child. A lock that another thread held would stay held there until
// the child ends, and what that thread was changing would stay half done. One rule prevents this: a fork waits until no
// other thread holds a lock of the library, and none takes one until the fork is over. So a child finds every lock free
// and everything that a lock guards complete, and can do whatever its parent could. Mutex and WordMutex follow the rule
// by themselves. Code that enters a library with locks of its own states it:
//
//   const kernel::ForkHold hold;      // no fork while this lives, save by this thread
//   zone = icu::TimeZone::createTimeZone(name);
//
// A lock is therefore not held while waiting for another thread, unless that thread needs no lock of the library. Locks
// nest in any order as far as forks are concerned. What threads were doing in the parent (queues, workers, timers, the
// writer of the log) is not carried over: it is reset in the child by handlers.
//
// Threads: synchronised.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstdint>

namespace norvik::kernel {

using ForkHandler = void (*)();

/// From now on, on the thread that calls fork(): `before` is called before it, while other threads still run and may be
/// waited for; `inParent` and `inChild` after it; null: nothing. What was registered last is prepared first; afterwards
/// the order is that of registration. For the life of the process. Handlers may not throw; one in the child may call
/// what a signal handler may, and what it knows to be free: so all that this library guards. A handler that takes a
/// lock of its own in `before` must not need one whose holders call the library. std::bad_alloc where there is no
/// memory to note them.
NK_EXPORT void atFork(ForkHandler before, ForkHandler inParent, ForkHandler inChild);

/// The same for handlers that need to be alone: they are called after all `before`s of atFork(), and before its other
/// handlers, while no other thread holds a lock of the library. They must not wait for another thread.
NK_EXPORT void atForkAlone(ForkHandler before, ForkHandler inParent, ForkHandler inChild);

/// Delays forks by other threads until releaseForks(), and waits for one that is under way. Nests. Costs about
/// three nanoseconds.
NK_EXPORT void holdForks() noexcept;
NK_EXPORT void releaseForks() noexcept;

class ForkHold {
 public:
  ForkHold() noexcept { holdForks(); }
  ~ForkHold() { releaseForks(); }
  ForkHold(const ForkHold&) = delete;
  ForkHold& operator=(const ForkHold&) = delete;
};

/// How many forks lie between the first process that loaded the library and this one: 0, and one more in each child.
/// What was started in threads of an earlier generation is gone. In handlers of the child it counts already.
[[nodiscard]] NK_EXPORT std::uint32_t forkGeneration() noexcept;

}  // namespace norvik::kernel
