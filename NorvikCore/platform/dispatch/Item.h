// NorvikCore/platform/dispatch/Item.h - what a queue is a list of.
//
// dispatch_async() makes an item of each block, closure and list node in one allocation. Many small things of one kind
// are better sent as letters (internal/Mailbox.h).
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>
#include <utility>

namespace norvik::detail {

/// An item belongs to the queue from when it is queued to when it is handed to its run function, which disposes of it.
struct Item {
  using Run = void (*)(Item* item);

  Item* queueLink = nullptr;  // the queue's
  Run run = nullptr;
  std::uint32_t queueFlags = 0;  // the queue's
  std::uint32_t group = 0;       // the group that waits for it, by its number; 0: none
};

/// How soon somebody must come to a queue that was idle.
enum class Delivery : std::uint8_t {
  prompt,   // a worker that sleeps is woken
  relaxed,  // about a millisecond later is early enough while any worker is awake: the caller wakes nobody then
};

/// How long an item lives. Brief ones share pages of 4 KiB, which come free when the last of their items does.
enum class ItemLife : std::uint8_t { brief, lasting };

/// Memory for an item, to be given back on any thread.
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
