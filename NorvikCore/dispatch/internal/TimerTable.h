// NorvikCore/dispatch/internal/TimerTable.h - what is known of every name that a wrapper's timers have had.
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

/// Names stay for ever, in the order in which they came. Confined to the lock of its wrapper's timers.
class TimerTable {
 public:
  /// Null for a name that is not known. An entry stays where it is.
  [[nodiscard]] NamedTimer* find(const NSString& name) {
    const auto found = byName_.find(name);
    return found == byName_.end() ? nullptr : found->second;
  }
  void add(const NSString& name, double date, const Ref<TSKTimerValue>& timer) {
    byName_.emplace(name, &entries_.emplace_back(NamedTimer{name, date, timer}));
  }
  [[nodiscard]] std::deque<NamedTimer>& entries() noexcept { return entries_; }
  /// As it is now, for whoever asks: by name a dictionary of "DateValue" and, of a live timer, "TimerValue".
  [[nodiscard]] Ref<NSDictionary> dictionary() const;

 private:
  std::deque<NamedTimer> entries_;
  std::unordered_map<NSString, NamedTimer*> byName_;
};

}  // namespace norvik::detail
