// NorvikCore/platform/values/internal/ShownMillisecond.h - the millisecond that a text shows of a date.
#pragma once

#include "NorvikCore/platform/values/CivilDate.h"
#include "NorvikCore/platform/values/Date.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace norvik::detail {

struct ShownMoment {
  explicit ShownMoment(Date date) noexcept : seconds(wholeSeconds(date)) {
    const double instant = instantInRange(date.timeIntervalSinceReferenceDate());
    // A double of seconds is slightly below most thousandths; the difference grows with the distance from 2001.
    const double shortfall = 0.001 + std::fabs(instant) * 3e-13;
    millisecond = std::min(static_cast<std::int32_t>((instant - static_cast<double>(seconds)) * 1000 + shortfall), 999);
  }

  std::int64_t seconds;  // since the reference date
  std::int32_t millisecond;
};

/// Seconds since 1970, to be stored. They equal the date's to a microsecond. If they are rounded to a microsecond and
/// then truncated to a millisecond, the result is the millisecond that a text shows.
[[nodiscard]] inline double storedSeconds(Date date) noexcept {
  constexpr double lastPart = 0.000998;  // of a millisecond's 0.001
  const ShownMoment shown(date);
  const double begin = (static_cast<double>(shown.seconds) + NSTimeIntervalSince1970) + shown.millisecond / 1000.0;
  return std::clamp(date.timeIntervalSince1970(), begin, begin + lastPart);
}

}  // namespace norvik::detail
