// NorvikCore/platform/dispatch/internal/SemaphoreCore.h - permits, and how many threads sleep for one.
#pragma once

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
    std::uint32_t permits = permits_.load(std::memory_order_seq_cst);
    while (permits > 0) {
      if (permits_.compare_exchange_weak(permits, permits - 1, std::memory_order_seq_cst)) return true;
    }
    return false;
  }
  /// False if the deadline, a point of the monotonic clock, passed first.
  bool takeBy(std::uint64_t deadline) noexcept;
  /// True if a thread slept.
  bool give() noexcept;

 private:
  std::atomic<std::uint32_t> references_{1};
  std::atomic<std::uint32_t> permits_;
  std::atomic<std::uint32_t> sleepers_{0};
  std::atomic<std::uint32_t> wakes_{0};  // sleepers sleep on it
};

}  // namespace norvik::detail
