// NorvikCore/platform/kernel/Fork.h - what is to be done around fork().
//
// Only the thread that calls fork() goes on in the child; a lock that another thread holds at that moment stays locked
// there for ever, and what that thread was changing stays half done. Who guards state with a lock takes it before each
// fork and lets it go on both sides, or makes it anew in the child:
//
//   kernel::atFork([] { table().mutex.lock(); }, [] { table().mutex.unlock(); }, [] { table().mutex.unlock(); });
//
// Threads: synchronised.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstdint>

namespace norvik::kernel {

using ForkHandler = void (*)();

/// From now on, on the thread that calls fork(): `before` is called before it, `inParent` and `inChild` after it; null:
/// nothing. What was registered last is prepared first; afterwards the order is that of registration. For the life of
/// the process. Handlers may not throw; one in the child may call what a signal handler may, and what it knows to be
/// free. std::bad_alloc where there is no memory to note them.
NK_EXPORT void atFork(ForkHandler before, ForkHandler inParent, ForkHandler inChild);

/// How many forks lie between the first process that loaded the library and this one: 0, and one more in each child.
/// What was started in threads of an earlier generation is gone, and its locks may stay locked for ever. In handlers of
/// the child it counts already.
[[nodiscard]] NK_EXPORT std::uint32_t forkGeneration() noexcept;

}  // namespace norvik::kernel
