// NorvikCore/dispatch/internal/TimerTable.h - the names that a wrapper's timers have had, with their times and timers.
#pragma once

#include "NorvikCore/dispatch/internal/TSKTimerValue.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/object/Ref.h"
#include "NorvikCore/platform/values/NSString.h"

#include <cstddef>
#include <deque>
#include <unordered_map>

namespace norvik::detail {

struct NamedTimer {
  NSString name;
  double date;  // the last planned time, in seconds
  Ref<TSKTimerValue> live;
};

/// Names are never removed and keep the order of insertion. Confined to the lock of its wrapper's timers.
class TimerTable {
 public:
  /// Null for an unknown name. The address of an entry does not change.
  [[nodiscard]] NamedTimer* find(const NSString& name) {
    const auto found = byName_.find(name);
    return found == byName_.end() ? nullptr : found->second;
  }
  void add(const NSString& name, double date, const Ref<TSKTimerValue>& timer) {
    byName_.emplace(name, &entries_.emplace_back(NamedTimer{name, date, timer}));
  }
  [[nodiscard]] std::deque<NamedTimer>& entries() noexcept { return entries_; }
  /// A copy of the table: by name, a dictionary of "DateValue" and, for a live timer, "TimerValue".
  [[nodiscard]] Ref<NSDictionary> dictionary() const;

 private:
  std::deque<NamedTimer> entries_;
  std::unordered_map<NSString, NamedTimer*> byName_;
};

}  // namespace norvik::detail
