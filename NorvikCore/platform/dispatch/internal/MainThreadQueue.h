// NorvikCore/platform/dispatch/internal/MainThreadQueue.h - the serial queue that only the main thread drains.
#pragma once

#include "NorvikCore/platform/dispatch/internal/SerialQueue.h"

#include <atomic>

namespace norvik::detail {

/// Owned by a drain from its first item on, like every serial queue; but the drain waits for the main thread to call
/// drainSome() or enter(). An eventfd is readable while it waits, once descriptor() was called.
class MainThreadQueue final : public SerialQueue {
 public:
  /// Never destroyed.
  static MainThreadQueue* shared();

  /// On the main thread: runs the items there were on entry, `limit` at most.
  std::size_t drainSome(std::size_t limit);
  /// Opened by the first call; -1, and a line on the system console, where the process has no descriptor left.
  [[nodiscard]] int descriptor() noexcept;

  /// From another thread: the main thread calls `function`; waits, and passes on what it throws. `queue` is whose block
  /// that is.
  void call(QueueCore* queue, void (*function)(void*), void* context);

  /// On the main thread: takes the queue after running what was queued before.
  void enter(Order order) override;
  void leave(Order order) noexcept override;
  void resetAfterFork() noexcept override;

 protected:
  void schedule(Delivery delivery) override;

 private:
  MainThreadQueue();
  int openDescriptor() noexcept;
  void reportNoDescriptor(int error) noexcept;
  void setReadable() noexcept;
  void clearReadable() noexcept;

  std::atomic<int> descriptor_{-1};
  std::atomic<bool> mayReport_{true};  // no failure was reported since the last success
};

}  // namespace norvik::detail
