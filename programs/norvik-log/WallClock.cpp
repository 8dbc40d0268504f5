#include "WallClock.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace norvik_log {

namespace {

constexpr std::int64_t dayMilliseconds = 86'400'000;

constexpr std::int64_t dayOf(std::int64_t wallTime) noexcept {
  return wallTime >= 0 ? wallTime / dayMilliseconds : (wallTime - dayMilliseconds + 1) / dayMilliseconds;
}

}  // namespace

WallClock::WallClock(norvik::Ref<norvik::NSTimeZone> zone)
    : zone_(std::move(zone)), quietDay_(std::numeric_limits<std::int64_t>::min()) {}

int WallClock::offsetSeconds(std::int64_t instant) const noexcept {
  const auto seconds = static_cast<double>(instant >= 0 ? instant / 1000 : (instant - 999) / 1000);
  return static_cast<int>(zone_->secondsFromGMTForDate(norvik::Date::dateWithTimeIntervalSince1970(seconds)));
}

WallClock::Instants WallClock::instants(std::int64_t wallTime) {
  const std::int64_t day = dayOf(wallTime);
  if (day != quietDay_) [[unlikely]] {
    // These instants are before and after the day at every offset, because offsets are at most a day and two hours.
    const std::int64_t midnight = day * dayMilliseconds;
    const std::int64_t from = midnight - 2 * dayMilliseconds, to = midnight + 3 * dayMilliseconds;
    const int before = offsetSeconds(from);
    const auto start = norvik::Date::dateWithTimeIntervalSince1970(static_cast<double>(from / 1000));
    const auto change = zone_->nextDaylightSavingTimeTransitionAfterDate(start);
    if (change && change->timeIntervalSince1970() * 1000 <= static_cast<double>(to)) {
      // Several changes within these days are rare, so only the first one is considered.
      const auto changed = static_cast<std::int64_t>(change->timeIntervalSince1970() * 1000);
      return instantsNearChange(wallTime, before, offsetSeconds(changed));
    }
    quietDay_ = day;
    quietOffset_ = before;
  }
  const std::int64_t instant = wallTime - quietOffset_ * std::int64_t{1000};
  return {instant, instant};
}

WallClock::Instants WallClock::instantsNearChange(std::int64_t wallTime, int before, int after) const noexcept {
  const std::int64_t early = wallTime - before * std::int64_t{1000}, late = wallTime - after * std::int64_t{1000};
  const bool isEarly = offsetSeconds(early) == before, isLate = offsetSeconds(late) == after;
  if (isEarly && isLate) return {early, late};
  if (isEarly) return {early, early};
  if (isLate) return {late, late};
  // A skipped wall time: the change is between the two instants.
  std::int64_t low = std::min(early, late) / 1000 - 1, high = std::max(early, late) / 1000 + 1;
  while (high - low > 1) {
    const std::int64_t middle = low + (high - low) / 2;
    (offsetSeconds(middle * 1000) == before ? low : high) = middle;
  }
  return {high * 1000, high * 1000};
}

}  // namespace norvik_log
