#include "NorvikCore/dispatch/internal/NamedTimers.h"

#include "NorvikCore/platform/dispatch/internal/QueueCore.h"
#include "NorvikCore/platform/kernel/Clock.h"

#include <algorithm>
#include <utility>

namespace norvik::detail {
namespace {

constexpr double nanosecond = 1e-9;

double inSeconds(std::uint64_t nanoseconds) { return static_cast<double>(nanoseconds) / 1e9; }

/// The time that many seconds after `now`, truncated to nanoseconds. A time beyond the range of a signed number never
/// comes.
dispatch_time_t timeAfter(std::uint64_t now, double seconds) {
  const double nanoseconds = seconds * 1e9;
  if (!(nanoseconds < 9.2e18)) return DISPATCH_TIME_FOREVER;
  return dispatch_time(now, static_cast<std::int64_t>(nanoseconds));
}

}  // namespace

/// Leaks the parent's state on purpose: other threads of the parent may have been changing it at the fork, and its
/// blocks belong to the parent.
void NamedTimers::forgetParent() {
  static_cast<void>(state_.release());
  state_ = std::make_unique<State>();
  timerCountPrivate.store(0, std::memory_order_relaxed);
}

std::uint64_t NamedTimers::nanosecondsNow() const {
  return manualClock_ ? manualClock_->now() : static_cast<std::uint64_t>(kernel::monotonicNanoseconds());
}

double NamedTimers::_now() const { return inSeconds(nanosecondsNow()); }

NamedTimers::NamedTimers(TSKDispatchQueue& owner) : owner_(owner) {}

NamedTimers::~NamedTimers() = default;

void NamedTimers::setClock(const dispatch_manual_clock& clock) {
  manualClock_ = std::make_unique<dispatch_manual_clock>(clock);
}

void NamedTimers::schedule(const NSString& name, double timeInterval, TSKTimerBehavior behavior, Block<void()> block) {
  request({Request::Kind::schedule, name, _now(), timeInterval, behavior, std::move(block)});
}

void NamedTimers::cancel(const NSString& name) { request({Request::Kind::cancel, name}); }

void NamedTimers::cancelAll() { request({Request::Kind::cancelAll}); }

Ref<NSDictionary> NamedTimers::dictionary() {
  const Lock lock(*this);
  return state_->table ? state_->table->dictionary() : nullptr;
}

void NamedTimers::request(Request&& request) {
  if (requestsKeepTheirOrder()) {
    owner_.dispatchAsynchronously([this, request = std::move(request)]() mutable {
      Blocks unused;  // destroyed after the lock is released
      const Lock lock(*this);
      carryOut(std::move(request), unused);
    });
    return;
  }
  {
    const Lock lock(*this);
    state_->requests.push_back(std::move(request));
  }
  owner_.dispatchAsynchronously([this, self = ref(owner_)] { carryOutNextRequest(); });
}

/// True if the blocks that carry out the requests run one by one; they then retain the wrapper, too.
bool NamedTimers::requestsKeepTheirOrder() const noexcept {
  return !owner_.concurrent() && owner_.queue().core()->isSerial();
}

void NamedTimers::carryOutNextRequest() {
  Blocks unused;  // destroyed after the lock is released
  const Lock lock(*this);
  Request request = std::move(state_->requests.front());
  state_->requests.pop_front();
  carryOut(std::move(request), unused);
}

void NamedTimers::carryOut(Request&& request, Blocks& unused) {
  switch (request.kind) {
    case Request::Kind::schedule:
      return _scheduleTimerWithName(std::move(request.name), request.referenceTime, request.timeInterval,
                                    request.behavior, std::move(request.block), unused);
    case Request::Kind::cancel:
      return _cancelTimerWithName(request.name, unused);
    case Request::Kind::cancelAll:
      return cancelEveryTimer(unused);
  }
}

void NamedTimers::_scheduleTimerWithName(NSString&& name, double referenceTime, double timeInterval,
                                         TSKTimerBehavior behavior, Block<void()>&& block, Blocks& unused) {
  if (!state_->table) state_->table = std::make_unique<TimerTable>();
  NamedTimer& entry = state_->table->entryFor(std::move(name));
  // A timer whose block is running (on a concurrent queue) has fired already, so it is started like a new one.
  const bool pending = entry.live && !entry.live.core()->firing;
  LiveTimerHandle made = entry.live ? nullptr : makeTimer(entry);
  LiveTimer& timer = made ? *made.core() : *entry.live.core();

  const std::uint64_t nanoseconds = nanosecondsNow();
  const double now = inSeconds(nanoseconds);
  double date = now;
  if (behavior == TSKTimerThrottle) {
    if (pending) {
      date = entry.date;
    } else if (now < entry.date + timeInterval) {
      date = entry.date + timeInterval;
      start(timer, nanoseconds, date - now);
    } else {
      start(timer, nanoseconds, nanosecond);
    }
  } else {
    const double delay = std::max(0.0, timeInterval - (now - referenceTime));
    date = now + delay;
    if (behavior == TSKTimerRestart || !pending || entry.date > date) start(timer, nanoseconds, delay);
    // Otherwise the pending timer keeps its earlier time, but the later time is recorded.
  }

  entry.date = date;
  std::swap(timer.block, block);
  if (block) unused.push_back(std::move(block));
  if (made) {
    ++state_->live;
    entry.live = std::move(made);
  }
  _updateTimerCountPrivate();
}

LiveTimerHandle NamedTimers::makeTimer(NamedTimer& entry) {
  auto timer = LiveTimerHandle::adopt(new LiveTimer(owner_, *this, entry));
  if (manualClock_) dispatch_source_set_clock(dispatch_source_t::share(timer.core()), *manualClock_);
  return timer;
}

void NamedTimers::start(LiveTimer& timer, std::uint64_t now, double delay) {
  ++timer.starts;
  timer.firing = false;
  timer.setTimer(timeAfter(now, delay), 0, 0);
}

void NamedTimers::fired(NamedTimer& entry, const LiveTimer& timer) {
  Block<void()> block;
  std::uint32_t starts = 0;
  const State* state = nullptr;
  {
    const Lock lock(*this);
    if (entry.live.core() != &timer) return;
    block = timer.block;
    starts = timer.starts;
    entry.live.core()->firing = true;
    state = state_.get();
  }
  if (owner_.concurrent()) {
    block();
  } else {
    owner_.runInNewStack(blockCall(block));
  }
  Blocks unused;
  const Lock lock(*this);
  if (state_.get() != state) return;  // the block has forked, and this is the child: the entry is the parent's
  if (entry.live.core() == &timer && timer.starts == starts) cancel(entry, unused);
}

void NamedTimers::_cancelTimerWithName(const NSString& name, Blocks& unused) {
  if (NamedTimer* entry = state_->table ? state_->table->find(name) : nullptr) cancel(*entry, unused);
}

/// The planned time stays in the table.
void NamedTimers::cancel(NamedTimer& entry, Blocks& unused) {
  const LiveTimerHandle timer = std::exchange(entry.live, nullptr);
  if (!timer) return;
  --state_->live;
  timer.core()->cancel();
  unused.push_back(std::move(timer.core()->block));
  _updateTimerCountPrivate();
}

void NamedTimers::cancelEveryTimer(Blocks& unused) {
  std::uint64_t names = 0;
  if (state_->table) {
    for (NamedTimer& entry : state_->table->entries()) cancel(entry, unused);
    names = state_->table->entries().size();
  }
  timerCountPrivate.store(names, std::memory_order_relaxed);  // also names without a timer, until the next recount
}

void NamedTimers::_updateTimerCountPrivate() { timerCountPrivate.store(state_->live, std::memory_order_relaxed); }

void NamedTimers::end() {
  Blocks unused;
  const Lock lock(*this);
  if (state_->table) cancelEveryTimer(unused);
}

}  // namespace norvik::detail
