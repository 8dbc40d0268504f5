// NorvikCore/platform/kernel/Mutex.h - a mutex that Clang's thread-safety analysis understands.
//
// State that a mutex guards is annotated, and a forgotten lock is a compile error in the clang preset:
//
//   Mutex mutex;
//   std::vector<int> items NK_GUARDED_BY(mutex);
//   { MutexLock lock(mutex); items.push_back(1); }
//
// Four bytes; not recursive, not fair. A fork waits until it is released, and a child finds it free (Fork.h).
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/BusyWord.h"

#if defined(__clang__)
#define NK_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define NK_THREAD_ANNOTATION(x)
#endif
#define NK_CAPABILITY(name) NK_THREAD_ANNOTATION(capability(name))
#define NK_SCOPED_CAPABILITY NK_THREAD_ANNOTATION(scoped_lockable)
#define NK_GUARDED_BY(mutex) NK_THREAD_ANNOTATION(guarded_by(mutex))
#define NK_REQUIRES(...) NK_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define NK_EXCLUDES(...) NK_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
#define NK_ACQUIRE(...) NK_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define NK_TRY_ACQUIRE(...) NK_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define NK_RELEASE(...) NK_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define NK_NO_THREAD_SAFETY_ANALYSIS NK_THREAD_ANNOTATION(no_thread_safety_analysis)

namespace norvik {

class NK_EXPORT NK_CAPABILITY("mutex") Mutex {
 public:
  Mutex() noexcept = default;
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  void lock() noexcept NK_ACQUIRE();
  void unlock() noexcept NK_RELEASE();
  [[nodiscard]] bool try_lock() noexcept NK_TRY_ACQUIRE(true);

 private:
  detail::BusyWord word_;
};

/// Locks a mutex from construction to destruction.
class NK_SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) NK_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
  ~MutexLock() NK_RELEASE() { mutex_.unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  Mutex& mutex_;
};

}  // namespace norvik
