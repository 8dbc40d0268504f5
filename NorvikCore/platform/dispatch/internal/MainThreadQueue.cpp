#include "NorvikCore/platform/dispatch/internal/MainThreadQueue.h"

#include "NorvikCore/platform/dispatch/internal/SyncWaiter.h"
#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"
#include "NorvikCore/platform/dispatch/internal/ThreadShortage.h"
#include "NorvikCore/platform/kernel/SystemLog.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>

namespace norvik::detail {
namespace {

/// A block that another thread waits for.
struct RemoteCall : Item {
  void (*function)(void*) = nullptr;
  void* context = nullptr;
  QueueCore* queue = nullptr;
  Frame* caller = nullptr;
  std::exception_ptr error;
  SyncWaiter done{false};
};

void runRemoteCall(Item* item) {
  auto* call = static_cast<RemoteCall*>(item);
  {
    const FrameScope frame(call->queue, call->caller);
    try {
      call->function(call->context);
    } catch (...) {
      call->error = std::current_exception();
    }
  }
  call->done.grant();
}

}  // namespace

MainThreadQueue* MainThreadQueue::shared() {
  return &sharedForkAware<MainThreadQueue>([] { return new MainThreadQueue; });
}

MainThreadQueue::MainThreadQueue() : SerialQueue(Kind::main, "com.norvik.main-thread") {}

int MainThreadQueue::descriptor() noexcept {
  const int open = descriptor_.load(std::memory_order_acquire);
  return open >= 0 ? open : openDescriptor();
}

int MainThreadQueue::openDescriptor() noexcept {
  const int made = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (made < 0) {
    reportNoDescriptor(errno);
    return -1;
  }
  mayReport_.store(true, std::memory_order_relaxed);
  int other = -1;
  // A thread that enqueued a block and found no descriptor did so before this.
  if (!descriptor_.compare_exchange_strong(other, made, std::memory_order_acq_rel)) {
    close(made);
    return other;
  }
  if (!isIdle()) setReadable();
  return made;
}

void MainThreadQueue::reportNoDescriptor(int error) noexcept {
  if (!mayReport_.exchange(false, std::memory_order_relaxed)) return;
  char line[160];
  std::snprintf(line, sizeof line, "dispatch: no descriptor for the main queue: %s; the next call for it tries again",
                std::strerror(error));
  kernel::writeSystemLog(line);
}

void MainThreadQueue::setReadable() noexcept {
  int descriptor = descriptor_.load(std::memory_order_acquire);
  if (descriptor < 0) {
    // Read by a read-modify-write operation. So it comes before the store in openDescriptor(), which then finds the
    // item; or after it, and then finds the descriptor.
    descriptor = descriptor_.fetch_add(0, std::memory_order_acq_rel);
    if (descriptor < 0) return;
  }
  const std::uint64_t one = 1;
  while (write(descriptor, &one, sizeof one) < 0 && errno == EINTR) {
  }  // EAGAIN: readable already
}

void MainThreadQueue::clearReadable() noexcept {
  const int descriptor = descriptor_.load(std::memory_order_acquire);
  if (descriptor < 0) return;
  std::uint64_t count = 0;
  while (read(descriptor, &count, sizeof count) < 0 && errno == EINTR) {
  }  // EAGAIN: it was not readable
}

void MainThreadQueue::schedule(Delivery) { setReadable(); }

std::size_t MainThreadQueue::drainSome(std::size_t limit) {
  if (ThreadShortage::exists()) [[unlikely]]
    ThreadShortage::tend();
  // Cleared before the check: an item that is enqueued after this sets it again, or is found below.
  clearReadable();
  if (isIdle()) return 0;
  const FrameScope frame(this);
  const std::size_t count = std::min(collectAll(), limit);
  for (std::size_t done = 0; done < count; ++done) runItem(takeReady(), this);
  leave(Order::normal);
  return count;
}

void MainThreadQueue::enter(Order) {
  if (tryEnter()) return;
  if (isHeld(this)) reportMisuse("dispatch_sync for the main queue in one of its blocks would never return", this);
  const FrameScope frame(this);
  for (std::size_t count = collectAll(); count > 0; --count) runItem(takeReady(), this);
}

void MainThreadQueue::leave(Order) noexcept {
  if (!tryLeave()) setReadable();
}

void MainThreadQueue::call(QueueCore* queue, void (*function)(void*), void* context) {
  if (isHeld(this)) reportMisuse("dispatch_sync for the main queue, for which the main thread waits", this);
  RemoteCall call;
  call.run = &runRemoteCall;
  call.function = function;
  call.context = context;
  call.queue = queue;
  call.caller = currentFrame;
  push(&call, Delivery::prompt, Order::normal);
  (void)call.done.wait(
      nullptr);  // no block that could fork runs here meanwhile: what this waits for is in no worker's list
  if (call.error) std::rethrow_exception(call.error);
}

void MainThreadQueue::resetAfterFork() noexcept {
  SerialQueue::resetAfterFork();
  const int parents = descriptor_.exchange(-1, std::memory_order_relaxed);
  if (parents < 0) return;
  close(parents);
  (void)openDescriptor();
}

}  // namespace norvik::detail
