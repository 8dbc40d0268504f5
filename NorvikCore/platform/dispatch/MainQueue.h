// NorvikCore/platform/dispatch/MainQueue.h - the queue whose blocks run on the main thread, and how a loop drains it.
//
// The main thread is the one whose id is the process id. Nothing runs on the main queue until it is drained there: by
// dispatch_main(), or by the application's own loop:
//
//   pollfd ready{dispatch_main_queue_descriptor(), POLLIN, 0};
//   while (running) {
//     poll(&ready, 1, -1);              // the loop's other descriptors too
//     dispatch_main_queue_drain();
//   }
//
// From another thread dispatch_sync() waits for the drain. On the main thread outside a drain it first runs the blocks
// that were queued before, then its own, in place; inside a drain it could never return, and aborts with a line.
#pragma once

#include "NorvikCore/platform/dispatch/Queue.h"

#include <cstddef>

namespace norvik {

/// "com.norvik.main-thread".
[[nodiscard]] NK_EXPORT dispatch_queue_t dispatch_get_main_queue();

/// Runs blocks of the main queue: those that were queued when it was called, `limit` at most, and tells how many.
/// Blocks queued meanwhile wait for the next drain, so a block that queues itself again does not hold the loop. Main
/// thread only, and not within itself, else the process aborts with a line "BUG: ..." on the system console.
NK_EXPORT std::size_t dispatch_main_queue_drain(std::size_t limit = ~std::size_t{0});

/// A descriptor that is readable while blocks wait on the main queue. Poll it; never read, write or close it. The same
/// one for the life of the process, from the first call on; a child made by fork() has another. -1 where the process
/// has no descriptor left, which the system console says once: ask again, and drain meanwhile (poll() ignores -1).
[[nodiscard]] NK_EXPORT int dispatch_main_queue_descriptor();

/// Runs the main queue's blocks for ever. Main thread only.
[[noreturn]] NK_EXPORT void dispatch_main();

}  // namespace norvik
