// NorvikCore/platform/dispatch/internal/HelpGoal.h - what a waiting thread waits for, so that it can run that work
// itself if no thread can be started.
//
// Only the work that the wait depends on is run: the item that is waited for, the items before it in its serial queue,
// and so on through the targets. Those blocks must run before the wait ends in any case. So a thread that runs them
// while it holds queues or locks causes no additional deadlock. Items behind the goal are left.
#pragma once

#include "NorvikCore/platform/dispatch/Item.h"

#include <cstdint>
#include <utility>

namespace norvik::detail {

class QueueCore;

/// At most one member is set. With none set, the queues do not show what the thread waits for.
struct HelpGoal {
  const Item* waiter = nullptr;      // the turn of a thread that waits in a queue
  std::uint32_t group = 0;           // the blocks of a group
  const QueueCore* queue = nullptr;  // any progress of that queue

  [[nodiscard]] bool isKnown() const noexcept { return waiter != nullptr || group != 0 || queue != nullptr; }
  /// True if running the item is a step towards the goal. The caller owns the item, and with it the queues that it
  /// drains.
  [[nodiscard]] bool isReachedBy(Item* item) const noexcept;
};

/// The goal of the item that this thread is about to run for a wait; null for every other item.
extern constinit thread_local const HelpGoal* currentHelpGoal __attribute__((tls_model("initial-exec")));

/// For the queue whose work begins. Clears the goal, which holds for that queue's items and not for what they run.
[[nodiscard]] inline const HelpGoal* takeHelpGoal() noexcept {
  const HelpGoal* goal = currentHelpGoal;
  if (goal != nullptr) [[unlikely]]
    currentHelpGoal = nullptr;
  return goal;
}

/// runItem() for an item that is a step towards the goal.
void runTowards(Item* item, QueueCore* queue, const HelpGoal& goal) noexcept;

}  // namespace norvik::detail
