// NorvikCore/platform/dispatch/Item.h - the unit of work that a queue holds.
//
// dispatch_async() makes an item of each block, closure and list node in one allocation. If many small values of one
// kind are sent, the letters of a mailbox are cheaper (internal/Mailbox.h).
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>
#include <utility>

namespace norvik::detail {

/// An item belongs to the queue from the moment it is enqueued until its run function is called, which disposes of it.
struct Item {
  using Run = void (*)(Item* item);

  Item* queueLink = nullptr;  // used by the queue
  Run run = nullptr;
  std::uint32_t queueFlags = 0;  // used by the queue
  std::uint32_t group = 0;       // the number of the group that waits for it; 0: none
};

/// How soon a worker must serve a queue that was idle.
enum class Delivery : std::uint8_t {
  prompt,   // a sleeping worker is woken
  relaxed,  // a delay of about a millisecond is acceptable: the caller wakes no worker while any worker is awake
};

/// How long an item lives. Brief items share pages of 4 KiB; a page is reused when its last item is freed.
enum class ItemLife : std::uint8_t { brief, lasting };

/// Memory for an item. Any thread may free it.
[[nodiscard]] NK_EXPORT void* allocateItem(std::size_t size, ItemLife life = ItemLife::brief);
NK_EXPORT void freeItem(void* item) noexcept;

/// A block: a closure of any movable type that is run once and destroyed, on the thread that runs it, even when it
/// throws.
template <class Closure>
class BlockItem final : public Item {
 public:
  template <class F>
  [[nodiscard]] static Item* make(F&& closure, ItemLife life) {
    constexpr bool plain = alignof(BlockItem) <= alignof(std::max_align_t);
    void* memory = nullptr;
    if constexpr (plain) {
      memory = allocateItem(sizeof(BlockItem), life);
    } else {
      memory = ::operator new (sizeof(BlockItem), std::align_val_t{alignof(BlockItem)});
    }
    try {
      return ::new (memory) BlockItem(std::forward<F>(closure));
    } catch (...) {
      free(memory);
      throw;
    }
  }

 private:
  template <class F>
  explicit BlockItem(F&& closure) : closure_(std::forward<F>(closure)) {
    run = [](Item* item) {
      const Disposal disposal{static_cast<BlockItem*>(item)};
      static_cast<void>(std::move(disposal.block->closure_)());
    };
  }

  struct Disposal {
    BlockItem* block;
    ~Disposal() {
      block->~BlockItem();
      BlockItem::free(block);
    }
  };

  static void free(void* memory) noexcept {
    if constexpr (alignof(BlockItem) <= alignof(std::max_align_t)) {
      freeItem(memory);
    } else {
      ::operator delete (memory, std::align_val_t{alignof(BlockItem)});
    }
  }

  Closure closure_;
};

template <class F>
[[nodiscard]] Item* makeBlock(F&& closure, ItemLife life = ItemLife::brief) {
  return BlockItem<std::decay_t<F>>::make(std::forward<F>(closure), life);
}

}  // namespace norvik::detail
