// NorvikCore/Categories/NSArray+NKKeyValuePair.h - finding a pair in an array by its id.
//
//   nk_pairNameWithId(*months, 4);                     // "April"
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/values/NKKeyValuePair.h"

namespace norvik {

/// The first pair with that id, or an empty Ref. If an element before that pair is not a pair, it raises
/// NSInvalidArgumentException.
[[nodiscard]] NK_EXPORT Ref<NKKeyValuePair> nk_keyValuePairWithId(const NSArray& pairs, std::int32_t id);
/// That pair's name; absent if there is no such pair.
[[nodiscard]] NK_EXPORT Value nk_pairNameWithId(const NSArray& pairs, std::int32_t id);

}  // namespace norvik
