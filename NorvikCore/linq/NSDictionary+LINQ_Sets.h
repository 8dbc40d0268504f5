// NorvikCore/linq/NSDictionary+LINQ_Sets.h - dictionaries as sets of values, and the merge of two dictionaries.
//
//   linq_distinct(*codes);                 // of {a: 1, b: 1, c: 2}: {a: 1, c: 2}
//   linq_merge(*chosen, defaults);         // the entries of chosen, and the defaults for every other key
//
// All operations except linq_merge work on the values. They then map each remaining value back to the first key that
// has an equal value. Later keys with an equal value are missing from the result, even if no value was removed. This is
// deliberate. Every entry of a result is an entry of the receiver: a key keeps its own value, also if an equal one (1.5
// and 1.50) was found. If two rules of a function apply, the one that is stated first decides. An absent other
// dictionary is an empty Ref.
//
// The results are mutable dictionaries, unless the header says that the receiver or the other one is returned. The cost
// is that of hashing the values, and constant time for each. LINQ.h tells what all queries have in common.
#pragma once

#include "NorvikCore/platform/collections/NSMutableDictionary.h"

namespace norvik {

/// One entry for each distinct value. An empty receiver is itself returned.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> linq_distinct(const NSDictionary& receiver);

/// One entry for each distinct value that equals no value of the other dictionary. The receiver itself if either
/// dictionary is empty or there is no other.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> linq_except(const NSDictionary& receiver, const Ref<NSDictionary>& other);

/// One entry for each distinct value that equals a value of the other dictionary. The receiver itself if either
/// dictionary is empty or there is no other. This is deliberate, although the intersection with an empty set is empty.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> linq_intersect(const NSDictionary& receiver, const Ref<NSDictionary>& other);

/// The entries of the receiver, then the entries of the other dictionary whose keys the receiver does not have. If the
/// receiver is empty, the other dictionary itself (an empty Ref if there is none). If there is no other dictionary or
/// it is empty, the receiver itself.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> linq_merge(const NSDictionary& receiver, const Ref<NSDictionary>& other);

}  // namespace norvik
