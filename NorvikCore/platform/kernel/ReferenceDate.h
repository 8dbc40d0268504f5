// NorvikCore/platform/kernel/ReferenceDate.h - the origin of dates.
#pragma once

#include <cstdint>

namespace norvik::kernel {

/// 2001-01-01 00:00:00 UTC, the origin of a Date, in seconds since 1970-01-01 00:00:00 UTC.
inline constexpr std::int64_t referenceDateInUnixSeconds = 978'307'200;

}  // namespace norvik::kernel
