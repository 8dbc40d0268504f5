// NorvikCore/platform/dispatch/internal/ConcurrentQueue.h - runs many blocks at a time, and barriers alone.
//
// Items are admitted in order: an ordinary item unless a barrier runs, a barrier when nothing runs. Items behind one
// that cannot be admitted wait. For each admitted block a ticket is sent to the target or to the workers; the thread
// that runs the ticket runs the oldest admitted block. An admitted waiter continues on its own thread. While the queue
// is suspended nothing is admitted, and tickets that are run are kept for the resume.
#pragma once

#include "NorvikCore/platform/dispatch/internal/HelpGoal.h"
#include "NorvikCore/platform/dispatch/internal/ItemList.h"
#include "NorvikCore/platform/dispatch/internal/QueueCore.h"

#include <cstddef>

namespace norvik::detail {

class ConcurrentQueue final : public QueueCore {
 public:
  explicit ConcurrentQueue(const char* label) : QueueCore(Kind::concurrent, label) {}

  void push(Item* item, Delivery delivery, Order order) override;
  void enter(Order order) override;
  void leave(Order order) noexcept override;
  void resetAfterFork() noexcept override;

  /// The queue whose ticket the item is; null for other items.
  [[nodiscard]] static ConcurrentQueue* admittedBy(Item* item) noexcept {
    return item->run == &Ticket::runTicket ? static_cast<Ticket*>(item)->queue : nullptr;
  }
  /// True if running an admitted block is a step towards the goal.
  [[nodiscard]] bool leadsTo(const HelpGoal& goal) noexcept;

 private:
  struct Ticket : Item {
    explicit Ticket(ConcurrentQueue* of) noexcept : queue(of) { run = &runTicket; }
    static void runTicket(Item* item);
    ConcurrentQueue* const queue;
  };
  struct Admission {
    std::size_t tickets = 0;
    ItemList waiters;
  };

  bool mayRun(Order order) const NK_REQUIRES(mutex_);
  void begin(Order order) NK_REQUIRES(mutex_);
  void admit(Admission& admission) NK_REQUIRES(mutex_);
  void carryOut(Admission& admission, Delivery delivery);
  void runAdmitted(const HelpGoal* goal);
  void beginSuspension() noexcept override;
  void endSuspension() noexcept override;

  QueueMutex mutex_;
  ItemList pending_ NK_GUARDED_BY(mutex_);
  ItemList admitted_ NK_GUARDED_BY(mutex_);
  std::size_t running_ NK_GUARDED_BY(mutex_) = 0;  // includes admitted ones
  bool barrierRuns_ NK_GUARDED_BY(mutex_) = false;
  bool suspended_ NK_GUARDED_BY(mutex_) = false;
  std::size_t keptTickets_ NK_GUARDED_BY(mutex_) = 0;
};

}  // namespace norvik::detail
