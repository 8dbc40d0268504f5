#include "NorvikCore/platform/dispatch/Semaphore.h"

#include "NorvikCore/platform/dispatch/internal/SemaphoreCore.h"
#include "NorvikCore/platform/dispatch/internal/ThreadShortage.h"
#include "NorvikCore/platform/dispatch/internal/WorkerPool.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"
#include "NorvikCore/platform/values/NSException.h"

#include <limits>

namespace norvik {
namespace detail {

void retainCore(SemaphoreCore* semaphore) noexcept { semaphore->retain(); }
void releaseCore(SemaphoreCore* semaphore) noexcept { semaphore->release(); }

bool SemaphoreCore::takeBy(std::uint64_t deadline) noexcept {
  const int spins = WorkerPool::shared().spinsBeforeSleep();
  for (int spin = 0; spin < spins; ++spin) {
    if (tryTake()) return true;
    spinPause();
  }
  if (deadline <= monotonicNanoseconds()) return tryTake();
  PatientWait wait(HelpGoal{});
  // give() adds the permit before it checks for sleepers; here the order is reversed. So at least one of the two
  // threads sees the other.
  sleepers_.fetch_add(1, std::memory_order_seq_cst);
  bool taken = false;
  for (bool timeLeft = true;;) {
    const std::uint32_t seen = wakes_.load(std::memory_order_seq_cst);
    taken = tryTake();
    if (taken || !timeLeft) break;
    timeLeft = wait.sleep(wakes_, seen, 1, deadline);
  }
  sleepers_.fetch_sub(1, std::memory_order_relaxed);
  return taken;
}

bool SemaphoreCore::give() noexcept {
  permits_.fetch_add(1, std::memory_order_seq_cst);
  if (sleepers_.load(std::memory_order_seq_cst) == 0) return false;
  wakes_.fetch_add(1, std::memory_order_seq_cst);
  futexWake(&wakes_, 1);
  return true;
}

}  // namespace detail

dispatch_semaphore_t dispatch_semaphore_create(std::intptr_t value) {
  if (value < 0 || value > std::numeric_limits<std::int32_t>::max()) return nullptr;
  return dispatch_semaphore_t::adopt(new detail::SemaphoreCore(static_cast<std::uint32_t>(value)));
}

std::intptr_t dispatch_semaphore_wait(const dispatch_semaphore_t& semaphore, dispatch_time_t timeout) {
  if (!semaphore) NSException::raise(NSInvalidArgumentException, "dispatch_semaphore_wait: the semaphore is nil");
  if (semaphore.core()->tryTake()) return 0;
  const std::uint64_t deadline = timeout == DISPATCH_TIME_NOW ? 0 : detail::monotonicDeadline(timeout);
  return semaphore.core()->takeBy(deadline) ? 0 : 1;
}

std::intptr_t dispatch_semaphore_signal(const dispatch_semaphore_t& semaphore) {
  if (!semaphore) NSException::raise(NSInvalidArgumentException, "dispatch_semaphore_signal: the semaphore is nil");
  const dispatch_semaphore_t kept = semaphore;  // the waiter may release its handle once it has the permit
  return kept.core()->give() ? 1 : 0;
}

}  // namespace norvik
