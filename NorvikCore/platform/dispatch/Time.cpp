#include "NorvikCore/platform/dispatch/Time.h"

#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"
#include "NorvikCore/platform/values/Date.h"

namespace norvik {
namespace {

// A point of the wall clock is stored as its negative, so bit 63 tells the clocks apart. ~0 is FOREVER, and ~0 - 1 is
// reserved, so the smallest wall point is 2.
constexpr std::uint64_t lastPoint = (std::uint64_t{1} << 63) - 1;
constexpr std::uint64_t firstWallPoint = 2;

bool isWall(dispatch_time_t when) { return when > lastPoint; }

dispatch_time_t monotonicPoint(std::uint64_t nanoseconds) { return nanoseconds == 0 ? 1 : nanoseconds; }

dispatch_time_t wallPoint(std::uint64_t nanoseconds) {
  return std::uint64_t{0} - (nanoseconds < firstWallPoint ? firstWallPoint : nanoseconds);
}

struct Shifted {
  std::uint64_t nanoseconds;
  bool tooFar;
};

Shifted shift(std::uint64_t nanoseconds, std::int64_t delta) {
  if (delta >= 0) {
    const std::uint64_t sum = nanoseconds + static_cast<std::uint64_t>(delta);  // both are below 2^63
    return {sum, sum > lastPoint};
  }
  const std::uint64_t back = std::uint64_t{0} - static_cast<std::uint64_t>(delta);
  return {back >= nanoseconds ? 0 : nanoseconds - back, false};
}

}  // namespace

dispatch_time_t dispatch_time(dispatch_time_t when, std::int64_t delta) noexcept {
  if (when == DISPATCH_TIME_FOREVER) return when;
  const detail::ClockPoint point =
      detail::clockPoint(when, when == DISPATCH_TIME_NOW ? detail::monotonicNanoseconds() : 0);
  const Shifted shifted = shift(point.nanoseconds, delta);
  if (shifted.tooFar) return DISPATCH_TIME_FOREVER;
  return point.clock == detail::ClockKind::wall ? wallPoint(shifted.nanoseconds) : monotonicPoint(shifted.nanoseconds);
}

dispatch_time_t dispatch_walltime(const std::timespec* when, std::int64_t delta) noexcept {
  std::uint64_t start = 0;
  if (when == nullptr) {
    start = detail::wallNanoseconds();
  } else if (when->tv_sec >= 0) {
    const std::uint64_t seconds = static_cast<std::uint64_t>(when->tv_sec);
    if (seconds >= lastPoint / static_cast<std::uint64_t>(NSEC_PER_SEC)) return DISPATCH_TIME_FOREVER;
    start = seconds * static_cast<std::uint64_t>(NSEC_PER_SEC) + static_cast<std::uint64_t>(when->tv_nsec);
  }
  const Shifted shifted = shift(start, delta);
  return shifted.tooFar ? DISPATCH_TIME_FOREVER : wallPoint(shifted.nanoseconds);
}

dispatch_time_t dispatch_walltime(Date when) noexcept {
  constexpr double tooFar = 1e10;  // 64 bits of nanoseconds end before
  const double seconds = when.timeIntervalSince1970();
  if (seconds > tooFar) return DISPATCH_TIME_FOREVER;
  const double from1970 = seconds > 0 ? seconds : 0;
  const auto whole = static_cast<std::int64_t>(from1970);
  const std::timespec point{.tv_sec = whole,
                            .tv_nsec = static_cast<long>((from1970 - static_cast<double>(whole)) * NSEC_PER_SEC)};
  return dispatch_walltime(&point, 0);
}

namespace detail {

ClockPoint clockPoint(dispatch_time_t when, std::uint64_t monotonicNow) noexcept {
  if (when == DISPATCH_TIME_NOW) return {ClockKind::monotonic, monotonicNow};
  if (isWall(when)) return {ClockKind::wall, std::uint64_t{0} - when};
  return {ClockKind::monotonic, when};
}

std::uint64_t wallNanoseconds() noexcept { return static_cast<std::uint64_t>(kernel::wallNanoseconds()); }

std::uint64_t monotonicDeadline(dispatch_time_t when) noexcept {
  if (when == DISPATCH_TIME_FOREVER) return noDeadline;
  const std::uint64_t now = monotonicNanoseconds();
  const ClockPoint point = clockPoint(when, now);
  if (point.clock == ClockKind::monotonic) return point.nanoseconds;
  const std::uint64_t wallNow = wallNanoseconds();
  return point.nanoseconds <= wallNow ? now : now + (point.nanoseconds - wallNow);
}

}  // namespace detail
}  // namespace norvik
