#include "NorvikCore/platform/dispatch/Group.h"

#include "NorvikCore/platform/dispatch/internal/GroupCore.h"
#include "NorvikCore/platform/dispatch/internal/QueueCore.h"
#include "NorvikCore/platform/dispatch/internal/ThreadShortage.h"
#include "NorvikCore/platform/dispatch/internal/WorkerPool.h"
#include "NorvikCore/platform/values/NSException.h"

#include <climits>
#include <cstdint>
#include <string>
#include <utility>

namespace norvik {
namespace detail {
namespace {

constexpr std::uint64_t greatestCount = UINT32_MAX;

std::uint64_t countIn(std::uint64_t state) noexcept { return state & greatestCount; }
std::uint64_t generationIn(std::uint64_t state) noexcept { return state >> 32; }
/// The next generation, with a count of 0.
std::uint64_t emptyAfter(std::uint64_t state) noexcept { return (generationIn(state) + 1) << 32; }

}  // namespace

void retainCore(GroupCore* group) noexcept { group->retain(); }
void releaseCore(GroupCore* group) noexcept { group->release(); }

void GroupCore::enter() noexcept {
  const std::uint64_t before = state_.fetch_add(1, std::memory_order_relaxed);
  if (countIn(before) == greatestCount) [[unlikely]]
    reportMisuse("dispatch_group_enter more than four thousand million times without dispatch_group_leave");
}

void GroupCore::leave() noexcept {
  std::uint64_t before = state_.load(std::memory_order_relaxed), after = 0;
  do {
    if (countIn(before) == 0) {
      if (forked_) return;
      reportMisuse("dispatch_group_leave without dispatch_group_enter");
    }
    after = countIn(before) == 1 ? emptyAfter(before) : before - 1;
  } while (!state_.compare_exchange_weak(before, after, std::memory_order_seq_cst, std::memory_order_relaxed));
  if (countIn(after) > 0) return;
  if (sleepers_.load(std::memory_order_seq_cst) > 0) {
    wakes_.fetch_add(1, std::memory_order_seq_cst);
    futexWake(&wakes_, INT_MAX);
  }
  if (hasNotifications_.load(std::memory_order_seq_cst)) notifyIfEmpty();
}

std::uint32_t GroupCore::nextNumber() noexcept {
  static constinit std::atomic<std::uint32_t> last{0};
  std::uint32_t number = 0;
  while (number == 0) number = last.fetch_add(1, std::memory_order_relaxed) + 1;
  return number;
}

bool GroupCore::wait(std::uint64_t deadline, Waiter waiter) noexcept {
  const int spins = WorkerPool::shared().spinsBeforeSleep();
  for (int spin = 0; spin < spins; ++spin) {
    if (countIn(state_.load(std::memory_order_acquire)) == 0) return true;
    spinPause();
  }
  const std::uint64_t begun = state_.load(std::memory_order_seq_cst);
  if (countIn(begun) == 0) return true;
  if (deadline <= monotonicNanoseconds()) return false;
  PatientWait wait(HelpGoal{.group = waiter == Waiter::helps ? number_ : 0});
  sleepers_.fetch_add(1, std::memory_order_seq_cst);
  for (bool timeLeft = true; timeLeft;) {
    const std::uint32_t seen = wakes_.load(std::memory_order_seq_cst);
    if (generationIn(state_.load(std::memory_order_seq_cst)) != generationIn(begun)) break;
    timeLeft = wait.sleep(wakes_, seen, 1, deadline);
    if (wait.hasForked()) [[unlikely]]
      return true;  // the child's groups are empty
  }
  sleepers_.fetch_sub(1, std::memory_order_relaxed);
  return generationIn(state_.load(std::memory_order_acquire)) != generationIn(begun);
}

void GroupCore::notify(const dispatch_queue_t& queue, Item* item) {
  {
    const QueueLock lock(mutex_);
    notifications_.push_back({queue, item});
    hasNotifications_.store(true, std::memory_order_seq_cst);
  }
  notifyIfEmpty();
}

void GroupCore::notifyIfEmpty() {
  std::vector<Notification> due;
  {
    const QueueLock lock(mutex_);
    if (countIn(state_.load(std::memory_order_seq_cst)) != 0) return;
    hasNotifications_.store(false, std::memory_order_relaxed);
    due.swap(notifications_);
  }
  for (const Notification& notification : due)
    enqueue(notification.queue, notification.item, Delivery::prompt, Order::normal);
}

void GroupCore::resetAfterFork() noexcept {
  mutex_.resetAfterFork();
  forked_ = true;
  state_.store(emptyAfter(state_.load(std::memory_order_relaxed)), std::memory_order_relaxed);
  sleepers_.store(0, std::memory_order_relaxed);
  hasNotifications_.store(false, std::memory_order_relaxed);
  const QueueLock lock(mutex_);
  new std::vector<Notification>(std::move(notifications_));  // leaked: the blocks belong to the parent
  notifications_.clear();
}

void requireGroup(const dispatch_group_t& group, const char* function) {
  if (!group) [[unlikely]]
    NSException::raise(NSInvalidArgumentException, std::string(function) + ": the group is nil");
}

void enqueueForGroup(const dispatch_group_t& group, const dispatch_queue_t& queue, Item* item) {
  item->group = group.core()->number();
  enqueue(queue, item, Delivery::prompt, Order::normal);
}

void notifyWhenEmpty(const dispatch_group_t& group, const dispatch_queue_t& queue, Item* item) {
  group.core()->notify(queue, item);
}

}  // namespace detail

dispatch_group_t dispatch_group_create() { return dispatch_group_t::adopt(detail::newForkAware<detail::GroupCore>()); }

void dispatch_group_enter(const dispatch_group_t& group) {
  detail::requireGroup(group, "dispatch_group_enter");
  group.core()->enter();
}

void dispatch_group_leave(const dispatch_group_t& group) {
  detail::requireGroup(group, "dispatch_group_leave");
  const dispatch_group_t kept = group;  // the waiter may release its handle once the count is 0
  kept.core()->leave();
}

std::intptr_t dispatch_group_wait(const dispatch_group_t& group, dispatch_time_t timeout) {
  detail::requireGroup(group, "dispatch_group_wait");
  const std::uint64_t deadline = timeout == DISPATCH_TIME_NOW ? 0 : detail::monotonicDeadline(timeout);
  using detail::GroupCore;
  const auto waiter = timeout == DISPATCH_TIME_FOREVER ? GroupCore::Waiter::helps : GroupCore::Waiter::waits;
  return group.core()->wait(deadline, waiter) ? 0 : 1;
}

}  // namespace norvik
