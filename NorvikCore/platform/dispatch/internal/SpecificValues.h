// NorvikCore/platform/dispatch/internal/SpecificValues.h - the values that a queue keeps under keys.
//
// A look-up takes no lock, and neither does replacing a value that never had a destructor. Slots are only added, never
// removed; a slot with a null value counts as absent.
#pragma once

#include "NorvikCore/platform/dispatch/internal/QueueMutex.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <utility>

namespace norvik::detail {

class SpecificValues {
 public:
  SpecificValues() = default;
  /// Passes each value that has a destructor to it, on the global queue.
  ~SpecificValues();
  SpecificValues(const SpecificValues&) = delete;
  SpecificValues& operator=(const SpecificValues&) = delete;

  [[nodiscard]] void* find(const void* key) const noexcept;
  void set(const void* key, void* value, void (*destructor)(void*));
  /// Removes the key if its value is `value`, which has no destructor.
  void clear(const void* key, void* value) noexcept;
  void resetAfterFork() noexcept { mutex_.resetAfterFork(); }

 private:
  struct Slot {
    std::atomic<const void*> key{nullptr};  // null: free, or replaced by another slot
    std::atomic<void*> value{nullptr};
    void (*destructor)(void*) = nullptr;  // guarded by mutex_
    std::atomic<bool> plain{false};       // values in it never have a destructor
  };
  struct Chunk {
    std::array<Slot, 4> slots;
    std::atomic<Chunk*> next{nullptr};
  };

  [[nodiscard]] const Slot* slotOf(const void* key) const noexcept;
  [[nodiscard]] Slot* slotOf(const void* key) noexcept { return const_cast<Slot*>(std::as_const(*this).slotOf(key)); }
  Slot& freeSlot() NK_REQUIRES(mutex_);

  QueueMutex mutex_;
  std::size_t used_ NK_GUARDED_BY(mutex_) = 0;
  Chunk first_;
};

}  // namespace norvik::detail
