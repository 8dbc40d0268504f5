// NorvikCore/platform/object/internal/WordMutex.h - a mutex for steps so short that the system's mutex would be a large
// part of their cost.
//
//   WordMutex mutex;
//   std::size_t count NK_GUARDED_BY(mutex) = 0;
//   { WordLock lock(mutex); ++count; }
//
// Without contention, locking is one exchange and unlocking a plain store (PlainRelease.h). A thread that finds it
// locked sleeps. A fork waits until it is released, so a child finds it free (kernel/Fork.h). Not recursive, not fair.
#pragma once

#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/kernel/internal/ForkGate.h"
#include "NorvikCore/platform/object/internal/PlainRelease.h"

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
    release_.store(isTaken_, std::uint32_t{0}, isTaken_);
    kernel::detail::releaseForksHere();
  }

 private:
  [[gnu::noinline]] void lockSlowly() noexcept {
    release_.wait(isTaken_, 1, [&] {
      return isTaken_.load(std::memory_order_seq_cst) == 0 && isTaken_.exchange(1, std::memory_order_acquire) == 0;
    });
  }

  std::atomic<std::uint32_t> isTaken_{0};
  PlainRelease release_;
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
