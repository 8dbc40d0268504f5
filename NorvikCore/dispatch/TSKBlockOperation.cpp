#include "NorvikCore/dispatch/TSKBlockOperation.h"

#include "NorvikCore/platform/values/NSException.h"

#include <utility>

namespace norvik {

TSKBlockOperation::~TSKBlockOperation() = default;

Ref<TSKBlockOperation> TSKBlockOperation::dispatchedOperationWithQueue(const Ref<TSKDispatchQueue>& queue,
                                                                       Block<void()> block) {
  if (!queue) NSException::raise(NSInvalidArgumentException, "TSKBlockOperation: the queue is nil");
  detail::requireBlock(block);
  auto operation = make<TSKBlockOperation>();
  std::optional<NSString> label = queue->label();
  if (label) label = *label + ".block_operation";
  operation->setQueue(TSKDispatchQueue::dispatchQueueWithLabel(label));
  operation->queue()->dispatchAsynchronously([operation, target = queue, block = std::move(block)] {
    operation->setDone(false);
    target->dispatchSynchronously(block);
    operation->setDone(true);
  });
  return operation;
}

void TSKBlockOperation::waitUntilFinished() {
  if (const Ref<TSKDispatchQueue> own = queue()) own->dispatchSynchronously([this] { static_cast<void>(done()); });
}

}  // namespace norvik
