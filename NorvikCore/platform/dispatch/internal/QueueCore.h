// NorvikCore/platform/dispatch/internal/QueueCore.h - what all kinds of queues share: label, target, specific values.
//
// The hierarchy of queues, and who owns what:
//   - A queue without a target gives its work to the workers; one with a target, to the target.
//   - `target` changes only while the changer runs alone on the queue, so whoever runs on the queue may read it.
//   - A queue is held by its handles and, while it has work, by that work.
#pragma once

#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/internal/ForkAware.h"
#include "NorvikCore/platform/dispatch/internal/QueueMutex.h"
#include "NorvikCore/platform/dispatch/internal/SpecificValues.h"

#include <atomic>
#include <string>

namespace norvik::detail {

class QueueCore : public ForkAware {
 public:
  enum class Kind : std::uint8_t { serial, concurrent, global, main };

  QueueCore(Kind kind, const char* label) : kind_(kind), label_(label == nullptr ? "" : label) {}
  ~QueueCore() override;

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

  [[nodiscard]] Kind kind() const noexcept { return kind_; }
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

 private:
  const Kind kind_;
  std::atomic<std::uint32_t> references_{1};
  std::atomic<QueueCore*> target_{nullptr};
  SpecificValues specifics_;
  const std::string label_;
};

/// Runs one item as a block of that queue; an exception that leaves it ends the process.
void runItem(Item* item, QueueCore* queue) noexcept;

/// Prints "BUG: <what> (queue "<label>")" on the standard error stream and aborts.
[[noreturn]] void reportMisuse(const char* what, const QueueCore* queue) noexcept;

/// For the handler of an exception that left an asynchronous block of that queue.
[[noreturn]] void endProcessForException(const QueueCore* queue) noexcept;

}  // namespace norvik::detail
