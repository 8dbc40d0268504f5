// NorvikCore/platform/dispatch/internal/WorkerPool.h - the threads that run the work of queues without a target.
//
// Workers take items from one list. About as many run at once as there are processors; a worker that is known to wait
// for another queue, a group or a semaphore does not count. A worker is started if no worker is free for new work, and
// ends after a time without work.
//
// One idle worker at a time is the *lookout*: it checks for work once a millisecond until none has come for a while,
// and only then sleeps like the others. Between two checks it naps. So
//   - a relaxed item finds a lookout and wakes no thread, as long as there is some activity. While the lookout naps,
//     such items are added to a separate list with one compare-and-swap, and the lookout takes them over at its next
//     check;
//   - a prompt item wakes the lookout, or finds it spinning, because it first spins for some microseconds after prompt
//     work;
//   - when all processors have work, the lookout notices if no item is taken any more (blocks wait for something that
//     the pool cannot know), and runs items itself.
// No item is missed, because one mutex guards the list, the lookout and the sleepers. Under it a thread that adds an
// item either sees a worker that has been woken or started, or a lookout; or it wakes a sleeper, or starts a worker. A
// worker that takes an item and leaves others does the same. If a worker is needed and cannot be started,
// ThreadShortage.h describes what happens to the items.
#pragma once

#include "NorvikCore/platform/dispatch/internal/ForkAware.h"
#include "NorvikCore/platform/dispatch/internal/HelpGoal.h"
#include "NorvikCore/platform/dispatch/internal/ItemList.h"
#include "NorvikCore/platform/dispatch/internal/QueueMutex.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace norvik::detail {

class NK_EXPORT_FOR_TESTS WorkerPool final : public ForkAware {
 public:
  /// Never destroyed.
  static WorkerPool& shared();

  /// A worker runs the item. The item is relaxed while `mayWait` is true. `mayWait` is read again when the item is
  /// visible, so a thread that clears it and then calls expedite() has its effect in any case.
  void submit(Item* item, const std::atomic<bool>& mayWait);
  /// The `mayWait` of a prompt item.
  static const std::atomic<bool>& prompt() noexcept;
  /// Makes workers take the listed items soon.
  void expedite() noexcept;

  /// Starts a worker if there is none. For a caller that will soon have work, because a start takes a while.
  void prepare() noexcept;
  /// For a waiting thread: runs the first item that is a step towards the goal. False if there is none.
  bool help(const HelpGoal& goal) noexcept;
  /// For any thread that can spare the time: attempts again to start a worker if one is needed and the interval has
  /// passed.
  void attemptStart() noexcept;

  /// True if items wait while the calling worker runs a long drain: the drain should move to the end of the list.
  [[nodiscard]] bool hasReadyItems() const noexcept { return readyCount_.load(std::memory_order_relaxed) != 0; }
  /// How many workers run at once, not counting those that are known to wait.
  [[nodiscard]] unsigned workersAtOnce() const noexcept { return target_; }
  /// How many times a thread spins for something that is about to happen; 0 on one processor.
  [[nodiscard]] int spinsBeforeSleep() const noexcept { return processors_ > 1 ? 150 : 0; }

  // For tests.
  [[nodiscard]] std::size_t workerCount();
  /// How long a worker sleeps without work before it ends (10 s unless set).
  void setIdleTime(std::uint64_t nanoseconds);
  /// How many times a lookout has checked.
  [[nodiscard]] std::uint64_t lookCount();
  /// How many times a worker has been woken or started.
  [[nodiscard]] std::uint64_t wakeCount();

  void resetAfterFork() noexcept override;

 private:
  friend class BlockingScope;
  struct Worker;
  struct Wake {  // what to do once the mutex is released
    const std::atomic<std::uint32_t>* word = nullptr;
    bool start = false;
    bool isShort = false;      // a worker was needed and cannot be started
    bool begins = false;       // the shortage begins with this
    bool nobodyComes = false;  // and no worker is free or coming
  };

  WorkerPool();
  static void* threadMain(void* pool);
  void work(Worker& self);
  bool submitToNapper(Item* item) noexcept;
  void collectFromNapper(std::uintptr_t next) noexcept NK_REQUIRES(mutex_);
  void append(Item* item) noexcept NK_REQUIRES(mutex_);
  void runNext() NK_REQUIRES(mutex_);
  enum class Outlook : std::uint8_t { work, help, quiet };
  Outlook lookOut(Worker& self) NK_REQUIRES(mutex_);
  void spinForWork() NK_REQUIRES(mutex_);
  bool sleep(Worker& self) NK_REQUIRES(mutex_);
  Wake summon() NK_REQUIRES(mutex_);
  Wake alertLookout() NK_REQUIRES(mutex_);
  Wake cover() NK_REQUIRES(mutex_);
  enum class Sleepers : std::uint8_t { nudged, left };  // in a shortage: whether there is new work for sleeping threads
  void carryOut(const Wake& wake, Sleepers sleepers) noexcept NK_EXCLUDES(mutex_);
  [[nodiscard]] int startWorker(Wake& rest) noexcept NK_EXCLUDES(mutex_);
  void enterBlocked() noexcept;
  void leaveBlocked() noexcept;

  const unsigned processors_;
  const unsigned target_;  // workers that run at once

  // Relaxed items for a lookout that naps, newest first; closedWord while none naps. Opened, closed and taken under the
  // mutex; items are added without it.
  static constexpr std::uintptr_t openWord = 0;
  static constexpr std::uintptr_t closedWord = 1;
  alignas(64) std::atomic<std::uintptr_t> forNapper_{closedWord};

  alignas(64) QueueMutex mutex_;
  ItemList items_ NK_GUARDED_BY(mutex_);
  std::atomic<std::size_t> readyCount_{0};  // of items_; written under the mutex, read by spinning workers without it
  Worker* sleepers_ NK_GUARDED_BY(mutex_) = nullptr;  // the last to fall asleep comes first
  Worker* lookout_ NK_GUARDED_BY(mutex_) = nullptr;
  bool lookoutComes_ NK_GUARDED_BY(mutex_) = false;  // it spins, or has been woken
  bool spin_ NK_GUARDED_BY(mutex_) = false;          // the last item was a prompt one
  unsigned running_ NK_GUARDED_BY(mutex_) = 0;       // workers in an item and not known to wait
  unsigned coming_ NK_GUARDED_BY(mutex_) = 0;        // woken or started, but not yet checking
  unsigned threads_ NK_GUARDED_BY(mutex_) = 0;
  std::uint64_t taken_ NK_GUARDED_BY(mutex_) = 0;
  std::uint64_t looks_ NK_GUARDED_BY(mutex_) = 0;
  std::uint64_t wakes_ NK_GUARDED_BY(mutex_) = 0;
  std::uint64_t idleTime_ NK_GUARDED_BY(mutex_);
  std::uint64_t nextStart_ NK_GUARDED_BY(mutex_) = 0;  // in a shortage: earliest next attempt
};

/// A worker inside this scope does not count as running, so another may take its place. No effect on other threads.
class BlockingScope {
 public:
  BlockingScope() noexcept;
  ~BlockingScope();
  BlockingScope(const BlockingScope&) = delete;
  BlockingScope& operator=(const BlockingScope&) = delete;

 private:
  bool isWorker_;
};

}  // namespace norvik::detail
