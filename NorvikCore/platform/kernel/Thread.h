// NorvikCore/platform/kernel/Thread.h - who runs: the calling thread's id, its name, and whether it is the main thread.
//
//   kernel::setCurrentThreadName("Pay run of Norvik Engineering");
//   kernel::currentThreadName();    // the same text, in full: only tools outside the process see 15 bytes of it
//   kernel::currentThreadId();      // what ps, top and gdb call the LWP
//
// Everything here is about the calling thread, costs a few nanoseconds once it has been read, allocates only where a
// name is set, and works until the thread's very end (in destructors of thread-local objects too).
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstdint>
#include <string_view>

namespace norvik::kernel {

/// The kernel's id of the calling thread. The one thread of a child made by fork() has an id of its own, and this is
/// it.
[[nodiscard]] NK_EXPORT std::uint32_t currentThreadId() noexcept;

/// True on the thread whose id is the process id: the one that runs main(), and the only one of a child made by fork().
[[nodiscard]] NK_EXPORT bool isMainThread() noexcept;

/// Names the calling thread. The kernel keeps only 15 bytes; it gets the longest beginning of `name` that fits and does
/// not end inside a character. An empty name takes the name back, and the thread is called as it was before it was
/// named.
NK_EXPORT void setCurrentThreadName(std::string_view name);

/// The name that setCurrentThreadName() gave, else the kernel's name of the thread, which unless somebody set it is
/// that of the process. A name that others give through the kernel shows after a tenth of a second at most. The view is
/// good until the calling thread asks again or is renamed.
[[nodiscard]] NK_EXPORT std::string_view currentThreadName() noexcept;

}  // namespace norvik::kernel
