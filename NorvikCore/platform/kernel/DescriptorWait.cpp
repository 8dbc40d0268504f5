#include "NorvikCore/platform/kernel/internal/DescriptorWait.h"

#include "NorvikCore/platform/kernel/Clock.h"

#include <errno.h>
#include <poll.h>

#include <algorithm>
#include <climits>

namespace norvik::kernel {

int waitUntilReady(int descriptor, Readiness wanted, std::int64_t deadline) noexcept {
  constexpr std::int64_t millisecond = 1'000'000;
  pollfd waiting{descriptor, 0, 0};
  if (wanted != Readiness::write) waiting.events |= POLLIN;
  if (wanted != Readiness::read) waiting.events |= POLLOUT;
  for (;;) {
    const std::int64_t left = deadline - monotonicNanoseconds();
    if (left <= 0) return ETIMEDOUT;
    const std::int64_t milliseconds = std::min<std::int64_t>(left / millisecond + 1, INT_MAX);
    const int ready = poll(&waiting, 1, static_cast<int>(milliseconds));
    if (ready > 0) return (waiting.revents & POLLNVAL) != 0 ? EBADF : 0;
    if (ready < 0 && errno != EINTR) return errno;
  }
}

}  // namespace norvik::kernel
