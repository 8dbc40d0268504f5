#include "NorvikCore/platform/dispatch/internal/TimerClock.h"

#include "NorvikCore/platform/dispatch/internal/FiredItems.h"
#include "NorvikCore/platform/dispatch/internal/GlobalQueue.h"
#include "NorvikCore/platform/dispatch/internal/ThreadShortage.h"
#include "NorvikCore/platform/dispatch/internal/ThreadStart.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace norvik::detail {
namespace {

constexpr std::size_t timersPerRound = 256;
// If very many timers are due, several rounds are enqueued at once, because each time a worker has to be woken.
constexpr std::size_t mostTimersAtOnce = 2048;
constexpr std::uint64_t second = 1'000'000'000;

timespec timespecOf(std::uint64_t nanoseconds) {
  timespec time{};
  time.tv_sec = static_cast<time_t>(nanoseconds / second);
  time.tv_nsec = static_cast<long>(nanoseconds % second);
  return time;
}

/// Under no mutex.
void fire(std::vector<DueTimer>& due, FiredItems& items) {
  // Entries are where they were allocated; of a hundred thousand, the next is rarely near.
  constexpr std::size_t ahead = 4;
  for (std::size_t i = 0; i < due.size(); ++i) {
    if (i + ahead < due.size()) prefetchItem(due[i + ahead].entry);
    due[i].entry->fired(due[i].count, due[i].setting, items);
  }
  due.clear();
}

void fireAndEnqueue(std::vector<DueTimer>& due) {
  FiredItems items;
  fire(due, items);
}

void drainDescriptor(int descriptor) {
  std::uint64_t count = 0;
  while (read(descriptor, &count, sizeof count) < 0 && errno == EINTR) {
  }  // EAGAIN: nothing to read; ECANCELED: the wall clock was set, which the caller checks next
}

}  // namespace

SystemTimerClock& SystemTimerClock::shared() {
  return sharedForkAware<SystemTimerClock>([] { return new SystemTimerClock; });
}

void SystemTimerClock::arm(TimerEntry& entry, dispatch_time_t start, TimerSetting setting) {
  const ClockPoint point = clockPoint(start, start == DISPATCH_TIME_NOW ? monotonicNanoseconds() : 0);
  setting.deadline = point.nanoseconds;
  bool isNewShortage = false;
  {
    const QueueLock lock(mutex_);
    TimerHeap& heap = point.clock == ClockKind::wall ? wall_ : monotonic_;
    const std::uint64_t before = heap.nextDeadline();  // the thread wakes by then, also if this entry was the next
    TimerHeap::remove(entry);
    heap.add(entry, setting);
    const bool wasShort = !threadRuns_ && ThreadShortage::exists(ThreadShortage::Of::timers);
    if (threadRuns_ || ensureThread()) [[likely]] {
      if (heap.nextDeadline() < before) wakeThread();
      return;
    }
    isNewShortage = !wasShort;
  }
  // From now on every waiting thread fires due timers, and so does a worker without other work.
  ThreadShortage::nudgeAll();
  if (isNewShortage) {
    GlobalQueue::shared()->push(makeBlock([] { shared().tend(); }), Delivery::prompt, Order::normal);
  }
}

std::uint64_t SystemTimerClock::tend() noexcept {
  std::vector<DueTimer> due;
  {
    const QueueLock lock(mutex_);
    if (threadRuns_ || tended_) return noDeadline;
    if (monotonic_.size() == 0 && wall_.size() == 0) {
      ThreadShortage::end(ThreadShortage::Of::timers);
      return noDeadline;
    }
    if (ensureThread()) return noDeadline;
    collectDue(due);
    tended_ = true;
  }
  fireAndEnqueue(due);
  const QueueLock lock(mutex_);
  tended_ = false;
  const std::uint64_t wall = wall_.nextDeadline(), now = wallNow_();
  if (wall == TimerHeap::noMoment) return monotonic_.nextDeadline();
  return std::min(monotonic_.nextDeadline(), monotonicNanoseconds() + (wall > now ? wall - now : 0));
}

void SystemTimerClock::disarm(TimerEntry& entry) noexcept {
  const QueueLock lock(mutex_);
  TimerHeap::remove(entry);  // the thread may wake for it once, without effect
}

void SystemTimerClock::wakeThread() {
  if (awake_) return;
  awake_ = true;
  const std::uint64_t one = 1;
  while (write(wakeDescriptor_, &one, sizeof one) < 0 && errno == EINTR) {
  }
}

bool SystemTimerClock::ensureThread() {
  if (tended_) return false;  // the thread would fire later timers before the ones that are being fired
  if (ThreadShortage::exists(ThreadShortage::Of::timers) && monotonicNanoseconds() < nextStart_) return false;
  int failure = openDescriptors();
  if (failure == 0) failure = startThread(&threadMain, this);
  threadRuns_ = failure == 0;
  awake_ = threadRuns_;
  if (threadRuns_) {
    if (!ThreadShortage::exists(ThreadShortage::Of::timers)) return true;
    ThreadShortage::threadStarted();
    ThreadShortage::end(ThreadShortage::Of::timers);
  } else {
    nextStart_ = monotonicNanoseconds() + ThreadShortage::interval;
    (void)ThreadShortage::begin(ThreadShortage::Of::timers);
    ThreadShortage::report(failure);
  }
  return threadRuns_;
}

int SystemTimerClock::openDescriptors() {
  if (wakeDescriptor_ < 0) wakeDescriptor_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (wakeDescriptor_ < 0) return errno;
  if (wallDescriptor_ < 0) wallDescriptor_ = timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK);
  return wallDescriptor_ < 0 ? errno : 0;
}

void* SystemTimerClock::threadMain(void* clock) {
  pthread_setname_np(pthread_self(), "norvik-timers");
  prctl(PR_SET_TIMERSLACK, 1000UL, 0UL, 0UL, 0UL);
  static_cast<SystemTimerClock*>(clock)->run();
  return nullptr;
}

void SystemTimerClock::run() {
  mutex_.lock();
  std::uint64_t idleSince = monotonicNanoseconds();
  FiredItems items;
  std::size_t enough = timersPerRound;
  for (;;) {
    collectDue(due_);
    if (!due_.empty() || items.count() > 0) {
      const bool areAll = due_.size() < timersPerRound;
      mutex_.unlock();
      fire(due_, items);
      if (areAll || items.count() >= enough) {
        items.flush();
        enough = areAll ? timersPerRound : std::min(2 * enough, mostTimersAtOnce);
      }
      idleSince = monotonicNanoseconds();
      mutex_.lock();
      continue;
    }
    const bool idle = monotonic_.size() == 0 && wall_.size() == 0;
    if (!idle) {
      idleSince = monotonicNanoseconds();
    } else if (monotonicNanoseconds() - idleSince >= idleTime_) {
      break;
    }
    sleepUntilNext();
  }
  threadRuns_ = false;
  mutex_.unlock();
}

void SystemTimerClock::collectDue(std::vector<DueTimer>& due) {
  if (monotonic_.size() > 0) monotonic_.takeDue(monotonicNanoseconds(), timersPerRound, due);
  if (wall_.size() > 0) wall_.takeDue(wallNow_(), timersPerRound, due);
}

void SystemTimerClock::sleepUntilNext() {
  if (const std::uint64_t next = wall_.nextDeadline(); next != wallSetTo_) {
    itimerspec wall{};
    if (next != TimerHeap::noMoment) wall.it_value = timespecOf(std::max<std::uint64_t>(next, 1));
    timerfd_settime(wallDescriptor_, TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &wall, nullptr);
    wallSetTo_ = next;
  }

  const std::uint64_t now = monotonicNanoseconds();
  const std::uint64_t until =
      std::min(monotonic_.nextDeadline(), wall_.size() > 0 ? TimerHeap::noMoment : now + idleTime_);
  const timespec distance = timespecOf(until <= now ? 0 : until - now);
  pollfd descriptors[] = {{wakeDescriptor_, POLLIN, 0}, {wallDescriptor_, POLLIN, 0}};
  awake_ = false;
  mutex_.unlock();
  ppoll(descriptors, 2, until == TimerHeap::noMoment ? nullptr : &distance, nullptr);
  mutex_.lock();
  awake_ = true;
  for (const pollfd& descriptor : descriptors) {
    if (descriptor.revents != 0) drainDescriptor(descriptor.fd);
  }
  if (descriptors[1].revents != 0) wallSetTo_ = notSet;
}

bool SystemTimerClock::threadRuns() {
  const QueueLock lock(mutex_);
  return threadRuns_;
}

void SystemTimerClock::setIdleTime(std::uint64_t nanoseconds) {
  const QueueLock lock(mutex_);
  idleTime_ = nanoseconds;
  if (threadRuns_) wakeThread();
}

void SystemTimerClock::setWallClock(std::uint64_t (*wallNow)() noexcept) {
  const QueueLock lock(mutex_);
  wallNow_ = wallNow;
  if (threadRuns_) wakeThread();
}

void SystemTimerClock::resetAfterFork() noexcept {
  mutex_.resetAfterFork();
  const QueueLock lock(mutex_);
  monotonic_.forgetAll();
  wall_.forgetAll();
  new std::vector<DueTimer>(std::move(due_));
  due_.clear();
  threadRuns_ = awake_ = tended_ = false;
  for (int* descriptor : {&wakeDescriptor_, &wallDescriptor_}) {
    if (*descriptor >= 0) close(*descriptor);  // the parent's descriptors stay open
    *descriptor = -1;
  }
  wallSetTo_ = notSet;
}

void ManualTimerClock::arm(TimerEntry& entry, dispatch_time_t start, TimerSetting setting) {
  const QueueLock lock(mutex_);
  TimerHeap::remove(entry);
  setting.deadline = clockPoint(start, now_).nanoseconds;
  heap_.add(entry, setting);
}

void ManualTimerClock::disarm(TimerEntry& entry) noexcept {
  const QueueLock lock(mutex_);
  TimerHeap::remove(entry);
}

void ManualTimerClock::advance(std::uint64_t nanoseconds) {
  std::vector<DueTimer> due;
  mutex_.lock();
  const std::uint64_t end = now_ + nanoseconds;
  while (heap_.nextDeadline() <= end) {
    now_ = std::max(now_, heap_.nextDeadline());
    heap_.takeDue(now_, heap_.size(), due);
    mutex_.unlock();
    fireAndEnqueue(due);
    mutex_.lock();
  }
  now_ = end;
  mutex_.unlock();
}

std::uint64_t ManualTimerClock::now() {
  const QueueLock lock(mutex_);
  return now_;
}

std::size_t ManualTimerClock::size() {
  const QueueLock lock(mutex_);
  return heap_.size();
}

}  // namespace norvik::detail
