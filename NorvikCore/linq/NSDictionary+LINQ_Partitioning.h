// NorvikCore/linq/NSDictionary+LINQ_Partitioning.h - the first entries of a dictionary, or all except those, in the
// order of the entries.
//
//   linq_take(*codes, 1);                  // of {a: 1, b: 2}: {a: 1}
//   linq_skip(*codes, 1);                  // of {a: 1, b: 2}: {b: 2}
//
// The result is a new dictionary of the receiver's class. If no object of that class can be created without arguments,
// it is of the nearest superclass for which that is possible. LINQ.h tells what all queries have in common.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"

namespace norvik {

/// The entries after the first `count`; empty if the dictionary has at most `count` entries.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> linq_skip(const NSDictionary& receiver, std::size_t count);

/// The first `count` entries if the dictionary has more than `count`. Otherwise the result is empty. This is
/// deliberate: taking as many as there are, or more, gives nothing.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> linq_take(const NSDictionary& receiver, std::size_t count);

}  // namespace norvik
