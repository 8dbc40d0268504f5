// programs/norvik-log/WallClock.h - instants from what the clocks of a zone showed, and the other way.
//
// Times of both kinds are milliseconds since 1970; a wall time is counted as though its zone were UTC.
// Threads: confined; a copy is independent.
#pragma once

#include <cstdint>
#include <string>

#include "NorvikCore/platform/foundation/NSTimeZone.h"

namespace norvik_log {

class WallClock {
 public:
  /// Of a wall time that the clocks showed twice these differ. One that they skipped has the instant at which they did.
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
  std::int64_t quietDay_;  // days since 1970, as walls show them: around it nothing changes
  int quietOffset_ = 0;
};

}  // namespace norvik_log
