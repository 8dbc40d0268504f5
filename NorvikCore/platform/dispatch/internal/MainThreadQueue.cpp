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
#include <cstdlib>
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
  static auto* queue = [] {
    auto* made = new MainThreadQueue;
    made->watchForks();
    return made;
  }();
  return queue;
}

MainThreadQueue::MainThreadQueue() : SerialQueue(Kind::main, "com.norvik.main-thread") { openDescriptor(); }

void MainThreadQueue::openDescriptor() noexcept {
  descriptor_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (descriptor_ >= 0) return;
  char line[160];
  std::snprintf(line, sizeof line, "dispatch: no descriptor for the main queue: %s", std::strerror(errno));
  kernel::writeSystemLog(line);
  std::abort();
}

void MainThreadQueue::setReadable() noexcept {
  const std::uint64_t one = 1;
  while (write(descriptor_, &one, sizeof one) < 0 && errno == EINTR) {
  }  // EAGAIN: readable already
}

void MainThreadQueue::clearReadable() noexcept {
  std::uint64_t count = 0;
  while (read(descriptor_, &count, sizeof count) < 0 && errno == EINTR) {
  }  // EAGAIN: it was not readable
}

void MainThreadQueue::schedule(Delivery) { setReadable(); }

std::size_t MainThreadQueue::drainSome(std::size_t limit) {
  if (ThreadShortage::exists()) [[unlikely]]
    ThreadShortage::tend();
  // Cleared before looking: what is queued from here on sets it again, or is found below.
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
      nullptr);  // no block runs here meanwhile that could fork: what it waits for is in no worker's list
  if (call.error) std::rethrow_exception(call.error);
}

void MainThreadQueue::resetAfterFork() noexcept {
  SerialQueue::resetAfterFork();
  close(descriptor_);
  openDescriptor();
}

}  // namespace norvik::detail
