// NorvikCore/linq/NSArray+LINQ_Quantifier.h - whether all elements of an array, or any, pass a test.
//
//   linq_all(*payslips, [](const Payslip& p) { return p.netPay() >= 0; });
//
// LINQ.h tells what all queries have in common.
#pragma once

#include "NorvikCore/linq/NSArray+LINQ_Filtering.h"

namespace norvik {

/// True if the predicate is true for every element. The predicate is not called for the elements after the first one
/// for which it is false. True for an empty array and without a predicate.
template <class Predicate>
[[nodiscard]] bool linq_all(const NSArray& receiver, Predicate&& predicate) {
  if (detail::isAbsent(predicate)) return true;
  if constexpr (!detail::isNullptr<Predicate>) {
    return linq_firstOrNil(receiver, [&](const Value& each) { return !detail::test(predicate, each); }).isAbsent();
  }
  __builtin_unreachable();
}

/// True if the predicate is true for at least one element. The predicate is not called for the elements after that one.
/// False for an empty array and without a predicate.
template <class Predicate>
[[nodiscard]] bool linq_any(const NSArray& receiver, Predicate&& predicate) {
  return !linq_firstOrNil(receiver, predicate).isAbsent();
}

}  // namespace norvik
