// NorvikCore/platform/object/internal/WordMutex.h - a mutex for steps so short that the system's mutex would be a large
// part of their cost.
//
//   WordMutex mutex;
//   std::size_t count NK_GUARDED_BY(mutex) = 0;
//   { WordLock lock(mutex); ++count; }
//
// Without contention, locking is one exchange and unlocking one plain store, which costs a quarter of an exchange. The
// unlocking thread then loads the number of waiting threads, and the processor may do that before its store is visible.
// A thread that is about to sleep therefore makes the kernel order the memory of all threads (kernel/internal/
// ForkGate.h). After that it sees the store, or the unlocking thread sees it waiting. If the kernel cannot do that,
// unlocking is an exchange too. A fork waits until the mutex is released, so a child finds it free (kernel/Fork.h). Not
// recursive, not fair.
#pragma once

#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/kernel/internal/ForkGate.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"

#include <atomic>
#include <cstdint>

namespace norvik::detail {

class NK_CAPABILITY("mutex") WordMutex {
 public:
  WordMutex() noexcept = default;
  WordMutex(const WordMutex&) = delete;
  WordMutex& operator=(const WordMutex&) = delete;

  void lock() noexcept NK_ACQUIRE() {
    kernel::detail::holdForksHere();
    if (isTaken_.exchange(1, std::memory_order_acquire) != 0) lockSlowly();
  }
  void unlock() noexcept NK_RELEASE() {
    if (kernel::detail::gate.load(std::memory_order_relaxed) == kernel::detail::gateOpen) [[likely]] {
      isTaken_.store(0, std::memory_order_release);
      std::atomic_signal_fence(std::memory_order_seq_cst);
    } else {
      isTaken_.exchange(0, std::memory_order_seq_cst);
    }
    if (waiting_.load(std::memory_order_seq_cst) != 0) futexWake(&isTaken_, 1);
    kernel::detail::releaseForksHere();
  }

 private:
  [[gnu::noinline]] void lockSlowly() noexcept {
    for (int look = 0; look < 100; ++look) {
      spinPause();
      if (isTaken_.load(std::memory_order_relaxed) == 0 && isTaken_.exchange(1, std::memory_order_acquire) == 0) return;
    }
    waiting_.fetch_add(1, std::memory_order_seq_cst);
    kernel::detail::orderOtherThreads();
    while (isTaken_.exchange(1, std::memory_order_seq_cst) != 0) futexWait(isTaken_, 1);
    waiting_.fetch_sub(1, std::memory_order_relaxed);
  }

  std::atomic<std::uint32_t> isTaken_{0};
  std::atomic<std::uint32_t> waiting_{0};  ///< the number of threads that sleep or are about to
};

class NK_SCOPED_CAPABILITY WordLock {
 public:
  explicit WordLock(WordMutex& mutex) noexcept NK_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
  ~WordLock() NK_RELEASE() { mutex_.unlock(); }
  WordLock(const WordLock&) = delete;
  WordLock& operator=(const WordLock&) = delete;

 private:
  WordMutex& mutex_;
};

}  // namespace norvik::detail
