// NorvikCore/platform/dispatch/MainQueue.h - the queue whose blocks run on the main thread, and how to drain it.
//
// The main thread is the one whose id is the process id. Blocks of the main queue run only when that thread drains it,
// by dispatch_main() or by the application's own loop:
//
//   pollfd ready{dispatch_main_queue_descriptor(), POLLIN, 0};
//   while (running) {
//     poll(&ready, 1, -1);              // the loop's other descriptors too
//     dispatch_main_queue_drain();
//   }
//
// dispatch_sync() from another thread waits for the drain. On the main thread outside a drain, it first runs the blocks
// that were enqueued before, then its own block. Inside a drain it could never return, so it writes a line to the
// system console and aborts.
#pragma once

#include "NorvikCore/platform/dispatch/Queue.h"

#include <cstddef>

namespace norvik {

/// "com.norvik.main-thread".
[[nodiscard]] NK_EXPORT dispatch_queue_t dispatch_get_main_queue();

/// Runs the blocks of the main queue that are enqueued when the call begins, `limit` at most, and returns how many it
/// ran. Blocks that are enqueued meanwhile wait for the next drain, so a block that enqueues itself again does not
/// block the loop. Call it on the main thread and not within itself; otherwise the process aborts with a line "BUG:
/// ..." on the system console.
NK_EXPORT std::size_t dispatch_main_queue_drain(std::size_t limit = ~std::size_t{0});

/// A descriptor that is readable while blocks wait on the main queue. Poll it; never read, write or close it. After the
/// first call it stays the same until the process ends; a child made by fork() has a different one. The result is -1 if
/// the process has no descriptor left, which is reported once on the system console. Then call again later, and drain
/// meanwhile (poll() ignores -1).
[[nodiscard]] NK_EXPORT int dispatch_main_queue_descriptor();

/// Runs the main queue's blocks and never returns. Main thread only.
[[noreturn]] NK_EXPORT void dispatch_main();

}  // namespace norvik
