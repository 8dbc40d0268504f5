#include "NorvikCore/platform/kernel/Clock.h"

#include "NorvikCore/platform/kernel/MadeOnce.h"

#include <time.h>

namespace norvik::kernel {
namespace {

constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

// Neither clock can fail, because both always exist and the pointer is valid.
std::int64_t readClock(clockid_t clock) noexcept {
  timespec now;
  clock_gettime(clock, &now);
  return std::int64_t{now.tv_sec} * nanosecondsPerSecond + now.tv_nsec;
}

class SystemClock final : public ClockSource {
 public:
  std::int64_t wallNanoseconds() const noexcept override { return kernel::wallNanoseconds(); }
  std::int64_t monotonicNanoseconds() const noexcept override { return kernel::monotonicNanoseconds(); }
};

}  // namespace

std::int64_t wallNanoseconds() noexcept { return readClock(CLOCK_REALTIME); }

double wallSeconds() noexcept {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<double>(now.tv_sec - referenceDateInUnixSeconds) + static_cast<double>(now.tv_nsec) * 1e-9;
}

std::int64_t monotonicNanoseconds() noexcept { return readClock(CLOCK_MONOTONIC); }

ClockSource::~ClockSource() = default;

const ClockSource& systemClock() noexcept {
  return madeOnce([] { return new SystemClock; });
}

ManualClock::ManualClock(std::int64_t wall, std::int64_t monotonic) noexcept : wall_(wall), monotonic_(monotonic) {}
ManualClock::~ManualClock() = default;

std::int64_t ManualClock::wallNanoseconds() const noexcept { return wall_.load(); }
std::int64_t ManualClock::monotonicNanoseconds() const noexcept { return monotonic_.load(); }

void ManualClock::advance(std::int64_t nanoseconds) noexcept {
  wall_ += nanoseconds;
  monotonic_ += nanoseconds;
}

void ManualClock::jumpWallClock(std::int64_t nanoseconds) noexcept { wall_ += nanoseconds; }

}  // namespace norvik::kernel
