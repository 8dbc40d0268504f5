#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"

namespace norvik::detail {
namespace {

bool leadsTo(const QueueCore* queue, const QueueCore* wanted) {
  for (; queue != nullptr; queue = queue->target()) {
    if (queue == wanted) return true;
  }
  return false;
}

bool isHeldFrom(const Frame* frame, const QueueCore* queue) {
  for (; frame != nullptr; frame = frame->outer) {
    if (leadsTo(frame->queue, queue)) return true;
    if (frame->caller != frame->outer && isHeldFrom(frame->caller, queue)) return true;
  }
  return false;
}

}  // namespace

constinit thread_local Frame* currentFrame = nullptr;

bool isHeld(const QueueCore* queue) noexcept { return isHeldFrom(currentFrame, queue); }

unsigned framesOnThisThread(const QueueCore* queue) noexcept {
  unsigned count = 0;
  for (const Frame* frame = currentFrame; frame != nullptr; frame = frame->outer) count += leadsTo(frame->queue, queue);
  return count;
}

}  // namespace norvik::detail
