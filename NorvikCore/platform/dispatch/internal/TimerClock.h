// NorvikCore/platform/dispatch/internal/TimerClock.h - who watches the time: the system's clocks, or a test.
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
  /// Sets the entry, in place of what it was set to: to `start`, which is not DISPATCH_TIME_FOREVER and becomes the
  /// setting's deadline.
  virtual void arm(TimerEntry& entry, dispatch_time_t start, TimerSetting setting) = 0;
  /// After this the entry is not kept for firing, save that it may be firing right now.
  virtual void disarm(TimerEntry& entry) noexcept = 0;
};

/// The monotonic clock and the wall clock. One thread for all timers: it starts with the first and ends when there have
/// been none for a while. It sleeps until the next deadline, a new first one, or a change of the wall clock.
class NK_EXPORT SystemTimerClock final : public TimerClock, public ForkAware {
 public:
  /// Never destroyed.
  static SystemTimerClock& shared();

  void arm(TimerEntry& entry, dispatch_time_t start, TimerSetting setting) override;
  void disarm(TimerEntry& entry) noexcept override;
  void resetAfterFork() noexcept override;

  /// Where the thread could not be started: attempts it again if it is time for that, else fires what is due. Tells
  /// when the next timer is due, noDeadline where there is none or the thread runs.
  std::uint64_t tend() noexcept;

  // For tests.
  [[nodiscard]] bool threadRuns();
  void setIdleTime(std::uint64_t nanoseconds);
  /// Replaces the wall clock that deadlines are compared with, as if it had been set.
  void setWallClock(std::uint64_t (*wallNanoseconds)() noexcept);

 private:
  static constexpr std::uint64_t notSet = ~std::uint64_t{0} - 1;

  SystemTimerClock() = default;
  static void* threadMain(void* clock);
  void run();
  /// The thread runs, or is on its way.
  bool ensureThread() NK_REQUIRES(mutex_);
  [[nodiscard]] int openDescriptors() NK_REQUIRES(mutex_);
  void collectDue(std::vector<DueTimer>& due) NK_REQUIRES(mutex_);
  void sleepUntilNext() NK_REQUIRES(mutex_);
  void wakeThread() NK_REQUIRES(mutex_);

  QueueMutex mutex_;
  TimerHeap monotonic_ NK_GUARDED_BY(mutex_);
  TimerHeap wall_ NK_GUARDED_BY(mutex_);
  std::vector<DueTimer> due_;  // the thread's
  bool threadRuns_ NK_GUARDED_BY(mutex_) = false;
  bool awake_ NK_GUARDED_BY(mutex_) = false;  // the thread will look at the heaps before it sleeps
  int wakeDescriptor_ NK_GUARDED_BY(mutex_) = -1;
  int wallDescriptor_ NK_GUARDED_BY(mutex_) = -1;
  std::uint64_t wallSetTo_ NK_GUARDED_BY(mutex_) = notSet;  // what wallDescriptor_ waits for
  std::uint64_t nextStart_ NK_GUARDED_BY(mutex_) = 0;       // in a shortage: when it may be attempted again
  bool tended_ NK_GUARDED_BY(mutex_) = false;               // another thread fires what is due
  std::uint64_t idleTime_ NK_GUARDED_BY(mutex_) = 10'000'000'000;
  std::uint64_t (*wallNow_)() noexcept NK_GUARDED_BY(mutex_) = &wallNanoseconds;
};

/// Stands still until advance().
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
