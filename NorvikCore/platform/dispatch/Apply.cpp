#include "NorvikCore/platform/dispatch/Apply.h"

#include "NorvikCore/platform/dispatch/internal/QueueCore.h"
#include "NorvikCore/platform/dispatch/internal/WorkerPool.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <memory>
#include <utility>

namespace norvik::detail {
namespace {

/// One call of dispatch_apply(). A helper may start after that has returned: it keeps this object alive, and finds no
/// round left.
///
/// A thread that calls the block was counted in helpers_ before it took a share, and shares are taken only by
/// read-modify-write operations. So the caller, which waits once it has seen that no share is left, sees in helpers_
/// every helper that took one.
class Loop {
 public:
  Loop(std::size_t count, std::size_t threads, Rounds rounds, void* block)
      : count_(count), threads_(threads), rounds_(rounds), block_(block) {}

  void help() noexcept {
    helpers_.fetch_add(1, std::memory_order_relaxed);
    run(Role::helper);
    if (helpers_.fetch_sub(1, std::memory_order_acq_rel) == 1) futexWake(&helpers_, 1);
  }

  void runAndWait() {
    run(Role::caller);
    const int spins = WorkerPool::shared().spinsBeforeSleep();
    for (int spin = 0; spin < spins && helpersAtWork() > 0; ++spin) spinPause();
    if (helpersAtWork() > 0) {
      const BlockingScope blocking;
      while (const std::uint32_t helpers = helpersAtWork()) futexWait(helpers_, helpers);
    }
    // Only the caller holds the exception from here on: it is destroyed where it is caught, not by a late helper.
    if (error_) std::rethrow_exception(std::exchange(error_, nullptr));
  }

 private:
  enum class Role : std::uint8_t { caller, helper };

  /// True in a child that a round makes by fork(). The helpers and the shares they took belong to the parent.
  [[nodiscard]] bool hasForked() const noexcept { return kernel::forkGeneration() != generation_; }
  [[nodiscard]] std::uint32_t helpersAtWork() const noexcept {
    return hasForked() ? 0 : helpers_.load(std::memory_order_acquire);
  }

  void run(Role role) noexcept {
    std::size_t first = 0;
    try {
      while (const std::size_t share = takeShare(first)) {
        rounds_(block_, first, first + share, failed_);
        if (failed_.load(std::memory_order_acquire) || (role == Role::helper && hasForked())) return;
      }
    } catch (...) {
      fail();
    }
  }

  /// How many rounds the thread must run from `first` on; 0 if none is left.
  std::size_t takeShare(std::size_t& first) noexcept {
    constexpr std::size_t sharesPerThread = 8;
    first = next_.load(std::memory_order_acquire);
    for (;;) {
      if (first >= count_) return 0;
      const std::size_t share = std::max<std::size_t>((count_ - first) / (threads_ * sharesPerThread), 1);
      if (next_.compare_exchange_weak(first, first + share, std::memory_order_acq_rel, std::memory_order_acquire))
        return share;
    }
  }

  void fail() noexcept {
    next_.exchange(count_, std::memory_order_acq_rel);
    if (!claimed_.exchange(true, std::memory_order_relaxed)) error_ = std::current_exception();
    failed_.store(true, std::memory_order_release);
  }

  const std::size_t count_;
  const std::size_t threads_;
  const Rounds rounds_;
  void* const block_;
  const std::uint32_t generation_ = kernel::forkGeneration();
  std::atomic<bool> claimed_{false};  // one thread writes error_, and the caller reads it when no helper is in run()
  std::atomic<bool> failed_{false};
  std::exception_ptr error_;
  alignas(64) std::atomic<std::size_t> next_{0};
  alignas(64) std::atomic<std::uint32_t> helpers_{0};  // number of helpers in run()
};

/// False if the queue or one of its targets is serial.
bool runsSideBySide(const QueueCore* queue) {
  for (; queue != nullptr; queue = queue->target()) {
    if (queue->isSerial()) return false;
  }
  return true;
}

}  // namespace

void applyRounds(std::size_t iterations, const dispatch_queue_t& queue, Rounds rounds, void* block) {
  requireQueue(queue, "dispatch_apply");
  if (iterations == 0) return;
  dispatch_sync(queue, [&] {
    const std::size_t threads = std::min<std::size_t>(WorkerPool::shared().workersAtOnce(), iterations);
    if (threads < 2 || !runsSideBySide(queue.core())) return rounds(block, 0, iterations, std::atomic<bool>(false));
    const auto loop = std::make_shared<Loop>(iterations, threads, rounds, block);
    for (std::size_t helper = 1; helper < threads; ++helper) dispatch_async(queue, [loop] { loop->help(); });
    loop->runAndWait();
  });
}

}  // namespace norvik::detail
