#include "NorvikCore/platform/kernel/Mutex.h"

#include "NorvikCore/platform/kernel/internal/ForkGate.h"

#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

namespace norvik {
namespace {

// Tells the thread sanitizer that this is a mutex, so that it detects lock-order inversions.
void willTake([[maybe_unused]] void* mutex, [[maybe_unused]] bool isTrial) noexcept {
#if defined(__SANITIZE_THREAD__)
  __tsan_mutex_pre_lock(mutex, isTrial ? __tsan_mutex_try_lock : 0);
#endif
}
void hasTaken([[maybe_unused]] void* mutex, [[maybe_unused]] bool isTrial, [[maybe_unused]] bool isTaken) noexcept {
#if defined(__SANITIZE_THREAD__)
  __tsan_mutex_post_lock(mutex, !isTrial ? 0 : isTaken ? __tsan_mutex_try_lock : __tsan_mutex_try_lock_failed, 0);
#endif
}

}  // namespace

void Mutex::lock() noexcept NK_NO_THREAD_SAFETY_ANALYSIS {
  kernel::detail::holdForksHere();
  willTake(this, false);
  if (word_.exchangeAcquire(1) != 0) detail::waitForBusy(word_);
  hasTaken(this, false, true);
}

void Mutex::unlock() noexcept NK_NO_THREAD_SAFETY_ANALYSIS {
#if defined(__SANITIZE_THREAD__)
  __tsan_mutex_pre_unlock(this, 0);
#endif
  if (word_.exchangeRelease(0) != 1) detail::wakeForBusy(word_);
#if defined(__SANITIZE_THREAD__)
  __tsan_mutex_post_unlock(this, 0);
#endif
  kernel::detail::releaseForksHere();
}

bool Mutex::try_lock() noexcept NK_NO_THREAD_SAFETY_ANALYSIS {
  kernel::detail::holdForksHere();
  willTake(this, true);
  std::uint32_t free = 0;
  const bool isTaken = word_.compareExchange(free, 1);
  hasTaken(this, true, isTaken);
  if (!isTaken) kernel::detail::releaseForksHere();
  return isTaken;
}

}  // namespace norvik
