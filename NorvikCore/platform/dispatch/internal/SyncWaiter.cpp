#include "NorvikCore/platform/dispatch/internal/SyncWaiter.h"

#include "NorvikCore/platform/dispatch/internal/MainThreadQueue.h"
#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"
#include "NorvikCore/platform/dispatch/internal/WorkerPool.h"
#include "NorvikCore/platform/kernel/Thread.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"

namespace norvik::detail {

void SyncWaiter::wait(const QueueCore* queue) noexcept {
  if (queue != nullptr && kernel::isMainThread() && queue->leadsToMain()) return waitDraining();
  // A turn often comes within a microsecond or two; sleeping and waking costs ten times that.
  const int spins = WorkerPool::shared().spinsBeforeSleep();
  for (int spin = 0; spin < spins; ++spin) {
    if (state_.load(std::memory_order_acquire) == kGranted) return;
    spinPause();
  }
  const BlockingScope blocking;
  std::uint32_t expected = kWaiting;
  if (!state_.compare_exchange_strong(expected, kAsleep, std::memory_order_acquire)) return;
  while (state_.load(std::memory_order_acquire) != kGranted) futexWait(state_, kAsleep);
}

void SyncWaiter::waitDraining() noexcept {
  constexpr std::uint64_t kInterval = 1'000'000;
  MainThreadQueue* main = MainThreadQueue::shared();
  if (isHeld(main)) reportMisuse("dispatch_sync in a block of the main queue, for a queue that targets it", main);
  std::uint32_t expected = kWaiting;
  state_.compare_exchange_strong(expected, kAsleep, std::memory_order_acquire);
  while (state_.load(std::memory_order_acquire) != kGranted) {
    if (main->drainSome(1) == 0) futexWait(state_, kAsleep, monotonicNanoseconds() + kInterval);
  }
}

void SyncWaiter::grant() noexcept {
  if (state_.exchange(kGranted, std::memory_order_acq_rel) == kAsleep) futexWake(&state_, 1);
}

}  // namespace norvik::detail
