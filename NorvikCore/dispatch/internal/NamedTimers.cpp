#include "NorvikCore/dispatch/internal/NamedTimers.h"

#include "NorvikCore/platform/dispatch/internal/QueueCore.h"
#include "NorvikCore/platform/dispatch/internal/SourceCore.h"
#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/object/Weak.h"

#include <algorithm>
#include <utility>

namespace norvik::detail {
namespace {

constexpr double nanosecond = 1e-9;

/// The time that many seconds from now, truncated to nanoseconds. A time beyond the range of a signed number never
/// comes.
dispatch_time_t timeAfter(double seconds, const dispatch_manual_clock* clock) {
  const double nanoseconds = seconds * 1e9;
  if (!(nanoseconds < 9.2e18)) return DISPATCH_TIME_FOREVER;
  const auto delta = static_cast<std::int64_t>(nanoseconds);
  return clock != nullptr ? clock->time(delta) : dispatch_time(DISPATCH_TIME_NOW, delta);
}

}  // namespace

TSKTimerValue::TSKTimerValue(std::uint64_t madeAs, dispatch_source_t timer)
    : number(madeAs), source(std::move(timer)) {}

TSKTimerValue::~TSKTimerValue() = default;

/// Leaks the parent's state on purpose: other threads of the parent may have been changing it at the fork, and its
/// blocks belong to the parent.
void NamedTimers::forgetParent() {
  static_cast<void>(state_.release());
  state_ = std::make_unique<State>();
  timerCountPrivate.store(0, std::memory_order_relaxed);
}

double NamedTimers::_now() const {
  const auto nanoseconds =
      manualClock_ ? manualClock_->now() : static_cast<std::uint64_t>(kernel::monotonicNanoseconds());
  return static_cast<double>(nanoseconds) / 1e9;
}

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

void NamedTimers::request(Request request) {
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

void NamedTimers::carryOut(Request request, Blocks& unused) {
  switch (request.kind) {
    case Request::Kind::schedule:
      _scheduleTimerWithName(request.name, request.referenceTime, request.timeInterval, request.behavior,
                             std::move(request.block), unused);
      return;
    case Request::Kind::cancel:
      return _cancelTimerWithName(request.name, unused);
    case Request::Kind::cancelAll:
      return cancelEveryTimer(unused);
  }
}

bool NamedTimers::_scheduleTimerWithName(const NSString& name, double referenceTime, double timeInterval,
                                         TSKTimerBehavior behavior, Block<void()> block, Blocks& unused) {
  if (!state_->table) state_->table = std::make_unique<TimerTable>();
  NamedTimer& entry = state_->table->entryFor(name);
  Ref<TSKTimerValue> timer = entry.live;
  // A timer whose block is running (on a concurrent queue) has fired already, so it is started like a new one.
  const bool pending = timer && !timer->firing;
  const bool isNew = !timer;
  if (isNew) timer = makeTimer(entry);
  if (!timer->source) {
    unused.push_back(std::move(block));
    return false;
  }

  const double now = _now();
  double date = now;
  if (behavior == TSKTimerThrottle) {
    if (pending) {
      date = entry.date;
    } else if (now < entry.date + timeInterval) {
      date = entry.date + timeInterval;
      start(*timer, date - now);
    } else {
      start(*timer, nanosecond);
    }
  } else {
    const double delay = std::max(0.0, timeInterval - (now - referenceTime));
    date = now + delay;
    if (behavior == TSKTimerRestart || !pending || entry.date > date) start(*timer, delay);
    // Otherwise the pending timer keeps its earlier time, but the later time is recorded.
  }

  entry.date = date;
  std::swap(timer->block, block);
  if (block) unused.push_back(std::move(block));
  if (isNew) {
    ++state_->live;
    entry.live = std::move(timer);
  }
  _updateTimerCountPrivate();
  return true;
}

Ref<TSKTimerValue> NamedTimers::makeTimer(NamedTimer& entry) {
  const std::uint64_t number = ++timersMade_;
  auto source = dispatch_source_t::adopt(
      new SourceCore(owner_.queue(), makeHandler([this, owner = Weak<TSKDispatchQueue>(&owner_), &entry, number] {
                       if (const Ref<TSKDispatchQueue> self = owner.lock()) fired(entry, number);
                     })));
  if (manualClock_) dispatch_source_set_clock(source, *manualClock_);
  return make<TSKTimerValue>(number, std::move(source));
}

void NamedTimers::start(TSKTimerValue& timer, double delay) const {
  ++timer.starts;
  timer.firing = false;
  dispatch_source_set_timer(timer.source, timeAfter(delay, manualClock_.get()), 0, 0);
}

void NamedTimers::fired(NamedTimer& entry, std::uint64_t number) {
  Block<void()> block;
  std::uint64_t starts = 0;
  const State* state = nullptr;
  {
    const Lock lock(*this);
    if (!entry.live || entry.live->number != number) return;
    block = entry.live->block;
    starts = entry.live->starts;
    entry.live->firing = true;
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
  if (entry.live && entry.live->number == number && entry.live->starts == starts) cancel(entry, unused);
}

void NamedTimers::_cancelTimerWithName(const NSString& name, Blocks& unused) {
  if (NamedTimer* entry = state_->table ? state_->table->find(name) : nullptr) cancel(*entry, unused);
}

/// The planned time stays in the table.
void NamedTimers::cancel(NamedTimer& entry, Blocks& unused) {
  const Ref<TSKTimerValue> timer = std::exchange(entry.live, nullptr);
  if (!timer) return;
  --state_->live;
  dispatch_source_cancel(timer->source);
  unused.push_back(std::move(timer->block));
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
