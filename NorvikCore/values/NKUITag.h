// NorvikCore/values/NKUITag.h - tags and identifiers that no two views of a process share.
//
//   NKDeriveUniqueUITag(2);        // 2 in the high 32 bits; in the low ones 329, then 330, ...
//   NKViewIdentifier("row");       // "row_0", then "row_1", whatever the prefix
//
// Each function has one counter for the whole process. Main thread only, where the user interface is built.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

#include <cstdint>

namespace norvik {

/// The group in the high 32 bits and the next number in the low 32 bits. Only the low 32 bits of `group` count.
[[nodiscard]] NK_EXPORT std::int64_t NKDeriveUniqueUITag(std::int64_t group);

[[nodiscard]] NK_EXPORT NSString NKViewIdentifier(const NSString& prefix);

}  // namespace norvik
