#include "NorvikCore/platform/dispatch/internal/SourceCore.h"

#include "NorvikCore/platform/dispatch/internal/FiredItems.h"
#include "NorvikCore/platform/dispatch/internal/QueueCore.h"

#include <utility>

namespace norvik::detail {
namespace {

/// The system's clocks are never destroyed, so the pointer owns nothing.
std::shared_ptr<TimerClock> systemClock() { return {std::shared_ptr<void>(), &SystemTimerClock::shared()}; }

}  // namespace

SourceCore::SourceCore(const dispatch_queue_t& queue) : clock_(systemClock()), queue_(queue) {
  run = [](Item* item) {
    SourceCore* source = static_cast<SourceCore*>(item);
    source->deliver();
    source->release();
  };
}

SourceCore::SourceCore(const dispatch_queue_t& queue, std::unique_ptr<Handler> eventHandler) : SourceCore(queue) {
  suspensions_ = 0;
  eventHandler_ = std::move(eventHandler);
}

SourceCore::~SourceCore() = default;

void SourceCore::releaseHandle() noexcept {
  if (handles_.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  bool claimed = false;
  cancel();
  {
    const Lock lock(*this);
    suspensions_ = 0;  // no caller can resume it any more
    claimed = claimDelivery();
  }
  if (claimed) queueDelivery();
  release();
}

void SourceCore::setTimer(dispatch_time_t start, std::uint64_t interval, std::uint64_t leeway) {
  const Lock lock(*this);
  if (cancelled_.load(std::memory_order_relaxed)) return;
  ++setting_;
  pending_ = 0;
  if (start == DISPATCH_TIME_FOREVER) {
    clock_->disarm(*this);
  } else {
    clock_->arm(*this, start, {0, interval == DISPATCH_TIME_FOREVER ? 0 : interval, leeway, setting_});
  }
}

void SourceCore::setClock(std::shared_ptr<TimerClock> clock) {
  const Lock lock(*this);
  clock_->disarm(*this);
  clock_ = std::move(clock);
}

void SourceCore::setEventHandler(std::unique_ptr<Handler> handler) {
  const Lock lock(*this);
  if (cancelHandled_) return;
  eventHandler_.swap(handler);
  if (handler && handler.get() == running_) replaced_ = std::move(handler);
}  // any other old handler is destroyed after the unlock, because `handler` is declared before `lock`

void SourceCore::setCancelHandler(std::unique_ptr<Handler> handler) {
  const Lock lock(*this);
  if (!cancelHandled_) cancelHandler_.swap(handler);
}

void SourceCore::suspend() {
  const Lock lock(*this);
  ++suspensions_;
}

void SourceCore::resume() {
  bool claimed = false;
  {
    const Lock lock(*this);
    if (suspensions_ == 0) reportMisuse("dispatch_resume without dispatch_suspend");
    --suspensions_;
    claimed = claimDelivery();
  }
  if (claimed) queueDelivery();
}

void SourceCore::cancel() {
  bool claimed = false;
  {
    const Lock lock(*this);
    if (cancelled_.exchange(true, std::memory_order_acq_rel)) return;
    clock_->disarm(*this);
    claimed = claimDelivery();
  }
  if (claimed) queueDelivery();
}

void SourceCore::fired(std::uint64_t count, std::uint32_t setting, FiredItems& items) {
  bool claimed = false;
  {
    const Lock lock(*this);
    if (setting == setting_) {
      pending_ += count;
      claimed = claimDelivery();
    }
  }
  // The reference that keepUntilFired() took passes to the delivery.
  if (claimed) {
    items.add(queue_, this);
  } else {
    release();
  }
}

/// True if there is something to deliver and no delivery is enqueued: the caller must enqueue one.
bool SourceCore::claimDelivery() {
  const bool cancelled = cancelled_.load(std::memory_order_relaxed);
  const bool due = cancelled ? !cancelHandled_ : pending_ > 0;
  if (queued_ || suspensions_ > 0 || !due) return false;
  queued_ = true;
  return true;
}

void SourceCore::queueDelivery() {
  retain();
  enqueue(queue_, this, detail::Delivery::prompt, Order::normal);
}

void SourceCore::handleEvent(Handler* handler) {
  if (handler != nullptr) handler->call();
}

void SourceCore::deliver() {
  bool isEvent = false;
  Handler* handler = nullptr;
  std::unique_ptr<Handler> cancelHandler;
  std::unique_ptr<Handler> eventHandler;
  {
    const Lock lock(*this);
    if (suspensions_ == 0) {
      if (cancelled_.load(std::memory_order_relaxed)) {
        if (!cancelHandled_) {
          cancelHandled_ = true;
          cancelHandler = std::move(cancelHandler_);
          eventHandler = std::move(eventHandler_);
        }
      } else if (pending_ > 0) {
        data_.store(std::exchange(pending_, 0), std::memory_order_relaxed);
        isEvent = true;
        handler = eventHandler_.get();
        running_ = handler;
      }
    }
  }
  if (isEvent) handleEvent(handler);
  if (cancelHandler) cancelHandler->call();
  cancelHandler.reset();
  eventHandler.reset();

  bool claimed = false;
  {
    std::unique_ptr<Handler> replaced;
    const Lock lock(*this);
    running_ = nullptr;
    replaced = std::move(replaced_);
    queued_ = false;
    claimed = claimDelivery();
  }
  if (claimed) queueDelivery();
}

void SourceCore::forgetParent() noexcept {
  queued_ = false;
  pending_ = 0;
}

void retainCore(SourceCore* source) noexcept { source->retainHandle(); }
void releaseCore(SourceCore* source) noexcept { source->releaseHandle(); }

}  // namespace norvik::detail
