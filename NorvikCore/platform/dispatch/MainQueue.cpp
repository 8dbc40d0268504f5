#include "NorvikCore/platform/dispatch/MainQueue.h"

#include "NorvikCore/platform/dispatch/internal/MainThreadQueue.h"
#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"
#include "NorvikCore/platform/dispatch/internal/ThreadShortage.h"
#include "NorvikCore/platform/kernel/Thread.h"

#include <poll.h>

namespace norvik {

using detail::MainThreadQueue;

dispatch_queue_t dispatch_get_main_queue() { return dispatch_queue_t::share(MainThreadQueue::shared()); }

std::size_t dispatch_main_queue_drain(std::size_t limit) {
  MainThreadQueue* queue = MainThreadQueue::shared();
  if (!kernel::isMainThread()) detail::reportMisuse("the main queue is drained by another thread", queue);
  if (detail::isHeld(queue)) detail::reportMisuse("the main queue is drained within one of its blocks", queue);
  return queue->drainSome(limit);
}

int dispatch_main_queue_descriptor() { return MainThreadQueue::shared()->descriptor(); }

void dispatch_main() {
  constexpr int shortagePause = 10;  // ms between attempts to get the missing thread or descriptor
  for (;;) {
    dispatch_main_queue_drain();
    pollfd ready{dispatch_main_queue_descriptor(), POLLIN, 0};
    const detail::SleepingThread registered(ready.fd);
    poll(&ready, 1, ready.fd < 0 || detail::ThreadShortage::exists() ? shortagePause : -1);
  }
}

}  // namespace norvik
