#include "NorvikCore/platform/dispatch/Source.h"

#include "NorvikCore/platform/dispatch/internal/FiredItems.h"
#include "NorvikCore/platform/dispatch/internal/SourceCore.h"
#include "NorvikCore/platform/dispatch/internal/TimerClock.h"
#include "NorvikCore/platform/values/NSException.h"

#include <string>
#include <utility>

namespace norvik {
namespace {

detail::SourceCore& coreOf(const dispatch_source_t& source, const char* function) {
  if (!source) NSException::raise(NSInvalidArgumentException, std::string(function) + ": the source is nil");
  return *source.core();
}

/// The block of one dispatch_after().
class DelayedItem final : public detail::TimerEntry {
 public:
  DelayedItem(dispatch_queue_t queue, detail::Item* item) : queue_(std::move(queue)), item_(item) {}
  void keepUntilFired() noexcept override {}
  void fired(std::uint64_t, std::uint32_t, detail::FiredItems& items) override {
    items.add(queue_, item_);
    delete this;
  }

 private:
  const dispatch_queue_t queue_;
  detail::Item* const item_;
};

}  // namespace

dispatch_source_t dispatch_source_create(dispatch_source_type_t, std::uintptr_t, std::uintptr_t,
                                         const dispatch_queue_t& queue) {
  return dispatch_source_t::adopt(queue ? new detail::SourceCore(queue)
                                        : new detail::SourceCore(dispatch_get_global_queue()));
}

void dispatch_source_set_timer(const dispatch_source_t& source, dispatch_time_t start, std::uint64_t interval,
                               std::uint64_t leeway) {
  coreOf(source, "dispatch_source_set_timer").setTimer(start, interval, leeway);
}

void dispatch_suspend(const dispatch_source_t& source) { coreOf(source, "dispatch_suspend").suspend(); }
void dispatch_resume(const dispatch_source_t& source) { coreOf(source, "dispatch_resume").resume(); }
void dispatch_source_cancel(const dispatch_source_t& source) { coreOf(source, "dispatch_source_cancel").cancel(); }

std::intptr_t dispatch_source_testcancel(const dispatch_source_t& source) {
  return coreOf(source, "dispatch_source_testcancel").isCancelled() ? 1 : 0;
}

std::uintptr_t dispatch_source_get_data(const dispatch_source_t& source) {
  return coreOf(source, "dispatch_source_get_data").data();
}

void dispatch_source_set_clock(const dispatch_source_t& source, const dispatch_manual_clock& clock) {
  coreOf(source, "dispatch_source_set_clock").setClock(clock.clock_);
}

dispatch_manual_clock::dispatch_manual_clock() : clock_(std::make_shared<detail::ManualTimerClock>()) {}
dispatch_manual_clock::dispatch_manual_clock(const dispatch_manual_clock&) = default;
dispatch_manual_clock& dispatch_manual_clock::operator=(const dispatch_manual_clock&) = default;
dispatch_manual_clock::~dispatch_manual_clock() = default;

std::uint64_t dispatch_manual_clock::now() const { return clock_->now(); }
dispatch_time_t dispatch_manual_clock::time(std::int64_t delta) const { return dispatch_time(clock_->now(), delta); }
void dispatch_manual_clock::advance(std::uint64_t nanoseconds) { clock_->advance(nanoseconds); }
std::size_t dispatch_manual_clock::armedTimers() const { return clock_->size(); }

namespace detail {

void setEventHandler(const dispatch_source_t& source, std::unique_ptr<Handler> handler) {
  coreOf(source, "dispatch_source_set_event_handler").setEventHandler(std::move(handler));
}

void setCancelHandler(const dispatch_source_t& source, std::unique_ptr<Handler> handler) {
  coreOf(source, "dispatch_source_set_cancel_handler").setCancelHandler(std::move(handler));
}

void enqueueAfter(dispatch_time_t when, const dispatch_queue_t& queue, Item* item) {
  if (when == DISPATCH_TIME_NOW) return enqueue(queue, item, Delivery::prompt, Order::normal);
  if (when == DISPATCH_TIME_FOREVER) return;
  SystemTimerClock::shared().arm(*new DelayedItem(queue, item), when, {});
}

}  // namespace detail
}  // namespace norvik
