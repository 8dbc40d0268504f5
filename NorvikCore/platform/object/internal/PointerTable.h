// NorvikCore/platform/object/internal/PointerTable.h - a table of data about objects, with their addresses as keys.
//
// Open addressing with linear probing: one allocation for the whole table, and one or two cache lines per look-up;
// constant time on average, whatever the number of entries. A table that shrinks releases memory. The table never
// dereferences its keys. Pointers to payloads are valid until the next insertion or removal. Confined: one thread at a
// time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace norvik::detail {

template <class Payload>
class PointerTable {
 public:
  [[nodiscard]] std::size_t size() const noexcept { return size_; }

  [[nodiscard]] Payload* find(const void* key) noexcept {
    if (slots_.empty()) return nullptr;
    for (std::size_t at = home(key);; at = next(at)) {
      if (slots_[at].key == key) return &slots_[at].payload;
      if (!slots_[at].key) return nullptr;
    }
  }
  [[nodiscard]] const Payload* find(const void* key) const noexcept {
    return const_cast<PointerTable*>(this)->find(key);
  }

  /// The payload of that key, which must not be null; default-constructed if there was none.
  Payload& operator[](const void* key) {
    if (Payload* found = find(key)) return *found;
    if ((size_ + 1) * 4 > slots_.size() * 3) resize(slots_.empty() ? leastSlots : slots_.size() * 2);
    ++size_;
    return insertNew(key, Payload());
  }

  /// Removes and returns the payload; a default-constructed one if there was none.
  Payload take(const void* key) {
    return takeIf(key, [](const Payload&) { return true; });
  }
  /// The same if there is one and shallTake(payload) is true; that may change the payload.
  template <class ShallTake>
  Payload takeIf(const void* key, ShallTake&& shallTake) {
    if (slots_.empty()) return Payload();
    std::size_t at = home(key);
    while (slots_[at].key != key) {
      if (!slots_[at].key) return Payload();
      at = next(at);
    }
    if (!shallTake(slots_[at].payload)) return Payload();
    Payload taken = std::move(slots_[at].payload);
    closeGap(at);
    --size_;
    if (slots_.size() > leastSlots && size_ * 8 < slots_.size()) resize(slots_.size() / 4);
    return taken;
  }

  /// Calls visit(key, payload) for each entry, in no particular order; `visit` must not change the table.
  template <class Visit>
  void forEach(Visit&& visit) const {
    for (const Slot& slot : slots_) {
      if (slot.key) visit(slot.key, slot.payload);
    }
  }

  /// Empties the table; visit(payload) may move from each payload.
  template <class Visit>
  void takeAll(Visit&& visit) {
    std::vector<Slot> all;
    all.swap(slots_);
    size_ = 0;
    for (Slot& slot : all) {
      if (slot.key) visit(std::move(slot.payload));
    }
  }

 private:
  struct Slot {
    const void* key = nullptr;
    Payload payload{};
  };
  static constexpr std::size_t leastSlots = 8;

  /// Fibonacci hashing: the upper bits of the product depend on all bits of the address.
  [[nodiscard]] std::size_t home(const void* key) const noexcept {
    return (reinterpret_cast<std::uintptr_t>(key) * 0x9E3779B97F4A7C15u) >> shift_;
  }
  [[nodiscard]] std::size_t next(std::size_t at) const noexcept { return (at + 1) & (slots_.size() - 1); }

  Payload& insertNew(const void* key, Payload&& payload) {
    std::size_t at = home(key);
    while (slots_[at].key) at = next(at);
    slots_[at].key = key;
    slots_[at].payload = std::move(payload);
    return slots_[at].payload;
  }

  /// Moves entries that were displaced by the one at `gap` back towards their home, so that no tombstones are needed.
  void closeGap(std::size_t gap) {
    for (std::size_t at = next(gap); slots_[at].key; at = next(at)) {
      const std::size_t wanted = home(slots_[at].key);
      const bool mayMove = gap <= at ? (wanted <= gap || wanted > at) : (wanted <= gap && wanted > at);
      if (!mayMove) continue;
      slots_[gap] = std::move(slots_[at]);
      gap = at;
    }
    slots_[gap] = Slot();
  }

  void resize(std::size_t count) {
    std::vector<Slot> old(count);
    old.swap(slots_);
    shift_ = 64;
    for (std::size_t n = count; n > 1; n /= 2) --shift_;
    for (Slot& slot : old) {
      if (slot.key) insertNew(slot.key, std::move(slot.payload));
    }
  }

  std::vector<Slot> slots_;  ///< empty, or a power of two of them; a null key marks a free slot
  std::size_t size_ = 0;
  int shift_ = 64;
};

}  // namespace norvik::detail
