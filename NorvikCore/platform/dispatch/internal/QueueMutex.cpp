#include "NorvikCore/platform/dispatch/internal/QueueMutex.h"

namespace norvik::detail {

void QueueMutex::lockSlowly() noexcept {
  constexpr int kSpins = 60;
  for (int spin = 0; spin < kSpins; ++spin) {
    spinPause();
    std::uint32_t expected = kFree;
    if (state_.load(std::memory_order_relaxed) == kFree &&
        state_.compare_exchange_weak(expected, kTaken, std::memory_order_acquire, std::memory_order_relaxed))
      return;
  }
  // Whoever slept here takes the mutex as contended, for there may be others: at worst one wake-up too many.
  while (state_.exchange(kContended, std::memory_order_acquire) != kFree) futexWait(state_, kContended);
}

}  // namespace norvik::detail
