#include "NorvikCore/linq/NSArray+LINQ_Grouping.h"

#include "NorvikCore/linq/NSArray+LINQ_Filtering.h"
#include "NorvikCore/platform/collections/internal/CollectionAccess.h"

#include <algorithm>
#include <bit>
#include <cstdint>

namespace norvik {

detail::Grouping::Grouping(std::size_t count) : likely_(std::bit_ceil(std::min<std::size_t>(count + 1, 1024))) {
  numbers_.reserve(count);
  objects_.reserve(count);
}

template <class Key, class IsKey>
std::size_t detail::Grouping::find(std::size_t hash, const Key& key, IsKey isKey) {
  const std::uint32_t spread = PositionIndex::spread(hash);
  const std::size_t number = index_.find(spread, [&](std::size_t at) { return isKey(groups_[at].key); });
  if (number != PositionIndex::notFound) return number;
  groups_.push_back({key, 0});
  index_.append(spread);
  return groups_.size() - 1;
}

void detail::Grouping::addTo(std::size_t number, const Value& element) {
  ++groups_[number].count;
  numbers_.push_back(static_cast<std::uint32_t>(number));
  objects_.emplace_back(element.object());
}

void detail::Grouping::add(const Value& element, const Value& key) {
  if (const NSString* text = key.string()) return add(element, *text);
  checkPresent(key, "linq_groupBy:, key");
  addTo(find(key.hash(), key, [&](const Value& other) { return other == key; }), element);
}

void detail::Grouping::add(const Value& element, const NSString& key) {
  const auto place = reinterpret_cast<std::uintptr_t>(key.view().data());
  std::uint32_t& likely = likely_[PositionIndex::spread(place) & (likely_.size() - 1)];
  if (likely < groups_.size()) {
    const NSString* text = groups_[likely].key.string();
    if (text && text->isIdenticalTo(key)) return addTo(likely, element);
  }
  const std::size_t number = find(std::hash<NSString>()(key), key, [&](const Value& other) {
    const NSString* text = other.string();
    return text && *text == key;
  });
  likely = static_cast<std::uint32_t>(number);
  addTo(number, element);
}

Ref<NSMutableDictionary> detail::Grouping::groups(std::span<const Value> elements) && {
  std::vector<std::vector<Value>> members(groups_.size());
  for (std::size_t i = 0; i < groups_.size(); ++i) members[i].reserve(groups_[i].count);
  const std::size_t count = std::min(elements.size(), numbers_.size());
  for (std::size_t i = 0; i < count; ++i) {
    std::vector<Value>& group = members[numbers_[i]];
    if (objects_[i])
      group.emplace_back(std::move(objects_[i]));
    else
      group.push_back(elements[i]);
    // Prefetches the end of the group, because there are too many groups for the processor's own prefetching.
    __builtin_prefetch(group.data() + group.size() + 2, 1);
  }
  std::vector<NSDictionary::Entry> entries;
  entries.reserve(groups_.size());
  for (std::size_t i = 0; i < groups_.size(); ++i) {
    auto group = make<NSMutableArray>();
    CollectionAccess::elements(*group) = std::move(members[i]);
    entries.push_back({std::move(groups_[i].key), std::move(group)});
  }
  return make<NSMutableDictionary>(std::move(entries));
}

Ref<NSMutableArray> linq_lookup(const NSArray& receiver, const Value& key) {
  return linq_where(receiver, [&](const NSDictionary& entries) { return !entries.objectForKey(key).isAbsent(); });
}

}  // namespace norvik
