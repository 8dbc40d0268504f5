// programs/norvik-log/WallClock.h - converts between instants and the wall times of a zone.
//
// Both are milliseconds since 1970; a wall time counts as if its zone were UTC.
// Threads: confined; a copy is independent.
#pragma once

#include <cstdint>
#include <string>

#include "NorvikCore/platform/foundation/NSTimeZone.h"

namespace norvik_log {

class WallClock {
 public:
  /// The instants of a wall time. They differ if the wall time occurred twice. For a skipped wall time, both are the
  /// instant of the change.
  struct Instants {
    std::int64_t first = 0, second = 0;
  };

  explicit WallClock(norvik::Ref<norvik::NSTimeZone> zone);

  [[nodiscard]] int offsetSeconds(std::int64_t instant) const noexcept;
  [[nodiscard]] std::int64_t wallTime(std::int64_t instant) const noexcept {
    return instant + offsetSeconds(instant) * std::int64_t{1000};
  }
  [[nodiscard]] Instants instants(std::int64_t wallTime);
  [[nodiscard]] bool isShownTwice(std::int64_t wallTime) {
    const Instants both = instants(wallTime);
    return both.first != both.second;
  }

 private:
  [[nodiscard]] Instants instantsNearChange(std::int64_t wallTime, int before, int after) const noexcept;

  norvik::Ref<norvik::NSTimeZone> zone_;
  std::int64_t quietDay_;  // days since 1970 in wall time; the offset does not change around this day
  int quietOffset_ = 0;
};

}  // namespace norvik_log
