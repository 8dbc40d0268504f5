#include "NorvikCore/linq/NSDictionary+LINQ_Sets.h"

#include "NorvikCore/linq/NSArray+LINQ_Sets.h"

namespace norvik {
namespace {

bool _isEmpty(const NSDictionary& dictionary) noexcept { return dictionary.count() == 0; }

bool isNothing(const Ref<NSDictionary>& other) noexcept { return !other || _isEmpty(*other); }

/// The receiver's first entry for each of these values, in the order of the values.
Ref<NSMutableDictionary> _aux_dictionary_with_values(const NSDictionary& receiver, const NSArray& values) {
  std::vector<const NSDictionary::Entry*> firsts;
  detail::PositionIndex index;
  const auto find = [&](const Value& value, std::uint32_t hash) {
    return index.find(hash, [&](std::size_t at) { return firsts[at]->value == value; });
  };
  for (const NSDictionary::Entry& entry : receiver) {
    const std::uint32_t hash = detail::PositionIndex::spread(entry.value.hash());
    if (find(entry.value, hash) != detail::PositionIndex::notFound) continue;
    firsts.push_back(&entry);
    index.append(hash);
  }
  std::vector<NSDictionary::Entry> mapped;
  for (const Value& value : values) {
    const std::size_t at = find(value, detail::PositionIndex::spread(value.hash()));
    if (at != detail::PositionIndex::notFound) mapped.push_back(*firsts[at]);
  }
  return make<NSMutableDictionary>(std::move(mapped));
}

}  // namespace

Ref<NSDictionary> linq_distinct(const NSDictionary& receiver) {
  if (_isEmpty(receiver)) return detail::itself(receiver);
  const Ref<NSArray> values = linq_distinct(*receiver.allValues());
  return _aux_dictionary_with_values(receiver, *values);
}

Ref<NSDictionary> linq_except(const NSDictionary& receiver, const Ref<NSDictionary>& other) {
  if (_isEmpty(receiver) || isNothing(other)) return detail::itself(receiver);
  const Ref<NSArray> values = linq_except(*receiver.allValues(), other->allValues());
  return _aux_dictionary_with_values(receiver, *values);
}

Ref<NSDictionary> linq_intersect(const NSDictionary& receiver, const Ref<NSDictionary>& other) {
  if (_isEmpty(receiver) || isNothing(other)) return detail::itself(receiver);
  const Ref<NSArray> values = linq_intersect(*receiver.allValues(), other->allValues());
  return _aux_dictionary_with_values(receiver, *values);
}

Ref<NSDictionary> linq_merge(const NSDictionary& receiver, const Ref<NSDictionary>& other) {
  if (_isEmpty(receiver)) return other;
  if (isNothing(other)) return detail::itself(receiver);
  const Ref<NSMutableDictionary> merged = receiver.mutableCopy();
  for (const NSDictionary::Entry& entry : *other) {
    if (!merged->find(entry.key)) merged->setObject(entry.value, entry.key);
  }
  return merged;
}

}  // namespace norvik
