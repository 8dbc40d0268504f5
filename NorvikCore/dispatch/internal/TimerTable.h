// NorvikCore/dispatch/internal/TimerTable.h - the names that a wrapper's timers have had, with their times and timers.
#pragma once

#include "NorvikCore/dispatch/internal/LiveTimer.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/OrderedTable.h"
#include "NorvikCore/platform/object/Ref.h"
#include "NorvikCore/platform/values/NSString.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <utility>

namespace norvik::detail {

struct NamedTimer {
  NSString name;
  double date = -std::numeric_limits<double>::infinity();  // the last planned time, in seconds
  LiveTimerHandle live{};
};

/// Names are never removed and keep the order of insertion. The address of an entry does not change. Confined to the
/// lock of its wrapper's timers.
class TimerTable {
 public:
  /// Null for an unknown name.
  [[nodiscard]] NamedTimer* find(const NSString& name) {
    const std::size_t position = positionOf(name, hashOf(name));
    return position == PositionIndex::notFound ? nullptr : &entries_[position];
  }
  /// The name's entry, which is new for an unknown name.
  [[nodiscard]] NamedTimer& entryFor(NSString&& name) {
    const std::uint32_t hash = hashOf(name);
    const std::size_t position = positionOf(name, hash);
    if (position != PositionIndex::notFound) return entries_[position];
    NamedTimer& added = entries_.emplace_back(NamedTimer{std::move(name)});
    index_.append(hash);
    return added;
  }
  [[nodiscard]] std::deque<NamedTimer>& entries() noexcept { return entries_; }
  /// A copy of the table: by name, a dictionary of "DateValue" and, for a live timer, "TimerValue".
  [[nodiscard]] Ref<NSDictionary> dictionary() const;

 private:
  [[nodiscard]] static std::uint32_t hashOf(const NSString& name) noexcept {
    return PositionIndex::spread(std::hash<NSString>()(name));
  }
  [[nodiscard]] std::size_t positionOf(const NSString& name, std::uint32_t hash) const {
    return index_.find(hash, [&](std::size_t position) { return entries_[position].name == name; });
  }

  std::deque<NamedTimer> entries_;
  PositionIndex index_;  // of the entries, by name
};

}  // namespace norvik::detail
