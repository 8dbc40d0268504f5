// NorvikCore/platform/dispatch/internal/ThreadFrames.h - the queues whose blocks the calling thread is running.
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

/// True if the running code, or a caller that waits for it, is in a block of the queue or of a queue that targets it.
[[nodiscard]] bool isHeld(const QueueCore* queue) noexcept;

/// How many blocks of the queue, or of queues that target it, this thread is in.
[[nodiscard]] unsigned framesOnThisThread(const QueueCore* queue) noexcept;

}  // namespace norvik::detail
