#include "NorvikCore/platform/dispatch/internal/SerialQueue.h"

#include "NorvikCore/platform/dispatch/internal/SyncWaiter.h"
#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"
#include "NorvikCore/platform/dispatch/internal/WorkerPool.h"

#include <utility>

namespace norvik::detail {
namespace {

// After this many items a drain on a worker moves to the end of the pool's list if other items wait there.
constexpr std::size_t itemsPerTurn = 256;

constexpr auto always = [] { return true; };

}  // namespace

SerialQueue::SerialQueue(Kind kind, const char* label) : QueueCore(kind, label) {
  drainItem_.queue = this;
  drainItem_.run = &runDrain;
}

void SerialQueue::runDrain(Item* item) {
  SerialQueue* queue = static_cast<DrainItem*>(item)->queue;
  queue->drainMayWait_.store(false, std::memory_order_relaxed);
  if (const HelpGoal* goal = takeHelpGoal()) [[unlikely]] {
    queue->drainTowards(*goal);
  } else {
    queue->drain();
  }
  queue->release();  // what schedule() retained
}

void SerialQueue::push(Item* item, Delivery delivery, Order) {
  append(item, delivery == Delivery::relaxed ? itemRelaxed : 0, delivery);
}

void SerialQueue::append(Item* item, std::uint32_t flags, Delivery delivery) {
  const bool relaxed = delivery == Delivery::relaxed;
  item->queueFlags = flags;
  std::uintptr_t old = inbox_.load(std::memory_order_relaxed);
  do {
    // Set before the item is visible, so that a later prompt caller sees it. If another thread enqueues first, this was
    // needless, and a later prompt caller calls expedite() without effect.
    if (relaxed && old == idleBit) drainMayWait_.store(true, std::memory_order_relaxed);
    item->queueLink = itemOf(old);
  } while (!inbox_.compare_exchange_weak(old, wordOf(item) | (old & ~idleBit & flagBits), std::memory_order_seq_cst,
                                         std::memory_order_relaxed));
  if (old == idleBit) {
    schedule(delivery);
  } else if (!relaxed) {
    hurry();
  }
}

void SerialQueue::schedule(Delivery delivery) {
  retain();
  if (QueueCore* above = target()) {
    above->push(&drainItem_, delivery, Order::normal);
  } else {
    WorkerPool::shared().submit(&drainItem_, delivery == Delivery::relaxed ? drainMayWait_ : WorkerPool::prompt());
  }
}

void SerialQueue::hurry() noexcept {
  if (!drainMayWait_.load(std::memory_order_seq_cst)) [[likely]]
    return;
  drainMayWait_.store(false, std::memory_order_relaxed);
  WorkerPool::shared().expedite();
}

void SerialQueue::enter(Order) {
  if (tryEnter()) return;
  while (!waitForTurn(itemWaiter)) {
  }
}

bool SerialQueue::waitForTurn(std::uint32_t flags) {
  if (isHeld(this)) reportMisuse("dispatch_sync for a queue that the calling code holds would never return", this);
  SyncWaiter waiter(false);
  waiter.queueFlags = flags;
  while (!tryAppend(&waiter)) {
    if (tryEnter()) return true;
  }
  hurry();
  return waiter.wait(this);
}

void SerialQueue::leave(Order) noexcept {
  if (!tryLeave()) passOn();
}

/// Takes over what was enqueued since the last call, oldest first.
void SerialQueue::collect() noexcept {
  std::uintptr_t word = inbox_.load(std::memory_order_relaxed);
  if (itemOf(word) == nullptr) return;
  while (!inbox_.compare_exchange_weak(word, word & flagBits, std::memory_order_acquire, std::memory_order_relaxed)) {
  }
  Item* newest = itemOf(word);
  readyIsRelaxed_ = true;
  while (newest != nullptr) {
    Item* older = newest->queueLink;
    newest->queueLink = ready_;
    ready_ = newest;
    readyIsRelaxed_ = readyIsRelaxed_ && (newest->queueFlags & itemRelaxed) != 0;
    newest = older;
  }
}

std::size_t SerialQueue::collectAll() noexcept {
  Item* older = ready_;
  ready_ = nullptr;
  const bool olderIsRelaxed = older == nullptr || readyIsRelaxed_;
  readyIsRelaxed_ = true;
  collect();
  readyIsRelaxed_ = readyIsRelaxed_ && olderIsRelaxed;
  if (older != nullptr) {
    Item* last = older;
    while (last->queueLink != nullptr) last = last->queueLink;
    last->queueLink = std::exchange(ready_, older);
  }
  std::size_t count = 0;
  for (const Item* item = ready_; item != nullptr; item = item->queueLink) ++count;
  return count;
}

Item* SerialQueue::peek() noexcept {
  if (ready_ == nullptr) collect();
  return ready_;
}

Item* SerialQueue::takeReady() noexcept {
  Item* item = ready_;
  ready_ = item->queueLink;
  return item;
}

void SerialQueue::putBack(Item* item, std::uint32_t flags) noexcept {
  item->queueFlags = flags;
  item->queueLink = std::exchange(ready_, item);
  readyIsRelaxed_ = false;
}

// Inlined into each caller, because a drain calls it for every item.
template <class Grants>
[[gnu::always_inline]] inline Item* SerialQueue::nextToRun(Grants grants) noexcept {
  Item* item;
  while ((item = peek()) == nullptr) {
    if (tryIdle() || tryPark()) return nullptr;
  }
  // Checked after peek(): what was enqueued after the suspension stays.
  if (isSuspended() && tryPark()) return nullptr;
  if ((item->queueFlags & itemWaiter) == 0 || !grants()) return item;
  takeReady();
  static_cast<SyncWaiter*>(item)->grant();
  return nullptr;
}

void SerialQueue::drain() {
  const FrameScope frame(this);
  std::size_t count = 0;
  while (Item* item = nextToRun(always)) {
    if (++count % itemsPerTurn == 0 && (target() != nullptr || WorkerPool::shared().hasReadyItems())) {
      schedule(Delivery::prompt);
      return;
    }
    takeReady();
    runItem(item, this);
  }
}

Item* SerialQueue::lastTowards(const HelpGoal& goal) noexcept {
  (void)collectAll();
  if (goal.queue == this) return ready_;
  Item* last = nullptr;
  for (Item* item = ready_; item != nullptr; item = item->queueLink) {
    if (goal.isReachedBy(item)) last = item;
  }
  return last;
}

void SerialQueue::drainTowards(const HelpGoal& goal) {
  const FrameScope frame(this);
  const Item* last = lastTowards(goal);
  while (Item* item = nextToRun(always)) {
    if (last == nullptr) {
      schedule(Delivery::prompt);
      return;
    }
    takeReady();
    if (item == last) {
      last = nullptr;
      runTowards(item, this, goal);
    } else {
      runItem(item, this);
    }
  }
}

void SerialQueue::passOn() noexcept {
  if (nextToRun([this] { return grantsAtOnce(); }) == nullptr) return;
  // If every item is relaxed, the drain is relaxed too. What is enqueued from now on sees drainMayWait_; what was
  // enqueued before that was set is in the inbox.
  drainMayWait_.store(readyIsRelaxed_, std::memory_order_seq_cst);
  if (inbox_.load(std::memory_order_seq_cst) != emptyWord) drainMayWait_.store(false, std::memory_order_relaxed);
  schedule(drainMayWait_.load(std::memory_order_relaxed) ? Delivery::relaxed : Delivery::prompt);
}

bool SerialQueue::tryPark() noexcept {
  std::uintptr_t word = inbox_.load(std::memory_order_relaxed);
  do {
    if ((word & suspendedBit) == 0) return false;
  } while (!inbox_.compare_exchange_weak(word, word | parkedBit, std::memory_order_release, std::memory_order_relaxed));
  return true;
}

void SerialQueue::beginSuspension() noexcept {
  mustPark_.store(true, std::memory_order_relaxed);
  std::uintptr_t word = inbox_.load(std::memory_order_relaxed);
  while (!inbox_.compare_exchange_weak(word, word == idleBit ? suspendedBit | parkedBit : word | suspendedBit,
                                       std::memory_order_acq_rel, std::memory_order_relaxed)) {
  }
}

void SerialQueue::endSuspension() noexcept {
  mustPark_.store(false, std::memory_order_relaxed);
  std::uintptr_t word = inbox_.load(std::memory_order_relaxed);
  while (!inbox_.compare_exchange_weak(word, word & ~(suspendedBit | parkedBit), std::memory_order_acq_rel,
                                       std::memory_order_relaxed)) {
  }
  if ((word & parkedBit) != 0) passOn();
}

void SerialQueue::resetAfterFork() noexcept {
  specifics().resetAfterFork();
  ready_ = nullptr;
  readyIsRelaxed_ = true;
  drainMayWait_.store(false, std::memory_order_relaxed);
  const bool suspended = resetSuspensionAfterFork();
  mustPark_.store(suspended, std::memory_order_relaxed);
  if (framesOnThisThread(this) > 0) {
    inbox_.store(suspended ? suspendedBit : emptyWord, std::memory_order_relaxed);
  } else {
    inbox_.store(suspended ? suspendedBit | parkedBit : idleBit, std::memory_order_relaxed);
  }
}

}  // namespace norvik::detail
