#include "NorvikCore/platform/kernel/internal/Futex.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <ctime>

namespace norvik::detail {
namespace {

constexpr std::uint64_t nanosecondsPerSecond = 1'000'000'000;

long futex(const void* word, int operation, std::uint32_t value, const timespec* deadline) noexcept {
  return syscall(SYS_futex, word, operation | FUTEX_PRIVATE_FLAG, value, deadline, nullptr, FUTEX_BITSET_MATCH_ANY);
}

}  // namespace

bool futexWait(const std::atomic<std::uint32_t>& word, std::uint32_t expected, std::uint64_t deadline) noexcept {
  timespec until{};
  until.tv_sec = static_cast<time_t>(deadline / nanosecondsPerSecond);
  until.tv_nsec = static_cast<long>(deadline % nanosecondsPerSecond);
  // FUTEX_WAIT_BITSET takes an absolute deadline of the monotonic clock.
  const long result = futex(&word, FUTEX_WAIT_BITSET, expected, deadline == noDeadline ? nullptr : &until);
  return result == 0 || errno != ETIMEDOUT;
}

void futexWake(const std::atomic<std::uint32_t>* word, int count) noexcept {
  futex(word, FUTEX_WAKE, static_cast<std::uint32_t>(count), nullptr);
}

void futexWait(const AtomicWord<std::uint32_t>& word, std::uint32_t expected) noexcept {
  futex(&word, FUTEX_WAIT_BITSET, expected, nullptr);
}

void futexWake(const AtomicWord<std::uint32_t>& word) noexcept { futex(&word, FUTEX_WAKE, 1, nullptr); }

}  // namespace norvik::detail
