// NorvikCore/platform/dispatch/Source.h - timers that run a block on a queue.
//
//   auto timer = dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, queue);
//   dispatch_source_set_event_handler(timer, [] { rollLogFile(); });
//   dispatch_source_set_timer(timer, dispatch_time(DISPATCH_TIME_NOW, 60 * NSEC_PER_SEC), 0, 0);   // once
//   dispatch_resume(timer);                                    // sources start suspended
//
// A timer fires at its time or a little later, never before. A repeating timer keeps to its grid; periods that pass
// before the handler has run count as one call. A timer that starts at a point of the wall clock follows that clock
// when it is set; every other timer follows the monotonic clock.
//
// Threads:   synchronised. The handlers of one source never run at the same time, not even on a concurrent queue.
// Ownership: a source retains its queue and, until it is cancelled, its handlers. A handler that holds a handle of its
//            own source keeps both alive until then. When the last handle is released, the source is cancelled.
// Fork:      timers that were set before a fork do not fire in the child; timers that are set in the child do.
#pragma once  // include time: <memory>: a handler is shared with the call that runs it

#include "NorvikCore/platform/dispatch/Queue.h"

#include <cstdint>
#include <memory>

namespace norvik {

namespace detail {
class SourceCore;
class ManualTimerClock;
NK_EXPORT void retainCore(SourceCore* source) noexcept;
NK_EXPORT void releaseCore(SourceCore* source) noexcept;

/// A closure that is called any number of times.
class Handler {
 public:
  virtual ~Handler() = default;
  virtual void call() = 0;
};
template <class F>
class HandlerOf final : public Handler {
 public:
  template <class G>
  explicit HandlerOf(G&& closure) : closure_(std::forward<G>(closure)) {}
  void call() override { closure_(); }

 private:
  F closure_;
};
template <class F>
[[nodiscard]] std::unique_ptr<Handler> makeHandler(F&& closure) {
  if constexpr (std::is_same_v<std::decay_t<F>, std::nullptr_t>) {
    return nullptr;
  } else {
    return std::make_unique<HandlerOf<std::decay_t<F>>>(std::forward<F>(closure));
  }
}
}  // namespace detail

using dispatch_source_t = detail::Handle<detail::SourceCore>;

enum class dispatch_source_type_t : std::uint8_t { timer };
inline constexpr dispatch_source_type_t DISPATCH_SOURCE_TYPE_TIMER = dispatch_source_type_t::timer;

/// A new source, suspended. `handle` and `mask` are 0 for a timer. An empty queue means the global queue.
[[nodiscard]] NK_EXPORT dispatch_source_t dispatch_source_create(dispatch_source_type_t type, std::uintptr_t handle,
                                                                 std::uintptr_t mask, const dispatch_queue_t& queue);

/// Fires at `start` and then every `interval` nanoseconds; only once if `interval` is 0 or DISPATCH_TIME_FOREVER. The
/// call replaces the previous setting and discards firings that were not yet handled. A start of DISPATCH_TIME_FOREVER
/// stops the timer. `leeway` is an acceptable delay in nanoseconds: timers with a leeway fire together, so that the
/// process wakes less often. With a leeway of 0 a timer is exact. A leeway above half of the period counts as half. No
/// effect on a cancelled source.
NK_EXPORT void dispatch_source_set_timer(const dispatch_source_t& source, dispatch_time_t start, std::uint64_t interval,
                                         std::uint64_t leeway);
/// The same with durations of std::chrono. Negative durations count as zero.
template <detail::ChronoDuration Interval, detail::ChronoDuration Leeway = Interval>
void dispatch_source_set_timer(const dispatch_source_t& source, dispatch_time_t start, const Interval& interval,
                               const Leeway& leeway = Leeway::zero()) {
  const auto nanoseconds = [](std::int64_t count) { return count > 0 ? static_cast<std::uint64_t>(count) : 0; };
  dispatch_source_set_timer(source, start, nanoseconds(detail::inNanoseconds(interval)),
                            nanoseconds(detail::inNanoseconds(leeway)));
}

/// Calls are counted: a source is active when it has been resumed as often as suspended; its creation counts as a
/// suspension. One resume too many aborts with a line "BUG: ..." on the system console. Firings during a suspension are
/// handled by one call after the resume. A running handler continues.
NK_EXPORT void dispatch_suspend(const dispatch_source_t& source);
NK_EXPORT void dispatch_resume(const dispatch_source_t& source);

/// No event handler begins after this call; one may still begin at the moment of a call from outside the queue. The
/// cancel handler runs on the queue, once, after the last event handler (and after the resume of a suspended source);
/// then the handlers are destroyed.
NK_EXPORT void dispatch_source_cancel(const dispatch_source_t& source);
/// Not 0 once the source is cancelled.
[[nodiscard]] NK_EXPORT std::intptr_t dispatch_source_testcancel(const dispatch_source_t& source);

/// In an event handler: how many times the timer has fired for this call.
[[nodiscard]] NK_EXPORT std::uintptr_t dispatch_source_get_data(const dispatch_source_t& source);

namespace detail {
NK_EXPORT void setEventHandler(const dispatch_source_t& source, std::unique_ptr<Handler> handler);
NK_EXPORT void setCancelHandler(const dispatch_source_t& source, std::unique_ptr<Handler> handler);
}  // namespace detail

/// The block that runs each time the timer has fired; nullptr: none. It may be replaced at any time, also within the
/// handler; the next call is of the new one.
template <class F>
void dispatch_source_set_event_handler(const dispatch_source_t& source, F&& handler) {
  detail::setEventHandler(source, detail::makeHandler(std::forward<F>(handler)));
}

/// The block that runs once the source is cancelled; nullptr: none.
template <class F>
void dispatch_source_set_cancel_handler(const dispatch_source_t& source, F&& handler) {
  detail::setCancelHandler(source, detail::makeHandler(std::forward<F>(handler)));
}

/// A clock that advances only when advance() is called, for tests that need exact timers. It has no wall clock; a
/// source on it takes every start as a point of this clock. Copies refer to the same clock.
class NK_EXPORT dispatch_manual_clock {
 public:
  dispatch_manual_clock();
  dispatch_manual_clock(const dispatch_manual_clock&);
  dispatch_manual_clock& operator=(const dispatch_manual_clock&);
  ~dispatch_manual_clock();

  /// Nanoseconds of this clock; it begins at one second.
  [[nodiscard]] std::uint64_t now() const;
  /// `delta` nanoseconds from now, as a start for dispatch_source_set_timer().
  [[nodiscard]] dispatch_time_t time(std::int64_t delta) const;
  /// Advances the clock, stopping at each deadline on the way. When this returns, the handlers of all due timers have
  /// been enqueued, in the order of their deadlines. They run on their queues; dispatch_sync() waits for them.
  void advance(std::uint64_t nanoseconds);
  /// How many timers are set on this clock.
  [[nodiscard]] std::size_t armedTimers() const;

 private:
  friend NK_EXPORT void dispatch_source_set_clock(const dispatch_source_t& source, const dispatch_manual_clock& clock);
  std::shared_ptr<detail::ManualTimerClock> clock_;
};

/// Gives a source a manual clock, which may be destroyed before the source. Call it before the timer is first set.
NK_EXPORT void dispatch_source_set_clock(const dispatch_source_t& source, const dispatch_manual_clock& clock);

}  // namespace norvik
