// NorvikCore/platform/dispatch/internal/MainThreadQueue.h - the serial queue that only the main thread drains.
#pragma once

#include "NorvikCore/platform/dispatch/internal/SerialQueue.h"

#include <atomic>

namespace norvik::detail {

/// Like every serial queue it is owned by a drain from its first item on, but that drain waits until the main thread
/// calls drainSome() or enter(). After descriptor() was called, an eventfd is readable while the drain waits.
class MainThreadQueue final : public SerialQueue {
 public:
  /// Never destroyed.
  static MainThreadQueue* shared();

  /// On the main thread: runs the items that were enqueued on entry, `limit` at most. Returns how many it ran.
  std::size_t drainSome(std::size_t limit);
  /// Opened by the first call. -1, and a line on the system console, if the process has no descriptor left.
  [[nodiscard]] int descriptor() noexcept;

  /// From another thread: the main thread calls `function`; the caller waits, and what `function` throws is rethrown.
  /// The call runs as a block of `queue`.
  void call(QueueCore* queue, void (*function)(void*), void* context);

  /// On the main thread: takes the queue after running what was enqueued before.
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
