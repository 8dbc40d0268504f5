#include "NorvikCore/platform/dispatch/internal/GlobalQueue.h"

#include "NorvikCore/platform/dispatch/internal/WorkerPool.h"

namespace norvik::detail {

GlobalQueue* GlobalQueue::shared() {
  return &sharedForkAware<GlobalQueue>([] { return new GlobalQueue; });
}

void GlobalQueue::push(Item* item, Delivery delivery, Order) {
  static constinit std::atomic<bool> mayWait{true};
  WorkerPool::shared().submit(item, delivery == Delivery::relaxed ? mayWait : WorkerPool::prompt());
}

}  // namespace norvik::detail
