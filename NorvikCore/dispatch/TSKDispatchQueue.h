// NorvikCore/dispatch/TSKDispatchQueue.h - a queue that knows which queues the running code is inside: it refuses what
// would deadlock, has a label, and runs named one-shot timers.
//
//   Ref<TSKDispatchQueue> payroll = TSKDispatchQueue::dispatchQueueWithLabel("payroll");
//   payroll->dispatchAsynchronously([] { readEmployees(); });
//   payroll->dispatchSynchronously([&] {
//     payroll->dispatchSynchronously([] { sum(); });   // inside it already: called in place, where a bare queue hangs
//   });
//   payroll->scheduleTimerWithName("save", 2, TSKTimerRestart, [] { save(); });   // 2 s after the last of many calls
//
// The *queue stack* of the running code holds the serial wrappers it is inside, outermost first: the one whose block it
// is, the one that waits for this block in dispatchSynchronously(), and so on. An asynchronous block and a timer's
// block start a new stack. Concurrent wrappers hand the stack on and are not in it. A barrier block, a block that came
// through the bare queue and a thread of one's own have none: what they hold is not known.
//
// Threads: synchronised. Where several wrappers have one queue, each counts as a queue of its own; have one.
// Memory:  a block that waits on a serial wrapper keeps it; one that waits on a concurrent wrapper, or as a barrier,
//          keeps only the queue. Timers keep nothing: they end with the wrapper (see scheduleTimerWithName).
// Errors:  a refusal raises nothing. An exception that leaves a synchronous block reaches the caller; one that leaves
//          an asynchronous or a timer's block ends the process, as on any queue. An absent block raises
//          NSInvalidArgumentException.
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

/// A block that is called where it is, whatever its type.
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

NK_EXPORT void requireBlock(const Block<void()>& block);
template <class F>
void requireBlock(const F&) noexcept {}

}  // namespace detail

/// What a synchronous block does for a queue that is in the current queue stack. Other numbers count as
/// TSKDeadlockReserved.
enum TSKDeadlockBehavior : std::int64_t {
  TSKDeadlockExecuteInline = 0,  ///< it is called at once, without the queue
  TSKDeadlockSkip = 1,           ///< it is not run
  TSKDeadlockSkipAndLog = 2,     ///< it is not run, and the system console says so
  TSKDeadlockReserved = 3,       ///< as TSKDeadlockSkip
  TSKDeadlockNoCheck = 4,        ///< nobody looks at the stack: it waits for its turn, be it for ever
};

/// What scheduling does to a timer of that name.
enum TSKTimerBehavior : std::int64_t {
  TSKTimerKeepEarliest = 0,  ///< the earlier of both times stays
  TSKTimerRestart = 1,       ///< the new time counts
  TSKTimerThrottle = 2,      ///< fires at once, but not within an interval of the last planned time
};

/// The keys under which the running code finds, by dispatch_get_specific(), the wrapper of its queue
/// (a TSKDispatchQueue*, set on the queue: the last wrapper made of it, null once that has gone) and the queue stack
/// (an NSMutableArray* of wrappers, the same one for all blocks of a chain, which grows and shrinks with it; it lives
/// as long as the outermost block unless a Ref is taken). The stack belongs to the block, not to the queue:
/// dispatch_queue_get_specific() has none. It is made when it is first asked for; the check for deadlocks goes by it
/// from then on.
extern NK_EXPORT const void* const TSKIsCurrentKey;
extern NK_EXPORT const void* const TSKQueueStackKey;

class NK_EXPORT TSKDispatchQueue : public NSObject {
  NK_OBJECT(TSKDispatchQueue, NSObject)

  /// False unless the application says otherwise: set it, before first use, for a wrapper of a concurrent queue.
  NK_PROPERTY(bool, concurrent, setConcurrent)
  NK_READONLY_PROPERTY(dispatch_queue_t, queue)
  NK_COMPUTED_PROPERTY(std::optional<NSString>, label)
  NK_COMPUTED_PROPERTY(Ref<NSDictionary>, timers)
  NK_COMPUTED_PROPERTY(TSKDeadlockBehavior, deadlockBehavior)
  NK_COMPUTED_PROPERTY(std::uint64_t, timerCount)

  /// A wrapper without a label. An empty queue raises NSInvalidArgumentException.
  [[nodiscard]] static Ref<TSKDispatchQueue> dispatchQueueWithGCDQueue(const dispatch_queue_t& queue,
                                                                       TSKDeadlockBehavior behavior);
  /// A new serial queue. Without a label the wrapper's is "TSKDispatchQueue" and the bare queue has none.
  [[nodiscard]] static Ref<TSKDispatchQueue> dispatchQueueWithLabel(
      const std::optional<NSString>& label, TSKDeadlockBehavior behavior = TSKDeadlockExecuteInline);
  /// The main bundle's identifier, "." and the suffix; nothing where the bundle has no identifier.
  [[nodiscard]] static std::optional<NSString> labelByPrependingBundleIdentifierToString(const NSString& suffix);

  // One each for the process. The main one is serial and calls in place on the main thread, whose code always counts as
  // inside it; the others are concurrent and check nothing.
  [[nodiscard]] static const Ref<TSKDispatchQueue>& globalDispatchQueue();
  [[nodiscard]] static const Ref<TSKDispatchQueue>& mainDispatchQueue();
  [[nodiscard]] static const Ref<TSKDispatchQueue>& sharedConcurrentQueue();

  TSKDispatchQueue(const dispatch_queue_t& queue, TSKDeadlockBehavior behavior);
  ~TSKDispatchQueue() override;

  [[nodiscard]] std::optional<NSString> label() const { return _label; }
  [[nodiscard]] TSKDeadlockBehavior deadlockBehavior() const noexcept { return _deadlockBehavior; }
  /// "<TSKDispatchQueue:0x5581...>[payroll]"
  [[nodiscard]] NSString description() const override;

  /// Runs a block on the queue and returns when it has run; where the queue is in the current stack, what
  /// deadlockBehavior() says.
  template <class F>
  void dispatchSynchronously(F&& block) {
    detail::requireBlock(block);
    runSynchronously(detail::blockCall(std::forward<F>(block)));
  }
  /// Queues a block, any movable callable, and returns.
  template <class F>
  void dispatchAsynchronously(F&& block) {
    detail::requireBlock(block);
    if (concurrent()) return dispatch_async(queue(), std::forward<F>(block));
    dispatch_async(queue(), [self = ref(*this), block = std::decay_t<F>(std::forward<F>(block))]() mutable {
      self->runInNewStack(detail::blockCall(std::move(block)));
    });
  }
  /// The block runs alone on its queue, in its turn, without check and without a queue stack.
  template <class F>
  void dispatchBarrierSynchronously(F&& block) {
    detail::requireBlock(block);
    const Ref<TSKDispatchQueue> self = ref(*this);  // the block may let go of the last one
    dispatch_barrier_sync(queue(), [&block] { static_cast<void>(std::forward<F>(block)()); });
  }
  template <class F>
  void dispatchBarrierAsynchronously(F&& block) {
    detail::requireBlock(block);
    dispatch_barrier_async(queue(), std::forward<F>(block));
  }

  /// The running block is one of this queue, or of a queue without a wrapper that targets it.
  [[nodiscard]] bool isCurrentQueue() const noexcept;
  /// This wrapper is in the queue stack of the running code; for mainDispatchQueue(): this is the main thread.
  [[nodiscard]] bool isInCurrentQueueStack() const;

  /// Has the block run on the queue, once, `timeInterval` seconds after this call or as the behaviour says, in place of
  /// the block that the name had. A negative interval, or no number, counts as 0; one beyond 291 years never
  /// ends. Returns before anything has changed; calls of one thread take effect in their order, on concurrent queues
  /// too. Constant time, but a name is never forgotten: take few of them.
  ///
  /// Timers do not keep the wrapper. When it goes, those that are pending are cancelled and their blocks destroyed on
  /// the thread that lets the wrapper go; no block begins after that. A block that is running keeps the wrapper until
  /// it has returned. In a child made by fork() a wrapper begins without timers.
  /// An interval may be a duration of std::chrono too.
  template <detail::TimeInterval Interval>
  void scheduleTimerWithName(const NSString& name, Interval timeInterval, TSKTimerBehavior behavior,
                             Block<void()> block) {
    scheduleTimer(name, detail::inSeconds(timeInterval), behavior, std::move(block));
  }
  /// Nothing where there is no such timer.
  void cancelTimerWithName(const NSString& name);
  void cancelAllTimers();

  /// How many timers are pending, as of the last change carried out on the queue; right after cancelAllTimers(), how
  /// many names there are. Any thread.
  [[nodiscard]] std::uint64_t timerCount() const noexcept;
  /// The table of timers as it is now, a copy; empty before the first. By name a dictionary: "DateValue", the last
  /// planned time in seconds of the monotonic clock, and while the timer is pending or its block runs "TimerValue".
  /// Names stay for ever.
  [[nodiscard]] Ref<NSDictionary> timers() const;

  /// Has the timers go by a clock of a test's. Before the first is scheduled.
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

  static Ref<TSKDispatchQueue> makeShared(const dispatch_queue_t& queue, TSKDeadlockBehavior behavior, bool concurrent);
  void runSynchronously(detail::BlockCall block);
  void runInNewStack(detail::BlockCall block);
  void refuse(detail::BlockCall block) const;

  bool followsMainThread_ = false;
  std::optional<NSString> _label;
  const TSKDeadlockBehavior _deadlockBehavior;
  const detail::Hidden<detail::NamedTimers> namedTimers_;
};

}  // namespace norvik
