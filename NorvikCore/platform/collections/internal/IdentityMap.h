// NorvikCore/platform/collections/internal/IdentityMap.h - payloads under objects as such, whatever isEqual says; the
// objects are kept, or only watched until they go.
//
// Nothing is let go inside: what an operation takes out it hands to its caller, who lets it go when no lock is held.
// Confined: one thread at a time, while watched objects may go on any.
#pragma once

#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/platform/object/internal/PointerTable.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace norvik::detail {

template <class Payload>
class IdentityMap {
 public:
  struct Entry {
    Ref<NSObject> kept;      ///< one of the two
    Weak<NSObject> watched;  ///<
    Payload payload{};

    /// Empty where a watched object is gone.
    [[nodiscard]] Ref<NSObject> object() const { return kept ? kept : watched.lock(); }
    [[nodiscard]] bool isGone() const noexcept { return !kept && watched.isGone(); }
  };

  explicit IdentityMap(bool keepsObjects) noexcept : keepsObjects_(keepsObjects) {}

  /// Those of objects that are gone count too, until they are taken out.
  [[nodiscard]] std::size_t size() const noexcept { return table_.size(); }

  /// An entry that an earlier object left at the same address does not count.
  [[nodiscard]] Payload* find(const NSObject& object) {
    Entry* entry = table_.find(&object);
    return entry && !entry->isGone() ? &entry->payload : nullptr;
  }

  /// The object's payload, made by default where there was none. What earlier objects left behind goes to `left`, now
  /// and then all of it, so that a map whose objects come and go does not grow.
  Payload& findOrInsert(NSObject& object, std::vector<Entry>& left) {
    if (!keepsObjects_ && table_.size() >= sweepAt_) sweep(left);
    Entry& entry = table_[&object];
    if (entry.kept || !entry.watched.isGone()) return entry.payload;
    if (entry.watched != Weak<NSObject>()) left.push_back(std::exchange(entry, Entry()));
    if (keepsObjects_) {
      entry.kept = ref(object);
    } else {
      entry.watched = Weak<NSObject>(&object);
    }
    return entry.payload;
  }

  [[nodiscard]] Entry take(const NSObject& object) { return table_.take(&object); }
  [[nodiscard]] std::vector<Entry> takeAll() {
    std::vector<Entry> all;
    all.reserve(table_.size());
    table_.takeAll([&](Entry&& entry) { all.push_back(std::move(entry)); });
    return all;
  }

  /// Takes out the entries for which `isDead(entry)` is true.
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

  /// visit(object, payload) for each object that is not gone, in no order.
  template <class Visit>
  void forEach(Visit&& visit) const {
    table_.forEach([&](const void*, const Entry& entry) {
      if (Ref<NSObject> object = entry.object()) visit(std::move(object), entry.payload);
    });
  }

 private:
  static constexpr std::size_t leastSweep = 32;

  PointerTable<Entry> table_;
  std::size_t sweepAt_ = leastSweep;
  const bool keepsObjects_;
};

}  // namespace norvik::detail
