#include "NorvikCore/platform/dispatch/internal/QueueCore.h"

#include "NorvikCore/platform/dispatch/internal/GlobalQueue.h"
#include "NorvikCore/platform/dispatch/internal/SerialQueue.h"
#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"

#include <cstdio>
#include <cstdlib>
#include <exception>

namespace norvik::detail {
namespace {

void printUncaught(const QueueCore* queue, const char* what) {
  std::fprintf(stderr, "dispatch: an exception left an asynchronous block of the queue \"%s\": %s\n", queue->label(),
               what);
}

}  // namespace

QueueCore::~QueueCore() {
  if (QueueCore* target = this->target()) target->release();
}

bool QueueCore::leadsToMain() const noexcept {
  const QueueCore* queue = this;
  while (const QueueCore* above = queue->target()) queue = above;
  return queue->kind() == Kind::main;
}

void QueueCore::pushToTarget(Item* item, Delivery delivery) {
  QueueCore* above = target();
  (above != nullptr ? above : GlobalQueue::shared())->push(item, delivery, Order::normal);
}

void retainCore(QueueCore* queue) noexcept { queue->retain(); }
void releaseCore(QueueCore* queue) noexcept { queue->release(); }

Item* Cursor::next() noexcept { return queue_ == nullptr ? nullptr : queue_->takeNextLike(run_); }

void runItem(Item* item, QueueCore* queue) noexcept {
  const bool serial = queue->kind() == QueueCore::Kind::serial || queue->kind() == QueueCore::Kind::main;
  Cursor cursor(serial ? static_cast<SerialQueue*>(queue) : nullptr, item->run);
  try {
    item->run(item, cursor);
  } catch (...) {
    endProcessForException(queue);
  }
}

void endProcessForException(const QueueCore* queue) noexcept {
  // Both end within the handler, so that a terminate handler finds the exception.
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
  std::fprintf(stderr, "BUG: %s (queue \"%s\")\n", what, queue->label());
  std::abort();
}

}  // namespace norvik::detail
