// NorvikCore/linq/NSDictionary+LINQ_Converting.h - the values of a dictionary as a mutable array, in the order of the
// entries.
//
//   linq_toArray(*totals);
//   linq_toArrayWhereKey(*totals, [](const NSString& department) { return department != "Sales"; });
//
// Without a predicate the result has all values. LINQ.h tells what all queries have in common.
#pragma once

#include "NorvikCore/linq/Closure.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"

namespace norvik {

[[nodiscard]] NK_EXPORT Ref<NSMutableArray> linq_toArray(const NSDictionary& receiver);

namespace detail {

/// The values of the entries for which `passes(entry)` is true.
template <class Passes>
Ref<NSMutableArray> valuesWhere(const NSDictionary& receiver, Passes&& passes) {
  std::vector<Value> passed;
  walk(receiver, passes, [&](const NSDictionary::Entry& entry, bool itPasses) {
    if (itPasses) passed.push_back(entry.value);
    return true;
  });
  return make<NSMutableArray>(std::move(passed));
}

}  // namespace detail

template <class Predicate>
[[nodiscard]] Ref<NSMutableArray> linq_toArrayWhereKey(const NSDictionary& receiver, Predicate&& predicate) {
  if constexpr (!detail::isNullptr<Predicate>) {
    if (!detail::isAbsent(predicate))
      return detail::valuesWhere(receiver, [&](const auto& entry) { return detail::test(predicate, entry.key); });
  }
  return linq_toArray(receiver);
}

template <class Predicate>
[[nodiscard]] Ref<NSMutableArray> linq_toArrayWhereValue(const NSDictionary& receiver, Predicate&& predicate) {
  if constexpr (!detail::isNullptr<Predicate>) {
    if (!detail::isAbsent(predicate))
      return detail::valuesWhere(receiver, [&](const auto& entry) { return detail::test(predicate, entry.value); });
  }
  return linq_toArray(receiver);
}

/// The values of the entries for which predicate(key, value) is true.
template <class Predicate>
[[nodiscard]] Ref<NSMutableArray> linq_toArrayWhereKeyValue(const NSDictionary& receiver, Predicate&& predicate) {
  if constexpr (!detail::isNullptr<Predicate>) {
    if (!detail::isAbsent(predicate)) {
      return detail::valuesWhere(receiver,
                                 [&](const auto& entry) { return detail::test(predicate, entry.key, entry.value); });
    }
  }
  return linq_toArray(receiver);
}

}  // namespace norvik
