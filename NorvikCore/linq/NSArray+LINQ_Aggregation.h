// NorvikCore/linq/NSArray+LINQ_Aggregation.h - an array reduced to one value.
//
//   linq_sum(*NSArray::arrayWithObjects(0.10_dec, 0.20_dec));      // 0.30
//   linq_sumForKey(*payslips, "netPay");
//   linq_max(*amounts);
//
// Money is exact: sums and averages are Decimals, computed from the exact decimal value of each number and never from a
// binary fraction. They are not rounded to a scale. A quotient without an end has 38 digits. Not-a-number makes the
// result not-a-number. Overflow raises. A value that is not a number raises NSInvalidArgumentException.
//
// A single element is returned unchanged by linq_sum, linq_max and linq_min, even if it is not a number. LINQ.h tells
// what all queries have in common.
#pragma once

#include "NorvikCore/linq/Aggregates.h"
#include "NorvikCore/linq/NSArray+LINQ_Filtering.h"
#include "NorvikCore/platform/collections/NSArray.h"

namespace norvik {

/// Returns the last running result. The first running result is the first element; each next one is
/// accumulator(element, running result). Absent for an empty array. Without an accumulator, the receiver itself unless
/// it is empty.
template <class Accumulator>
[[nodiscard]] Value linq_aggregate(const NSArray& receiver, Accumulator&& accumulator) {
  return detail::accumulated(receiver, accumulator);
}

/// The Decimal 0 for an empty array. The element itself if it is the only one: an integer stays an integer, and a text
/// raises nothing. Otherwise the sum as a Decimal.
[[nodiscard]] NK_EXPORT Value linq_sum(const NSArray& receiver);
/// The sum divided by the count; 0 for an empty array.
[[nodiscard]] NK_EXPORT Decimal linq_avg(const NSArray& receiver);
/// The greatest or the least element by Value::compare, and the first of equal ones. The Decimal 0 for an empty array.
/// Elements that cannot be compared raise NSInvalidArgumentException.
[[nodiscard]] NK_EXPORT Value linq_max(const NSArray& receiver);
[[nodiscard]] NK_EXPORT Value linq_min(const NSArray& receiver);

/// The number of elements that pass; all elements count if there is no predicate.
template <class Predicate>
[[nodiscard]] std::size_t linq_count(const NSArray& receiver, Predicate&& predicate) {
  if (detail::isAbsent(predicate)) return receiver.count();
  std::size_t count = 0;
  if constexpr (!detail::isNullptr<Predicate>) {
    detail::walk(
        receiver, [&](const Value& element) { return detail::test(predicate, element); },
        [&](const Value&, bool passes) {
          count += passes;
          return true;
        });
  }
  return count;
}

// The results of the collection operators @sum, @avg, @max and @min for the key of each element; the key may be a path.
// Without any value, the sum and the average are 0, and the greatest and the least are absent. Absent and null values
// at the key are ignored, but the average divides by the number of all elements. An empty key raises
// NSInvalidArgumentException.
[[nodiscard]] NK_EXPORT Decimal linq_sumForKey(const NSArray& receiver, const NSString& key);
[[nodiscard]] NK_EXPORT Decimal linq_avgForKey(const NSArray& receiver, const NSString& key);
[[nodiscard]] NK_EXPORT Value linq_maxForKey(const NSArray& receiver, const NSString& key);
[[nodiscard]] NK_EXPORT Value linq_minForKey(const NSArray& receiver, const NSString& key);

}  // namespace norvik
