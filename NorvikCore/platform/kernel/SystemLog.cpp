#include "NorvikCore/platform/kernel/SystemLog.h"

#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/kernel/GatherWrite.h"
#include "NorvikCore/platform/kernel/HostInfo.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/kernel/Thread.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"

#include <errno.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <climits>
#include <cstdint>
#include <cstdio>

namespace norvik::kernel {

struct SystemLogCapture::State {
  std::vector<std::string> lines;
  std::atomic<std::uint32_t> taken{0};  // waitForLines() sleeps on it
};

namespace {

constinit std::atomic<int> captureCount{0};

// The existing captures; the latest is the last.
struct Captures {
  Mutex mutex;
  std::vector<SystemLogCapture*> stack NK_GUARDED_BY(mutex);
};

Captures& captures() {
  return madeOnce([] { return new Captures; });
}

using Head = std::array<char, 384>;

// Computes the time by integer arithmetic, because the C library's calendar functions take a lock, which a forked child
// may find locked without end.
std::size_t writeHead(Head& head) noexcept {
  using namespace std::chrono;
  const std::int64_t now = wallNanoseconds() / 1'000'000;
  const sys_days day = floor<days>(sys_time<milliseconds>(milliseconds(now)));
  const year_month_day date(day);
  const hh_mm_ss time(sys_time<milliseconds>(milliseconds(now)) - day);
  const int length = std::snprintf(
      head.data(), head.size(), "%04d-%02u-%02u %02d:%02d:%02d.%03d+0000 %.255s[%d:%u] ", static_cast<int>(date.year()),
      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
      static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()),
      static_cast<int>(time.subseconds().count()), processName().c_str(), processId(), currentThreadId());
  return length > 0 ? std::min(static_cast<std::size_t>(length), head.size() - 1) : 0;
}

void writeToStandardError(std::string_view text) noexcept {
  Head head;
  const std::string_view pieces[] = {{head.data(), writeHead(head)}, text, text.ends_with('\n') ? "" : "\n"};
  const std::int64_t deadline = monotonicNanoseconds() + 1'000'000'000;
  std::size_t written = 0;
  if (awaitRoom(STDERR_FILENO, deadline)) writeGathered(STDERR_FILENO, pieces, deadline, written);
}

}  // namespace

void writeSystemLog(std::string_view text) noexcept {
  const int savedErrno = errno;
  bool captured = false;
  if (captureCount.load(std::memory_order_acquire) > 0) [[unlikely]] {
    captured = SystemLogCapture::take(text);
  }
  if (!captured) writeToStandardError(text);
  errno = savedErrno;
}

SystemLogCapture::SystemLogCapture() : state_(new State) {
  Captures& all = captures();
  const MutexLock lock(all.mutex);
  all.stack.push_back(this);
  ++captureCount;
}

SystemLogCapture::~SystemLogCapture() {
  Captures& all = captures();
  const MutexLock lock(all.mutex);
  std::erase(all.stack, this);
  --captureCount;
}

bool SystemLogCapture::take(std::string_view text) {
  Captures& all = captures();
  const MutexLock lock(all.mutex);
  if (all.stack.empty()) return false;
  State& state = *all.stack.back()->state_;
  if (text.ends_with('\n')) text.remove_suffix(1);
  state.lines.emplace_back(text);
  state.taken.fetch_add(1);
  norvik::detail::futexWake(&state.taken, INT_MAX);
  return true;
}

std::vector<std::string> SystemLogCapture::lines() const {
  const MutexLock lock(captures().mutex);
  return state_->lines;
}

bool SystemLogCapture::waitForLines(std::size_t count, double seconds) const {
  constexpr double mostSeconds = 1e9;
  const double bounded = seconds > 0 ? std::min(seconds, mostSeconds) : 0;
  const std::uint64_t deadline = norvik::detail::monotonicNanoseconds() + static_cast<std::uint64_t>(bounded * 1e9);
  for (bool inTime = true;;) {
    std::uint32_t seen = 0;
    {
      const MutexLock lock(captures().mutex);
      if (state_->lines.size() >= count) return true;
      seen = state_->taken.load();
    }
    if (!inTime) return false;
    inTime = norvik::detail::futexWait(state_->taken, seen, deadline);
  }
}

}  // namespace norvik::kernel
