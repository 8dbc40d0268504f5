// NorvikCore/Categories/NSArray+NKKeyValuePair.h - an array of pairs, asked by their ids.
//
//   nk_pairNameWithId(*months, 4);                     // "April"
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/values/NKKeyValuePair.h"

namespace norvik {

/// The first pair with that id, or an empty Ref. An element before it that is no pair raises
/// NSInvalidArgumentException.
[[nodiscard]] NK_EXPORT Ref<NKKeyValuePair> nk_keyValuePairWithId(const NSArray& pairs, std::int32_t id);
/// That pair's name, absent where there is none.
[[nodiscard]] NK_EXPORT Value nk_pairNameWithId(const NSArray& pairs, std::int32_t id);

}  // namespace norvik
