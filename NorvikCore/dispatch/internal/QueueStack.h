// NorvikCore/dispatch/internal/QueueStack.h - the queue stack of a block: a chain of entries on the stacks of the
// threads that wait for the block.
//
// Each entry links to the next outer one. Only the thread of the innermost entry runs, so the chain needs no lock
// although its entries are on several threads. The array that TSKQueueStackKey gives is created at the first request.
// The outermost entry owns it, and it then grows and shrinks with the chain.
#pragma once

#include "NorvikCore/dispatch/TSKDispatchQueue.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/dispatch/internal/BlockValue.h"

namespace norvik::detail {

/// A running block that was dispatched through a wrapper.
class QueueStackEntry : public BlockValue {
 public:
  /// Created in a block of the wrapper's queue. `outer` is the entry of the block that waits for it, or null.
  QueueStackEntry(TSKDispatchQueue& wrapper, QueueStackEntry* outer)
      : BlockValue(TSKQueueStackKey, &QueueStackEntry::read),
        wrapper_(wrapper.concurrent() ? nullptr : &wrapper),
        outer_(outer),
        outermost_(outer == nullptr ? *this : outer->outermost_) {
    if (outermost_.array_) [[unlikely]]
      grow();
  }
  ~QueueStackEntry() {
    if (outermost_.array_) [[unlikely]]
      shrink();
  }

  /// The entry of the running block, or null.
  [[nodiscard]] static QueueStackEntry* current() noexcept {
    return static_cast<QueueStackEntry*>(BlockValue::find(TSKQueueStackKey));
  }
  [[nodiscard]] bool contains(const TSKDispatchQueue& wrapper) const;

 private:
  static void* read(BlockValue& self);
  void append(NSMutableArray& array) const;
  void grow();
  void shrink();

  TSKDispatchQueue* const wrapper_;  // null for a concurrent wrapper, which is not listed
  QueueStackEntry* const outer_;
  QueueStackEntry& outermost_;
  Ref<NSMutableArray> array_;  // set in the outermost entry only
};

}  // namespace norvik::detail
