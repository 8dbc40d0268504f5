// NorvikCore/platform/dispatch/internal/TimerClock.h - the clocks that fire timers: the system's, or one that a test
// moves.
#pragma once

#include "NorvikCore/platform/dispatch/Time.h"
#include "NorvikCore/platform/dispatch/internal/ForkAware.h"
#include "NorvikCore/platform/dispatch/internal/QueueMutex.h"
#include "NorvikCore/platform/dispatch/internal/TimerHeap.h"
#include "NorvikCore/platform/export.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace norvik::detail {

class TimerClock {
 public:
  virtual ~TimerClock() = default;
  /// Sets the entry to `start`, which is not DISPATCH_TIME_FOREVER and becomes the setting's deadline. Replaces an
  /// earlier setting.
  virtual void arm(TimerEntry& entry, dispatch_time_t start, TimerSetting setting) = 0;
  /// Removes the entry from the clock. It may still be firing at this moment.
  virtual void disarm(TimerEntry& entry) noexcept = 0;
};

/// The monotonic clock and the wall clock. One thread serves all timers: it starts with the first timer and ends when
/// there have been none for the idle time. It sleeps until the next deadline, a new earliest timer, or a change of the
/// wall clock.
class NK_EXPORT_FOR_TESTS SystemTimerClock final : public TimerClock, public ForkAware {
 public:
  /// Never destroyed.
  static SystemTimerClock& shared();

  void arm(TimerEntry& entry, dispatch_time_t start, TimerSetting setting) override;
  void disarm(TimerEntry& entry) noexcept override;
  void resetAfterFork() noexcept override;

  /// If the thread could not be started: attempts to start it again if `nextStart_` has passed, else fires the timers
  /// that are due. Returns when the next timer is due; noDeadline if there is none or the thread runs.
  std::uint64_t tend() noexcept;

  // For tests.
  [[nodiscard]] bool threadRuns();
  void setIdleTime(std::uint64_t nanoseconds);
  /// Replaces the wall clock that deadlines are compared with, as if the system's wall clock had been set.
  void setWallClock(std::uint64_t (*wallNanoseconds)() noexcept);

 private:
  static constexpr std::uint64_t notSet = ~std::uint64_t{0} - 1;

  SystemTimerClock() = default;
  static void* threadMain(void* clock);
  void run();
  /// True if the thread runs or has been started.
  bool ensureThread() NK_REQUIRES(mutex_);
  [[nodiscard]] int openDescriptors() NK_REQUIRES(mutex_);
  void collectDue(std::vector<DueTimer>& due) NK_REQUIRES(mutex_);
  void sleepUntilNext() NK_REQUIRES(mutex_);
  void wakeThread() NK_REQUIRES(mutex_);

  QueueMutex mutex_;
  TimerHeap monotonic_ NK_GUARDED_BY(mutex_);
  TimerHeap wall_ NK_GUARDED_BY(mutex_);
  std::vector<DueTimer> due_;  // used by the thread
  bool threadRuns_ NK_GUARDED_BY(mutex_) = false;
  bool awake_ NK_GUARDED_BY(mutex_) = false;  // the thread will check the heaps before it sleeps
  int wakeDescriptor_ NK_GUARDED_BY(mutex_) = -1;
  int wallDescriptor_ NK_GUARDED_BY(mutex_) = -1;
  std::uint64_t wallSetTo_ NK_GUARDED_BY(mutex_) = notSet;  // what wallDescriptor_ waits for
  std::uint64_t nextStart_ NK_GUARDED_BY(mutex_) = 0;       // in a shortage: when a start may be attempted again
  bool tended_ NK_GUARDED_BY(mutex_) = false;               // another thread fires the due timers
  std::uint64_t idleTime_ NK_GUARDED_BY(mutex_) = 10'000'000'000;
  std::uint64_t (*wallNow_)() noexcept NK_GUARDED_BY(mutex_) = &wallNanoseconds;
};

/// Advances only by advance().
class ManualTimerClock final : public TimerClock {
 public:
  void arm(TimerEntry& entry, dispatch_time_t start, TimerSetting setting) override;
  void disarm(TimerEntry& entry) noexcept override;
  void advance(std::uint64_t nanoseconds);
  [[nodiscard]] std::uint64_t now();
  [[nodiscard]] std::size_t size();

 private:
  QueueMutex mutex_;
  TimerHeap heap_ NK_GUARDED_BY(mutex_);
  std::uint64_t now_ NK_GUARDED_BY(mutex_) = 1'000'000'000;
};

}  // namespace norvik::detail
