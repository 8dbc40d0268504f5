// NorvikCore/platform/dispatch/Queue.h - serial and concurrent queues that run blocks.
//
// A serial queue runs one block at a time, in the order in which they were enqueued. A concurrent queue may run many at
// once, except that a barrier runs alone: after every earlier block and before every later one.
//
//   auto queue = dispatch_queue_create("payroll.import", DISPATCH_QUEUE_SERIAL);
//   dispatch_async(queue, [] { readEmployees(); });
//   auto count = dispatch_sync(queue, [] { return employeeCount(); });   // waits; returns the result of the block
//   dispatch_after(500ms, queue, [] { showProgress(); });
//
// Threads: synchronised, every function. Blocks may enqueue blocks on any queue.
// Memory:  handles are counted. A queue with blocks lives until they have run; a block is destroyed right after it has
//          run, on the thread that ran it.
// Errors:  an exception that leaves a synchronous block reaches the caller. One that leaves an asynchronous block ends
//          the process: what() and the queue's label are written to the system console, then std::terminate() is
//          called. A call with an empty handle raises NSInvalidArgumentException. A call that could never return (a
//          synchronous block for a queue that the calling code holds) writes a line "BUG: ..." to the system console
//          and aborts.
// Limits:  if no thread can be started, dispatch_sync() itself runs the blocks before its own, and every wait attempts
//          to start a thread (docs/dispatch.md).
// Cost:    a synchronous block on an idle queue runs on the caller's thread, for two atomic operations. An asynchronous
//          block takes memory from a page of the calling thread and one atomic operation. If all workers sleep, one is
//          woken.
#pragma once

#include "NorvikCore/platform/dispatch/Handle.h"
#include "NorvikCore/platform/dispatch/Item.h"
#include "NorvikCore/platform/dispatch/Time.h"
#include "NorvikCore/platform/export.h"

#include <optional>
#include <type_traits>
#include <utility>

namespace norvik {

namespace detail {
class QueueCore;
NK_EXPORT void retainCore(QueueCore* queue) noexcept;
NK_EXPORT void releaseCore(QueueCore* queue) noexcept;
}  // namespace detail

using dispatch_queue_t = detail::Handle<detail::QueueCore>;

enum class dispatch_queue_attr_t : std::uint8_t { serial, concurrent };
inline constexpr dispatch_queue_attr_t DISPATCH_QUEUE_SERIAL = dispatch_queue_attr_t::serial;
inline constexpr dispatch_queue_attr_t DISPATCH_QUEUE_CONCURRENT = dispatch_queue_attr_t::concurrent;

/// Means "the queue of the running code", in dispatch_queue_get_label() only.
struct dispatch_current_queue_label_t {};
inline constexpr dispatch_current_queue_label_t DISPATCH_CURRENT_QUEUE_LABEL{};

/// A new queue. The label is copied; null: none. A queue with a target runs its blocks as blocks of the target: queues
/// that share a serial target exclude each other, and queues whose targets lead to the main queue run on the main
/// thread. A queue without a target runs its blocks directly on the library's worker threads.
[[nodiscard]] NK_EXPORT dispatch_queue_t dispatch_queue_create(const char* label,
                                                               dispatch_queue_attr_t attribute = DISPATCH_QUEUE_SERIAL,
                                                               const dispatch_queue_t& target = nullptr);

/// The one concurrent queue of the process, "com.norvik.global-queue". A barrier on it is an ordinary block.
[[nodiscard]] NK_EXPORT dispatch_queue_t dispatch_get_global_queue();

/// Moves the queue, with its waiting blocks, to another target (empty: none). The call waits for the blocks that were
/// enqueued before, and for the resume of a suspended queue; do not call it in a block of the queue itself.
/// NSInvalidArgumentException for the global and the main queue, which have no target, and for a target that leads back
/// to the queue.
NK_EXPORT void dispatch_set_target_queue(const dispatch_queue_t& queue, const dispatch_queue_t& target);

/// Calls are counted: from dispatch_suspend() until it has been resumed as often as suspended, the queue begins no
/// block. One block may still begin at the moment of a call from outside the queue. A running block continues. Enqueued
/// blocks keep their order and wait, and so does dispatch_sync(). Suspending a queue also holds up the queues that
/// target it, but not its own target. When the last handle of a queue is released, the queue is resumed. One resume too
/// many aborts with a line "BUG: ...". NSInvalidArgumentException for the global and the main queue, because the whole
/// process shares them.
NK_EXPORT void dispatch_suspend(const dispatch_queue_t& queue);
NK_EXPORT void dispatch_resume(const dispatch_queue_t& queue);

/// The queue's label; "" if it has none. The text lives as long as the queue.
[[nodiscard]] NK_EXPORT const char* dispatch_queue_get_label(const dispatch_queue_t& queue);

/// The label of the queue whose block is running. Outside any queue: "com.norvik.main-thread" on the main thread, the
/// thread's name on other threads. The text lives as long as that block runs; outside any queue, until the next call on
/// the same thread.
[[nodiscard]] NK_EXPORT const char* dispatch_queue_get_label(dispatch_current_queue_label_t);

/// Stores a value under a key, which is an address of which only the identity matters. A null value removes the key.
/// The destructor, if any, is called with the value, on the global queue, when the value is replaced or the queue is
/// destroyed.
NK_EXPORT void dispatch_queue_set_specific(const dispatch_queue_t& queue, const void* key, void* value,
                                           void (*destructor)(void*) = nullptr);

/// The key's value on that queue itself; null if it has none.
[[nodiscard]] NK_EXPORT void* dispatch_queue_get_specific(const dispatch_queue_t& queue, const void* key);

/// The key's value on the queue whose block is running, or else on the nearest of its targets that has one. The queues
/// of a caller that waits for this block in dispatch_sync() are not searched. The main thread outside any block counts
/// as in a block of the main queue. On other threads the result is null outside any queue.
[[nodiscard]] NK_EXPORT void* dispatch_get_specific(const void* key) noexcept;

/// True while the calling code runs in a block of the queue, in a block of a queue that targets it, or in a block that
/// such a block waits for in dispatch_sync(). If the queue is serial, a synchronous block for it would deadlock then.
[[nodiscard]] NK_EXPORT bool dispatch_queue_is_held(const dispatch_queue_t& queue) noexcept;

namespace detail {

enum class Order : std::uint8_t { normal, barrier };

/// Enqueues an item. The thread that runs it sees all that the caller wrote before: its run function and what it holds.
NK_EXPORT void enqueue(const dispatch_queue_t& queue, Item* item, Delivery delivery, Order order);

[[noreturn]] NK_EXPORT void raiseNoQueue(const char* function);

/// Raises for an empty handle. Called before anything is allocated, so that nothing leaks.
inline void requireQueue(const dispatch_queue_t& queue, const char* function) {
  if (!queue) [[unlikely]]
    raiseNoQueue(function);
}

class BlockValue;

/// A queue whose block is running on this thread, and the frame around it.
struct Frame {
  QueueCore* queue = nullptr;
  Frame* outer = nullptr;  // the frame that this thread was in before
  Frame* caller =
      nullptr;  // the frame that waits for this block: `outer`, or a frame of the thread that called dispatch_sync
  BlockValue* values = nullptr;  // values of this block alone
};

/// From construction to destruction the queue runs one synchronous block, on this thread unless runsElsewhere().
class NK_EXPORT SyncScope {
 public:
  SyncScope(const dispatch_queue_t& queue, Order order);
  ~SyncScope();
  SyncScope(const SyncScope&) = delete;
  SyncScope& operator=(const SyncScope&) = delete;

  /// True if the queue leads to the main queue and this is another thread: then use callElsewhere().
  [[nodiscard]] bool runsElsewhere() const noexcept { return elsewhere_; }
  /// Makes the main thread call `function` and waits for it; rethrows what it throws.
  void callElsewhere(void (*function)(void*), void* context);

 private:
  Frame frame_;
  Order order_;
  bool elsewhere_ = false;
};

template <class F>
auto runSynchronously(const dispatch_queue_t& queue, Order order, F&& block) -> std::invoke_result_t<F> {
  using Result = std::invoke_result_t<F>;
  SyncScope scope(queue, order);
  if (!scope.runsElsewhere()) [[likely]]
    return std::forward<F>(block)();

  if constexpr (std::is_void_v<Result>) {
    auto call = [&block] { std::forward<F>(block)(); };
    scope.callElsewhere([](void* context) { (*static_cast<decltype(call)*>(context))(); }, &call);
  } else if constexpr (std::is_reference_v<Result>) {
    std::remove_reference_t<Result>* result = nullptr;
    auto call = [&block, &result] {
      Result referred = std::forward<F>(block)();
      result = &referred;
    };
    scope.callElsewhere([](void* context) { (*static_cast<decltype(call)*>(context))(); }, &call);
    return static_cast<Result>(*result);
  } else {
    std::optional<std::remove_cv_t<Result>> result;
    auto call = [&block, &result] { result.emplace(std::forward<F>(block)()); };
    scope.callElsewhere([](void* context) { (*static_cast<decltype(call)*>(context))(); }, &call);
    return *std::move(result);
  }
}

}  // namespace detail

/// Enqueues a block (any movable callable without arguments) and returns.
template <class F>
void dispatch_async(const dispatch_queue_t& queue, F&& block) {
  detail::requireQueue(queue, "dispatch_async");
  detail::enqueue(queue, detail::makeBlock(std::forward<F>(block)), detail::Delivery::prompt, detail::Order::normal);
}

/// Like dispatch_async(), and in order with all other blocks; but the block may wait about a millisecond longer for a
/// worker. While any worker is awake the caller wakes none, which makes frequent calls cheap.
template <class F>
void dispatch_async_relaxed(const dispatch_queue_t& queue, F&& block) {
  detail::requireQueue(queue, "dispatch_async_relaxed");
  detail::enqueue(queue, detail::makeBlock(std::forward<F>(block)), detail::Delivery::relaxed, detail::Order::normal);
}

/// Runs a block in its turn, and returns the block's result when it has run. The block is called in place, not copied.
template <class F>
auto dispatch_sync(const dispatch_queue_t& queue, F&& block) -> std::invoke_result_t<F> {
  return detail::runSynchronously(queue, detail::Order::normal, std::forward<F>(block));
}

/// Like dispatch_async(); on a concurrent queue the block runs alone.
template <class F>
void dispatch_barrier_async(const dispatch_queue_t& queue, F&& block) {
  detail::requireQueue(queue, "dispatch_barrier_async");
  detail::enqueue(queue, detail::makeBlock(std::forward<F>(block)), detail::Delivery::prompt, detail::Order::barrier);
}

/// Like dispatch_sync(); on a concurrent queue the block runs alone.
template <class F>
auto dispatch_barrier_sync(const dispatch_queue_t& queue, F&& block) -> std::invoke_result_t<F> {
  return detail::runSynchronously(queue, detail::Order::barrier, std::forward<F>(block));
}

namespace detail {
NK_EXPORT void enqueueAfter(dispatch_time_t when, const dispatch_queue_t& queue, Item* item);
}

/// Enqueues a block at `when`; immediately for DISPATCH_TIME_NOW. With DISPATCH_TIME_FOREVER it never runs and is kept
/// until the process ends.
template <class F>
void dispatch_after(dispatch_time_t when, const dispatch_queue_t& queue, F&& block) {
  detail::requireQueue(queue, "dispatch_after");
  detail::enqueueAfter(when, queue, detail::makeBlock(std::forward<F>(block), detail::ItemLife::lasting));
}
/// That long from now.
template <detail::ChronoDuration Duration, class F>
void dispatch_after(const Duration& delay, const dispatch_queue_t& queue, F&& block) {
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, delay), queue, std::forward<F>(block));
}
/// At a Date, or at a time of std::chrono's system clock.
template <detail::WallInstant Instant, class F>
void dispatch_after(const Instant& when, const dispatch_queue_t& queue, F&& block) {
  dispatch_after(dispatch_walltime(when), queue, std::forward<F>(block));
}
template <detail::PlainNumber Number, class F>
void dispatch_after(Number, const dispatch_queue_t&, F&&) {
  static_assert(!sizeof(Number), "a plain number is no time: write a duration, such as 2s");
}

}  // namespace norvik
