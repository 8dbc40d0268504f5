// NorvikCore/dispatch/internal/QueueStack.h - the queue stack of a block: a chain on the stacks of the threads that
// wait for it.
//
// Entries are linked from the innermost outwards, and only the innermost one's thread runs; so the chain needs no lock
// though it may cross threads. The array that stands for it under TSKQueueStackKey is made when somebody asks, kept by
// the outermost entry, and then grows and shrinks with the chain.
#pragma once

#include "NorvikCore/dispatch/TSKDispatchQueue.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/dispatch/internal/BlockValue.h"

namespace norvik::detail {

/// A block that was dispatched through a wrapper, while it runs.
class QueueStackEntry : public BlockValue {
 public:
  /// In a block of the wrapper's queue. `outer` is the entry of the block that waits for it, if any.
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

  /// That of the running block, or null.
  [[nodiscard]] static QueueStackEntry* current() noexcept {
    return static_cast<QueueStackEntry*>(BlockValue::find(TSKQueueStackKey));
  }
  [[nodiscard]] bool contains(const TSKDispatchQueue& wrapper) const;

 private:
  static void* read(BlockValue& self);
  void append(NSMutableArray& array) const;
  void grow();
  void shrink();

  TSKDispatchQueue* const wrapper_;  // null for a concurrent one, which is not listed
  QueueStackEntry* const outer_;
  QueueStackEntry& outermost_;
  Ref<NSMutableArray> array_;  // the outermost entry's
};

}  // namespace norvik::detail
