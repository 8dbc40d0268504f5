// NorvikCore/platform/dispatch/internal/SourceCore.h - a timer source.
//
// At most one delivery at a time is enqueued or running (`queued_`). What happens meanwhile is recorded, and the
// delivery enqueues itself again at its end if something is left. The source itself is the delivery's item. Lock order:
// a source's mutex, then its clock's.
//
// There may be a hundred thousand sources, so the members are ordered by their use, and a source is in no list.
#pragma once

#include "NorvikCore/platform/dispatch/Source.h"
#include "NorvikCore/platform/dispatch/internal/ForkMutex.h"
#include "NorvikCore/platform/dispatch/internal/TimerClock.h"

#include <atomic>
#include <memory>

namespace norvik::detail {

class SourceCore : public TimerEntry, private Item {
 public:
  explicit SourceCore(const dispatch_queue_t& queue);
  ~SourceCore() override;
  /// With its event handler, and resumed. Takes no lock for either.
  SourceCore(const dispatch_queue_t& queue, std::unique_ptr<Handler> eventHandler);

  // All handles together hold one reference; each delivery and each firing holds one.
  void retainHandle() noexcept { handles_.fetch_add(1, std::memory_order_relaxed); }
  void releaseHandle() noexcept;

  void setTimer(dispatch_time_t start, std::uint64_t interval, std::uint64_t leeway);
  void setClock(std::shared_ptr<TimerClock> clock);
  void setEventHandler(std::unique_ptr<Handler> handler);
  void setCancelHandler(std::unique_ptr<Handler> handler);
  void suspend();
  void resume();
  void cancel();
  [[nodiscard]] bool isCancelled() const noexcept { return cancelled_.load(std::memory_order_acquire); }
  [[nodiscard]] std::uint64_t data() const noexcept { return data_.load(std::memory_order_relaxed); }

  void keepUntilFired() noexcept override { retain(); }
  void fired(std::uint64_t count, std::uint32_t setting, FiredItems& items) override;

 protected:
  /// Called for each delivery of an event, with the event handler or null, under no mutex. A class whose event handler
  /// is a part of the source overrides it.
  virtual void handleEvent(Handler* handler);

 private:
  /// Holds the mutex for a scope. The first lock in a child made by fork() discards the parent's state.
  class NK_SCOPED_CAPABILITY Lock {
   public:
    explicit Lock(SourceCore& source) noexcept NK_ACQUIRE(source.mutex_) : source_(source) {
      if (source.mutex_.lock()) [[unlikely]]
        source.forgetParent();
    }
    ~Lock() NK_RELEASE() { source_.mutex_.unlock(); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

   private:
    SourceCore& source_;
  };

  void retain() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }
  void forgetParent() noexcept NK_REQUIRES(mutex_);
  [[nodiscard]] bool claimDelivery() NK_REQUIRES(mutex_);
  void queueDelivery();
  void deliver();

  std::atomic<std::uint32_t> references_{1};
  std::atomic<std::uint32_t> handles_{1};
  ForkMutex mutex_;
  std::uint32_t setting_ NK_GUARDED_BY(mutex_) = 0;  // counts the calls of setTimer()
  std::uint32_t suspensions_ NK_GUARDED_BY(mutex_) = 1;
  std::atomic<bool> cancelled_{false};  // set under the mutex
  bool queued_ NK_GUARDED_BY(mutex_) = false;
  bool cancelHandled_ NK_GUARDED_BY(mutex_) = false;
  std::uint64_t pending_ NK_GUARDED_BY(mutex_) = 0;  // periods that have passed and that no handler has seen
  std::shared_ptr<TimerClock> clock_ NK_GUARDED_BY(mutex_);
  const dispatch_queue_t queue_;
  std::unique_ptr<Handler> eventHandler_ NK_GUARDED_BY(mutex_);
  std::atomic<std::uint64_t> data_{0};
  const Handler* running_ NK_GUARDED_BY(mutex_) = nullptr;   // the event handler that is being called
  std::unique_ptr<Handler> replaced_ NK_GUARDED_BY(mutex_);  // the same handler, once it has been replaced
  std::unique_ptr<Handler> cancelHandler_ NK_GUARDED_BY(mutex_);
};

}  // namespace norvik::detail
