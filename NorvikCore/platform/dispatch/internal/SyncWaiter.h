// NorvikCore/platform/dispatch/internal/SyncWaiter.h - a thread that waits in a queue for its turn.
#pragma once

#include "NorvikCore/platform/dispatch/internal/ItemList.h"

#include <atomic>
#include <cstdint>

namespace norvik::detail {

class QueueCore;

/// Lives on the stack of the thread that waits. Whoever reaches it in the queue gives the queue to that thread.
class SyncWaiter : public Item {
 public:
  explicit SyncWaiter(bool barrier) noexcept { queueFlags = itemWaiter | (barrier ? itemBarrier : 0U); }

  /// Returns once it is this thread's turn on the queue. A worker counts as blocked meanwhile; the main thread goes on
  /// draining the main queue if that is what the queue's turn takes; any thread runs what is before it where no worker
  /// can be started. False where such a block has forked and this is the child: the queue knows nothing of the waiter.
  bool wait(const QueueCore* queue) noexcept;
  /// From any thread; the waiter may be gone when this returns.
  void grant() noexcept;

 private:
  static constexpr std::uint32_t grantedWord = 1, asleepWord = 2, nudge = 4;  // the rest counts nudges
  void waitDraining() noexcept;
  std::atomic<std::uint32_t> state_{0};
};

}  // namespace norvik::detail
