// NorvikCore/platform/kernel/ReferenceDate.h - the moment that dates count from.
#pragma once

#include <cstdint>

namespace norvik::kernel {

/// 2001-01-01 00:00:00 UTC, where a Date counts from, in seconds since 1970-01-01 00:00:00 UTC.
inline constexpr std::int64_t referenceDateInUnixSeconds = 978'307'200;

}  // namespace norvik::kernel
