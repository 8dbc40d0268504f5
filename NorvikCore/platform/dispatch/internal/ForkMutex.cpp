#include "NorvikCore/platform/dispatch/internal/ForkMutex.h"

namespace norvik::detail {

bool ForkMutex::lockSlowly() noexcept {
  constexpr int spins = 60;
  const std::uint32_t free = wordOfThisProcess();
  std::uint32_t asTaken = free | takenWord;
  for (int spin = 0;;) {
    std::uint32_t word = word_.load(std::memory_order_relaxed);
    if ((word & ~stateBits) != free || word == free) {
      const bool forked = word != free;
      if (word_.compare_exchange_weak(word, asTaken, std::memory_order_acquire, std::memory_order_relaxed))
        return forked;
    } else if (spin < spins) {
      ++spin;
      spinPause();
    } else if (word == (free | contendedWord) || word_.compare_exchange_weak(word, free | contendedWord)) {
      futexWait(word_, free | contendedWord);
      asTaken = free | contendedWord;  // others may sleep: at worst one surplus wake-up
    }
  }
}

}  // namespace norvik::detail
