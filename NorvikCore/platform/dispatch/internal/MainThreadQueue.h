// NorvikCore/platform/dispatch/internal/MainThreadQueue.h - the serial queue that only the main thread drains.
#pragma once

#include "NorvikCore/platform/dispatch/internal/SerialQueue.h"

namespace norvik::detail {

/// Owned by a drain from its first item on, like every serial queue; but the drain waits for the main thread to call
/// drainSome() or enter(). An eventfd is readable while it waits.
class MainThreadQueue final : public SerialQueue {
 public:
  /// Never destroyed.
  static MainThreadQueue* shared();

  /// On the main thread: runs the items there were on entry, `limit` at most.
  std::size_t drainSome(std::size_t limit);
  [[nodiscard]] int descriptor() const noexcept { return descriptor_; }

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
  void openDescriptor() noexcept;
  void setReadable() noexcept;
  void clearReadable() noexcept;

  int descriptor_ = -1;
};

}  // namespace norvik::detail
