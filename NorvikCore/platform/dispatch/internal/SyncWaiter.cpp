#include "NorvikCore/platform/dispatch/internal/SyncWaiter.h"

#include "NorvikCore/platform/dispatch/internal/MainThreadQueue.h"
#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"
#include "NorvikCore/platform/dispatch/internal/ThreadShortage.h"
#include "NorvikCore/platform/dispatch/internal/WorkerPool.h"
#include "NorvikCore/platform/kernel/Thread.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"

namespace norvik::detail {

bool SyncWaiter::wait(const QueueCore* queue) noexcept {
  if (queue != nullptr && kernel::isMainThread() && queue->leadsToMain()) {
    waitDraining();
    return true;
  }
  // A turn often comes within a microsecond or two; to sleep and wake costs ten times as much.
  const int spins = WorkerPool::shared().spinsBeforeSleep();
  for (int spin = 0; spin < spins; ++spin) {
    if ((state_.load(std::memory_order_acquire) & grantedWord) != 0) return true;
    spinPause();
  }
  PatientWait wait(HelpGoal{.waiter = this});
  std::uint32_t state = state_.fetch_or(asleepWord, std::memory_order_acquire) | asleepWord;
  for (; (state & grantedWord) == 0; state = state_.load(std::memory_order_acquire)) {
    wait.sleep(state_, state, nudge);
    if (wait.hasForked()) [[unlikely]]
      return false;
  }
  return true;
}

void SyncWaiter::waitDraining() noexcept {
  constexpr std::uint64_t interval = 1'000'000;
  MainThreadQueue* main = MainThreadQueue::shared();
  if (isHeld(main)) reportMisuse("dispatch_sync in a block of the main queue, for a queue that targets it", main);
  state_.fetch_or(asleepWord, std::memory_order_acquire);
  while ((state_.load(std::memory_order_acquire) & grantedWord) == 0) {
    if (main->drainSome(1) == 0) futexWait(state_, asleepWord, monotonicNanoseconds() + interval);
  }
}

void SyncWaiter::grant() noexcept {
  if ((state_.exchange(grantedWord, std::memory_order_acq_rel) & asleepWord) != 0) futexWake(&state_, 1);
}

}  // namespace norvik::detail
