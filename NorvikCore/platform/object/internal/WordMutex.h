// NorvikCore/platform/object/internal/WordMutex.h - a mutex of one word, for steps so short that the system's mutex
// would be a large part of their cost.
//
//   WordMutex mutex;
//   std::size_t count NK_GUARDED_BY(mutex) = 0;
//   { WordLock lock(mutex); ++count; }
//
// Without contention, locking and unlocking are one exchange each. A thread that finds it locked sleeps. A fork waits
// until it is released, so a child finds it free (kernel/Fork.h). Not recursive, not fair.
#pragma once

#include "NorvikCore/platform/kernel/BusyWord.h"
#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/kernel/internal/ForkGate.h"

namespace norvik::detail {

class NK_CAPABILITY("mutex") WordMutex {
 public:
  WordMutex() noexcept = default;
  WordMutex(const WordMutex&) = delete;
  WordMutex& operator=(const WordMutex&) = delete;

  void lock() noexcept NK_ACQUIRE() {
    kernel::detail::holdForksHere();
    if (word_.exchangeAcquire(1) != 0) waitForBusy(word_);
  }
  void unlock() noexcept NK_RELEASE() {
    if (word_.exchangeRelease(0) != 1) wakeForBusy(word_);
    kernel::detail::releaseForksHere();
  }

 private:
  BusyWord word_;
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
