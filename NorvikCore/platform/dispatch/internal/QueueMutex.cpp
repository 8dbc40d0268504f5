#include "NorvikCore/platform/dispatch/internal/QueueMutex.h"

namespace norvik::detail {

void QueueMutex::lockSlowly() noexcept {
  constexpr int spins = 60;
  for (int spin = 0; spin < spins; ++spin) {
    spinPause();
    std::uint32_t expected = freeWord;
    if (state_.load(std::memory_order_relaxed) == freeWord &&
        state_.compare_exchange_weak(expected, takenWord, std::memory_order_acquire, std::memory_order_relaxed))
      return;
  }
  // A thread that slept here takes the mutex as contended, because others may sleep. The cost is one surplus wake-up.
  while (state_.exchange(contendedWord, std::memory_order_acquire) != freeWord) futexWait(state_, contendedWord);
}

}  // namespace norvik::detail
