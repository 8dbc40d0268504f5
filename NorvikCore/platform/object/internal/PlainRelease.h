// NorvikCore/platform/object/internal/PlainRelease.h - releases a lock by a plain store.
//
//   const auto tryTake = [&] { return word.load() == 0 && word.exchange(1, std::memory_order_acquire) == 0; };
//   if (!tryTake()) release.wait(word, 1, tryTake);
//   ...
//   release.store(word, 0u, word);
//
// A plain store costs a quarter of an exchange. The releasing thread then loads the number of waiting threads, and the
// processor may do that before its store is visible. A thread that is about to sleep therefore makes the kernel order
// the memory of all threads (kernel/internal/ForkGate.h). After that it sees the store, or the releasing thread sees it
// waiting. If the kernel cannot do that, the lock is released by an exchange.
//
// A lock that is released like this must not be destroyed by the thread that takes it next. Side records never are.
#pragma once

#include "NorvikCore/platform/kernel/internal/ForkGate.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"

#include <sched.h>

#include <atomic>
#include <cstdint>

namespace norvik::detail {

class PlainRelease {
 public:
  /// Releases the lock by storing the value, and wakes a thread that sleeps on `half`, which is the word or part of it.
  template <class Word>
  void store(std::atomic<Word>& word, Word value, const std::atomic<std::uint32_t>& half) noexcept {
    if (kernel::detail::gate.load(std::memory_order_relaxed) == kernel::detail::gateOpen) [[likely]] {
      word.store(value, std::memory_order_release);
      std::atomic_signal_fence(std::memory_order_seq_cst);
    } else {
      word.exchange(value, std::memory_order_seq_cst);
    }
    if (waiting_.load(std::memory_order_seq_cst) != 0) futexWake(&half, 1);
  }

  /// Calls tryTake() until it is true; it loads the word in the order of std::memory_order_seq_cst. Sleeps meanwhile,
  /// as long as `half` is `taken`.
  template <class TryTake>
  void wait(const std::atomic<std::uint32_t>& half, std::uint32_t taken, TryTake&& tryTake) noexcept {
    for (int look = 0; look < 30; ++look) {
      if (look < 20) {
        spinPause();
      } else {
        sched_yield();  // the kernel may have interrupted the owner
      }
      if (tryTake()) return;
    }
    waiting_.fetch_add(1, std::memory_order_seq_cst);
    kernel::detail::orderOtherThreads();
    while (!tryTake()) futexWait(half, taken);
    waiting_.fetch_sub(1, std::memory_order_relaxed);
  }

 private:
  std::atomic<std::uint32_t> waiting_{0};  ///< the number of threads that sleep or are about to
};

}  // namespace norvik::detail
