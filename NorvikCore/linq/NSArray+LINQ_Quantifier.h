// NorvikCore/linq/NSArray+LINQ_Quantifier.h - whether all elements of an array, or any, pass a test.
//
//   linq_all(*payslips, [](const Payslip& p) { return p.netPay() >= 0; });
//
// LINQ.h tells what all queries have in common.
#pragma once

#include "NorvikCore/linq/NSArray+LINQ_Filtering.h"

namespace norvik {

/// The predicate is true for every element; it is not called for those behind the first for which it is false. True
/// for an empty array and with no predicate.
template <class Predicate>
[[nodiscard]] bool linq_all(const NSArray& receiver, Predicate&& predicate) {
  if (detail::isAbsent(predicate)) return true;
  if constexpr (!detail::isNullptr<Predicate>) {
    return linq_firstOrNil(receiver, [&](const Value& each) { return !detail::test(predicate, each); }).isAbsent();
  }
  __builtin_unreachable();
}

/// The predicate is true for an element; it is not called for those behind. False for an empty array and with no
/// predicate.
template <class Predicate>
[[nodiscard]] bool linq_any(const NSArray& receiver, Predicate&& predicate) {
  return !linq_firstOrNil(receiver, predicate).isAbsent();
}

}  // namespace norvik
