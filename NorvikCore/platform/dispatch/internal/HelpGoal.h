// NorvikCore/platform/dispatch/internal/HelpGoal.h - what a waiting thread waits for, so that it can do the work itself
// where no thread can be started.
//
// Only what the wait depends on is run: the item that is waited for, what stands before it in its serial queue, and so
// on through the targets. Those blocks would have to run before the wait ends in any case, so a thread that runs them
// while it holds queues or locks causes no deadlock that was not there. What stands behind the goal stays.
#pragma once

#include "NorvikCore/platform/dispatch/Item.h"

#include <cstdint>
#include <utility>

namespace norvik::detail {

class QueueCore;

/// One of these, or none: the thread waits for something that cannot be told from the queues.
struct HelpGoal {
  const Item* waiter = nullptr;      // the turn of a thread that waits in a queue
  std::uint32_t group = 0;           // the blocks of a group
  const QueueCore* queue = nullptr;  // any progress of that queue

  [[nodiscard]] bool isKnown() const noexcept { return waiter != nullptr || group != 0 || queue != nullptr; }
  /// True when running the item is a step to the goal. The caller owns the item, and with it the queues that it drains.
  [[nodiscard]] bool isReachedBy(Item* item) const noexcept;
};

/// The goal of the item that this thread is about to run for a wait; null for every other item.
extern constinit thread_local const HelpGoal* currentHelpGoal __attribute__((tls_model("initial-exec")));

/// For the queue whose work begins: the goal holds for that queue's items, not for what they do.
[[nodiscard]] inline const HelpGoal* takeHelpGoal() noexcept {
  const HelpGoal* goal = currentHelpGoal;
  if (goal != nullptr) [[unlikely]]
    currentHelpGoal = nullptr;
  return goal;
}

/// runItem() for an item that is a step to the goal.
void runTowards(Item* item, QueueCore* queue, const HelpGoal& goal) noexcept;

}  // namespace norvik::detail
