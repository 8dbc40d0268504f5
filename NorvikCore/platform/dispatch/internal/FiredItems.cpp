#include "NorvikCore/platform/dispatch/internal/FiredItems.h"

#include "NorvikCore/platform/dispatch/internal/SerialQueue.h"
#include "NorvikCore/platform/kernel/Fork.h"

#include <cstddef>
#include <utility>

namespace norvik::detail {
namespace {

/// Runs the items as the queue would run them one by one. An exception ends the process.
void runAll(const std::vector<Item*>& items, SerialQueue* queue) noexcept {
  constexpr std::size_t ahead = 4;
  const std::uint32_t generation = kernel::forkGeneration();
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i + ahead < items.size()) prefetchItem(items[i + ahead]);
    runItem(items[i], queue);
    if (kernel::forkGeneration() != generation) return;  // the other items belong to the parent
    if (queue->isSuspended()) [[unlikely]] {
      for (std::size_t left = items.size(); left > i + 1; --left) queue->putBack(items[left - 1]);
      return;
    }
  }
}

}  // namespace

void FiredItems::flush() {
  if (items_.empty()) return;
  const dispatch_queue_t retained = std::exchange(queue_, nullptr);
  QueueCore* queue = retained.core();
  if (items_.size() > 1 && queue->kind() == QueueCore::Kind::serial) {
    queue->push(
        makeBlock([items = std::move(items_), serial = static_cast<SerialQueue*>(queue)] { runAll(items, serial); }),
        Delivery::prompt, Order::normal);
  } else {
    for (Item* item : items_) queue->push(item, Delivery::prompt, Order::normal);
  }
  items_.clear();
}

}  // namespace norvik::detail
