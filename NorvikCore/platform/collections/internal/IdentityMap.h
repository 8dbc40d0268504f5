// NorvikCore/platform/collections/internal/IdentityMap.h - a map from objects to payloads by identity, independent of
// isEqual; the objects are retained or held weakly.
//
// The map itself releases nothing: an operation returns what it removes, and the caller releases it when no lock is
// held. Confined: one thread at a time; any thread may destroy objects that are held weakly.
#pragma once

#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/platform/object/internal/PointerTable.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace norvik::detail {

/// An object, retained or held weakly, in one word, because a table has room for more entries than it holds.
class HeldObject {
 public:
  HeldObject() noexcept = default;
  HeldObject(NSObject& object, bool isRetained) noexcept
      : word_(isRetained ? reinterpret_cast<std::uintptr_t>(ref(object).take())
                         : reinterpret_cast<std::uintptr_t>(weakRecord(&object)) | 1) {}
  HeldObject(HeldObject&& other) noexcept : word_(std::exchange(other.word_, 0)) {}
  HeldObject& operator=(HeldObject&& other) noexcept {
    std::swap(word_, other.word_);
    return *this;
  }
  ~HeldObject() {
    if (NSObject* retained = retainedObject()) {
      release(retained);
    } else if (word_ != 0) {
      release(record());
    }
  }

  [[nodiscard]] bool isEmpty() const noexcept { return word_ == 0; }
  /// True if it is empty, or the object is held weakly and is destroyed.
  [[nodiscard]] bool isGone() const noexcept { return !retainedObject() && (isEmpty() || detail::isGone(record())); }
  [[nodiscard]] Ref<NSObject> object() const noexcept {
    if (NSObject* retained = retainedObject()) return ref(*retained);
    return isEmpty() ? nullptr : Ref<NSObject>::adopt(lock(record()));
  }

 private:
  [[nodiscard]] NSObject* retainedObject() const noexcept {
    return (word_ & 1) == 0 ? reinterpret_cast<NSObject*>(word_) : nullptr;
  }
  [[nodiscard]] SideRecord* record() const noexcept { return reinterpret_cast<SideRecord*>(word_ - 1); }

  std::uintptr_t word_ = 0;  ///< the object, or its side record with the lowest bit set
};

template <class Payload>
class IdentityMap {
 public:
  struct Entry {
    HeldObject held;
    Payload payload{};

    /// Empty if a weakly held object is destroyed.
    [[nodiscard]] Ref<NSObject> object() const noexcept { return held.object(); }
    [[nodiscard]] bool isGone() const noexcept { return held.isGone(); }
  };

  explicit IdentityMap(bool keepsObjects) noexcept : keepsObjects_(keepsObjects) {}

  /// Entries of destroyed objects count too, until they are removed.
  [[nodiscard]] std::size_t size() const noexcept { return table_.size(); }

  /// Ignores an entry of an earlier object at the same address.
  [[nodiscard]] Payload* find(const NSObject& object) {
    Entry* entry = table_.find(&object);
    return entry && !entry->isGone() ? &entry->payload : nullptr;
  }

  /// The object's payload, default-constructed if there was none. Appends entries of destroyed objects that it removes
  /// to `left`: one at the same address, and from time to time all of them, so that the map does not grow if its
  /// objects are short-lived.
  Payload& findOrInsert(NSObject& object, std::vector<Entry>& left) {
    if (!keepsObjects_ && table_.size() >= sweepAt_) sweep(left);
    Entry& entry = table_[&object];
    if (!entry.isGone()) return entry.payload;
    if (!entry.held.isEmpty()) left.push_back(std::exchange(entry, Entry()));
    entry.held = HeldObject(object, keepsObjects_);
    return entry.payload;
  }

  [[nodiscard]] Entry take(const NSObject& object) { return table_.take(&object); }
  /// The same if shallTake(payload) is true; that may change the payload. Ignores an entry of an earlier object at the
  /// same address.
  template <class ShallTake>
  [[nodiscard]] Entry takeIf(const NSObject& object, ShallTake&& shallTake) {
    return table_.takeIf(&object, [&](Entry& entry) { return !entry.isGone() && shallTake(entry.payload); });
  }
  [[nodiscard]] std::vector<Entry> takeAll() {
    std::vector<Entry> all;
    all.reserve(table_.size());
    table_.takeAll([&](Entry&& entry) { all.push_back(std::move(entry)); });
    return all;
  }

  /// Removes the entries for which `isDead(entry)` is true and appends them to `left`.
  template <class IsDead>
  void sweep(std::vector<Entry>& left, IsDead&& isDead) {
    std::vector<const void*> dead;
    table_.forEach([&](const void* key, const Entry& entry) {
      if (isDead(entry)) dead.push_back(key);
    });
    for (const void* key : dead) left.push_back(table_.take(key));
    sweepAt_ = std::max(leastSweep, 2 * table_.size());
  }
  void sweep(std::vector<Entry>& left) {
    sweep(left, [](const Entry& entry) { return entry.isGone(); });
  }

  /// Calls visit(object, payload) for each object that is not destroyed, in no particular order.
  template <class Visit>
  void forEach(Visit&& visit) const {
    table_.forEach([&](const void*, const Entry& entry) {
      if (Ref<NSObject> object = entry.object()) visit(std::move(object), entry.payload);
    });
  }
  /// The same without the objects, none of which it retains.
  template <class Visit>
  void forEachPayload(Visit&& visit) const {
    table_.forEach([&](const void*, const Entry& entry) {
      if (!entry.isGone()) visit(entry.payload);
    });
  }

 private:
  static constexpr std::size_t leastSweep = 32;

  PointerTable<Entry> table_;
  std::size_t sweepAt_ = leastSweep;
  const bool keepsObjects_;
};

}  // namespace norvik::detail
