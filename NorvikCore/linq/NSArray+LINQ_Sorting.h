// NorvikCore/linq/NSArray+LINQ_Sorting.h - the elements of an array in another order.
//
//   linq_orderByAscending(*amounts);
//   linq_orderByKey(*payslips, "employee.name", true);
//
// The order is that of Value::compare, which raises NSInvalidArgumentException for values that have none, such as a
// text beside a number. Every sort is stable. Elements' compare must not change an array. The results are new arrays.
// LINQ.h tells what all queries have in common.
#pragma once

#include "NorvikCore/platform/collections/NSMutableArray.h"

namespace norvik {

[[nodiscard]] NK_EXPORT Ref<NSArray> linq_orderByAscending(const NSArray& receiver);

/// The ascending result reversed. Equal elements therefore come out in the reverse of their order. This is deliberate.
[[nodiscard]] NK_EXPORT Ref<NSArray> linq_orderByDescending(const NSArray& receiver);

/// By what each element has at the key path, which is read once for each. Elements with equal values keep their order
/// in both directions. Those with no value, or with the null marker, are the least: first ascending, last descending.
[[nodiscard]] NK_EXPORT Ref<NSArray> linq_orderByKey(const NSArray& receiver, const NSString& keyPath, bool ascending);

/// The last element first.
[[nodiscard]] NK_EXPORT Ref<NSMutableArray> linq_reverse(const NSArray& receiver);

}  // namespace norvik
