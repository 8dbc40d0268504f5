// NorvikCore/linq/NSDictionary+LINQ_Aggregation.h - the values of a dictionary reduced to one, in the order of the
// entries.
//
//   linq_sum(*totalsByDepartment);
//
// Each operation is the one of NSArray+LINQ_Aggregation.h, applied to the values. LINQ.h tells what all queries have in
// common.
#pragma once

#include "NorvikCore/linq/Aggregates.h"
#include "NorvikCore/linq/NSDictionary+LINQ_Filtering.h"
#include "NorvikCore/platform/collections/NSDictionary.h"

namespace norvik {

/// Absent for an empty dictionary. Without an accumulator, the receiver itself unless it is empty.
template <class Accumulator>
[[nodiscard]] Value linq_aggregate(const NSDictionary& receiver, Accumulator&& accumulator) {
  return detail::accumulated(receiver, accumulator);
}

/// The Decimal 0 for an empty dictionary; the value itself if it is the only one; otherwise the sum as a Decimal.
[[nodiscard]] NK_EXPORT Value linq_sum(const NSDictionary& receiver);
[[nodiscard]] NK_EXPORT Decimal linq_avg(const NSDictionary& receiver);
[[nodiscard]] NK_EXPORT Value linq_max(const NSDictionary& receiver);
[[nodiscard]] NK_EXPORT Value linq_min(const NSDictionary& receiver);

/// The number of values that pass; all values count if there is no predicate.
template <class Predicate>
[[nodiscard]] std::size_t linq_count(const NSDictionary& receiver, Predicate&& predicate) {
  if (detail::isAbsent(predicate)) return receiver.count();
  std::size_t count = 0;
  if constexpr (!detail::isNullptr<Predicate>) {
    detail::walk(
        receiver, [&](const auto& entry) { return detail::test(predicate, entry.value); },
        [&](const auto&, bool passes) {
          count += passes;
          return true;
        });
  }
  return count;
}

// The results of the collection operators @sum, @avg, @max and @min for the key of each value.
[[nodiscard]] NK_EXPORT Decimal linq_sumForKey(const NSDictionary& receiver, const NSString& key);
[[nodiscard]] NK_EXPORT Decimal linq_avgForKey(const NSDictionary& receiver, const NSString& key);
[[nodiscard]] NK_EXPORT Value linq_maxForKey(const NSDictionary& receiver, const NSString& key);
[[nodiscard]] NK_EXPORT Value linq_minForKey(const NSDictionary& receiver, const NSString& key);

}  // namespace norvik
