// NorvikCore/dispatch/internal/NamedTimers.h - the timers of one wrapper.
//
// Each request of the application is carried out on the queue by an asynchronous block of its own. On a serial queue
// the block holds the request. On a concurrent queue, whose blocks may overtake each other, the requests wait in a list
// and each block carries out the first, so they take effect in their order there too. The table is changed under the
// lock. The lock is never held while a block runs or is destroyed.
#pragma once

#include "NorvikCore/dispatch/TSKDispatchQueue.h"
#include "NorvikCore/dispatch/internal/TimerTable.h"
#include "NorvikCore/platform/dispatch/Time.h"
#include "NorvikCore/platform/dispatch/internal/ForkMutex.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

namespace norvik::detail {

/// Ownership: owned by its wrapper; a request that waits and a block that runs retain the wrapper.
/// Threads:   synchronised; call setClock() before anything else. A child made by fork() starts without timers.
class NamedTimers {
 public:
  explicit NamedTimers(TSKDispatchQueue& owner);
  ~NamedTimers();
  NamedTimers(const NamedTimers&) = delete;
  NamedTimers& operator=(const NamedTimers&) = delete;

  void setClock(const dispatch_manual_clock& clock);
  void schedule(const NSString& name, double timeInterval, TSKTimerBehavior behavior, Block<void()> block);
  void cancel(const NSString& name);
  void cancelAll();
  /// Called in the wrapper's destructor: pending blocks are cancelled.
  void end();

  [[nodiscard]] std::uint64_t count() const noexcept { return timerCountPrivate.load(std::memory_order_relaxed); }
  [[nodiscard]] Ref<NSDictionary> dictionary();

  /// Called on the queue, in a delivery of the entry's timer. The caller retains the wrapper.
  void fired(NamedTimer& entry, const LiveTimer& timer);

 private:
  using Blocks = std::vector<Block<void()>>;
  struct Request {
    enum class Kind : std::uint8_t { schedule, cancel, cancelAll };
    Kind kind;
    NSString name{};
    double referenceTime = 0, timeInterval = 0;  // seconds
    TSKTimerBehavior behavior{};
    Block<void()> block{};
  };

  /// The state that each process has for itself.
  struct State {
    std::unique_ptr<TimerTable> table;  // empty before the first timer
    std::deque<Request> requests;       // on a concurrent queue
    std::uint64_t live = 0;             // names with a timer
  };
  /// Holds the lock for a scope. The first lock in a child made by fork() leaves all timers to the parent.
  class NK_SCOPED_CAPABILITY Lock {
   public:
    explicit Lock(NamedTimers& timers) NK_ACQUIRE(timers.lock_) : timers_(timers) {
      if (timers.lock_.lock()) [[unlikely]]
        timers.forgetParent();
    }
    ~Lock() NK_RELEASE() { timers_.lock_.unlock(); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

   private:
    NamedTimers& timers_;
  };

  void forgetParent() NK_REQUIRES(lock_);
  /// In nanoseconds of the timers' clock, and in seconds.
  [[nodiscard]] std::uint64_t nanosecondsNow() const;
  [[nodiscard]] double _now() const;
  void request(Request&& request);
  [[nodiscard]] bool requestsKeepTheirOrder() const noexcept;
  void carryOutNextRequest();
  // Called on the queue, under the lock. Blocks that are no longer needed are moved to `unused`, which is destroyed
  // without the lock.
  void carryOut(Request&& request, Blocks& unused) NK_REQUIRES(lock_);
  void _scheduleTimerWithName(NSString&& name, double referenceTime, double timeInterval, TSKTimerBehavior behavior,
                              Block<void()>&& block, Blocks& unused) NK_REQUIRES(lock_);
  void _cancelTimerWithName(const NSString& name, Blocks& unused) NK_REQUIRES(lock_);
  void cancel(NamedTimer& entry, Blocks& unused) NK_REQUIRES(lock_);
  void cancelEveryTimer(Blocks& unused) NK_REQUIRES(lock_);
  void _updateTimerCountPrivate() NK_REQUIRES(lock_);
  [[nodiscard]] LiveTimerHandle makeTimer(NamedTimer& entry) NK_REQUIRES(lock_);
  static void start(LiveTimer& timer, std::uint64_t now, double delay);

  TSKDispatchQueue& owner_;
  std::unique_ptr<dispatch_manual_clock> manualClock_;

  ForkMutex lock_;
  std::unique_ptr<State> state_ NK_GUARDED_BY(lock_) = std::make_unique<State>();
  std::atomic<std::uint64_t> timerCountPrivate{0};
};

}  // namespace norvik::detail
