#include "NorvikCore/platform/dispatch/internal/SourceCore.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace norvik::detail {
namespace {

/// The system's clocks live as long as the process: a pointer that owns nothing.
std::shared_ptr<TimerClock> systemClock() { return {std::shared_ptr<void>(), &SystemTimerClock::shared()}; }

}  // namespace

SourceCore::SourceCore(const dispatch_queue_t& queue) : queue_(queue), clock_(systemClock()) {
  delivery_.source = this;
  delivery_.run = [](Item* item, Cursor&) {
    SourceCore* source = static_cast<Delivery*>(item)->source;
    source->deliver();
    source->release();
  };
}

void SourceCore::releaseHandle() noexcept {
  if (handles_.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  bool claimed = false;
  cancel();
  {
    const QueueLock lock(mutex_);
    suspensions_ = 0;  // nobody is left to resume it
    claimed = claimDelivery();
  }
  if (claimed) queueDelivery();
  release();
}

void SourceCore::setTimer(dispatch_time_t start, std::uint64_t interval) {
  const QueueLock lock(mutex_);
  if (cancelled_.load(std::memory_order_relaxed)) return;
  ++setting_;
  pending_ = 0;
  if (start == DISPATCH_TIME_FOREVER) {
    clock().disarm(*this);
  } else {
    clock().arm(*this, start, interval == DISPATCH_TIME_FOREVER ? 0 : interval, setting_);
  }
}

void SourceCore::setClock(std::shared_ptr<TimerClock> clock) {
  const QueueLock lock(mutex_);
  clock_->disarm(*this);
  clock_ = std::move(clock);
}

void SourceCore::setEventHandler(std::shared_ptr<Handler> handler) {
  const QueueLock lock(mutex_);
  if (!cancelHandled_) eventHandler_.swap(handler);
}  // the old handler is destroyed after the lock is gone: see the order of the declarations

void SourceCore::setCancelHandler(std::shared_ptr<Handler> handler) {
  const QueueLock lock(mutex_);
  if (!cancelHandled_) cancelHandler_.swap(handler);
}

void SourceCore::suspend() {
  const QueueLock lock(mutex_);
  ++suspensions_;
}

void SourceCore::resume() {
  bool claimed = false;
  {
    const QueueLock lock(mutex_);
    if (suspensions_ == 0) {
      std::fputs("BUG: dispatch_resume without dispatch_suspend\n", stderr);
      std::abort();
    }
    --suspensions_;
    claimed = claimDelivery();
  }
  if (claimed) queueDelivery();
}

void SourceCore::cancel() {
  bool claimed = false;
  {
    const QueueLock lock(mutex_);
    if (cancelled_.exchange(true, std::memory_order_acq_rel)) return;
    clock().disarm(*this);
    claimed = claimDelivery();
  }
  if (claimed) queueDelivery();
}

void SourceCore::fired(std::uint64_t count, std::uint64_t setting) {
  bool claimed = false;
  {
    const QueueLock lock(mutex_);
    if (setting == setting_) {
      pending_ += count;
      claimed = claimDelivery();
    }
  }
  if (claimed) queueDelivery();
  release();  // of keepUntilFired()
}

/// True when there is something to deliver and nobody else sees to it: the caller must queue the delivery.
bool SourceCore::claimDelivery() {
  const bool cancelled = cancelled_.load(std::memory_order_relaxed);
  const bool due = cancelled ? !cancelHandled_ : pending_ > 0;
  if (queued_ || suspensions_ > 0 || !due) return false;
  queued_ = true;
  return true;
}

void SourceCore::queueDelivery() {
  retain();
  enqueue(queue_, &delivery_, detail::Delivery::prompt, Order::normal);
}

void SourceCore::deliver() {
  std::shared_ptr<Handler> handler;
  std::shared_ptr<Handler> unused;
  bool claimed = false;
  {
    const QueueLock lock(mutex_);
    if (suspensions_ == 0) {
      if (cancelled_.load(std::memory_order_relaxed)) {
        if (!cancelHandled_) {
          cancelHandled_ = true;
          handler = std::move(cancelHandler_);
          unused = std::move(eventHandler_);
        }
      } else if (pending_ > 0) {
        data_.store(std::exchange(pending_, 0), std::memory_order_relaxed);
        handler = eventHandler_;
      }
    }
  }
  if (handler) handler->call();
  handler.reset();
  unused.reset();
  {
    const QueueLock lock(mutex_);
    queued_ = false;
    claimed = claimDelivery();
  }
  if (claimed) queueDelivery();
}

void SourceCore::resetAfterFork() noexcept {
  mutex_.resetAfterFork();
  const QueueLock lock(mutex_);
  queued_ = false;
  pending_ = 0;
}

void retainCore(SourceCore* source) noexcept { source->retainHandle(); }
void releaseCore(SourceCore* source) noexcept { source->releaseHandle(); }

}  // namespace norvik::detail
