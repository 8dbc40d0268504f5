// NorvikCore/platform/dispatch/internal/GlobalQueue.h - the queue that passes its blocks directly to the workers.
#pragma once

#include "NorvikCore/platform/dispatch/internal/QueueCore.h"

namespace norvik::detail {

class GlobalQueue final : public QueueCore {
 public:
  /// Never destroyed.
  static GlobalQueue* shared();

  void push(Item* item, Delivery delivery, Order order) override;
  void enter(Order) override {}
  void leave(Order) noexcept override {}
  void resetAfterFork() noexcept override { specifics().resetAfterFork(); }

 private:
  GlobalQueue() : QueueCore(Kind::global, "com.norvik.global-queue") {}
};

}  // namespace norvik::detail
