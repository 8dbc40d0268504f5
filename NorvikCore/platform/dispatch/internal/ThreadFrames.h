// NorvikCore/platform/dispatch/internal/ThreadFrames.h - which queues' blocks the calling thread is in.
#pragma once

#include "NorvikCore/platform/dispatch/internal/QueueCore.h"

namespace norvik::detail {

/// The innermost frame of this thread, or null.
extern constinit thread_local Frame* currentFrame __attribute__((tls_model("initial-exec")));

/// Runs a scope as a block of the queue.
class FrameScope {
 public:
  explicit FrameScope(QueueCore* queue) noexcept : FrameScope(queue, currentFrame) {}
  /// `caller`: the innermost frame of the thread that waits for the block.
  FrameScope(QueueCore* queue, Frame* caller) noexcept : frame_{queue, currentFrame, caller, nullptr} {
    currentFrame = &frame_;
  }
  ~FrameScope() { currentFrame = frame_.outer; }
  FrameScope(const FrameScope&) = delete;
  FrameScope& operator=(const FrameScope&) = delete;

 private:
  Frame frame_;
};

/// True when the running code, or what waits for it, is in a block of the queue or of one that targets it.
[[nodiscard]] bool isHeld(const QueueCore* queue) noexcept;

/// How many blocks this thread is in that are the queue's, or of queues that target it.
[[nodiscard]] unsigned framesOnThisThread(const QueueCore* queue) noexcept;

}  // namespace norvik::detail
