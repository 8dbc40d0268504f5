#include "NorvikCore/platform/dispatch/internal/SpecificValues.h"

#include "NorvikCore/platform/dispatch/Queue.h"

#include <memory>
#include <utility>

namespace norvik::detail {
namespace {

void destroyLater(void* value, void (*destructor)(void*)) {
  dispatch_async(dispatch_get_global_queue(), [value, destructor] { destructor(value); });
}

}  // namespace

SpecificValues::~SpecificValues() {
  std::unique_ptr<Chunk> owned;
  for (Chunk* chunk = &first_; chunk != nullptr; owned.reset(chunk)) {
    for (Slot& slot : chunk->slots) {
      void* value = slot.value.load(std::memory_order_relaxed);
      if (slot.destructor != nullptr && value != nullptr) destroyLater(value, slot.destructor);
    }
    chunk = chunk->next.load(std::memory_order_relaxed);
  }
}

const SpecificValues::Slot* SpecificValues::slotOf(const void* key) const noexcept {
  for (const Chunk* chunk = &first_; chunk != nullptr; chunk = chunk->next.load(std::memory_order_acquire)) {
    for (const Slot& slot : chunk->slots) {
      if (slot.key.load(std::memory_order_acquire) == key) return &slot;
    }
  }
  return nullptr;
}

void* SpecificValues::find(const void* key) const noexcept {
  if (key == nullptr) return nullptr;
  const Slot* slot = slotOf(key);
  return slot == nullptr ? nullptr : slot->value.load(std::memory_order_acquire);
}

SpecificValues::Slot& SpecificValues::freeSlot() {
  std::size_t index = used_++;
  Chunk* chunk = &first_;
  for (; index >= chunk->slots.size(); index -= chunk->slots.size()) {
    if (chunk->next.load(std::memory_order_relaxed) == nullptr) chunk->next.store(new Chunk, std::memory_order_release);
    chunk = chunk->next.load(std::memory_order_relaxed);
  }
  return chunk->slots[index];
}

void SpecificValues::set(const void* key, void* value, void (*destructor)(void*)) {
  if (key == nullptr) return;
  if (destructor == nullptr) {
    Slot* slot = slotOf(key);
    if (slot != nullptr && slot->plain.load(std::memory_order_relaxed)) {
      slot->value.store(value, std::memory_order_release);
      return;
    }
  }
  std::pair<void*, void (*)(void*)> old{nullptr, nullptr};
  {
    const QueueLock lock(mutex_);
    Slot* slot = slotOf(key);
    if (slot == nullptr && value == nullptr) return;
    if (slot != nullptr && slot->plain.load(std::memory_order_relaxed)) {
      // Another thread may be writing this slot without the lock, so a value with a destructor gets a slot of its own.
      if (destructor == nullptr) {
        slot->value.store(value, std::memory_order_release);
        return;
      }
      slot->key.store(nullptr, std::memory_order_release);
      slot = nullptr;
    }
    if (slot == nullptr) {
      slot = &freeSlot();
      slot->plain.store(destructor == nullptr, std::memory_order_relaxed);
      slot->value.store(value, std::memory_order_relaxed);
      slot->destructor = destructor;
      slot->key.store(key, std::memory_order_release);
      return;
    }
    old = {slot->value.load(std::memory_order_relaxed), slot->destructor};
    slot->value.store(value, std::memory_order_release);
    slot->destructor = destructor;
  }
  if (old.first != nullptr && old.second != nullptr) destroyLater(old.first, old.second);
}

void SpecificValues::clear(const void* key, void* value) noexcept {
  if (Slot* slot = slotOf(key)) slot->value.compare_exchange_strong(value, nullptr, std::memory_order_acq_rel);
}

}  // namespace norvik::detail
