#include "NorvikCore/linq/NSArray+LINQ_Sets.h"

namespace norvik {
namespace {

bool isNothing(const Ref<NSArray>& other) noexcept { return !other || detail::_isEmpty(*other); }

detail::DistinctValues valuesOf(const NSArray& array) {
  detail::DistinctValues values;
  for (const Value& element : array) values.add(element);
  return values;
}

}  // namespace

Ref<NSArray> linq_distinct(const NSArray& receiver) {
  if (detail::_isEmpty(receiver)) return detail::itself(receiver);
  return make<NSMutableArray>(valuesOf(receiver).take());
}

Ref<NSArray> linq_except(const NSArray& receiver, const Ref<NSArray>& other) {
  if (detail::_isEmpty(receiver) || isNothing(other)) return detail::itself(receiver);
  const detail::DistinctValues excluded = valuesOf(*other);
  return linq_where(receiver, [&](const Value& element) { return !excluded.contains(element); });
}

Ref<NSArray> linq_intersect(const NSArray& receiver, const Ref<NSArray>& other) {
  if (detail::_isEmpty(receiver) || isNothing(other)) return detail::itself(receiver);
  const detail::DistinctValues wanted = valuesOf(*other);
  detail::DistinctValues common;
  for (const Value& element : receiver) {
    if (wanted.contains(element)) common.add(element);
  }
  return make<NSMutableArray>(std::move(common).take());
}

Ref<NSArray> linq_union(const NSArray& receiver, const Ref<NSArray>& other) {
  if (detail::_isEmpty(receiver)) return other;
  if (isNothing(other)) return detail::itself(receiver);
  detail::DistinctValues values = valuesOf(receiver);
  for (const Value& element : *other) values.add(element);
  return make<NSMutableArray>(std::move(values).take());
}

}  // namespace norvik
