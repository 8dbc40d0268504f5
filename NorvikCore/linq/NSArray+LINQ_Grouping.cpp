#include "NorvikCore/linq/NSArray+LINQ_Grouping.h"

#include "NorvikCore/linq/NSArray+LINQ_Filtering.h"

namespace norvik {

void detail::Grouping::add(const Value& key, const Value& element) {
  checkPresent(key, "linq_groupBy:, key");
  Group* group = groups_.find(key);
  if (!group) group = groups_.insert({key, {}}).first;
  group->elements.push_back(element);
}

Ref<NSMutableDictionary> detail::Grouping::take() && {
  std::vector<NSDictionary::Entry> entries;
  entries.reserve(groups_.count());
  for (Group& group : groups_.takeAll()) {
    entries.push_back({std::move(group.key), make<NSMutableArray>(std::move(group.elements))});
  }
  return make<NSMutableDictionary>(std::move(entries));
}

Ref<NSMutableArray> linq_lookup(const NSArray& receiver, const Value& key) {
  return linq_where(receiver, [&](const NSDictionary& entries) { return !entries.objectForKey(key).isAbsent(); });
}

}  // namespace norvik
