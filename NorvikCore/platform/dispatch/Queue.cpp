#include "NorvikCore/platform/dispatch/Queue.h"

#include "NorvikCore/platform/dispatch/internal/BlockValue.h"
#include "NorvikCore/platform/dispatch/internal/ConcurrentQueue.h"
#include "NorvikCore/platform/dispatch/internal/GlobalQueue.h"
#include "NorvikCore/platform/dispatch/internal/MainThreadQueue.h"
#include "NorvikCore/platform/dispatch/internal/SerialQueue.h"
#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"
#include "NorvikCore/platform/kernel/Thread.h"
#include "NorvikCore/platform/values/NSException.h"

#include <string>

namespace norvik {

using detail::QueueCore;

namespace {

bool isShared(const QueueCore* queue) {
  return queue->kind() == QueueCore::Kind::global || queue->kind() == QueueCore::Kind::main;
}

QueueCore& suspendable(const dispatch_queue_t& queue, const char* function) {
  detail::requireQueue(queue, function);
  if (isShared(queue.core()))
    NSException::raise(
        NSInvalidArgumentException,
        std::string(function) + ": the global queues and the main queue are shared and cannot be suspended");
  return *queue.core();
}

/// True if the target is the queue, or leads to it. Under a TargetsLock.
bool leadsTo(const QueueCore* target, const QueueCore* queue) noexcept {
  while (target != nullptr && target != queue) target = target->target();
  return target != nullptr;
}

[[noreturn]] void raiseOwnTarget() {
  NSException::raise(NSInvalidArgumentException, "dispatch_set_target_queue: the queue would target itself");
}

}  // namespace

dispatch_queue_t dispatch_queue_create(const char* label, dispatch_queue_attr_t attribute,
                                       const dispatch_queue_t& target) {
  QueueCore* queue = attribute == DISPATCH_QUEUE_CONCURRENT
                         ? static_cast<QueueCore*>(detail::newForkAware<detail::ConcurrentQueue>(label))
                         : static_cast<QueueCore*>(detail::newForkAware<detail::SerialQueue>(label));
  if (target) {
    target.core()->retain();
    queue->exchangeTarget(target.core());
  }
  return dispatch_queue_t::adopt(queue);
}

dispatch_queue_t dispatch_get_global_queue() { return dispatch_queue_t::share(detail::GlobalQueue::shared()); }

void dispatch_set_target_queue(const dispatch_queue_t& queue, const dispatch_queue_t& target) {
  detail::requireQueue(queue, "dispatch_set_target_queue");
  if (isShared(queue.core()))
    NSException::raise(NSInvalidArgumentException, "dispatch_set_target_queue: this queue has no target");
  const auto wouldTargetItself = [&] { return leadsTo(target.core(), queue.core()); };
  {
    const detail::TargetsLock lock;
    if (wouldTargetItself()) raiseOwnTarget();
  }
  // No other thread is in the queue after this, and a thread that enters it later enters the new target.
  queue.core()->enter(detail::Order::barrier);
  QueueCore* old = nullptr;
  bool isOwnTarget = false;
  {
    const detail::TargetsLock lock;
    isOwnTarget = wouldTargetItself();  // another thread may have changed targets since
    if (!isOwnTarget) {
      if (target) target.core()->retain();
      old = queue.core()->exchangeTarget(target.core());
    }
  }
  queue.core()->leave(detail::Order::barrier);
  if (isOwnTarget) raiseOwnTarget();
  if (old != nullptr) old->release();
}

void dispatch_suspend(const dispatch_queue_t& queue) { suspendable(queue, "dispatch_suspend").suspend(); }
void dispatch_resume(const dispatch_queue_t& queue) { suspendable(queue, "dispatch_resume").resume(); }

const char* dispatch_queue_get_label(const dispatch_queue_t& queue) {
  detail::requireQueue(queue, "dispatch_queue_get_label");
  return queue.core()->label();
}

const char* dispatch_queue_get_label(dispatch_current_queue_label_t) {
  if (detail::currentFrame != nullptr) return detail::currentFrame->queue->label();
  if (kernel::isMainThread()) return detail::MainThreadQueue::shared()->label();
  return kernel::currentThreadName().data();  // ends with a zero
}

void dispatch_queue_set_specific(const dispatch_queue_t& queue, const void* key, void* value,
                                 void (*destructor)(void*)) {
  detail::requireQueue(queue, "dispatch_queue_set_specific");
  queue.core()->specifics().set(key, value, destructor);
}

void* dispatch_queue_get_specific(const dispatch_queue_t& queue, const void* key) {
  detail::requireQueue(queue, "dispatch_queue_get_specific");
  return queue.core()->specifics().find(key);
}

void* dispatch_get_specific(const void* key) noexcept {
  const detail::Frame* frame = detail::currentFrame;
  if (frame == nullptr)
    return kernel::isMainThread() ? detail::MainThreadQueue::shared()->specifics().find(key) : nullptr;
  if (detail::BlockValue* own = detail::BlockValue::find(key)) return own->get();
  for (QueueCore* queue = frame->queue; queue != nullptr; queue = queue->target()) {
    if (void* value = queue->specifics().find(key)) return value;
  }
  return nullptr;
}

void detail::clearSpecific(const dispatch_queue_t& queue, const void* key, void* value) noexcept {
  queue.core()->specifics().clear(key, value);
}

bool dispatch_queue_is_held(const dispatch_queue_t& queue) noexcept { return queue && detail::isHeld(queue.core()); }

namespace detail {

void raiseNoQueue(const char* function) {
  NSException::raise(NSInvalidArgumentException, std::string(function) + ": the queue is nil");
}

void enqueue(const dispatch_queue_t& queue, Item* item, Delivery delivery, Order order) {
  queue.core()->push(item, delivery, order);
}

}  // namespace detail
}  // namespace norvik
