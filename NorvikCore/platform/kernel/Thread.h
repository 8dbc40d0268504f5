// NorvikCore/platform/kernel/Thread.h - the calling thread: its id, its name, and whether it is the main thread.
//
//   kernel::setCurrentThreadName("Pay run of Norvik Engineering");
//   kernel::currentThreadName();    // the whole text; tools outside the process see only 15 bytes of it
//   kernel::currentThreadId();      // what ps, top and gdb call the LWP
//
// All functions concern the calling thread. They cost a few nanoseconds after the first call, allocate only if a name
// is set, and work until the very end of the thread (also in destructors of thread-local objects).
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstdint>
#include <string_view>

namespace norvik::kernel {

/// The kernel's id of the calling thread. The only thread of a child made by fork() has a new id, and this returns it.
[[nodiscard]] NK_EXPORT std::uint32_t currentThreadId() noexcept;

/// True on the thread whose id is the process id: the one that runs main(), and the only one of a child made by fork().
[[nodiscard]] NK_EXPORT bool isMainThread() noexcept;

/// Names the calling thread. The kernel stores only 15 bytes: the longest beginning of `name` that fits and does not
/// end inside a character. An empty name restores the name that the thread had before it was named.
NK_EXPORT void setCurrentThreadName(std::string_view name);

/// The name that setCurrentThreadName() set, else the kernel's name of the thread, which by default is that of the
/// process. A name that is set through the kernel by other means is visible after a tenth of a second at most. The view
/// is valid until the next call on this thread, or until the thread is renamed.
[[nodiscard]] NK_EXPORT std::string_view currentThreadName() noexcept;

}  // namespace norvik::kernel
