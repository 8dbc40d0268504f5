// NorvikCore/platform/dispatch/internal/ItemList.h - a first-in-first-out list of items, linked through the items.
#pragma once

#include "NorvikCore/platform/dispatch/Item.h"

namespace norvik::detail {

// Flags that a queue sets on an item while it holds the item.
inline constexpr std::uint32_t itemWaiter = 1;   // a SyncWaiter: a thread that waits for its turn
inline constexpr std::uint32_t itemBarrier = 2;  // runs alone on a concurrent queue
inline constexpr std::uint32_t itemRelaxed = 4;  // enqueued with Delivery::relaxed
inline constexpr unsigned itemFlagBits = 4;      // the bits above are a mailbox's: how many letters come before

class ItemList {
 public:
  [[nodiscard]] bool empty() const noexcept { return first_ == nullptr; }
  [[nodiscard]] Item* first() const noexcept { return first_; }
  void append(Item* item) noexcept {
    item->queueLink = nullptr;
    (first_ == nullptr ? first_ : last_->queueLink) = item;
    last_ = item;
  }
  Item* takeFirst() noexcept {
    Item* item = first_;
    first_ = item->queueLink;
    return item;
  }
  /// Null if there is none.
  template <class Condition>
  [[nodiscard]] Item* takeFirstThat(const Condition& condition) noexcept {
    Item* before = nullptr;
    for (Item* item = first_; item != nullptr; before = item, item = item->queueLink) {
      if (!condition(item)) continue;
      (before == nullptr ? first_ : before->queueLink) = item->queueLink;
      if (item == last_) last_ = before;
      return item;
    }
    return nullptr;
  }
  template <class Condition>
  [[nodiscard]] bool anyIs(const Condition& condition) const noexcept {
    for (Item* item = first_; item != nullptr; item = item->queueLink) {
      if (condition(item)) return true;
    }
    return false;
  }
  void forget() noexcept { first_ = last_ = nullptr; }

 private:
  Item* first_ = nullptr;
  Item* last_ = nullptr;
};

}  // namespace norvik::detail
