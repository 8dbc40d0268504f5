// tests/dispatch/Wrappers.h - helpers that the tests of wrapped queues share.
#pragma once

#include "NorvikCore/dispatch/TSKDispatchQueue.h"
#include "NorvikCore/platform/dispatch/MainQueue.h"
#include "tests/platform/dispatch/Watchdog.h"

#include <poll.h>

#include <atomic>
#include <thread>

namespace norvik::test {

using Wrapper = Ref<TSKDispatchQueue>;

inline Wrapper serial(const char* label, TSKDeadlockBehavior behavior = TSKDeadlockExecuteInline) {
  return TSKDispatchQueue::dispatchQueueWithLabel(label, behavior);
}

/// A wrapper of a new concurrent queue.
inline Wrapper concurrent(TSKDeadlockBehavior behavior = TSKDeadlockNoCheck) {
  auto wrapper =
      TSKDispatchQueue::dispatchQueueWithGCDQueue(dispatch_queue_create(nullptr, DISPATCH_QUEUE_CONCURRENT), behavior);
  wrapper->setConcurrent(true);
  return wrapper;
}

/// Returns when all blocks that were enqueued on the wrapper's queue have run.
inline void flush(const Wrapper& wrapper) {
  dispatch_barrier_sync(wrapper->queue(), [] {});
}

/// Runs `work` on its own thread while the calling thread, the main thread, drains the main queue.
template <class Work>
void whileMainDrains(const Work& work) {
  bool over = false;
  std::thread worker([&] {
    work();
    dispatch_async(dispatch_get_main_queue(), [&] { over = true; });
  });
  pollfd ready{dispatch_main_queue_descriptor(), POLLIN, 0};
  while (!over) {
    poll(&ready, 1, -1);
    dispatch_main_queue_drain();
  }
  worker.join();
}

}  // namespace norvik::test
