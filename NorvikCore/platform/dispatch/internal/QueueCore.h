// NorvikCore/platform/dispatch/internal/QueueCore.h - the base of all queues: label, target, specific values.
//
// The hierarchy of queues, and ownership:
//   - A queue without a target gives its work to the workers; a queue with a target gives it to the target.
//   - `target` changes only while the thread that changes it runs alone on the queue, so code that runs on the queue
//     may read it.
//   - A queue is retained by its handles, which hold one reference together, and by its work while it has any. A queue
//     without handles is not suspended, because no caller could resume it.
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

  /// Enqueues an item.
  virtual void push(Item* item, Delivery delivery, Order order) = 0;

  /// Takes the queue for one synchronous block of this thread, after waiting for its turn; leave() releases it. The
  /// caller enters and leaves the target itself.
  virtual void enter(Order order) = 0;
  virtual void leave(Order order) noexcept = 0;

  /// Calls are counted: from the first suspend() to the last resume() no block begins. One may still begin at the
  /// moment of the call. Not for the global and the main queue.
  void suspend() noexcept;
  void resume() noexcept;

  [[nodiscard]] Kind kind() const noexcept { return kind_; }
  /// True if the queue runs one block at a time; it is then a SerialQueue.
  [[nodiscard]] bool isSerial() const noexcept {
    return kind_ == Kind::serial || kind_ == Kind::mailbox || kind_ == Kind::main;
  }
  [[nodiscard]] const char* label() const noexcept { return label_.c_str(); }
  [[nodiscard]] QueueCore* target() const noexcept { return target_.load(std::memory_order_relaxed); }
  /// Only while running alone on the queue. The queue takes over a reference to the new target; the caller receives the
  /// old target with its reference.
  QueueCore* exchangeTarget(QueueCore* target) noexcept { return target_.exchange(target, std::memory_order_relaxed); }
  /// True if its blocks run on the main thread.
  [[nodiscard]] bool leadsToMain() const noexcept;
  [[nodiscard]] SpecificValues& specifics() noexcept { return specifics_; }

 protected:
  /// Pushes one of this queue's own items to its target, or to the global queue if it has none.
  void pushToTarget(Item* item, Delivery delivery);

  /// Called for the first suspend() and the last resume(), one call at a time.
  virtual void beginSuspension() noexcept {}
  virtual void endSuspension() noexcept {}
  /// Resets the mutex; true if the queue is suspended.
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

/// Taken to exchange a target, and to follow targets on queues that are not entered: meanwhile no target changes or is
/// destroyed. A forked child has nothing to repair, because an exchange is one step.
class NK_SCOPED_CAPABILITY TargetsLock {
 public:
  TargetsLock() noexcept NK_ACQUIRE(mutex) { static_cast<void>(mutex.lock()); }
  ~TargetsLock() NK_RELEASE() { mutex.unlock(); }
  TargetsLock(const TargetsLock&) = delete;
  TargetsLock& operator=(const TargetsLock&) = delete;

 private:
  static ForkMutex mutex;
};

/// Runs one item as a block of that queue. An exception that leaves it ends the process.
void runItem(Item* item, QueueCore* queue) noexcept;

/// Writes "BUG: <what> (queue "<label>")" to the system console and aborts. The second form names no queue.
[[noreturn]] void reportMisuse(const char* what, const QueueCore* queue) noexcept;
[[noreturn]] void reportMisuse(const char* what) noexcept;

/// Ends the process. For the handler of an exception that left an asynchronous block of that queue.
[[noreturn]] void endProcessForException(const QueueCore* queue) noexcept;

}  // namespace norvik::detail
