// NorvikCore/platform/dispatch/internal/GroupCore.h - a count with its generation, a word to sleep on, and the blocks
// to enqueue when the count reaches 0.
//
// The generation changes in the same step in which the count reaches 0, because both are one word. If it changed a
// moment later, a thread that saw the count at 0, entered the group again and waited could mistake that late change for
// the end of its own round. If a thread sleeps, the word to sleep on changes after that.
#pragma once

#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/internal/ForkAware.h"
#include "NorvikCore/platform/dispatch/internal/QueueMutex.h"

#include <atomic>
#include <cstdint>
#include <vector>

namespace norvik::detail {

class GroupCore final : public ForkAware {
 public:
  void retain() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) deleteForkAware(this);
  }

  void enter() noexcept;
  void leave() noexcept;
  enum class Waiter : std::uint8_t { helps, waits };
  /// False if the deadline, a point of the monotonic clock, passed first. If no worker can be started, a waiter that
  /// `helps` runs the group's blocks itself; one that `waits` does not.
  bool wait(std::uint64_t deadline, Waiter waiter) noexcept;
  /// Never 0. The group's items carry it.
  [[nodiscard]] std::uint32_t number() const noexcept { return number_; }
  void notify(const dispatch_queue_t& queue, Item* item);
  void resetAfterFork() noexcept override;

 private:
  struct Notification {
    dispatch_queue_t queue;
    Item* item;
  };
  void notifyIfEmpty();
  static std::uint32_t nextNumber() noexcept;

  std::atomic<std::uint32_t> references_{1};
  std::atomic<std::uint64_t> state_{0};  // the generation above the count, 32 bits each
  std::atomic<std::uint32_t> sleepers_{0};
  std::atomic<std::uint32_t> wakes_{0};  // sleepers sleep on it
  const std::uint32_t number_ = nextNumber();
  std::atomic<bool> hasNotifications_{false};
  bool forked_ = false;  // the child may leave what was entered before the fork, which no longer counts
  QueueMutex mutex_;
  std::vector<Notification> notifications_ NK_GUARDED_BY(mutex_);
};

}  // namespace norvik::detail
