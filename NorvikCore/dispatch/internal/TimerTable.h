// NorvikCore/dispatch/internal/TimerTable.h - the names that a wrapper's timers have had, with their times and timers.
#pragma once

#include "NorvikCore/dispatch/internal/TSKTimerValue.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/object/Ref.h"
#include "NorvikCore/platform/values/NSString.h"

#include <cstddef>
#include <deque>
#include <limits>
#include <string_view>
#include <unordered_map>

namespace norvik::detail {

struct NamedTimer {
  NSString name;
  double date = -std::numeric_limits<double>::infinity();  // the last planned time, in seconds
  Ref<TSKTimerValue> live{};
};

/// Names are never removed and keep the order of insertion. The address of an entry does not change. Confined to the
/// lock of its wrapper's timers.
class TimerTable {
 public:
  /// Null for an unknown name.
  [[nodiscard]] NamedTimer* find(const NSString& name) {
    const auto found = byName_.find(name.view());
    return found == byName_.end() ? nullptr : found->second;
  }
  /// The name's entry, which is new for an unknown name.
  [[nodiscard]] NamedTimer& entryFor(const NSString& name) {
    NamedTimer*& entry = byName_.try_emplace(name.view(), nullptr).first->second;
    if (entry == nullptr) entry = &entries_.emplace_back(NamedTimer{name});
    return *entry;
  }
  [[nodiscard]] std::deque<NamedTimer>& entries() noexcept { return entries_; }
  /// A copy of the table: by name, a dictionary of "DateValue" and, for a live timer, "TimerValue".
  [[nodiscard]] Ref<NSDictionary> dictionary() const;

 private:
  std::deque<NamedTimer> entries_;
  std::unordered_map<std::string_view, NamedTimer*> byName_;  // views of the entries' names
};

}  // namespace norvik::detail
