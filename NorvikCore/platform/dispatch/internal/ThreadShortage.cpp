#include "NorvikCore/platform/dispatch/internal/ThreadShortage.h"

#include "NorvikCore/platform/dispatch/internal/TimerClock.h"
#include "NorvikCore/platform/dispatch/internal/WorkerPool.h"
#include "NorvikCore/platform/kernel/SystemLog.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>

namespace norvik::detail {
namespace {

constexpr std::uint64_t longestPause = 16 * ThreadShortage::interval;
constexpr std::uint64_t reportAgain = 60'000'000'000;

// The work that a thread runs for a wait may wait itself, and so on. This limits the depth, to protect the stack.
constexpr unsigned mostHelp = 512;
constinit thread_local unsigned helpDepth = 0;

}  // namespace

constinit std::atomic<std::uint32_t> ThreadShortage::state{0};
constinit std::atomic<std::uint32_t> ThreadShortage::nudges{0};
constinit std::atomic<bool> ThreadShortage::reported{false};
constinit std::atomic<std::uint64_t> ThreadShortage::reportedAt{0};

ThreadShortage& ThreadShortage::shared() {
  return sharedForkAware<ThreadShortage>([] { return new ThreadShortage; });
}

bool ThreadShortage::begin(Of what) noexcept {
  const auto bit = static_cast<std::uint32_t>(what);
  return (state.fetch_or(bit, std::memory_order_seq_cst) & bit) == 0;
}

void ThreadShortage::end(Of what) noexcept {
  state.fetch_and(~static_cast<std::uint32_t>(what), std::memory_order_seq_cst);
}

void ThreadShortage::nudgeAll() noexcept {
  // A thread that registers after this has taken the mutex sees that the count has changed.
  nudges.fetch_add(1, std::memory_order_seq_cst);
  ThreadShortage& self = shared();
  const QueueLock lock(self.mutex_);
  for (SleepingThread* thread = self.sleeping_; thread != nullptr; thread = thread->next_) thread->nudge();
}

void ThreadShortage::report(int failure) noexcept {
  if (reported.exchange(true, std::memory_order_relaxed)) return;
  const std::uint64_t now = monotonicNanoseconds();
  const std::uint64_t before = reportedAt.load(std::memory_order_relaxed);
  if (before != 0 && now - before < reportAgain) return;
  reportedAt.store(now, std::memory_order_relaxed);
  char reason[96];
  char line[256];
  std::snprintf(line, sizeof line,
                "dispatch: no worker thread is free and none can be started (%s); queued blocks and timers run on "
                "threads that wait for them, or once one can be started",
                failure == 0 ? "too many wait" : strerror_r(failure, reason, sizeof reason));
  kernel::writeSystemLog(line);
}

std::uint64_t ThreadShortage::tend() noexcept {
  if (exists(Of::workers)) WorkerPool::shared().attemptStart();
  return exists(Of::timers) ? SystemTimerClock::shared().tend() : noDeadline;
}

void ThreadShortage::resetAfterFork() noexcept {
  mutex_.resetAfterFork();
  const QueueLock lock(mutex_);
  sleeping_ = nullptr;
  state.store(0, std::memory_order_relaxed);
}

SleepingThread::SleepingThread(std::atomic<std::uint32_t>* word, std::uint32_t nudge, int descriptor) noexcept
    : word_(word), nudge_(nudge), descriptor_(descriptor) {
  ThreadShortage& shortage = ThreadShortage::shared();
  const QueueLock lock(shortage.mutex_);
  next_ = shortage.sleeping_;
  if (next_ != nullptr) next_->previous_ = this;
  shortage.sleeping_ = this;
}

SleepingThread::~SleepingThread() {
  ThreadShortage& shortage = ThreadShortage::shared();
  const QueueLock lock(shortage.mutex_);
  (previous_ != nullptr ? previous_->next_ : shortage.sleeping_) = next_;
  if (next_ != nullptr) next_->previous_ = previous_;
}

void SleepingThread::nudge() noexcept {
  if (word_ != nullptr) {
    word_->fetch_add(nudge_, std::memory_order_seq_cst);
    futexWake(word_, INT_MAX);
    return;
  }
  const std::uint64_t one = 1;
  while (write(descriptor_, &one, sizeof one) < 0 && errno == EINTR) {
  }
}

bool PatientWait::help() const noexcept {
  if (helpDepth >= mostHelp) return false;
  ++helpDepth;
  const bool helped = WorkerPool::shared().help(goal_);
  --helpDepth;
  return helped;
}

bool PatientWait::sleep(std::atomic<std::uint32_t>& word, std::uint32_t expected, std::uint32_t nudge,
                        std::uint64_t deadline) noexcept {
  const std::uint32_t seen = ThreadShortage::nudges.load(std::memory_order_seq_cst);
  std::uint64_t until = deadline;
  const bool isShort = ThreadShortage::exists();
  if (isShort && help()) {
    pause_ = ThreadShortage::interval;
    return true;
  }
  const BlockingScope blocking;
  if (isShort) [[unlikely]] {
    until = std::min(deadline, ThreadShortage::tend());
    if (ThreadShortage::exists()) {
      until = std::min(until, monotonicNanoseconds() + pause_);
      pause_ = std::min(2 * pause_, longestPause);
    }
  }
  const SleepingThread registered(word, nudge);
  if (ThreadShortage::nudges.load(std::memory_order_seq_cst) != seen) return true;
  if (futexWait(word, expected, until)) return true;
  return until < deadline || deadline == noDeadline;
}

}  // namespace norvik::detail
