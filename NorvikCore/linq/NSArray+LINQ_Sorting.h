// NorvikCore/linq/NSArray+LINQ_Sorting.h - the elements of an array in another order.
//
//   linq_orderByAscending(*amounts);
//   linq_orderByKey(*payslips, "employee.name", true);
//
// The order is that of Value::compare, which raises NSInvalidArgumentException for two values without an order, such as
// a text and a number. Every sort is stable. The compare of elements must not change an array. The results are new
// arrays. LINQ.h tells what all queries have in common.
#pragma once

#include "NorvikCore/platform/collections/NSMutableArray.h"

namespace norvik {

[[nodiscard]] NK_EXPORT Ref<NSArray> linq_orderByAscending(const NSArray& receiver);

/// The ascending result reversed. Therefore equal elements come out in the reverse of their order. This is deliberate.
[[nodiscard]] NK_EXPORT Ref<NSArray> linq_orderByDescending(const NSArray& receiver);

/// Sorts by the value that each element has at the key path; the value is read once for each element. Elements with
/// equal values keep their order in both directions. Elements without a value, or with the null marker, are the least:
/// they come first if ascending, last if descending.
[[nodiscard]] NK_EXPORT Ref<NSArray> linq_orderByKey(const NSArray& receiver, const NSString& keyPath, bool ascending);

/// The elements in reverse order: the last one comes first.
[[nodiscard]] NK_EXPORT Ref<NSMutableArray> linq_reverse(const NSArray& receiver);

}  // namespace norvik
