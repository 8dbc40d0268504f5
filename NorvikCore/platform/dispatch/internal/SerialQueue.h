// NorvikCore/platform/dispatch/internal/SerialQueue.h - one block at a time, in order.
//
// One word says all: `inbox_` is idleBit while nobody owns the queue; else somebody does, and it is the list of what
// was queued since the owner last looked, newest first. The owner is a drain (on its way to a worker, or at work there)
// or a thread in a synchronous block.
//   - To queue is one compare-and-swap. Who finds idleBit has made the queue owned, and sends the drain on its way.
//   - To own for a synchronous block is idleBit -> empty; to let go is empty -> idleBit, which fails when something was
//     queued meanwhile: then the owner passes the queue on, to the next waiter or to a drain. So nothing is overlooked.
//   - Only the owner takes the list, reverses it into `ready_`, and runs from there.
//   - The word of a suspended queue has suspendedBit beside the list, and so is neither idle nor empty: nobody can take
//     the queue, and its owner cannot let it go but by parking it (parkedBit), with all that waits there. The last
//     resume takes the flag away; if the queue was parked, who resumes it becomes the owner, and passes it on.
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

class NK_EXPORT SerialQueue : public QueueCore {
 public:
  explicit SerialQueue(const char* label) : SerialQueue(Kind::serial, label) {}

  void push(Item* item, Delivery delivery, Order order) override;
  void enter(Order order) override;
  void leave(Order order) noexcept override;
  void resetAfterFork() noexcept override;

  /// enter(), where it takes no waiting.
  [[nodiscard]] bool tryEnter() noexcept {
    std::uintptr_t expected = idleBit;
    return inbox_.compare_exchange_strong(expected, emptyWord, std::memory_order_acquire, std::memory_order_relaxed);
  }
  /// leave(), where nothing waits.
  [[nodiscard]] bool tryLeave() noexcept { return ready_ == nullptr && tryIdle(); }

  /// For the owner, between two items: whether to stop.
  [[nodiscard]] bool isSuspended() const noexcept { return mustPark_.load(std::memory_order_relaxed); }
  /// The queue whose drain the item is; null for other items.
  [[nodiscard]] static SerialQueue* drainedBy(Item* item) noexcept {
    return item->run == &runDrain ? static_cast<DrainItem*>(item)->queue : nullptr;
  }
  /// The last item that is a step to the goal, null where none is. For the owner.
  [[nodiscard]] Item* lastTowards(const HelpGoal& goal) noexcept;
  /// Puts an item before all others. For the owner.
  void putBack(Item* item, std::uint32_t flags = 0) noexcept;

 protected:
  SerialQueue(Kind kind, const char* label);

  /// Makes somebody call drain(). By the owner, who gives the queue away with it.
  virtual void schedule(Delivery delivery);

  /// Runs the items; then the queue is idle, or passed on. By the owner.
  virtual void drain();
  /// The same, up to the goal.
  virtual void drainTowards(const HelpGoal& goal);

  /// Queues an item with its flags; schedules a drain if the queue was idle.
  void append(Item* item, std::uint32_t flags, Delivery delivery);
  /// The end of enter(), where the queue was not idle. False where a block that ran meanwhile has forked and this is
  /// the child.
  [[nodiscard]] bool waitForTurn(std::uint32_t flags);
  /// A waiter that is reached when the queue is passed on gets it at once; else a drain comes first.
  [[nodiscard]] virtual bool grantsAtOnce() const noexcept { return true; }

  /// Ends ownership: idle, or parked, or the next waiter, or another drain.
  void passOn() noexcept;
  /// Ends ownership of a suspended queue; false when it is not suspended.
  [[nodiscard]] bool tryPark() noexcept;
  void endSuspension() noexcept override;

  /// Takes over all that was queued; tells how many items there are now.
  std::size_t collectAll() noexcept;
  /// The first item, left where it is; null when there is none.
  [[nodiscard]] Item* peek() noexcept;
  Item* takeReady() noexcept;
  /// For the owner: the first item, left where it is. Null where the ownership has ended: nothing is queued, the queue
  /// is suspended, or the first item was a waiter, which has it now unless `grants()` is false.
  template <class Grants>
  [[nodiscard]] Item* nextToRun(Grants grants) noexcept;
  [[nodiscard]] bool tryIdle() noexcept {
    std::uintptr_t expected = emptyWord;
    return inbox_.compare_exchange_strong(expected, idleBit, std::memory_order_release, std::memory_order_relaxed);
  }
  [[nodiscard]] bool isIdle() const noexcept { return inbox_.load(std::memory_order_acquire) == idleBit; }
  /// Somebody wants an answer soon: a drain that may take its time no longer may.
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
  /// Queues the item unless the queue is idle; tells whether it did.
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
  std::atomic<bool> drainMayWait_{false};  // a drain is on its way with Delivery::relaxed

  // The owner's.
  alignas(64) Item* ready_ = nullptr;
  bool readyIsRelaxed_ = true;         // nothing in ready_ is in a hurry
  std::atomic<bool> mustPark_{false};  // what the word says, for the owner between two items: few write to it
  DrainItem drainItem_;
};

}  // namespace norvik::detail
