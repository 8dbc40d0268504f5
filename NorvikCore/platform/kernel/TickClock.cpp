#include "NorvikCore/platform/kernel/internal/TickClock.h"

#include "NorvikCore/platform/kernel/FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <string_view>

namespace norvik::kernel {
namespace {

constexpr std::int64_t rateInterval = 1'000'000'000;

/// True if the kernel uses the processors' counters as its clock, so that they are consistent with each other.
bool kernelCountsTicks() noexcept {
#if defined(__x86_64__)
  const int file = ::open("/sys/devices/system/clocksource/clocksource0/current_clocksource", O_RDONLY | O_CLOEXEC);
  if (file < 0) return false;
  char name[8];
  const ssize_t size = ::read(file, name, sizeof name);
  ::close(file);
  return size > 0 && std::string_view(name, static_cast<std::size_t>(size)) == "tsc\n";
#else
  return false;
#endif
}

}  // namespace

TickClock::TickClock() noexcept : isCounted_(kernelCountsTicks()), from_(reading()), next_(from_), last_(from_) {}

/// Repeats a reading during which the thread was interrupted.
TickClock::Reading TickClock::reading() const noexcept {
  constexpr std::uint64_t atOnce = 600;
  constexpr int attempts = 8;
  Reading best{};
  std::uint64_t shortest = UINT64_MAX;
  for (int i = 0; i < attempts && shortest > atOnce; ++i) {
    const std::uint64_t first = now();
    const std::int64_t wall = kernel::wallNanoseconds();
    const std::uint64_t second = now();
    const std::int64_t monotonic = monotonicNanoseconds();
    const std::uint64_t third = now();
    if (third - first >= shortest) continue;
    shortest = third - first;
    best = {first + (second - first) / 2, wall, second + (third - second) / 2, monotonic};
  }
  return best;
}

void TickClock::read() noexcept {
  if (!isCounted_) return;
  last_ = reading();
  const auto ticks = static_cast<std::int64_t>(last_.monotonicTicks - from_.monotonicTicks);
  const std::int64_t passed = last_.monotonic - from_.monotonic;
  if (ticks <= 0 || passed <= 0) {  // the machine has slept, and the counter was reset
    from_ = next_ = last_;
    return;
  }
  nanosecondsPerTick_ = static_cast<double>(passed) / static_cast<double>(ticks);
  if (last_.monotonic - next_.monotonic >= rateInterval) {
    from_ = next_;
    next_ = last_;
  }
}

}  // namespace norvik::kernel
