// NorvikCore/linq/NSDictionary+LINQ_Sets.h - dictionaries as sets of values, and two dictionaries as one.
//
//   linq_distinct(*codes);                 // of {a: 1, b: 1, c: 2}: {a: 1, c: 2}
//   linq_merge(*chosen, defaults);         // the entries of chosen, and the defaults for every other key
//
// All but linq_merge work on the values and then map those that are left back to keys: each to the first key with an
// equal value. Keys behind it that have equal values are lost from the result, also where nothing was to be removed.
// This is deliberate. Every entry of a result is an entry of the receiver: of two equal values (1.5 and 1.50) a key
// keeps its own. Where two rules hold, the first one counts. An absent other dictionary is an empty Ref.
//
// The results are mutable dictionaries, unless the header says that the receiver or the other is returned. Costs what
// hashing the values costs, in constant time each. LINQ.h tells what all queries have in common.
#pragma once

#include "NorvikCore/platform/collections/NSMutableDictionary.h"

namespace norvik {

/// One entry for each distinct value. An empty receiver is returned itself.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> linq_distinct(const NSDictionary& receiver);

/// An entry for each value that equals none of the other's. The receiver itself where either is empty or there is no
/// other.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> linq_except(const NSDictionary& receiver, const Ref<NSDictionary>& other);

/// An entry for each value that equals one of the other's. The receiver itself where either is empty or there is no
/// other. This is deliberate: what it has in common with nothing is everything.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> linq_intersect(const NSDictionary& receiver, const Ref<NSDictionary>& other);

/// The entries of the receiver, then those of the other whose keys the receiver does not have. The other itself (empty
/// if there is none) where the receiver is empty; the receiver itself where there is no other or it is empty.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> linq_merge(const NSDictionary& receiver, const Ref<NSDictionary>& other);

}  // namespace norvik
