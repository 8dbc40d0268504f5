#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/internal/MainThreadQueue.h"
#include "NorvikCore/platform/dispatch/internal/SerialQueue.h"
#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"
#include "NorvikCore/platform/kernel/Thread.h"

namespace norvik::detail {
namespace {

/// Enters the queues from `queue` upwards. False if they end at the main queue and this is another thread; the main
/// queue is not entered then.
bool enterUpwards(QueueCore* queue, Order order) {
  for (; queue != nullptr; queue = queue->target(), order = Order::normal) {
    if (queue->kind() == QueueCore::Kind::main && !kernel::isMainThread()) return false;
    queue->enter(order);
  }
  return true;
}

/// Leaves the queues in reverse order: a target before the queue that targets it.
void leaveDownwards(QueueCore* queue, Order order, bool elsewhere) noexcept {
  if (elsewhere && queue->kind() == QueueCore::Kind::main) return;
  if (QueueCore* above = queue->target()) leaveDownwards(above, Order::normal, elsewhere);
  queue->leave(order);
}

}  // namespace

SyncScope::SyncScope(const dispatch_queue_t& queue, Order order) : order_(order) {
  QueueCore* core = queue.core();
  if (core == nullptr) [[unlikely]]
    requireQueue(queue, "dispatch_sync");
  frame_.queue = core;
  if (core->kind() == QueueCore::Kind::serial && static_cast<SerialQueue*>(core)->tryEnter()) [[likely]] {
    if (QueueCore* above = core->target()) elsewhere_ = !enterUpwards(above, Order::normal);
  } else {
    elsewhere_ = !enterUpwards(core, order);
  }
  if (elsewhere_) return;
  frame_.outer = frame_.caller = currentFrame;
  currentFrame = &frame_;
}

SyncScope::~SyncScope() {
  QueueCore* core = frame_.queue;
  if (!elsewhere_) currentFrame = frame_.outer;
  if (core->kind() == QueueCore::Kind::serial && core->target() == nullptr) [[likely]] {
    auto* serial = static_cast<SerialQueue*>(core);
    if (!serial->tryLeave()) serial->leave(order_);
    return;
  }
  leaveDownwards(core, order_, elsewhere_);
}

void SyncScope::callElsewhere(void (*function)(void*), void* context) {
  MainThreadQueue::shared()->call(frame_.queue, function, context);
}

}  // namespace norvik::detail
