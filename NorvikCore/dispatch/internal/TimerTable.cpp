#include "NorvikCore/dispatch/internal/TimerTable.h"

#include "NorvikCore/platform/collections/NSMutableDictionary.h"

namespace norvik::detail {

Ref<NSDictionary> TimerTable::dictionary() const {
  constexpr NSString dateKey = "DateValue";
  constexpr NSString timerKey = "TimerValue";
  const auto all = NSMutableDictionary::dictionaryWithCapacity(entries_.size());
  for (const NamedTimer& timer : entries_) {
    const auto entry = NSMutableDictionary::dictionaryWith({{dateKey, timer.date}});
    if (LiveTimer* live = timer.live.core()) {
      if (!live->value) live->value = make<TSKTimerValue>();
      entry->setObject(live->value, timerKey);
    }
    all->setObject(entry->copy(), timer.name);
  }
  return all->copy();
}

}  // namespace norvik::detail
