// NorvikCore/linq/NSArray+LINQ_Aggregation.h - an array reduced to one value.
//
//   linq_sum(*NSArray::arrayWithObjects(0.10_dec, 0.20_dec));      // 0.30
//   linq_sumForKey(*payslips, "netPay");
//   linq_max(*amounts);
//
// Money is exact: sums and averages are Decimals, made from the exact decimal value of each number and never from a
// binary fraction. They round nothing to a scale; not-a-number makes the result not-a-number, and overflow raises. A
// quotient that does not end has 38 digits. What is no number raises NSInvalidArgumentException.
//
// A single element is not computed with, whatever it is: linq_sum, linq_max and linq_min return it itself. LINQ.h tells
// what all queries have in common.
#pragma once

#include "NorvikCore/linq/Aggregates.h"
#include "NorvikCore/linq/NSArray+LINQ_Filtering.h"
#include "NorvikCore/platform/collections/NSArray.h"

namespace norvik {

/// The running result: first the first element, then what the accumulator gives for each next element and the running
/// result, in this order. Absent for an empty array. For another one with no accumulator, the receiver itself.
template <class Accumulator>
[[nodiscard]] Value linq_aggregate(const NSArray& receiver, Accumulator&& accumulator) {
  return detail::accumulated(receiver, accumulator);
}

/// The Decimal 0 for an empty array, the element itself where it is the only one (an integer stays an integer, a text
/// raises nothing), else the sum as a Decimal.
[[nodiscard]] NK_EXPORT Value linq_sum(const NSArray& receiver);
/// The sum by the count; 0 for an empty array.
[[nodiscard]] NK_EXPORT Decimal linq_avg(const NSArray& receiver);
/// The element that is the greatest or the least by Value::compare, the first of equal ones; the Decimal 0 for an empty
/// array. Elements that do not compare raise NSInvalidArgumentException.
[[nodiscard]] NK_EXPORT Value linq_max(const NSArray& receiver);
[[nodiscard]] NK_EXPORT Value linq_min(const NSArray& receiver);

/// How many elements pass; all of them with no predicate.
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

// What the collection operators @sum, @avg, @max and @min give for the key of each element; the key may be a path. Over
// nothing, the sum and the average are 0, and the greatest and the least are absent. An absent or null value at the key
// is left out of all but the average, which divides by the number of all elements. An empty key raises
// NSInvalidArgumentException.
[[nodiscard]] NK_EXPORT Decimal linq_sumForKey(const NSArray& receiver, const NSString& key);
[[nodiscard]] NK_EXPORT Decimal linq_avgForKey(const NSArray& receiver, const NSString& key);
[[nodiscard]] NK_EXPORT Value linq_maxForKey(const NSArray& receiver, const NSString& key);
[[nodiscard]] NK_EXPORT Value linq_minForKey(const NSArray& receiver, const NSString& key);

}  // namespace norvik
