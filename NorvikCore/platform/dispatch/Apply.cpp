#include "NorvikCore/platform/dispatch/Apply.h"

#include "NorvikCore/platform/dispatch/internal/QueueCore.h"
#include "NorvikCore/platform/dispatch/internal/WorkerPool.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <exception>
#include <memory>
#include <new>
#include <span>
#include <utility>
#include <vector>

namespace norvik::detail {
namespace {

/// Two successive values are on different cache lines. alignas(64) would ensure that as well, but aligned memory takes
/// several times as long to allocate.
template <class T>
struct Apart {
  T value{};
  std::byte gap[64 - sizeof(T)];
};

/// One call of dispatch_apply(). A helper may start after that has returned: it keeps this object alive, and finds no
/// round left.
///
/// A thread that calls the block was counted in helpers_ before it took a share, and shares are taken only by
/// read-modify-write operations. So the caller, which waits once it has seen that no share is left, sees in helpers_
/// every helper that took one.
///
/// A thread that fails sets failed_ and then the end of every share to 0. Another thread sets the end of its share and
/// then reads failed_. All four are sequentially consistent, so either that thread sees failed_, or the 0 comes last.
class Loop {
 public:
  Loop(std::size_t count, std::size_t threads, Rounds rounds, void* block)
      : count_(count),
        leastShare_(std::max<std::size_t>(count / (threads * mostSharesPerThread), 1)),
        rounds_(rounds),
        block_(block),
        more_(threads > few_.size() ? threads : 0) {
    ends_ = more_.empty() ? std::span(few_).first(threads) : std::span(more_);
  }

  /// Asks for one helper for each thread but the caller's. Helpers are optional: without memory there are fewer.
  static void callHelpers(const std::shared_ptr<Loop>& loop, const dispatch_queue_t& queue) noexcept {
    try {
      for (std::size_t thread = 1; thread < loop->ends_.size(); ++thread)
        dispatch_async(queue, [loop, thread] { loop->help(thread); });
    } catch (const std::bad_alloc&) {
    }
  }

  void help(std::size_t thread) noexcept {
    helpers_.value.fetch_add(1, std::memory_order_relaxed);
    run(thread);
    if (helpers_.value.fetch_sub(1, std::memory_order_acq_rel) == 1) futexWake(&helpers_.value, 1);
  }

  void runAndWait() {
    run(callersThread);
    const int spins = WorkerPool::shared().spinsBeforeSleep();
    for (int spin = 0; spin < spins && helpersAtWork() > 0; ++spin) spinPause();
    if (helpersAtWork() > 0) {
      const BlockingScope blocking;
      while (const std::uint32_t helpers = helpersAtWork()) futexWait(helpers_.value, helpers);
    }
    // Only the caller holds the exception from here on: it is destroyed where it is caught, not by a late helper.
    if (error_) std::rethrow_exception(std::exchange(error_, nullptr));
  }

 private:
  static constexpr std::size_t callersThread = 0;
  // To take a share costs a tenth of a microsecond, as much as a hundred of the quickest rounds. With twice as many
  // shares, or with shares down to one round, a loop of a million such rounds takes 4 % longer.
  static constexpr std::size_t sharesPerThread = 4;         // if all were as large as the first
  static constexpr std::size_t mostSharesPerThread = 2048;  // if all were as small as the last
  using End = Apart<std::atomic<std::size_t>>;

  /// True in a child that a round makes by fork(). The helpers and the shares they took belong to the parent.
  [[nodiscard]] bool hasForked() const noexcept { return kernel::forkGeneration() != generation_; }
  [[nodiscard]] std::uint32_t helpersAtWork() const noexcept {
    return hasForked() ? 0 : helpers_.value.load(std::memory_order_acquire);
  }

  void run(std::size_t thread) noexcept {
    std::atomic<std::size_t>& end = ends_[thread].value;
    std::size_t first = 0;
    try {
      while (const std::size_t share = takeShare(first)) {
        end.store(first + share, std::memory_order_seq_cst);
        if (failed_.load(std::memory_order_seq_cst)) return;
        rounds_(block_, first, end);
        if (thread != callersThread && hasForked()) return;
      }
    } catch (...) {
      fail();
    }
  }

  /// How many rounds the thread must run from `first` on; 0 if none is left.
  std::size_t takeShare(std::size_t& first) noexcept {
    first = next_.value.load(std::memory_order_acquire);
    for (;;) {
      if (first >= count_) return 0;
      const std::size_t left = count_ - first;
      const std::size_t share = std::min(std::max(left / (ends_.size() * sharesPerThread), leastShare_), left);
      if (next_.value.compare_exchange_weak(first, first + share, std::memory_order_acq_rel, std::memory_order_acquire))
        return share;
    }
  }

  void fail() noexcept {
    next_.value.exchange(count_, std::memory_order_acq_rel);
    if (!claimed_.exchange(true, std::memory_order_relaxed)) error_ = std::current_exception();
    failed_.store(true, std::memory_order_seq_cst);
    for (End& end : ends_) end.value.store(0, std::memory_order_seq_cst);
  }

  Apart<std::atomic<std::size_t>> next_;
  Apart<std::atomic<std::uint32_t>> helpers_;  // number of helpers in run()
  const std::size_t count_;
  const std::size_t leastShare_;
  const Rounds rounds_;
  void* const block_;
  const std::uint32_t generation_ = kernel::forkGeneration();
  std::atomic<bool> claimed_{false};  // one thread writes error_, and the caller reads it when no helper is in run()
  std::atomic<bool> failed_{false};
  std::exception_ptr error_;
  std::span<End> ends_;  // of each thread's share
  std::array<End, 4> few_{};
  std::vector<End> more_;  // on machines with more processors; few_ saves an allocation
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
    if (threads < 2 || !runsSideBySide(queue.core())) return rounds(block, 0, std::atomic(iterations));
    const auto loop = std::make_shared<Loop>(iterations, threads, rounds, block);
    Loop::callHelpers(loop, queue);
    loop->runAndWait();
  });
}

}  // namespace norvik::detail
