// NorvikCore/dispatch/TSKBlockOperation.h - a block that runs once in the background, and whose end any thread can wait
// for.
//
//   auto reports = TSKBlockOperation::dispatchedOperationWithQueue(payroll, [] { writeReports(); });
//   ...
//   reports->waitUntilFinished();
//
// The operation has a queue of its own, whose one block runs the closure on the target queue by
// dispatchSynchronously(), so where the target refuses, the closure is skipped and the operation finished all the same.
//
// Never wait on a serial target queue, inside one of its blocks: the closure waits for that queue, and the wait for the
// closure. The check for deadlocks does not see it, for the target is not in the stack of the operation's queue. On a
// concurrent target, or inside the operation itself, waiting is safe; there it returns at once.
//
// Threads: synchronised, save setQueue(). Any number may wait.
// Memory:  until the closure has run it keeps the operation and the target queue.
// Errors:  an exception that leaves the closure ends the process, as in any asynchronous block.
#pragma once

#include "NorvikCore/dispatch/TSKDispatchQueue.h"

namespace norvik {

class NK_EXPORT TSKBlockOperation : public NSObject {
  NK_OBJECT(TSKBlockOperation, NSObject)

  /// False while the closure waits or runs. Who needs to know waits; this may be a moment behind.
  NK_ATOMIC_PROPERTY(bool, done, setDone)
  /// The operation's own queue, a serial one: the target's label with ".block_operation", or "TSKDispatchQueue" where
  /// the target has none.
  NK_PROPERTY(Ref<TSKDispatchQueue>, queue, setQueue)

  ~TSKBlockOperation() override;

  /// An operation that is on its way. An absent queue or block raises NSInvalidArgumentException.
  static Ref<TSKBlockOperation> dispatchedOperationWithQueue(const Ref<TSKDispatchQueue>& queue, Block<void()> block);

  /// Returns once the closure has run; at once where setQueue() has taken the queue away.
  void waitUntilFinished();

  NK_CLASS_METHOD_AS(dispatchedOperationWithQueue, "dispatchedOperationWithQueue:block:")
  NK_METHOD(waitUntilFinished)
};

}  // namespace norvik
