// NorvikCore/platform/dispatch/internal/SemaphoreCore.h - permits, and how many threads sleep for one.
#pragma once

#include "NorvikCore/platform/dispatch/internal/HelpGoal.h"
#include "NorvikCore/platform/kernel/internal/Prefetch.h"

#include <atomic>
#include <cstdint>

namespace norvik::detail {

class SemaphoreCore {
 public:
  explicit SemaphoreCore(std::uint32_t permits) noexcept : permits_(permits) {}
  void retain() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }

  [[nodiscard]] bool tryTake() noexcept {
    std::uint32_t permits = 0;
    return tryTake(permits);
  }
  /// The same; tells how many permits there were.
  [[nodiscard]] bool tryTake(std::uint32_t& permits) noexcept {
    permits = permits_.load(std::memory_order_seq_cst);
    while (permits > 0) {
      if (permits_.compare_exchange_weak(permits, permits - 1, std::memory_order_seq_cst)) return true;
    }
    return false;
  }
  /// False when the deadline, a point of the monotonic clock, came first. `goal`: what gives permits, if that is known;
  /// false too where that has forked and this is the child.
  bool takeBy(std::uint64_t deadline, const HelpGoal& goal = {}) noexcept;
  /// Asks for the memory of the permits, which are about to change.
  void prefetch() const noexcept { kernel::prefetchForWrite(&permits_); }
  [[nodiscard]] std::uint32_t available() const noexcept { return permits_.load(std::memory_order_relaxed); }
  /// True when a thread slept.
  bool give(std::uint32_t permits = 1) noexcept;

 private:
  std::atomic<std::uint32_t> references_{1};
  std::atomic<std::uint32_t> permits_;
  std::atomic<std::uint32_t> sleepers_{0};
  std::atomic<std::uint32_t> wakes_{0};  // sleepers sleep on it
};

}  // namespace norvik::detail
