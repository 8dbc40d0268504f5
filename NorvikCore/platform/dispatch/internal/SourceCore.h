// NorvikCore/platform/dispatch/internal/SourceCore.h - a timer source.
//
// At most one delivery is on the queue or at work there at a time (`queued_`); what happens meanwhile is noted, and the
// delivery queues itself again at its end if there is something left. Lock order: a source's mutex, then its clock's.
#pragma once

#include "NorvikCore/platform/dispatch/Source.h"
#include "NorvikCore/platform/dispatch/internal/ForkAware.h"
#include "NorvikCore/platform/dispatch/internal/QueueMutex.h"
#include "NorvikCore/platform/dispatch/internal/TimerClock.h"

#include <atomic>
#include <memory>

namespace norvik::detail {

class SourceCore final : public TimerEntry, public ForkAware {
 public:
  explicit SourceCore(const dispatch_queue_t& queue);

  // The handles together hold one reference, deliveries and firings one each.
  void retainHandle() noexcept { handles_.fetch_add(1, std::memory_order_relaxed); }
  void releaseHandle() noexcept;

  void setTimer(dispatch_time_t start, std::uint64_t interval);
  void setClock(std::shared_ptr<TimerClock> clock);
  void setEventHandler(std::shared_ptr<Handler> handler);
  void setCancelHandler(std::shared_ptr<Handler> handler);
  void suspend();
  void resume();
  void cancel();
  [[nodiscard]] bool isCancelled() const noexcept { return cancelled_.load(std::memory_order_acquire); }
  [[nodiscard]] std::uint64_t data() const noexcept { return data_.load(std::memory_order_relaxed); }

  void keepUntilFired() noexcept override { retain(); }
  void fired(std::uint64_t count, std::uint64_t setting) override;
  void resetAfterFork() noexcept override;

 private:
  struct Delivery : Item {
    SourceCore* source = nullptr;
  };

  void retain() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) deleteForkAware(this);
  }
  [[nodiscard]] bool claimDelivery() NK_REQUIRES(mutex_);
  void queueDelivery();
  void deliver();
  [[nodiscard]] TimerClock& clock() NK_REQUIRES(mutex_) { return *clock_; }

  std::atomic<std::uint32_t> handles_{1};
  std::atomic<std::uint32_t> references_{1};
  const dispatch_queue_t queue_;
  Delivery delivery_;
  std::atomic<bool> cancelled_{false};  // set under the mutex
  std::atomic<std::uint64_t> data_{0};

  QueueMutex mutex_;
  std::shared_ptr<TimerClock> clock_ NK_GUARDED_BY(mutex_);
  std::shared_ptr<Handler> eventHandler_ NK_GUARDED_BY(mutex_);
  std::shared_ptr<Handler> cancelHandler_ NK_GUARDED_BY(mutex_);
  std::uint64_t pending_ NK_GUARDED_BY(mutex_) = 0;  // periods that have passed and no handler has seen
  std::uint64_t setting_ NK_GUARDED_BY(mutex_) = 0;  // counts the calls of setTimer()
  std::uint32_t suspensions_ NK_GUARDED_BY(mutex_) = 1;
  bool queued_ NK_GUARDED_BY(mutex_) = false;
  bool cancelHandled_ NK_GUARDED_BY(mutex_) = false;
};

}  // namespace norvik::detail
