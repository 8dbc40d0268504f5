// NorvikCore/linq/NSDictionary+LINQ_Partitioning.h - the first entries of a dictionary, or all but those, in the order
// of the entries.
//
// The result is a new dictionary of the receiver's class; where that cannot be made without arguments, of the nearest
// class above it that can. LINQ.h tells what all queries have in common.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"

namespace norvik {

/// The entries behind the first `count`; none where there are not more than `count`.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> linq_skip(const NSDictionary& receiver, std::size_t count);

/// The first `count` entries where there are more than `count`. Where there are not, the result is empty. This is
/// deliberate: taking as many as there are, or more, gives nothing.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> linq_take(const NSDictionary& receiver, std::size_t count);

}  // namespace norvik
