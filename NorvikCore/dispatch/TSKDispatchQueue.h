// NorvikCore/dispatch/TSKDispatchQueue.h - a queue that knows which queues the running code is inside. It refuses
// synchronous blocks that would deadlock, has a label, and runs named one-shot timers.
//
//   Ref<TSKDispatchQueue> payroll = TSKDispatchQueue::dispatchQueueWithLabel("payroll");
//   payroll->dispatchAsynchronously([] { readEmployees(); });
//   payroll->dispatchSynchronously([&] {
//     payroll->dispatchSynchronously([] { sum(); });   // inside it already: called in place, where a bare queue hangs
//   });
//   Decimal net = payroll->dispatchSynchronously([&] { return netPay(employee); }).value();
//   payroll->scheduleTimerWithName("save", 2, TSKTimerRestart, [] { save(); });   // 2 s after the last of many calls
//
// The *queue stack* of the running code holds the serial wrappers that the code is inside, outermost first. The last
// one is the wrapper of the running block; the one before it is the wrapper of the block that waits in
// dispatchSynchronously() for the running block, and so on. An asynchronous block and a timer's block start a new
// stack. A block of a concurrent wrapper continues the stack, but the wrapper is not in it. Three kinds of code have no
// stack, because the queues that they are inside are not known: a barrier block, a block enqueued on the bare queue,
// and a thread that the application created.
//
// Threads: synchronised. Two wrappers of one queue count as two queues in the deadlock check; create one.
// Memory:  a waiting block of a serial wrapper retains the wrapper. A waiting block of a concurrent wrapper, or a
//          waiting barrier block, retains only the queue. Timers retain nothing: they end with the wrapper (see
//          scheduleTimerWithName).
// Errors:  a refused block raises nothing. An exception that leaves a synchronous block reaches the caller. An
//          exception that leaves an asynchronous block or a timer's block ends the process, as on any queue. An absent
//          block raises NSInvalidArgumentException.
// Cost:    a synchronous block on an idle queue runs on the caller's thread and allocates nothing.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/object/Block.h"

#include <cstdint>
#include <optional>
#include <type_traits>
#include <utility>

namespace norvik {

class dispatch_manual_clock;

namespace detail {

class NamedTimers;
class WaitingBlocks;
class WrapperAwaiter;
template <class F>
class WaitingBlock;

/// A reference to a block of any type, which is called while the block exists.
struct BlockCall {
  void (*call)(void* block);
  void* block;
  void operator()() const { call(block); }
};
template <class F>
[[nodiscard]] BlockCall blockCall(F&& block) noexcept {
  using Function = std::remove_reference_t<F>;
  return {[](void* function) { static_cast<void>(std::forward<F>(*static_cast<Function*>(function))()); },
          const_cast<void*>(static_cast<const void*>(std::addressof(block)))};
}

/// What a synchronous block returns to its caller, if it may be refused: nothing, a pointer, or a std::optional.
template <class F>
struct SynchronousResult {
  using Type = std::optional<std::remove_cvref_t<std::invoke_result_t<F>>>;
};
template <class F>
requires std::is_void_v<std::invoke_result_t<F>>
struct SynchronousResult<F> {
  using Type = void;
};
template <class F>
requires std::is_lvalue_reference_v<std::invoke_result_t<F>>
struct SynchronousResult<F> {
  using Type = std::remove_reference_t<std::invoke_result_t<F>>*;
};

NK_EXPORT void requireBlock(const Block<void()>& block);
template <class F>
void requireBlock(const F&) noexcept {}

}  // namespace detail

/// The treatment of a synchronous block whose queue is in the current queue stack. Other numbers count as
/// TSKDeadlockReserved.
enum TSKDeadlockBehavior : std::int64_t {
  TSKDeadlockExecuteInline = 0,  ///< the block is called at once, without the queue
  TSKDeadlockSkip = 1,           ///< the block is not run
  TSKDeadlockSkipAndLog = 2,     ///< the block is not run, and a line on the system console reports it
  TSKDeadlockReserved = 3,       ///< as TSKDeadlockSkip
  TSKDeadlockNoCheck = 4,        ///< the stack is not checked; the block may wait until the process ends
};

/// The effect of scheduling on a pending timer of the same name.
enum TSKTimerBehavior : std::int64_t {
  TSKTimerKeepEarliest = 0,  ///< the earlier of the two times stays
  TSKTimerRestart = 1,       ///< the new time replaces the old one
  TSKTimerThrottle = 2,      ///< fires at once if an interval has passed since the last planned time, else then
};

/// Keys for dispatch_get_specific() in the running code.
///
/// TSKIsCurrentKey gives the wrapper of its queue, a TSKDispatchQueue*. It is set on the queue: the most recently
/// created wrapper of that queue, or null after that wrapper is destroyed.
///
/// TSKQueueStackKey gives the queue stack, an NSMutableArray* of wrappers. All blocks of one stack share the array,
/// which grows and shrinks with the stack. It is created at the first request, and the deadlock check uses it from then
/// on. It lives as long as the outermost block, or longer if a Ref retains it. It belongs to the block, not to the
/// queue, so dispatch_queue_get_specific() does not find it.
extern NK_EXPORT const void* const TSKIsCurrentKey;
extern NK_EXPORT const void* const TSKQueueStackKey;

class NK_EXPORT TSKDispatchQueue : public NSObject {
  NK_OBJECT(TSKDispatchQueue, NSObject)

  /// False by default. The application sets it, before the first use, for a wrapper of a concurrent queue.
  NK_PROPERTY(bool, concurrent, setConcurrent)
  NK_READONLY_PROPERTY(dispatch_queue_t, queue)
  NK_COMPUTED_PROPERTY(std::optional<NSString>, label)
  NK_COMPUTED_PROPERTY(Ref<NSDictionary>, timers)
  NK_COMPUTED_PROPERTY(TSKDeadlockBehavior, deadlockBehavior)
  NK_COMPUTED_PROPERTY(std::uint64_t, timerCount)

  /// A wrapper without a label. An empty queue raises NSInvalidArgumentException.
  [[nodiscard]] static Ref<TSKDispatchQueue> dispatchQueueWithGCDQueue(const dispatch_queue_t& queue,
                                                                       TSKDeadlockBehavior behavior);
  /// A new serial queue. Without a label, the wrapper's label is "TSKDispatchQueue" and the bare queue has none.
  [[nodiscard]] static Ref<TSKDispatchQueue> dispatchQueueWithLabel(
      const std::optional<NSString>& label, TSKDeadlockBehavior behavior = TSKDeadlockExecuteInline);
  /// The main bundle's identifier, "." and the suffix; absent if the bundle has no identifier.
  [[nodiscard]] static std::optional<NSString> labelByPrependingBundleIdentifierToString(const NSString& suffix);

  // Each of these exists once in the process. The main one is serial; all code on the main thread counts as inside it,
  // so a synchronous block from there is called in place. The other two are concurrent and check nothing.
  [[nodiscard]] static const Ref<TSKDispatchQueue>& globalDispatchQueue();
  [[nodiscard]] static const Ref<TSKDispatchQueue>& mainDispatchQueue();
  [[nodiscard]] static const Ref<TSKDispatchQueue>& sharedConcurrentQueue();

  TSKDispatchQueue(const dispatch_queue_t& queue, TSKDeadlockBehavior behavior);
  ~TSKDispatchQueue() override;

  [[nodiscard]] std::optional<NSString> label() const { return _label; }
  [[nodiscard]] TSKDeadlockBehavior deadlockBehavior() const noexcept { return _deadlockBehavior; }
  /// "<TSKDispatchQueue:0x5581...>[payroll]"
  [[nodiscard]] NSString description() const override;

  /// Runs a block on the queue and returns after it has run. If the queue is in the current queue stack,
  /// deadlockBehavior() decides what happens.
  ///
  /// Returns what the block returns: nothing if that is void; a pointer if it is a reference; else a std::optional of
  /// it, which must be movable. The pointer is null and the std::optional is empty if the block was refused, which
  /// never happens with TSKDeadlockExecuteInline and TSKDeadlockNoCheck.
  template <class F>
  typename detail::SynchronousResult<F>::Type dispatchSynchronously(F&& block) {
    detail::requireBlock(block);
    using Result = typename detail::SynchronousResult<F>::Type;
    if constexpr (std::is_void_v<Result>) {
      runSynchronously(detail::blockCall(std::forward<F>(block)));
    } else {
      constexpr bool isMovable = std::is_move_constructible_v<Result>;
      static_assert(isMovable, "the result of a synchronous block is movable, because the block may be refused");
      Result result{};
      if constexpr (isMovable) {
        runSynchronously(detail::blockCall([&] {
          if constexpr (std::is_pointer_v<Result>)
            result = std::addressof(std::forward<F>(block)());
          else
            result.emplace(std::forward<F>(block)());
        }));
      }
      return result;
    }
  }
  /// Enqueues a block, which may be any movable callable, and returns.
  template <class F>
  void dispatchAsynchronously(F&& block) {
    detail::requireBlock(block);
    if (concurrent()) return dispatch_async(queue(), std::forward<F>(block));
    enqueue(detail::makeBlock(detail::WaitingBlock<std::decay_t<F>>(*this, std::forward<F>(block))));
  }
  /// Enqueues a block that runs alone on its queue, without a deadlock check and without a queue stack. Returns what
  /// the block returns.
  template <class F>
  std::invoke_result_t<F> dispatchBarrierSynchronously(F&& block) {
    detail::requireBlock(block);
    const Ref<TSKDispatchQueue> self = ref(*this);  // the block may release the last other Ref
    return dispatch_barrier_sync(queue(), std::forward<F>(block));
  }
  template <class F>
  void dispatchBarrierAsynchronously(F&& block) {
    detail::requireBlock(block);
    dispatch_barrier_async(queue(), std::forward<F>(block));
  }

  /// True if the running block was enqueued on this queue, or on a queue without a wrapper whose target is this queue.
  [[nodiscard]] bool isCurrentQueue() const noexcept;
  /// True if this wrapper is in the queue stack of the running code. For mainDispatchQueue(): true on the main thread.
  [[nodiscard]] bool isInCurrentQueueStack() const;

  /// Runs the block on the queue once, `timeInterval` seconds after this call, or later or earlier as the behaviour
  /// says. The block replaces the earlier block of that name. A negative interval, or not-a-number, counts as 0; a
  /// timer with an interval above 291 years never fires. The function returns before the change takes effect. The calls
  /// of one thread take effect in their order, also on concurrent queues. Constant time. A name is never forgotten, so
  /// use few names.
  ///
  /// Timers do not retain the wrapper. When the wrapper is destroyed, its pending timers are cancelled and their blocks
  /// are destroyed on the thread that released the wrapper; no block starts after that. A running block retains the
  /// wrapper until the block returns. In a child made by fork() a wrapper starts without timers.
  /// The interval is a number of seconds or a duration of std::chrono.
  template <detail::TimeInterval Interval>
  void scheduleTimerWithName(const NSString& name, Interval timeInterval, TSKTimerBehavior behavior,
                             Block<void()> block) {
    scheduleTimer(name, detail::inSeconds(timeInterval), behavior, std::move(block));
  }
  /// Does nothing if there is no such timer.
  void cancelTimerWithName(const NSString& name);
  void cancelAllTimers();

  /// The number of pending timers after the last change that took effect on the queue. Right after cancelAllTimers()
  /// has taken effect, it is the number of names. Any thread.
  [[nodiscard]] std::uint64_t timerCount() const noexcept;
  /// A copy of the current table of timers; an empty Ref before the first timer. The key is the name and the value a
  /// dictionary: "DateValue" is the last planned time in seconds of the monotonic clock, and "TimerValue" is present
  /// while the timer is pending or its block runs. Names are never removed.
  [[nodiscard]] Ref<NSDictionary> timers() const;

  /// Sets a test's clock for the timers. Call it before the first timer is scheduled.
  void setTimerClock(const dispatch_manual_clock& clock);

  NK_CLASS_METHOD_AS(dispatchQueueWithLabel, "dispatchQueueWithLabel:behavior:")
  NK_CLASS_METHOD(globalDispatchQueue)
  NK_CLASS_METHOD(mainDispatchQueue)
  NK_CLASS_METHOD(sharedConcurrentQueue)
  NK_CLASS_METHOD(labelByPrependingBundleIdentifierToString)
  NK_METHOD_AS(dispatchSynchronously<const Block<void()>&>, "dispatchSynchronously:")
  NK_METHOD_AS(dispatchAsynchronously<const Block<void()>&>, "dispatchAsynchronously:")
  NK_METHOD_AS(dispatchBarrierSynchronously<const Block<void()>&>, "dispatchBarrierSynchronously:")
  NK_METHOD_AS(dispatchBarrierAsynchronously<const Block<void()>&>, "dispatchBarrierAsynchronously:")
  NK_METHOD(isCurrentQueue)
  NK_METHOD(isInCurrentQueueStack)
  NK_METHOD_AS(scheduleTimerWithName<double>, "scheduleTimerWithName:timeInterval:behavior:block:")
  NK_METHOD(cancelTimerWithName)
  NK_METHOD(cancelAllTimers)

 private:
  void scheduleTimer(const NSString& name, double seconds, TSKTimerBehavior behavior, Block<void()> block);
  friend class detail::NamedTimers;
  friend class detail::WrapperAwaiter;
  template <class F>
  friend class detail::WaitingBlock;

  static Ref<TSKDispatchQueue> makeShared(const dispatch_queue_t& queue, TSKDeadlockBehavior behavior, bool concurrent);
  void runSynchronously(detail::BlockCall block);
  void enqueue(detail::Item* waitingBlock);
  void endWaitingBlock() noexcept;
  void runInNewStack(detail::BlockCall block);
  void refuse(detail::BlockCall block) const;

  bool followsMainThread_ = false;
  std::optional<NSString> _label;
  const TSKDeadlockBehavior _deadlockBehavior;
  const detail::Hidden<detail::WaitingBlocks> waitingBlocks_;
  const detail::Hidden<detail::NamedTimers> namedTimers_;
};

namespace detail {

/// A block that dispatchAsynchronously() enqueues. It retains the wrapper from then until it is destroyed.
template <class F>
class WaitingBlock {
 public:
  template <class G>
  WaitingBlock(TSKDispatchQueue& wrapper, G&& block) : end_{wrapper}, block_(std::forward<G>(block)) {}
  WaitingBlock(WaitingBlock&&) = default;

  void operator()() {
    end_.isDue = true;
    end_.wrapper.runInNewStack(blockCall(std::move(block_)));
  }

 private:
  struct End {
    TSKDispatchQueue& wrapper;
    bool isDue = false;  // true once the block has begun; one that could not be enqueued never does
    ~End() {
      if (isDue) wrapper.endWaitingBlock();
    }
  };
  End end_;  // destroyed after the block, which may use the wrapper to its end
  F block_;
};

}  // namespace detail
}  // namespace norvik
