#include "NorvikCore/dispatch/TSKDispatchQueue.h"

#include "NorvikCore/dispatch/internal/NamedTimers.h"
#include "NorvikCore/dispatch/internal/QueueStack.h"
#include "NorvikCore/dispatch/internal/WaitingBlocks.h"
#include "NorvikCore/platform/dispatch/MainQueue.h"
#include "NorvikCore/platform/foundation/NSBundle.h"
#include "NorvikCore/platform/foundation/NSLog.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Thread.h"
#include "NorvikCore/platform/values/NSException.h"

#include <string>
#include <utility>

namespace norvik {

const void* const TSKIsCurrentKey = &TSKIsCurrentKey;
const void* const TSKQueueStackKey = &TSKQueueStackKey;

void detail::requireBlock(const Block<void()>& block) {
  if (!block) NSException::raise(NSInvalidArgumentException, "TSKDispatchQueue: the block is nil");
}

TSKDispatchQueue::TSKDispatchQueue(const dispatch_queue_t& queue, TSKDeadlockBehavior behavior)
    : _deadlockBehavior(behavior),
      waitingBlocks_(new detail::WaitingBlocks(queue)),
      namedTimers_(new detail::NamedTimers(*this)) {
  queue_ = queue;
  dispatch_queue_set_specific(queue, TSKIsCurrentKey, this);
}

TSKDispatchQueue::~TSKDispatchQueue() {
  detail::clearSpecific(queue(), TSKIsCurrentKey, this);
  namedTimers_->end();
}

Ref<TSKDispatchQueue> TSKDispatchQueue::dispatchQueueWithGCDQueue(const dispatch_queue_t& queue,
                                                                  TSKDeadlockBehavior behavior) {
  return make<TSKDispatchQueue>(queue, behavior);
}

Ref<TSKDispatchQueue> TSKDispatchQueue::dispatchQueueWithLabel(const std::optional<NSString>& label,
                                                               TSKDeadlockBehavior behavior) {
  const std::string native = label ? label->utf8() : "";
  auto wrapper = dispatchQueueWithGCDQueue(dispatch_queue_create(label ? native.c_str() : nullptr), behavior);
  wrapper->_label = label.value_or("TSKDispatchQueue");
  return wrapper;
}

std::optional<NSString> TSKDispatchQueue::labelByPrependingBundleIdentifierToString(const NSString& suffix) {
  const std::optional<NSString> identifier = NSBundle::mainBundle().bundleIdentifier();
  if (!identifier) return std::nullopt;
  return stringWithFormat("%@.%@", *identifier, suffix);
}

Ref<TSKDispatchQueue> TSKDispatchQueue::makeShared(const dispatch_queue_t& queue, TSKDeadlockBehavior behavior,
                                                   bool concurrent) {
  auto wrapper = dispatchQueueWithGCDQueue(queue, behavior);
  const char* label = dispatch_queue_get_label(queue);
  wrapper->_label = *label == '\0' ? "unlabeled" : label;
  wrapper->concurrent_ = concurrent;
  return wrapper;
}

// The shared wrappers live until the process ends.

const Ref<TSKDispatchQueue>& TSKDispatchQueue::globalDispatchQueue() {
  return kernel::madeOnce([] { return new Ref(makeShared(dispatch_get_global_queue(), TSKDeadlockNoCheck, true)); });
}

const Ref<TSKDispatchQueue>& TSKDispatchQueue::mainDispatchQueue() {
  const Ref<TSKDispatchQueue>& TSKMainDispatchQueue = kernel::madeOnce([] {
    auto wrapper = makeShared(dispatch_get_main_queue(), TSKDeadlockExecuteInline, false);
    wrapper->followsMainThread_ = true;
    return new Ref(std::move(wrapper));
  });
  return TSKMainDispatchQueue;
}

const Ref<TSKDispatchQueue>& TSKDispatchQueue::sharedConcurrentQueue() {
  return kernel::madeOnce([] {
    return new Ref(makeShared(dispatch_queue_create("TSKSharedConcurrentQueue", DISPATCH_QUEUE_CONCURRENT),
                              TSKDeadlockNoCheck, true));
  });
}

NSString TSKDispatchQueue::description() const {
  return stringWithFormat("<%@:%p>[%@]", classObject().name(), static_cast<const void*>(this), label());
}

bool TSKDispatchQueue::isCurrentQueue() const noexcept { return dispatch_get_specific(TSKIsCurrentKey) == this; }

bool TSKDispatchQueue::isInCurrentQueueStack() const {
  if (followsMainThread_) return kernel::isMainThread();
  const detail::QueueStackEntry* innermost = detail::QueueStackEntry::current();
  return innermost != nullptr && innermost->contains(*this);
}

void TSKDispatchQueue::runSynchronously(detail::BlockCall block) {
  if (_deadlockBehavior != TSKDeadlockNoCheck && isInCurrentQueueStack()) [[unlikely]]
    return refuse(block);
  const Ref<TSKDispatchQueue> self = ref(*this);  // the block may release the last other Ref
  detail::QueueStackEntry* const outer = detail::QueueStackEntry::current();
  dispatch_sync(queue(), [&] {
    const detail::QueueStackEntry entry(*this, outer);
    block();
  });
}

void TSKDispatchQueue::refuse(detail::BlockCall block) const {
  switch (_deadlockBehavior) {
    case TSKDeadlockExecuteInline:
      return block();
    case TSKDeadlockSkipAndLog:
      NSLog(
          "Synchronous dispatch can not be executed on the queue with label '%@' because it is already part of the "
          "current dispatch queue hierarchy",
          label());
      return;
    default:
      return;
  }
}

void TSKDispatchQueue::enqueue(detail::Item* waitingBlock) {
  waitingBlocks_->add(*this);
  detail::enqueue(queue(), waitingBlock, detail::Delivery::prompt, detail::Order::normal);
}

void TSKDispatchQueue::endWaitingBlock() noexcept { waitingBlocks_->end(*this); }

void TSKDispatchQueue::runInNewStack(detail::BlockCall block) {
  const detail::QueueStackEntry entry(*this, nullptr);
  block();
}

void TSKDispatchQueue::scheduleTimer(const NSString& name, double timeInterval, TSKTimerBehavior behavior,
                                     Block<void()> block) {
  detail::requireBlock(block);
  namedTimers_->schedule(name, timeInterval, behavior, std::move(block));
}

void TSKDispatchQueue::cancelTimerWithName(const NSString& name) { namedTimers_->cancel(name); }

void TSKDispatchQueue::cancelAllTimers() { namedTimers_->cancelAll(); }

std::uint64_t TSKDispatchQueue::timerCount() const noexcept { return namedTimers_->count(); }

Ref<NSDictionary> TSKDispatchQueue::timers() const { return namedTimers_->dictionary(); }

void TSKDispatchQueue::setTimerClock(const dispatch_manual_clock& clock) { namedTimers_->setClock(clock); }

}  // namespace norvik
