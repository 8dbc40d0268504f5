// NorvikCore/platform/values/NSInteger.h - the platform's integers: 64 bits on every machine.
#pragma once

#include <cstdint>

namespace norvik {

using NSInteger = std::int64_t;
using NSUInteger = std::uint64_t;

/// The place of what was not found. It fits both integers.
inline constexpr NSUInteger NSNotFound = INT64_MAX;

}  // namespace norvik
