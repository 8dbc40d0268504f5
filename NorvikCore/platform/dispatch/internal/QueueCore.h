// NorvikCore/platform/dispatch/internal/QueueCore.h - what all kinds of queues share: label, target, specific values.
//
// The hierarchy of queues, and who owns what:
//   - A queue without a target gives its work to the workers; one with a target, to the target.
//   - `target` changes only while the changer runs alone on the queue, so whoever runs on the queue may read it.
//   - A queue is held by its handles, which have one reference together, and, while it has work, by that work. Without
//     handles it is not suspended: nobody could resume it.
#pragma once

#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/internal/ForkAware.h"
#include "NorvikCore/platform/dispatch/internal/ForkMutex.h"
#include "NorvikCore/platform/dispatch/internal/QueueMutex.h"
#include "NorvikCore/platform/dispatch/internal/SpecificValues.h"

#include <atomic>
#include <string>

namespace norvik::detail {

class QueueCore : public ForkAware {
 public:
  enum class Kind : std::uint8_t { serial, mailbox, concurrent, global, main };

  QueueCore(Kind kind, const char* label) : kind_(kind), label_(label == nullptr ? "" : label) {}
  ~QueueCore() override;

  void retainHandle() noexcept { handles_.fetch_add(1, std::memory_order_relaxed); }
  void releaseHandle() noexcept;
  void retain() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) deleteForkAware(this);
  }

  /// Queues an item.
  virtual void push(Item* item, Delivery delivery, Order order) = 0;

  /// Takes the queue for one synchronous block of this thread, waiting for its turn; leave() gives it back. The target
  /// is the caller's affair.
  virtual void enter(Order order) = 0;
  virtual void leave(Order order) noexcept = 0;

  /// Counted: from the first suspend() to the last resume() no block begins, save that one may be beginning this
  /// moment. Not for the global and the main queue.
  void suspend() noexcept;
  void resume() noexcept;

  [[nodiscard]] Kind kind() const noexcept { return kind_; }
  /// One block at a time: it is a SerialQueue.
  [[nodiscard]] bool isSerial() const noexcept {
    return kind_ == Kind::serial || kind_ == Kind::mailbox || kind_ == Kind::main;
  }
  [[nodiscard]] const char* label() const noexcept { return label_.c_str(); }
  [[nodiscard]] QueueCore* target() const noexcept { return target_.load(std::memory_order_relaxed); }
  /// Only while running alone on the queue, which takes over a reference. Gives back the old target, with its
  /// reference.
  QueueCore* exchangeTarget(QueueCore* target) noexcept { return target_.exchange(target, std::memory_order_relaxed); }
  /// True when its blocks run on the main thread.
  [[nodiscard]] bool leadsToMain() const noexcept;
  [[nodiscard]] SpecificValues& specifics() noexcept { return specifics_; }

 protected:
  /// Gives one item of this queue's own to whatever runs its work.
  void pushToTarget(Item* item, Delivery delivery);

  /// What suspend() and resume() come to, one after the other.
  virtual void beginSuspension() noexcept {}
  virtual void endSuspension() noexcept {}
  /// Tells whether the queue is suspended.
  bool resetSuspensionAfterFork() noexcept;

 private:
  const Kind kind_;
  std::atomic<std::uint32_t> references_{1};
  std::atomic<std::uint32_t> handles_{1};
  QueueMutex suspensionMutex_;
  std::uint32_t suspensions_ NK_GUARDED_BY(suspensionMutex_) = 0;
  std::atomic<QueueCore*> target_{nullptr};
  SpecificValues specifics_;
  const std::string label_;
};

/// Taken where a target is exchanged, and to go from target to target on queues that are not entered: meanwhile none of
/// them changes or goes. A forked child finds nothing to put right, as an exchange is one step.
class NK_SCOPED_CAPABILITY TargetsLock {
 public:
  TargetsLock() noexcept NK_ACQUIRE(mutex) { static_cast<void>(mutex.lock()); }
  ~TargetsLock() NK_RELEASE() { mutex.unlock(); }
  TargetsLock(const TargetsLock&) = delete;
  TargetsLock& operator=(const TargetsLock&) = delete;

 private:
  static ForkMutex mutex;
};

/// Runs one item as a block of that queue; an exception that leaves it ends the process.
void runItem(Item* item, QueueCore* queue) noexcept;

/// Writes "BUG: <what> (queue "<label>")" to the system console, or without the queue, and aborts.
[[noreturn]] void reportMisuse(const char* what, const QueueCore* queue) noexcept;
[[noreturn]] void reportMisuse(const char* what) noexcept;

/// For the handler of an exception that left an asynchronous block of that queue.
[[noreturn]] void endProcessForException(const QueueCore* queue) noexcept;

}  // namespace norvik::detail
