// The named timers of a wrapper. What the application asks for goes through `requests_` to the queue, one asynchronous
// block a request, so that requests take effect in their order on a concurrent queue too. The table changes under the
// lock, which is never held while a block runs or is destroyed.
#include "NorvikCore/dispatch/TSKDispatchQueue.h"
#include "NorvikCore/dispatch/internal/NamedTimers.h"
#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/runtime/Weak.h"

#include <algorithm>
#include <atomic>
#include <memory>

namespace norvik {

using detail::Blocks;
using detail::NamedTimer;
using detail::NamedTimers;
using detail::TimerRequest;
using detail::TSKTimerValue;

namespace {

constexpr double kNanosecond = 1e-9;

/// Truncated; what is too far ahead is never.
dispatch_time_t timeAfter(double seconds, const dispatch_manual_clock* clock) {
  const double nanoseconds = seconds * 1e9;
  if (!(nanoseconds < 9.2e18)) return DISPATCH_TIME_FOREVER;
  const auto delta = static_cast<std::int64_t>(nanoseconds);
  return clock != nullptr ? clock->time(delta) : dispatch_time(DISPATCH_TIME_NOW, delta);
}

}  // namespace

detail::TSKTimerValue::TSKTimerValue(std::uint64_t madeAs, const dispatch_queue_t& queue)
    : number(madeAs), source(dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, queue)) {}

detail::TSKTimerValue::~TSKTimerValue() = default;

double TSKDispatchQueue::_now() const {
  const auto nanoseconds =
      manualClock_ ? manualClock_->now() : static_cast<std::uint64_t>(kernel::monotonicNanoseconds());
  return static_cast<double>(nanoseconds) / 1e9;
}

void TSKDispatchQueue::setTimerClock(const dispatch_manual_clock& clock) {
  manualClock_ = std::make_unique<dispatch_manual_clock>(clock);
}

void TSKDispatchQueue::scheduleTimerWithName(const NSString& name, double timeInterval, TSKTimerBehavior behavior,
                                             Block<void()> block) {
  detail::requireBlock(block);
  request({TimerRequest::Kind::schedule, name, _now(), timeInterval, behavior, std::move(block)});
}

void TSKDispatchQueue::cancelTimerWithName(const NSString& name) { request({TimerRequest::Kind::cancel, name}); }

void TSKDispatchQueue::cancelAllTimers() { request({TimerRequest::Kind::cancelAll}); }

Ref<NSDictionary> TSKDispatchQueue::timers() const {
  const MutexLock lock(timerLock_);
  return timers_ ? timers_->dictionary() : nullptr;
}

void TSKDispatchQueue::request(TimerRequest request) {
  {
    const MutexLock lock(timerLock_);
    requests_.push_back(std::move(request));
  }
  dispatchAsynchronously([self = ref(*this)] { self->carryOutNextRequest(); });
}

void TSKDispatchQueue::carryOutNextRequest() {
  Blocks unused;  // outlives the lock
  const MutexLock lock(timerLock_);
  TimerRequest request = std::move(requests_.front());
  requests_.pop_front();
  switch (request.kind) {
    case TimerRequest::Kind::schedule:
      _scheduleTimerWithName(request.name, request.referenceTime, request.timeInterval,
                             static_cast<TSKTimerBehavior>(request.behavior), std::move(request.block), unused);
      return;
    case TimerRequest::Kind::cancel:
      return _cancelTimerWithName(request.name, unused);
    case TimerRequest::Kind::cancelAll:
      return cancelEveryTimer(unused);
  }
}

bool TSKDispatchQueue::_scheduleTimerWithName(const NSString& name, double referenceTime, double timeInterval,
                                              TSKTimerBehavior behavior, Block<void()> block, Blocks& unused) {
  if (!timers_) timers_ = std::make_unique<NamedTimers>();
  NamedTimer* const entry = timers_->find(name);
  Ref<TSKTimerValue> timer = entry == nullptr ? nullptr : entry->live;
  // A timer whose block runs right now (on a concurrent queue) has had its time: it is started like a new one.
  const bool pending = timer && !timer->firing;
  const bool isNew = !timer;
  if (isNew) timer = makeTimer(name);
  if (!timer->source) {
    unused.push_back(std::move(block));
    return false;
  }

  const double now = _now();
  double date = now;
  if (behavior == TSKTimerThrottle) {
    if (pending) {
      date = entry->date;
    } else if (entry != nullptr && now < entry->date + timeInterval) {
      date = entry->date + timeInterval;
      start(*timer, date - now);
    } else {
      start(*timer, kNanosecond);
    }
  } else {
    const double delay = std::max(0.0, timeInterval - (now - referenceTime));
    date = now + delay;
    if (behavior == TSKTimerRestart || !pending || entry->date > date) start(*timer, delay);
    // Else the running timer stays as it is, though the later time is noted.
  }

  unused.push_back(std::exchange(timer->block, std::move(block)));
  if (isNew) {
    ++liveTimers_;
    dispatch_resume(timer->source);
  }
  if (entry == nullptr) {
    timers_->add(name, date, timer);
  } else {
    entry->date = date;
    entry->live = timer;
  }
  _updateTimerCountPrivate();
  return true;
}

Ref<TSKTimerValue> TSKDispatchQueue::makeTimer(const NSString& name) {
  const std::uint64_t number = ++timersMade_;
  auto timer = make<TSKTimerValue>(number, queue());
  if (manualClock_) dispatch_source_set_clock(timer->source, *manualClock_);
  dispatch_source_set_event_handler(timer->source, [wrapper = Weak<TSKDispatchQueue>(this), name, number] {
    if (const Ref<TSKDispatchQueue> self = wrapper.lock()) self->timerFired(name, number);
  });
  return timer;
}

void TSKDispatchQueue::start(TSKTimerValue& timer, double delay) const {
  ++timer.starts;
  timer.firing = false;
  dispatch_source_set_timer(timer.source, timeAfter(delay, manualClock_.get()), 0, 0);
}

void TSKDispatchQueue::timerFired(const NSString& name, std::uint64_t number) {
  Block<void()> block;
  std::uint64_t starts = 0;
  {
    const MutexLock lock(timerLock_);
    const Ref<TSKTimerValue> timer = liveTimer(name);
    if (!timer || timer->number != number) return;
    block = timer->block;
    starts = timer->starts;
    timer->firing = true;
  }
  if (concurrent()) {
    block();
  } else {
    runInNewStack(detail::blockCall(block));
  }
  Blocks unused;
  const MutexLock lock(timerLock_);
  const Ref<TSKTimerValue> timer = liveTimer(name);
  if (timer && timer->number == number && timer->starts == starts) _cancelTimerWithName(name, unused);
}

Ref<TSKTimerValue> TSKDispatchQueue::liveTimer(const NSString& name) {
  const NamedTimer* entry = timers_ ? timers_->find(name) : nullptr;
  return entry == nullptr ? nullptr : entry->live;
}

void TSKDispatchQueue::_cancelTimerWithName(const NSString& name, Blocks& unused) {
  if (NamedTimer* entry = timers_ ? timers_->find(name) : nullptr) cancel(*entry, unused);
}

/// Its planned time stays.
void TSKDispatchQueue::cancel(NamedTimer& entry, Blocks& unused) {
  const Ref<TSKTimerValue> timer = std::exchange(entry.live, nullptr);
  if (!timer) return;
  --liveTimers_;
  dispatch_source_cancel(timer->source);
  unused.push_back(std::move(timer->block));
  _updateTimerCountPrivate();
}

void TSKDispatchQueue::cancelEveryTimer(Blocks& unused) {
  std::uint64_t names = 0;
  if (timers_) {
    for (NamedTimer& entry : timers_->entries()) cancel(entry, unused);
    names = timers_->entries().size();
  }
  timerCountPrivate.store(names, std::memory_order_relaxed);  // dormant names too, until the next recount
}

void TSKDispatchQueue::_updateTimerCountPrivate() { timerCountPrivate.store(liveTimers_, std::memory_order_relaxed); }

void TSKDispatchQueue::endTimers() {
  Blocks unused;
  const MutexLock lock(timerLock_);
  if (timers_) cancelEveryTimer(unused);
}

}  // namespace norvik
