// NorvikCore/platform/dispatch/internal/ThreadShortage.h - what the library does when no thread can be started.
//
// A shortage begins when a worker or the timer thread is needed and cannot be started. It ends when one has been
// started or no work is left. Meanwhile
//   - every thread that waits in the library runs the work that it waits for, if that is known (HelpGoal.h). It also
//     attempts to start the missing thread, and fires the timers that are due;
//   - so do the lookout of the workers, and the main thread where it drains the main queue, except that they have no
//     goal of their own;
//   - attempts are at least `interval` apart, and the sleep of a waiting thread between two attempts becomes longer
//     each time.
//
// A thread that fell asleep before the shortage began is nudged: the word that it sleeps on changes in a way that only
// makes it check again.
#pragma once

#include "NorvikCore/platform/dispatch/internal/ForkAware.h"
#include "NorvikCore/platform/dispatch/internal/HelpGoal.h"
#include "NorvikCore/platform/dispatch/internal/QueueMutex.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"

#include <atomic>
#include <cstdint>

namespace norvik::detail {

class ThreadShortage final : public ForkAware {
 public:
  enum class Of : std::uint32_t { workers = 1, timers = 2 };

  /// The least time between two attempts to start a thread, in nanoseconds.
  static constexpr std::uint64_t interval = 10'000'000;

  [[nodiscard]] static bool exists() noexcept { return state.load(std::memory_order_seq_cst) != 0; }
  [[nodiscard]] static bool exists(Of what) noexcept {
    return (state.load(std::memory_order_seq_cst) & static_cast<std::uint32_t>(what)) != 0;
  }
  /// Call it under the mutex of the workers or timers concerned. False if the shortage had begun before.
  static bool begin(Of what) noexcept;
  static void end(Of what) noexcept;
  /// Wakes all threads that sleep in a wait, because there is work and no thread for it. Call it under no mutex.
  static void nudgeAll() noexcept;
  /// Reports the shortage on the system console, once in a shortage and at most once a minute. `failure` is the error
  /// of the system, or 0 if there are as many workers as there may be.
  static void report(int failure) noexcept;
  /// Call it when a thread has been started: the next shortage is reported again.
  static void threadStarted() noexcept { reported.store(false, std::memory_order_relaxed); }

  /// Attempts to start what is missing. If the timer thread is still missing, fires the timers that are due. Returns
  /// when the next timer is due, noDeadline if another thread fires it.
  static std::uint64_t tend() noexcept;

  void resetAfterFork() noexcept override;

 private:
  friend class SleepingThread;
  friend class PatientWait;
  static ThreadShortage& shared();

  static std::atomic<std::uint32_t> state;
  static std::atomic<std::uint32_t> nudges;
  static std::atomic<bool> reported;
  static std::atomic<std::uint64_t> reportedAt;

  QueueMutex mutex_;
  class SleepingThread* sleeping_ NK_GUARDED_BY(mutex_) = nullptr;
};

/// Registers the calling thread, which is about to sleep, for nudges.
class SleepingThread {
 public:
  /// A nudge adds `nudge` to the word and wakes the threads that sleep on it.
  SleepingThread(std::atomic<std::uint32_t>& word, std::uint32_t nudge) noexcept : SleepingThread(&word, nudge, -1) {}
  /// A nudge makes the eventfd readable.
  explicit SleepingThread(int descriptor) noexcept : SleepingThread(nullptr, 0, descriptor) {}
  ~SleepingThread();
  SleepingThread(const SleepingThread&) = delete;
  SleepingThread& operator=(const SleepingThread&) = delete;

 private:
  friend class ThreadShortage;
  SleepingThread(std::atomic<std::uint32_t>* word, std::uint32_t nudge, int descriptor) noexcept;
  void nudge() noexcept;

  std::atomic<std::uint32_t>* const word_;
  const std::uint32_t nudge_;
  const int descriptor_;
  SleepingThread* previous_ = nullptr;
  SleepingThread* next_ = nullptr;
};

/// One wait of the calling thread. A worker counts as blocked while it sleeps.
class PatientWait {
 public:
  explicit PatientWait(const HelpGoal& goal) noexcept : goal_(goal) {}

  /// Sleeps while `word` is `expected`, until woken, until the deadline, or until a spurious wake-up; or works towards
  /// the goal. The caller must check its condition again. False if the deadline has passed.
  bool sleep(std::atomic<std::uint32_t>& word, std::uint32_t expected, std::uint32_t nudge,
             std::uint64_t deadline = noDeadline) noexcept;

  /// True in a child in which a block that this wait ran has forked; nothing that was waited for exists there.
  [[nodiscard]] bool hasForked() const noexcept { return kernel::forkGeneration() != generation_; }

 private:
  [[nodiscard]] bool help() const noexcept;

  const HelpGoal goal_;
  const std::uint32_t generation_ = kernel::forkGeneration();
  std::uint64_t pause_ = ThreadShortage::interval;
};

}  // namespace norvik::detail
