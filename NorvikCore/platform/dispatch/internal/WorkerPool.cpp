#include "NorvikCore/platform/dispatch/internal/WorkerPool.h"

#include "NorvikCore/platform/dispatch/internal/GlobalQueue.h"
#include "NorvikCore/platform/dispatch/internal/ItemPages.h"
#include "NorvikCore/platform/dispatch/internal/SerialQueue.h"
#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"
#include "NorvikCore/platform/dispatch/internal/ThreadShortage.h"
#include "NorvikCore/platform/dispatch/internal/ThreadStart.h"
#include "NorvikCore/platform/dispatch/internal/TimerClock.h"
#include "NorvikCore/platform/kernel/FatalSignals.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"

#include <pthread.h>
#include <sched.h>

#include <algorithm>
#include <utility>

namespace norvik::detail {
namespace {

constexpr std::uint64_t lookInterval = 1'000'000;   // a lookout checks once a millisecond
constexpr std::uint64_t quietTime = 60'000'000;     // and sleeps when no work has come for this long
constexpr std::uint64_t spinTime = 15'000;          // how long it spins after prompt work
constexpr unsigned looksBeforeHelp = 5;             // checks of a list from which nothing is taken
constexpr std::uint64_t idleTime = 10'000'000'000;  // a sleeping worker ends after this
constexpr unsigned mostThreads = 4096;

unsigned processorsOfThisProcess() {
  cpu_set_t set;
  CPU_ZERO(&set);
  if (sched_getaffinity(0, sizeof set, &set) != 0) return 1;
  return std::max(1U, static_cast<unsigned>(CPU_COUNT(&set)));
}

constinit thread_local bool thisThreadIsWorker __attribute__((tls_model("initial-exec"))) = false;

}  // namespace

struct WorkerPool::Worker {
  std::atomic<std::uint32_t> word{0};  // 1: woken. Changed under the mutex
  Worker* below = nullptr;             // the worker that fell asleep before this one
};

WorkerPool& WorkerPool::shared() {
  return sharedForkAware<WorkerPool>([] { return new WorkerPool; });
}

WorkerPool::WorkerPool()
    : processors_(processorsOfThisProcess()), target_(std::max(2U, processors_)), idleTime_(idleTime) {}

// --- Callers that submit work ---

void WorkerPool::submit(Item* item, const std::atomic<bool>& mayWait) {
  if (mayWait.load(std::memory_order_relaxed) && submitToNapper(item)) {
    if (!mayWait.load(std::memory_order_seq_cst)) expedite();
    return;
  }
  Wake wake;
  {
    const QueueLock lock(mutex_);
    append(item);
    const bool relaxed = mayWait.load(std::memory_order_relaxed);
    spin_ = !relaxed;
    if (lookout_ != nullptr && relaxed) return;
    wake = cover();
  }
  carryOut(wake, Sleepers::nudged);
}

const std::atomic<bool>& WorkerPool::prompt() noexcept {
  static constinit std::atomic<bool> mayNotWait{false};
  return mayNotWait;
}

void WorkerPool::expedite() noexcept {
  Wake wake;
  {
    const QueueLock lock(mutex_);
    collectFromNapper(openWord);
    if (!items_.empty()) wake = cover();
  }
  carryOut(wake, Sleepers::nudged);
}

void WorkerPool::prepare() noexcept {
  Wake wake;
  {
    const QueueLock lock(mutex_);
    if (threads_ == 0) wake = summon();
  }
  carryOut(wake, Sleepers::left);
}

bool WorkerPool::help(const HelpGoal& goal) noexcept {
  if (!hasReadyItems() || !goal.isKnown()) return false;
  Item* item = nullptr;
  {
    const QueueLock lock(mutex_);
    item = items_.takeFirstThat([&goal](Item* candidate) { return goal.isReachedBy(candidate); });
    if (item == nullptr) return false;
    readyCount_.store(readyCount_.load(std::memory_order_relaxed) - 1, std::memory_order_relaxed);
    ++taken_;
  }
  const FrameScope frame(GlobalQueue::shared());
  runTowards(item, GlobalQueue::shared(), goal);
  return true;
}

void WorkerPool::attemptStart() noexcept {
  Wake wake;
  {
    const QueueLock lock(mutex_);
    collectFromNapper(openWord);
    if (items_.empty()) {
      ThreadShortage::end(ThreadShortage::Of::workers);
      return;
    }
    wake = cover();
  }
  carryOut(wake, Sleepers::left);
}

/// False if no lookout naps.
bool WorkerPool::submitToNapper(Item* item) noexcept {
  std::uintptr_t newest = forNapper_.load(std::memory_order_relaxed);
  do {
    if (newest == closedWord) return false;
    item->queueLink = reinterpret_cast<Item*>(newest);
  } while (!forNapper_.compare_exchange_weak(newest, reinterpret_cast<std::uintptr_t>(item), std::memory_order_seq_cst,
                                             std::memory_order_relaxed));
  return true;
}

/// Takes over the napper's items. Afterwards its list is `next`, or stays closed if it was.
void WorkerPool::collectFromNapper(std::uintptr_t next) noexcept {
  if (forNapper_.load(std::memory_order_seq_cst) == closedWord) return;
  Item* newest = reinterpret_cast<Item*>(forNapper_.exchange(next, std::memory_order_seq_cst));
  Item* oldest = nullptr;
  while (newest != nullptr) {
    Item* older = std::exchange(newest->queueLink, oldest);
    oldest = std::exchange(newest, older);
  }
  while (oldest != nullptr) append(std::exchange(oldest, oldest->queueLink));
}

void WorkerPool::append(Item* item) noexcept {
  items_.append(item);
  readyCount_.store(readyCount_.load(std::memory_order_relaxed) + 1, std::memory_order_release);
}

/// Makes a worker come soon for the listed items.
WorkerPool::Wake WorkerPool::cover() {
  if (coming_ > 0) return {};
  return lookout_ != nullptr ? alertLookout() : summon();
}

WorkerPool::Wake WorkerPool::alertLookout() {
  // While all processors are busy, the lookout could only check, which it does anyway.
  if (lookoutComes_ || running_ >= target_) return {};
  lookoutComes_ = true;
  ++wakes_;
  lookout_->word.store(1, std::memory_order_relaxed);
  return {&lookout_->word};
}

WorkerPool::Wake WorkerPool::summon() {
  ++wakes_;
  if (Worker* sleeper = sleepers_; sleeper != nullptr) {
    sleepers_ = sleeper->below;
    ++coming_;
    sleeper->word.store(1, std::memory_order_relaxed);
    return {&sleeper->word};
  }
  if (threads_ >= mostThreads) {
    const bool begins = ThreadShortage::begin(ThreadShortage::Of::workers);
    return {.isShort = true, .begins = begins, .nobodyComes = running_ == 0};
  }
  if (ThreadShortage::exists(ThreadShortage::Of::workers) && monotonicNanoseconds() < nextStart_) [[unlikely]]
    return {.isShort = true};
  ++threads_;
  ++coming_;
  return {.start = true};
}

void WorkerPool::carryOut(const Wake& wake, Sleepers sleepers) noexcept {
  if (wake.word != nullptr) futexWake(wake.word, 1);
  if (!wake.start && !wake.isShort) [[likely]]
    return;
  Wake rest = wake;
  int failure = 0;
  if (wake.start) failure = startWorker(rest);
  if (!rest.isShort) return;
  if (rest.nobodyComes) ThreadShortage::report(failure);
  if (rest.begins || sleepers == Sleepers::nudged) ThreadShortage::nudgeAll();
}

/// If the start fails, the items stay in the list for the existing workers and for threads that wait for them.
int WorkerPool::startWorker(Wake& rest) noexcept {
  const int failure = startThread(&threadMain, this);
  if (failure == 0 && !ThreadShortage::exists(ThreadShortage::Of::workers)) [[likely]]
    return 0;
  const QueueLock lock(mutex_);
  if (failure == 0) {
    ThreadShortage::threadStarted();
    ThreadShortage::end(ThreadShortage::Of::workers);
    return 0;
  }
  --threads_;
  --coming_;
  nextStart_ = monotonicNanoseconds() + ThreadShortage::interval;
  rest.begins = ThreadShortage::begin(ThreadShortage::Of::workers);
  rest.isShort = true;
  rest.nobodyComes = running_ == 0 && coming_ == 0 && lookout_ == nullptr && sleepers_ == nullptr;
  return failure;
}

// --- Workers ---

void* WorkerPool::threadMain(void* pool) {
  thisThreadIsWorker = true;
  pthread_setname_np(pthread_self(), "norvik-worker");
  kernel::coverThread();
  const FrameScope frame(GlobalQueue::shared());
  Worker self;
  static_cast<WorkerPool*>(pool)->work(self);
  return nullptr;
}

void WorkerPool::work(Worker& self) {
  mutex_.lock();
  --coming_;
  bool help = false;
  for (;;) {
    if (!items_.empty() && (running_ < target_ || help)) {
      help = false;
      runNext();
      continue;
    }
    help = false;
    if (lookout_ == nullptr) {
      const Outlook outlook = lookOut(self);
      help = outlook == Outlook::help;
      if (outlook != Outlook::quiet) continue;
    }
    if (!sleep(self)) break;
  }
  mutex_.unlock();
}

void WorkerPool::runNext() {
  Item* item = items_.takeFirst();
  readyCount_.store(readyCount_.load(std::memory_order_relaxed) - 1, std::memory_order_relaxed);
  ++running_;
  ++taken_;
  const Wake wake = items_.empty() ? Wake{} : cover();
  mutex_.unlock();
  carryOut(wake, Sleepers::left);
  runItem(item, GlobalQueue::shared());
  mutex_.lock();
  --running_;
}

WorkerPool::Outlook WorkerPool::lookOut(Worker& self) {
  lookout_ = &self;
  lookoutComes_ = true;
  if (spin_ && items_.empty()) spinForWork();

  std::uint64_t quietSince = monotonicNanoseconds();
  std::uint64_t seen = taken_;
  unsigned looksAtTheSame = 0;
  Outlook outlook = Outlook::quiet;
  for (;;) {
    ++looks_;
    const std::uint64_t now = monotonicNanoseconds();
    const bool moved = taken_ != seen;
    seen = taken_;
    if (items_.empty()) {
      looksAtTheSame = 0;
      if (moved) quietSince = now;
      if (now - quietSince >= quietTime && !ThreadShortage::exists(ThreadShortage::Of::timers)) break;
    } else {
      outlook = Outlook::work;
      if (running_ < target_) break;
      outlook = Outlook::help;
      looksAtTheSame = moved ? 0 : looksAtTheSame + 1;
      if (looksAtTheSame > looksBeforeHelp) break;
      outlook = Outlook::quiet;
      quietSince = now;
    }
    lookoutComes_ = false;
    self.word.store(0, std::memory_order_relaxed);
    forNapper_.store(openWord, std::memory_order_seq_cst);
    const bool idle = running_ == 0;
    mutex_.unlock();
    if (idle) ItemPages::trimSpares();
    if (ThreadShortage::exists(ThreadShortage::Of::timers)) [[unlikely]]
      SystemTimerClock::shared().tend();
    futexWait(self.word, 0, now + lookInterval);
    kernel::coverThread();
    mutex_.lock();
    collectFromNapper(closedWord);
    lookoutComes_ = true;
  }
  lookout_ = nullptr;
  lookoutComes_ = false;
  return outlook;
}

void WorkerPool::spinForWork() {
  if (processors_ < 2) return;
  mutex_.unlock();
  const std::uint64_t until = monotonicNanoseconds() + spinTime;
  do {
    for (int spin = 0; spin < 30 && readyCount_.load(std::memory_order_acquire) == 0; ++spin) spinPause();
  } while (readyCount_.load(std::memory_order_relaxed) == 0 && monotonicNanoseconds() < until);
  mutex_.lock();
}

/// False if the worker has slept long enough to end.
bool WorkerPool::sleep(Worker& self) {
  self.word.store(0, std::memory_order_relaxed);
  self.below = sleepers_;
  sleepers_ = &self;
  const std::uint64_t since = monotonicNanoseconds();
  for (std::uint64_t now = since; self.word.load(std::memory_order_relaxed) == 0 && now - since < idleTime_;
       now = monotonicNanoseconds()) {
    const std::uint64_t deadline = since + idleTime_;
    mutex_.unlock();
    futexWait(self.word, 0, deadline);
    kernel::coverThread();
    mutex_.lock();
  }
  if (self.word.load(std::memory_order_relaxed) != 0) {
    --coming_;
    return true;
  }
  for (Worker** link = &sleepers_; *link != nullptr; link = &(*link)->below) {
    if (*link == &self) {
      *link = self.below;
      break;
    }
  }
  --threads_;
  return false;
}

// --- Workers that wait for others ---

void WorkerPool::enterBlocked() noexcept {
  Wake wake;
  {
    const QueueLock lock(mutex_);
    --running_;
    if (!items_.empty()) wake = cover();
  }
  carryOut(wake, Sleepers::left);
}

void WorkerPool::leaveBlocked() noexcept {
  const QueueLock lock(mutex_);
  ++running_;
}

BlockingScope::BlockingScope() noexcept : isWorker_(thisThreadIsWorker) {
  if (isWorker_) WorkerPool::shared().enterBlocked();
}

BlockingScope::~BlockingScope() {
  if (isWorker_) WorkerPool::shared().leaveBlocked();
}

// --- Tests, fork ---

std::size_t WorkerPool::workerCount() {
  const QueueLock lock(mutex_);
  return threads_;
}

void WorkerPool::setIdleTime(std::uint64_t nanoseconds) {
  const QueueLock lock(mutex_);
  idleTime_ = nanoseconds;
  for (const Worker* sleeper = sleepers_; sleeper != nullptr; sleeper = sleeper->below) futexWake(&sleeper->word, 1);
}

std::uint64_t WorkerPool::lookCount() {
  const QueueLock lock(mutex_);
  return looks_;
}

std::uint64_t WorkerPool::wakeCount() {
  const QueueLock lock(mutex_);
  return wakes_;
}

void WorkerPool::resetAfterFork() noexcept {
  mutex_.resetAfterFork();
  const QueueLock lock(mutex_);
  items_.forget();
  forNapper_.store(closedWord, std::memory_order_relaxed);
  readyCount_.store(0, std::memory_order_relaxed);
  sleepers_ = lookout_ = nullptr;
  lookoutComes_ = false;
  coming_ = 0;
  // A worker whose block called fork() continues as the child's first worker.
  running_ = threads_ = thisThreadIsWorker ? 1 : 0;
}

}  // namespace norvik::detail
