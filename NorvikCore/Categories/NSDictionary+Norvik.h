// NorvikCore/Categories/NSDictionary+Norvik.h - the entries of a dictionary as the items of a pop-up list.
//
//   keyValuePairs(*months);            // of {5: May, 4: April}: the pairs 5 : May, 4 : April
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"

namespace norvik {

/// An NKKeyValuePair for each entry, in the order of the entries.
[[nodiscard]] NK_EXPORT Ref<NSMutableArray> keyValuePairs(const NSDictionary& dictionary);

}  // namespace norvik
