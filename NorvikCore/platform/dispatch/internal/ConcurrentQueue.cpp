#include "NorvikCore/platform/dispatch/internal/ConcurrentQueue.h"

#include "NorvikCore/platform/dispatch/internal/SyncWaiter.h"
#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"

#include <new>
#include <utility>

namespace norvik::detail {
namespace {

Order orderOf(const Item* item) { return (item->queueFlags & itemBarrier) != 0 ? Order::barrier : Order::normal; }

}  // namespace

bool ConcurrentQueue::mayRun(Order order) const {
  return !suspended_ && !barrierRuns_ && (order == Order::normal || running_ == 0);
}

void ConcurrentQueue::begin(Order order) {
  ++running_;
  barrierRuns_ = order == Order::barrier;
}

void ConcurrentQueue::admit(Admission& admission) {
  while (!pending_.empty() && mayRun(orderOf(pending_.first()))) {
    Item* item = pending_.takeFirst();
    begin(orderOf(item));
    if ((item->queueFlags & itemWaiter) != 0) {
      admission.waiters.append(item);
    } else {
      admitted_.append(item);
      ++admission.tickets;
    }
  }
}

void ConcurrentQueue::carryOut(Admission& admission, Delivery delivery) {
  for (; admission.tickets > 0; --admission.tickets) {
    retain();
    pushToTarget(::new (allocateItem(sizeof(Ticket))) Ticket(this), delivery);
  }
  while (!admission.waiters.empty()) static_cast<SyncWaiter*>(admission.waiters.takeFirst())->grant();
}

void ConcurrentQueue::push(Item* item, Delivery delivery, Order order) {
  item->queueFlags = order == Order::barrier ? itemBarrier : 0;
  Admission admission;
  {
    const QueueLock lock(mutex_);
    pending_.append(item);
    admit(admission);
  }
  carryOut(admission, delivery);
}

void ConcurrentQueue::enter(Order order) {
  for (;;) {
    SyncWaiter waiter(order == Order::barrier);
    {
      const QueueLock lock(mutex_);
      if (pending_.empty() && mayRun(order)) {
        begin(order);
        return;
      }
      // The wait would end only after the block that this thread is in; or after a resume.
      if (!suspended_ && isHeld(this))
        reportMisuse("a synchronous block for a queue that the calling code holds would never run", this);
      pending_.append(&waiter);
    }
    if (waiter.wait(this)) return;
  }
}

void ConcurrentQueue::leave(Order) noexcept {
  Admission admission;
  {
    const QueueLock lock(mutex_);
    --running_;
    barrierRuns_ = false;
    admit(admission);
  }
  carryOut(admission, Delivery::prompt);
}

bool ConcurrentQueue::leadsTo(const HelpGoal& goal) noexcept {
  const auto isStep = [&goal](Item* item) { return goal.isReachedBy(item); };
  const QueueLock lock(mutex_);
  return !suspended_ && (goal.queue == this || admitted_.anyIs(isStep) || pending_.anyIs(isStep));
}

void ConcurrentQueue::Ticket::runTicket(Item* item) {
  ConcurrentQueue* const of = static_cast<Ticket*>(item)->queue;
  freeItem(item);
  of->runAdmitted(takeHelpGoal());
  of->release();
}

void ConcurrentQueue::runAdmitted(const HelpGoal* goal) {
  Item* item = nullptr;
  bool isStep = false;
  {
    const QueueLock lock(mutex_);
    if (suspended_) {
      ++keptTickets_;
      return;
    }
    if (goal != nullptr) [[unlikely]] {
      item = admitted_.takeFirstThat([goal](Item* candidate) { return goal->isReachedBy(candidate); });
      isStep = item != nullptr;
    }
    if (item == nullptr) item = admitted_.takeFirst();
  }
  {
    const FrameScope frame(this);
    if (isStep) [[unlikely]] {
      runTowards(item, this, *goal);
    } else {
      runItem(item, this);
    }
  }
  leave(Order::normal);
}

void ConcurrentQueue::beginSuspension() noexcept {
  const QueueLock lock(mutex_);
  suspended_ = true;
}

void ConcurrentQueue::endSuspension() noexcept {
  Admission admission;
  {
    const QueueLock lock(mutex_);
    suspended_ = false;
    admission.tickets = std::exchange(keptTickets_, 0);
    admit(admission);
  }
  carryOut(admission, Delivery::prompt);
}

void ConcurrentQueue::resetAfterFork() noexcept {
  mutex_.resetAfterFork();
  specifics().resetAfterFork();
  const QueueLock lock(mutex_);
  pending_.forget();
  admitted_.forget();
  running_ = framesOnThisThread(this);
  barrierRuns_ = barrierRuns_ && running_ == 1;
  suspended_ = resetSuspensionAfterFork();
  keptTickets_ = 0;
}

}  // namespace norvik::detail
