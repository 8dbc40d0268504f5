// NorvikCore/platform/dispatch/internal/SerialQueue.h - runs one block at a time, in order.
//
// One word, `inbox_`, holds the whole state. It is idleBit while the queue has no owner. Otherwise the queue has an
// owner, and the word is the list of the items that were enqueued since the owner last took them, newest first. The
// owner is a drain (submitted to the workers, or running) or a thread in a synchronous block.
//   - Enqueueing is one compare-and-swap. A thread that finds idleBit has made the queue owned, and schedules the
//     drain.
//   - A synchronous block takes ownership by idleBit -> empty and ends it by empty -> idleBit. The latter fails if an
//     item was enqueued meanwhile; then the owner passes the queue on to the next waiter or to a drain. So no item is
//     missed.
//   - Only the owner takes the list, reverses it into `ready_`, and runs items from there.
//   - While the queue is suspended, the word has suspendedBit beside the list, so it is neither idle nor empty: no
//     thread can take ownership, and the owner can end it only by parking the queue (parkedBit) with all items that
//     wait there. The last resume clears both bits; if the queue was parked, the thread that resumes it becomes the
//     owner and passes it on.
#pragma once

#include "NorvikCore/platform/dispatch/internal/HelpGoal.h"
#include "NorvikCore/platform/dispatch/internal/ItemList.h"
#include "NorvikCore/platform/dispatch/internal/QueueCore.h"
#include "NorvikCore/platform/export.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace norvik::detail {

class SyncWaiter;

class NK_EXPORT_FOR_TESTS SerialQueue : public QueueCore {
 public:
  explicit SerialQueue(const char* label) : SerialQueue(Kind::serial, label) {}

  void push(Item* item, Delivery delivery, Order order) override;
  void enter(Order order) override;
  void leave(Order order) noexcept override;
  void resetAfterFork() noexcept override;

  /// enter() if that needs no wait; false otherwise.
  [[nodiscard]] bool tryEnter() noexcept {
    std::uintptr_t expected = idleBit;
    return inbox_.compare_exchange_strong(expected, emptyWord, std::memory_order_acquire, std::memory_order_relaxed);
  }
  /// leave() if no item waits; false otherwise.
  [[nodiscard]] bool tryLeave() noexcept { return ready_ == nullptr && tryIdle(); }

  /// For the owner, between two items: true if it must stop.
  [[nodiscard]] bool isSuspended() const noexcept { return mustPark_.load(std::memory_order_relaxed); }
  /// The queue whose drain the item is; null for other items.
  [[nodiscard]] static SerialQueue* drainedBy(Item* item) noexcept {
    return item->run == &runDrain ? static_cast<DrainItem*>(item)->queue : nullptr;
  }
  /// The last item that is a step towards the goal; null if there is none. For the owner.
  [[nodiscard]] Item* lastTowards(const HelpGoal& goal) noexcept;
  /// Puts an item before all others. For the owner.
  void putBack(Item* item, std::uint32_t flags = 0) noexcept;

 protected:
  SerialQueue(Kind kind, const char* label);

  /// Arranges a call of drain(), to which ownership passes. For the owner.
  virtual void schedule(Delivery delivery);

  /// Runs the items. Afterwards the queue is idle or passed on. For the owner.
  virtual void drain();
  /// The same, but only up to the goal.
  virtual void drainTowards(const HelpGoal& goal);

  /// Enqueues an item with its flags; schedules a drain if the queue was idle.
  void append(Item* item, std::uint32_t flags, Delivery delivery);
  /// The rest of enter() if the queue was not idle. False if a block that ran meanwhile has forked and this is the
  /// child.
  [[nodiscard]] bool waitForTurn(std::uint32_t flags);
  /// True if a waiter that is first when the queue is passed on gets the queue at once; false if a drain comes first.
  [[nodiscard]] virtual bool grantsAtOnce() const noexcept { return true; }

  /// Ends ownership: the queue becomes idle or parked, or is given to the next waiter or to another drain.
  void passOn() noexcept;
  /// Ends ownership of a suspended queue; false if it is not suspended.
  [[nodiscard]] bool tryPark() noexcept;
  void endSuspension() noexcept override;

  /// Takes over all that was enqueued; returns how many items there are now.
  std::size_t collectAll() noexcept;
  /// The first item, which stays in the list; null if there is none.
  [[nodiscard]] Item* peek() noexcept;
  Item* takeReady() noexcept;
  /// For the owner: the first item, which stays in the list. Null if ownership has ended: nothing is enqueued, or the
  /// queue is suspended, or the first item was a waiter, to which the queue has been given. That last step is not taken
  /// if `grants()` is false.
  template <class Grants>
  [[nodiscard]] Item* nextToRun(Grants grants) noexcept;
  [[nodiscard]] bool tryIdle() noexcept {
    std::uintptr_t expected = emptyWord;
    return inbox_.compare_exchange_strong(expected, idleBit, std::memory_order_release, std::memory_order_relaxed);
  }
  [[nodiscard]] bool isIdle() const noexcept { return inbox_.load(std::memory_order_acquire) == idleBit; }
  /// Makes a relaxed drain prompt, because a caller now waits for its result.
  void hurry() noexcept;

  static constexpr std::uintptr_t emptyWord = 0;
  static constexpr std::uintptr_t idleBit = 1;
  static constexpr std::uintptr_t suspendedBit = 2;
  static constexpr std::uintptr_t parkedBit = 4;
  static constexpr std::uintptr_t flagBits = idleBit | suspendedBit | parkedBit;

 private:
  struct DrainItem : Item {
    SerialQueue* queue = nullptr;
  };

  static void runDrain(Item* item);
  /// Enqueues the item unless the queue is idle; true if it did.
  bool tryAppend(Item* item) noexcept {
    std::uintptr_t old = inbox_.load(std::memory_order_relaxed);
    do {
      if (old == idleBit) return false;
      item->queueLink = itemOf(old);
    } while (!inbox_.compare_exchange_weak(old, wordOf(item) | (old & flagBits), std::memory_order_seq_cst,
                                           std::memory_order_relaxed));
    return true;
  }
  void collect() noexcept;
  void beginSuspension() noexcept override;
  static std::uintptr_t wordOf(const Item* item) noexcept { return reinterpret_cast<std::uintptr_t>(item); }
  static Item* itemOf(std::uintptr_t word) noexcept { return reinterpret_cast<Item*>(word & ~flagBits); }

  alignas(64) std::atomic<std::uintptr_t> inbox_{idleBit};
  std::atomic<bool> drainMayWait_{false};  // a drain is submitted with Delivery::relaxed

  // For the owner.
  alignas(64) Item* ready_ = nullptr;
  bool readyIsRelaxed_ = true;         // every item in ready_ is relaxed
  std::atomic<bool> mustPark_{false};  // equals suspendedBit; rarely written, so the owner reads it between two items
  DrainItem drainItem_;
};

}  // namespace norvik::detail
