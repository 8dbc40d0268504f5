// NorvikCore/platform/object/internal/ThreadClaim.h - a thread's claim to an object: instead of retaining the object
// and its list of observers, a change claims both by one atomic step.
//
//   switch (claim.take()) {
//     case ThreadClaim::Refused: ...      // another thread claims the object: retain and release it as usual
//     case ThreadClaim::Taken: ...        // until end()
//     case ThreadClaim::Held: ...         // the calling thread claims it already, until the outer call ends it
//   }
//   if (claim.end()) ...                  // release the counts that were passed to the claim
//
// A claim has no counts. So before a thread ends what a claim protects, it looks for a claim, and passes a count to it
// (SideRecord::releaseObject, SideRecord::passList). The claiming thread releases that count after end(); until then
// nobody else can use a claim to the object. Usually nobody passes a count, and a change touches no count at all.
//
// take() is an atomic step that other threads see before the claiming thread reads on. A thread that takes away
// something first makes it unreachable, then looks for a claim. So it finds the claim, or the claiming thread finds
// nothing to use. Ending a claim is a plain store, after which the thread loads whether counts were passed, and the
// processor may do that before its store is visible. A thread that passes a count therefore makes the kernel order the
// memory of all threads, as a thread that waits for a PlainRelease does, and looks again.
//
// Claims nest: the calls of one thread end in the opposite order to their beginning. What ends in another order, such
// as a change between willChangeValueForKey and didChangeValueForKey, must not claim.
#pragma once

#include "NorvikCore/platform/kernel/internal/ForkGate.h"

#include <atomic>

namespace norvik::detail {

class ThreadClaim {
 public:
  using Thread = const void*;
  enum Taking { Refused, Taken, Held };

  [[nodiscard]] static Thread thisThread() noexcept { return &ownByte; }

  [[nodiscard]] Taking take() noexcept {
    Thread seen = holder_.load(std::memory_order_relaxed);
    if (seen == thisThread()) return Held;
    const bool isTaken = !seen && holder_.compare_exchange_strong(seen, thisThread(), std::memory_order_seq_cst,
                                                                  std::memory_order_relaxed);
    return isTaken ? Taken : Refused;
  }
  /// True if counts were passed to the claim, which the caller must release.
  [[nodiscard]] bool end() noexcept {
    if (kernel::detail::gate.load(std::memory_order_relaxed) == kernel::detail::gateOpen) [[likely]] {
      holder_.store(nullptr, std::memory_order_release);
      std::atomic_signal_fence(std::memory_order_seq_cst);
    } else {
      holder_.exchange(nullptr, std::memory_order_seq_cst);
    }
    return isPassedHere();
  }
  /// True if counts were passed to the calling thread. The list of observers may then be another than the claimed one.
  [[nodiscard]] bool isPassedHere() const noexcept { return passedTo() == thisThread(); }

  /// The thread that claims the object, or null.
  [[nodiscard]] Thread holder() const noexcept { return holder_.load(std::memory_order_seq_cst); }
  /// The thread that releases the passed counts, or null.
  [[nodiscard]] Thread passedTo() const noexcept { return passedTo_.load(std::memory_order_seq_cst); }
  /// Tells the holder that counts are passed to it. False if it ended its claim meanwhile: it may not have noticed.
  [[nodiscard]] bool setPassedTo(Thread holder) noexcept {
    passedTo_.store(holder, std::memory_order_seq_cst);
    if (holder != thisThread()) kernel::detail::orderOtherThreads();
    return holder_.load(std::memory_order_seq_cst) == holder;
  }
  void setNothingPassed() noexcept { passedTo_.store(nullptr, std::memory_order_relaxed); }

 private:
  /// Its address is the identity of the thread.
  static constinit thread_local char ownByte __attribute__((tls_model("initial-exec")));

  std::atomic<Thread> holder_{nullptr};
  std::atomic<Thread> passedTo_{nullptr};  ///< written under the mutex of the record
};

}  // namespace norvik::detail
