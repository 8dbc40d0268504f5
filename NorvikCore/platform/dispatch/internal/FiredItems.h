// NorvikCore/platform/dispatch/internal/FiredItems.h - the items that a round of timers enqueues.
#pragma once

#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/kernel/internal/Prefetch.h"

#include <cstddef>
#include <vector>

namespace norvik::detail {

/// Prefetches the first cache lines of an item and of the object that contains it.
inline void prefetchItem(const void* item) noexcept {
  constexpr std::size_t cacheLine = 64;
  for (std::size_t line = 0; line < 3; ++line)
    kernel::prefetchForWrite(static_cast<const char*>(item) + line * cacheLine);
}

/// Consecutive items for one serial queue are enqueued as one block with a table of them. That takes one atomic
/// operation and one wake-up, and the worker prefetches the next items while it runs the first. For other queues each
/// item is enqueued separately.
class FiredItems {
 public:
  FiredItems() = default;
  ~FiredItems() { flush(); }
  FiredItems(const FiredItems&) = delete;
  FiredItems& operator=(const FiredItems&) = delete;

  void add(const dispatch_queue_t& queue, Item* item) {
    if (queue != queue_) {
      flush();
      queue_ = queue;
    }
    items_.push_back(item);
  }

  [[nodiscard]] std::size_t count() const noexcept { return items_.size(); }
  /// Enqueues the collected items, in order. Afterwards no queue is retained.
  void flush();

 private:
  dispatch_queue_t queue_;
  std::vector<Item*> items_;
};

}  // namespace norvik::detail
