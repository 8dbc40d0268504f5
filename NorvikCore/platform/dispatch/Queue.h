// NorvikCore/platform/dispatch/Queue.h - serial and concurrent queues that run blocks.
//
// A serial queue runs one block at a time, in the order in which they were queued; a concurrent queue may run many at
// once, save that a barrier runs alone, after everything queued before it and before everything queued after it.
//
//   auto queue = dispatch_queue_create("payroll.import", DISPATCH_QUEUE_SERIAL);
//   dispatch_async(queue, [] { readEmployees(); });
//   auto count = dispatch_sync(queue, [] { return employeeCount(); });   // waits; gives what the block gives
//
// Threads: synchronised, every function. Blocks may queue blocks, anywhere.
// Memory:  handles are counted. A queue with blocks lives until they have run; a block is destroyed right after it has
//          run, on the thread that ran it.
// Errors:  an exception that leaves a synchronous block reaches the caller. One that leaves an asynchronous block ends
//          the process: what() and the queue's label go to the system console, then std::terminate(). A call
//          with an empty handle raises NSInvalidArgumentException. A call that could never return (a synchronous block
//          for a queue that the calling code holds) writes a line "BUG: ..." to the system console and aborts.
// Limits:  where no thread can be started, dispatch_sync() runs what stands before its block itself, and every wait
//          attempts to start one (docs/dispatch.md).
// Cost:    a synchronous block on an idle queue runs on the caller's thread, for two atomic operations. An asynchronous
//          one costs a piece of a page of the thread's own and one atomic operation, and the wake-up of a worker where
//          all sleep.
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

/// Stands for the queue of the running code, in dispatch_queue_get_label() only.
struct dispatch_current_queue_label_t {};
inline constexpr dispatch_current_queue_label_t DISPATCH_CURRENT_QUEUE_LABEL{};

/// A new queue. The label is copied; null: none. A queue with a target runs its blocks as blocks of the target: queues
/// that share a serial target exclude each other, and those whose targets lead to the main queue run on the main
/// thread. Without a target the queue has the library's worker threads to itself.
[[nodiscard]] NK_EXPORT dispatch_queue_t dispatch_queue_create(const char* label,
                                                               dispatch_queue_attr_t attribute = DISPATCH_QUEUE_SERIAL,
                                                               const dispatch_queue_t& target = nullptr);

/// The one concurrent queue of the process, "com.norvik.global-queue". A barrier on it is an ordinary block.
[[nodiscard]] NK_EXPORT dispatch_queue_t dispatch_get_global_queue();

/// Moves the queue, with the blocks that wait on it, to another target (empty: none). Waits for the blocks that were
/// queued before, and for the resume of a suspended queue; not for use in a block of the queue itself. Global and main
/// queue have no target, and no queue may become its own target in any number of steps: NSInvalidArgumentException.
NK_EXPORT void dispatch_set_target_queue(const dispatch_queue_t& queue, const dispatch_queue_t& target);

/// Counted: from dispatch_suspend() until it has been resumed as often as suspended the queue begins no block, save
/// that one may be beginning this very moment if the call comes from elsewhere. A block that is running goes on; what
/// is queued keeps its order and waits, and so does dispatch_sync(). Suspending a queue holds up the queues that target
/// it, not its own target. A queue whose last handle goes is resumed. One resume too many aborts with a line "BUG:
/// ...". Global and main queue are everybody's and cannot be suspended: NSInvalidArgumentException.
NK_EXPORT void dispatch_suspend(const dispatch_queue_t& queue);
NK_EXPORT void dispatch_resume(const dispatch_queue_t& queue);

/// The queue's label, "" where it has none. The text lives as long as the queue.
[[nodiscard]] NK_EXPORT const char* dispatch_queue_get_label(const dispatch_queue_t& queue);

/// The label of the queue whose block is running. Off any queue: "com.norvik.main-thread" on the main thread, elsewhere
/// the thread's name. The text lives as long as that block runs; off any queue, until the thread asks again.
[[nodiscard]] NK_EXPORT const char* dispatch_queue_get_label(dispatch_current_queue_label_t);

/// Ties a value to a key, which is an address used for its identity alone. A null value takes the key away. The
/// destructor, if any, is called with the value on the global queue once the value is replaced or the queue is gone.
NK_EXPORT void dispatch_queue_set_specific(const dispatch_queue_t& queue, const void* key, void* value,
                                           void (*destructor)(void*) = nullptr);

/// The key's value on that queue itself; null where it has none.
[[nodiscard]] NK_EXPORT void* dispatch_queue_get_specific(const dispatch_queue_t& queue, const void* key);

/// The key's value on the queue whose block is running, or else on the nearest of its targets that has one. A caller
/// that waits for this block (dispatch_sync) has no part in it. The main thread counts as in a block of the main queue
/// while it is in none; on other threads it is null off any queue.
[[nodiscard]] NK_EXPORT void* dispatch_get_specific(const void* key) noexcept;

/// True while the calling code runs in a block of the queue, of a queue that targets it, or of a block that such a
/// block waits for in dispatch_sync(): what a synchronous block for the queue would deadlock on, were it serial.
[[nodiscard]] NK_EXPORT bool dispatch_queue_is_held(const dispatch_queue_t& queue) noexcept;

namespace detail {

enum class Order : std::uint8_t { normal, barrier };

/// Queues an item. The item's run function and everything it holds are seen by the thread that runs it.
NK_EXPORT void enqueue(const dispatch_queue_t& queue, Item* item, Delivery delivery, Order order);

[[noreturn]] NK_EXPORT void raiseNoQueue(const char* function);

/// Raises for an empty handle, before anything is made that would be lost.
inline void requireQueue(const dispatch_queue_t& queue, const char* function) {
  if (!queue) [[unlikely]]
    raiseNoQueue(function);
}

class BlockValue;

/// A queue whose block is running on this thread, and the block that it runs within.
struct Frame {
  QueueCore* queue = nullptr;
  Frame* outer = nullptr;   // what this thread was running before
  Frame* caller = nullptr;  // what waits for this block: `outer`, or a frame of the thread that called dispatch_sync
  BlockValue* values = nullptr;  // those of this block alone
};

/// From construction to destruction the queue runs one synchronous block, on this thread unless runsElsewhere().
class NK_EXPORT SyncScope {
 public:
  SyncScope(const dispatch_queue_t& queue, Order order);
  ~SyncScope();
  SyncScope(const SyncScope&) = delete;
  SyncScope& operator=(const SyncScope&) = delete;

  /// True where the queue ends at the main queue and this is another thread: callElsewhere() is the way then.
  [[nodiscard]] bool runsElsewhere() const noexcept { return elsewhere_; }
  /// Has the main thread call `function` and waits for it; passes on what it throws.
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

/// Queues a block (any movable callable without arguments) and returns.
template <class F>
void dispatch_async(const dispatch_queue_t& queue, F&& block) {
  detail::requireQueue(queue, "dispatch_async");
  detail::enqueue(queue, detail::makeBlock(std::forward<F>(block)), detail::Delivery::prompt, detail::Order::normal);
}

/// As dispatch_async(), in the same order with all other blocks, but the block may wait about a millisecond longer for
/// a worker: while any worker is awake the caller wakes none, which makes the call cheap where calls are frequent.
template <class F>
void dispatch_async_relaxed(const dispatch_queue_t& queue, F&& block) {
  detail::requireQueue(queue, "dispatch_async_relaxed");
  detail::enqueue(queue, detail::makeBlock(std::forward<F>(block)), detail::Delivery::relaxed, detail::Order::normal);
}

/// Runs a block in its turn and returns when it has run; gives the block's result. The block is called in place, not
/// copied.
template <class F>
auto dispatch_sync(const dispatch_queue_t& queue, F&& block) -> std::invoke_result_t<F> {
  return detail::runSynchronously(queue, detail::Order::normal, std::forward<F>(block));
}

/// As dispatch_async(); on a concurrent queue the block runs alone.
template <class F>
void dispatch_barrier_async(const dispatch_queue_t& queue, F&& block) {
  detail::requireQueue(queue, "dispatch_barrier_async");
  detail::enqueue(queue, detail::makeBlock(std::forward<F>(block)), detail::Delivery::prompt, detail::Order::barrier);
}

/// As dispatch_sync(); on a concurrent queue the block runs alone.
template <class F>
auto dispatch_barrier_sync(const dispatch_queue_t& queue, F&& block) -> std::invoke_result_t<F> {
  return detail::runSynchronously(queue, detail::Order::barrier, std::forward<F>(block));
}

namespace detail {
NK_EXPORT void enqueueAfter(dispatch_time_t when, const dispatch_queue_t& queue, Item* item);
}

/// Queues a block once `when` has come; DISPATCH_TIME_NOW at once. At DISPATCH_TIME_FOREVER it never runs and is kept
/// for the life of the process.
template <class F>
void dispatch_after(dispatch_time_t when, const dispatch_queue_t& queue, F&& block) {
  detail::requireQueue(queue, "dispatch_after");
  detail::enqueueAfter(when, queue, detail::makeBlock(std::forward<F>(block), detail::ItemLife::lasting));
}

}  // namespace norvik
