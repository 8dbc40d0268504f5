// NorvikCore/platform/dispatch/internal/FiredItems.h - what a round of timers queues.
#pragma once

#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/kernel/internal/Prefetch.h"

#include <cstddef>
#include <vector>

namespace norvik::detail {

/// Asks the processor for an item's first lines of memory, of whatever it is part.
inline void prefetchItem(const void* item) noexcept {
  constexpr std::size_t cacheLine = 64;
  for (std::size_t line = 0; line < 3; ++line)
    kernel::prefetchForWrite(static_cast<const char*>(item) + line * cacheLine);
}

/// Items that follow each other for one serial queue are handed to it as one, a table of them: one atomic operation,
/// one wake-up, and the worker fetches the next ones from memory while it runs the first. For other queues each goes by
/// itself.
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

  /// Queues what has come in, in order.
  void flush();

 private:
  dispatch_queue_t queue_;
  std::vector<Item*> items_;
};

}  // namespace norvik::detail
