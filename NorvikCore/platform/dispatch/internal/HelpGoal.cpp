#include "NorvikCore/platform/dispatch/internal/HelpGoal.h"

#include "NorvikCore/platform/dispatch/internal/ConcurrentQueue.h"
#include "NorvikCore/platform/dispatch/internal/SerialQueue.h"

namespace norvik::detail {

constinit thread_local const HelpGoal* currentHelpGoal = nullptr;

bool HelpGoal::isReachedBy(Item* item) const noexcept {
  if (item == waiter) return true;
  if (group != 0 && item->group == group) return true;
  if (SerialQueue* serial = SerialQueue::drainedBy(item))
    return serial == queue || serial->lastTowards(*this) != nullptr;
  if (ConcurrentQueue* concurrent = ConcurrentQueue::admittedBy(item)) return concurrent->leadsTo(*this);
  return false;
}

void runTowards(Item* item, QueueCore* queue, const HelpGoal& goal) noexcept {
  // Not set for a block, because a block would leave it to the next drain on this thread.
  if (SerialQueue::drainedBy(item) != nullptr || ConcurrentQueue::admittedBy(item) != nullptr) currentHelpGoal = &goal;
  runItem(item, queue);
}

}  // namespace norvik::detail
