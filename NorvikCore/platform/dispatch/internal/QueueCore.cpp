#include "NorvikCore/platform/dispatch/internal/QueueCore.h"

#include "NorvikCore/platform/dispatch/internal/GlobalQueue.h"
#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"
#include "NorvikCore/platform/kernel/SystemLog.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <utility>

namespace norvik::detail {
namespace {

// The process is ending, perhaps without memory, or in a forked child. So nothing is allocated, and longer text is cut.
using Line = std::array<char, 2048>;

void printUncaught(const QueueCore* queue, const char* what) {
  Line line;
  std::snprintf(line.data(), line.size(), "dispatch: an exception left an asynchronous block of the queue \"%s\": %s",
                queue->label(), what);
  kernel::writeSystemLog(line.data());
}

}  // namespace

QueueCore::~QueueCore() {
  if (QueueCore* target = this->target()) target->release();
}

void QueueCore::releaseHandle() noexcept {
  if (handles_.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  {
    const QueueLock lock(suspensionMutex_);
    if (std::exchange(suspensions_, 0) > 0) endSuspension();
  }
  release();
}

void QueueCore::suspend() noexcept {
  const QueueLock lock(suspensionMutex_);
  if (suspensions_++ == 0) beginSuspension();
}

void QueueCore::resume() noexcept {
  const QueueLock lock(suspensionMutex_);
  if (suspensions_ == 0) reportMisuse("dispatch_resume without dispatch_suspend", this);
  if (--suspensions_ == 0) endSuspension();
}

bool QueueCore::resetSuspensionAfterFork() noexcept {
  suspensionMutex_.resetAfterFork();
  const QueueLock lock(suspensionMutex_);
  return suspensions_ > 0;
}

ForkMutex TargetsLock::mutex;

bool QueueCore::leadsToMain() const noexcept {
  const TargetsLock lock;
  const QueueCore* queue = this;
  while (const QueueCore* above = queue->target()) queue = above;
  return queue->kind() == Kind::main;
}

void QueueCore::pushToTarget(Item* item, Delivery delivery) {
  QueueCore* above = target();
  (above != nullptr ? above : GlobalQueue::shared())->push(item, delivery, Order::normal);
}

void retainCore(QueueCore* queue) noexcept { queue->retainHandle(); }
void releaseCore(QueueCore* queue) noexcept { queue->releaseHandle(); }

void runItem(Item* item, QueueCore* queue) noexcept {
  try {
    item->run(item);
  } catch (...) {
    endProcessForException(queue);
  }
}

void endProcessForException(const QueueCore* queue) noexcept {
  // Both branches terminate within the handler, so that a terminate handler finds the exception.
  try {
    throw;
  } catch (const std::exception& error) {
    printUncaught(queue, error.what());
    std::terminate();
  } catch (...) {
    printUncaught(queue, "not a std::exception");
    std::terminate();
  }
}

void reportMisuse(const char* what, const QueueCore* queue) noexcept {
  Line line;
  std::snprintf(line.data(), line.size(), "BUG: %s (queue \"%s\")", what, queue->label());
  kernel::writeSystemLog(line.data());
  std::abort();
}

void reportMisuse(const char* what) noexcept {
  Line line;
  std::snprintf(line.data(), line.size(), "BUG: %s", what);
  kernel::writeSystemLog(line.data());
  std::abort();
}

}  // namespace norvik::detail
