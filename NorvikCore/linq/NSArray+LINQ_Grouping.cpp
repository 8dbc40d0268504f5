#include "NorvikCore/linq/NSArray+LINQ_Grouping.h"

#include "NorvikCore/linq/NSArray+LINQ_Filtering.h"

#include <algorithm>

namespace norvik {

void detail::Grouping::add(Value&& key) {
  checkPresent(key, "linq_groupBy:, key");
  Group* group = groups_.find(key);
  if (!group) group = groups_.insert({std::move(key), groups_.count(), 0}).first;
  ++group->count;
  numbers_.push_back(static_cast<std::uint32_t>(group->number));
}

Ref<NSMutableDictionary> detail::Grouping::groups(std::span<const Value> elements) && {
  std::vector<Group> groups = groups_.takeAll();
  std::vector<std::vector<Value>> members(groups.size());
  for (const Group& group : groups) members[group.number].reserve(group.count);
  const std::size_t count = std::min(elements.size(), numbers_.size());
  for (std::size_t i = 0; i < count; ++i) members[numbers_[i]].push_back(elements[i]);
  std::vector<NSDictionary::Entry> entries;
  entries.reserve(groups.size());
  for (Group& group : groups) {
    entries.push_back({std::move(group.key), make<NSMutableArray>(std::move(members[group.number]))});
  }
  return make<NSMutableDictionary>(std::move(entries));
}

Ref<NSMutableArray> linq_lookup(const NSArray& receiver, const Value& key) {
  return linq_where(receiver, [&](const NSDictionary& entries) { return !entries.objectForKey(key).isAbsent(); });
}

}  // namespace norvik
