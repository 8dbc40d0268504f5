// NorvikCore/linq/NSArray+LINQ_Partitioning.h - the first elements of an array, or all except those.
//
//   linq_take(*payslips, 10);
//   linq_skip(*payslips, 10);
//
// LINQ.h tells what all queries have in common. Both results are new arrays.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"

namespace norvik {

/// The elements after the first `count`; empty if the array has at most `count` elements.
[[nodiscard]] NK_EXPORT Ref<NSArray> linq_skip(const NSArray& receiver, std::size_t count);

/// The first `count` elements if the array has more than `count`. Otherwise the result is empty. This is deliberate:
/// taking as many as there are, or more, gives nothing.
[[nodiscard]] NK_EXPORT Ref<NSArray> linq_take(const NSArray& receiver, std::size_t count);

}  // namespace norvik
