// NorvikCore/platform/dispatch/internal/WorkerPool.h - the threads that run what queues without a target have to do.
//
// Workers take items from one list. About as many run at once as there are processors; a worker that is known to wait
// for another queue, a group or a semaphore does not count. Workers are started when work finds none to take it, and
// end after a time without work.
//
// One idle worker at a time is the *lookout*: it looks for work once a millisecond until nothing has come for a while,
// and only then sleeps like the others. So
//   - a relaxed item finds a lookout and wakes nobody, as long as something goes on at all: while the lookout naps,
//     such items come into a list of their own, which it takes over when it looks (one compare-and-swap for who brings
//     one);
//   - a prompt item wakes the lookout, or finds it spinning: after prompt work it spins for some microseconds first;
//   - where all processors have work, the lookout is the one who sees that nothing is taken any more (blocks wait for
//     something nobody knows of), and helps out.
// Nothing is overlooked, for the list, the lookout and the sleepers are guarded by one mutex: who adds an item sees
// under it either a worker on its way, or a lookout, or wakes a sleeper, or starts a worker. A worker that takes an
// item and leaves others sees to the same. Where a worker is needed and cannot be started, ThreadShortage.h says what
// becomes of the items.
#pragma once

#include "NorvikCore/platform/dispatch/internal/ForkAware.h"
#include "NorvikCore/platform/dispatch/internal/HelpGoal.h"
#include "NorvikCore/platform/dispatch/internal/ItemList.h"
#include "NorvikCore/platform/dispatch/internal/QueueMutex.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace norvik::detail {

class NK_EXPORT WorkerPool final : public ForkAware {
 public:
  /// Never destroyed.
  static WorkerPool& shared();

  /// The item is run by a worker. It is a relaxed item while `mayWait` is true; that is read once more when the item
  /// can be seen, so that who clears it and then calls expedite() is sure to be heard.
  void submit(Item* item, const std::atomic<bool>& mayWait);
  /// The `mayWait` of a prompt item.
  static const std::atomic<bool>& prompt() noexcept;
  /// What is in the list is taken soon.
  void expedite() noexcept;

  /// There will be a worker soon: for who knows that it will have work, for a start takes a while.
  void prepare() noexcept;
  /// By a thread that waits: runs the first item that is a step to the goal. False where none is.
  bool help(const HelpGoal& goal) noexcept;
  /// By any thread that has the time: attempts again to start a worker if one is needed and it is time for that.
  void attemptStart() noexcept;

  /// True when items wait while the calling worker runs a long drain: time to go to the end of the list.
  [[nodiscard]] bool hasReadyItems() const noexcept { return readyCount_.load(std::memory_order_relaxed) != 0; }
  /// How many workers run at once, save those that are known to wait.
  [[nodiscard]] unsigned workersAtOnce() const noexcept { return target_; }
  /// How long a thread spins for something that is about to happen; 0 on one processor.
  [[nodiscard]] int spinsBeforeSleep() const noexcept { return processors_ > 1 ? 150 : 0; }

  // For tests.
  [[nodiscard]] std::size_t workerCount();
  /// How long a worker sleeps without work before it ends (10 s unless set).
  void setIdleTime(std::uint64_t nanoseconds);
  /// How often a lookout has looked.
  [[nodiscard]] std::uint64_t lookCount();
  /// How often a worker has been woken or started.
  [[nodiscard]] std::uint64_t wakeCount();

  void resetAfterFork() noexcept override;

 private:
  friend class BlockingScope;
  struct Worker;
  struct Wake {  // what to do once the mutex is free
    const std::atomic<std::uint32_t>* word = nullptr;
    bool start = false;
    bool isShort = false;      // one was needed and cannot be started
    bool begins = false;       // for the first time
    bool nobodyComes = false;  // and none is free
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
  enum class Sleepers : std::uint8_t { nudged, left };  // in a shortage: there is something new for them, or not
  void carryOut(const Wake& wake, Sleepers sleepers) noexcept NK_EXCLUDES(mutex_);
  [[nodiscard]] int startWorker(Wake& rest) noexcept NK_EXCLUDES(mutex_);
  void enterBlocked() noexcept;
  void leaveBlocked() noexcept;

  const unsigned processors_;
  const unsigned target_;  // workers that run at once

  // Relaxed items for a lookout that naps, newest first; closedWord while none does. Opened, closed and taken under the
  // mutex, filled without it.
  static constexpr std::uintptr_t openWord = 0;
  static constexpr std::uintptr_t closedWord = 1;
  alignas(64) std::atomic<std::uintptr_t> forNapper_{closedWord};

  alignas(64) QueueMutex mutex_;
  ItemList items_ NK_GUARDED_BY(mutex_);
  std::atomic<std::size_t> readyCount_{0};  // of items_; changed under the mutex, read by spinning workers without it
  Worker* sleepers_ NK_GUARDED_BY(mutex_) = nullptr;  // who slept last comes first
  Worker* lookout_ NK_GUARDED_BY(mutex_) = nullptr;
  bool lookoutComes_ NK_GUARDED_BY(mutex_) = false;  // it spins, or has been woken
  bool spin_ NK_GUARDED_BY(mutex_) = false;          // the last item was a prompt one
  unsigned running_ NK_GUARDED_BY(mutex_) = 0;       // workers in an item and not known to wait
  unsigned coming_ NK_GUARDED_BY(mutex_) = 0;        // workers woken or started that have not yet looked
  unsigned threads_ NK_GUARDED_BY(mutex_) = 0;
  std::uint64_t taken_ NK_GUARDED_BY(mutex_) = 0;
  std::uint64_t looks_ NK_GUARDED_BY(mutex_) = 0;
  std::uint64_t wakes_ NK_GUARDED_BY(mutex_) = 0;
  std::uint64_t idleTime_ NK_GUARDED_BY(mutex_);
  std::uint64_t nextStart_ NK_GUARDED_BY(mutex_) = 0;  // in a shortage: when one may be attempted again
};

/// While a worker is in it, it does not count as running: others may take its place. On other threads it does nothing.
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
