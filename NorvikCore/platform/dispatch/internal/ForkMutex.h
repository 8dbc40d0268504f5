// NorvikCore/platform/dispatch/internal/ForkMutex.h - a mutex for small objects that are too many to be registered.
//
// A child made by fork() may find the mutex locked by a thread that does not exist there. So the word holds the
// generation of the process (kernel::forkGeneration()) beside the state. A word of an earlier generation counts as
// free, and the result of the first lock tells the caller to repair what the mutex guards. A thread spins for about a
// microsecond before it sleeps.
#pragma once

#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"

#include <atomic>
#include <cstdint>

namespace norvik::detail {

class NK_CAPABILITY("mutex") ForkMutex {
 public:
  /// True the first time in a child made by fork().
  [[nodiscard]] bool lock() noexcept NK_ACQUIRE() {
    std::uint32_t free = wordOfThisProcess();
    if (word_.compare_exchange_strong(free, free | takenWord, std::memory_order_acquire, std::memory_order_relaxed))
        [[likely]]
      return false;
    return lockSlowly();
  }
  void unlock() noexcept NK_RELEASE() {
    const std::uint32_t free = word_.load(std::memory_order_relaxed) & ~stateBits;
    if ((word_.exchange(free, std::memory_order_release) & stateBits) == contendedWord) futexWake(&word_, 1);
  }

 private:
  static constexpr std::uint32_t takenWord = 1, contendedWord = 2, stateBits = 3;
  static std::uint32_t wordOfThisProcess() noexcept { return kernel::forkGeneration() << 2; }
  bool lockSlowly() noexcept;

  std::atomic<std::uint32_t> word_{wordOfThisProcess()};
};

}  // namespace norvik::detail
