// NorvikCore/dispatch/TSKBlockOperation.h - a block that runs once in the background. Any thread can wait for its end.
//
//   auto reports = TSKBlockOperation::dispatchedOperationWithQueue(payroll, [] { writeReports(); });
//   ...
//   reports->waitUntilFinished();
//
// The operation has its own queue. The only block of that queue runs the closure on the target queue by
// dispatchSynchronously(). If the target refuses the closure, the closure is skipped and the operation is finished
// nevertheless.
//
// Never call waitUntilFinished() inside a block of a serial target queue. It deadlocks, because the closure waits for
// that queue and the block waits for the closure. The deadlock check does not detect it, because the target is not in
// the queue stack of the operation's block. Waiting is safe inside a block of a concurrent target, and inside the
// closure itself, where it returns at once.
//
// Threads: synchronised, except setQueue(). Any number of threads may wait.
// Memory:  the operation and the target queue are retained until the closure has run.
// Errors:  an exception that leaves the closure ends the process, as in any asynchronous block.
#pragma once

#include "NorvikCore/dispatch/TSKDispatchQueue.h"

namespace norvik {

class NK_EXPORT TSKBlockOperation : public NSObject {
  NK_OBJECT(TSKBlockOperation, NSObject)

  /// False until the closure has run. The value may be late by a moment; call waitUntilFinished() to be certain.
  NK_ATOMIC_PROPERTY(bool, done, setDone)
  /// The operation's own serial queue. Its label is the target's label and ".block_operation", or "TSKDispatchQueue" if
  /// the target has no label.
  NK_PROPERTY(Ref<TSKDispatchQueue>, queue, setQueue)

  ~TSKBlockOperation() override;

  /// Returns an operation whose closure is already enqueued. An absent queue or block raises
  /// NSInvalidArgumentException.
  static Ref<TSKBlockOperation> dispatchedOperationWithQueue(const Ref<TSKDispatchQueue>& queue, Block<void()> block);

  /// Returns when the closure has run, or at once if setQueue() has removed the queue.
  void waitUntilFinished();

  NK_CLASS_METHOD_AS(dispatchedOperationWithQueue, "dispatchedOperationWithQueue:block:")
  NK_METHOD(waitUntilFinished)
};

}  // namespace norvik
