#include "NorvikCore/dispatch/internal/TimerTable.h"

#include "NorvikCore/platform/collections/NSMutableDictionary.h"

namespace norvik::detail {

Ref<NSDictionary> TimerTable::dictionary() const {
  constexpr NSString dateKey = "DateValue";
  constexpr NSString timerKey = "TimerValue";
  const auto all = NSMutableDictionary::dictionaryWithCapacity(entries_.size());
  for (const NamedTimer& timer : entries_) {
    const auto entry = NSMutableDictionary::dictionaryWith({{dateKey, timer.date}});
    if (timer.live) entry->setObject(timer.live, timerKey);
    all->setObject(entry->copy(), timer.name);
  }
  return all->copy();
}

}  // namespace norvik::detail
