// NorvikCore/platform/dispatch/internal/SyncWaiter.h - a thread that waits in a queue for its turn.
#pragma once

#include "NorvikCore/platform/dispatch/internal/ItemList.h"

#include <atomic>
#include <cstdint>

namespace norvik::detail {

class QueueCore;

/// Lives on the stack of the waiting thread. The thread that reaches it in the queue gives the queue to that thread.
class SyncWaiter : public Item {
 public:
  explicit SyncWaiter(bool barrier) noexcept { queueFlags = itemWaiter | (barrier ? itemBarrier : 0U); }

  /// Returns when it is this thread's turn on the queue. A worker counts as blocked meanwhile. The main thread drains
  /// the main queue meanwhile if the queue leads to it. If no worker can be started, any thread runs the items before
  /// its own. False in a child in which such a block has forked: the queue does not contain the waiter there.
  bool wait(const QueueCore* queue) noexcept;
  /// From any thread. The waiter may be destroyed when this returns.
  void grant() noexcept;

 private:
  static constexpr std::uint32_t grantedWord = 1, asleepWord = 2, nudge = 4;  // the other bits count nudges
  void waitDraining() noexcept;
  std::atomic<std::uint32_t> state_{0};
};

}  // namespace norvik::detail
