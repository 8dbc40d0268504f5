// NorvikCore/platform/dispatch/internal/QueueMutex.h - a mutex for sections of a few instructions.
//
// It is one word. A thread that finds it locked spins for about a microsecond before it sleeps, because the holder is
// rarely longer. It can be reset in a child made by fork(), where its holder may no longer exist.
#pragma once

#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"

#include <atomic>
#include <cstdint>

namespace norvik::detail {

class NK_CAPABILITY("mutex") QueueMutex {
 public:
  void lock() noexcept NK_ACQUIRE() {
    std::uint32_t expected = freeWord;
    if (!state_.compare_exchange_strong(expected, takenWord, std::memory_order_acquire, std::memory_order_relaxed))
      lockSlowly();
  }
  void unlock() noexcept NK_RELEASE() {
    if (state_.exchange(freeWord, std::memory_order_release) == contendedWord) futexWake(&state_, 1);
  }
  /// In a child made by fork(), where no other thread exists.
  void resetAfterFork() noexcept { state_.store(freeWord, std::memory_order_relaxed); }

 private:
  static constexpr std::uint32_t freeWord = 0, takenWord = 1, contendedWord = 2;
  void lockSlowly() noexcept;
  std::atomic<std::uint32_t> state_{freeWord};
};

/// Holds the mutex for a scope; may release and lock it again within the scope.
class NK_SCOPED_CAPABILITY QueueLock {
 public:
  explicit QueueLock(QueueMutex& mutex) noexcept NK_ACQUIRE(mutex) : mutex_(mutex), held_(true) { mutex_.lock(); }
  ~QueueLock() NK_RELEASE() {
    if (held_) mutex_.unlock();
  }
  QueueLock(const QueueLock&) = delete;
  QueueLock& operator=(const QueueLock&) = delete;
  void unlock() noexcept NK_RELEASE() {
    held_ = false;
    mutex_.unlock();
  }
  void lock() noexcept NK_ACQUIRE() {
    mutex_.lock();
    held_ = true;
  }

 private:
  QueueMutex& mutex_;
  bool held_;
};

}  // namespace norvik::detail
