#include "NorvikCore/dispatch/internal/QueueStack.h"

namespace norvik::detail {

bool QueueStackEntry::contains(const TSKDispatchQueue& wrapper) const {
  if (const NSMutableArray* array = outermost_.array_.get()) {
    for (const Value& element : *array) {
      if (element.object() == &wrapper) return true;
    }
    return false;
  }
  for (const QueueStackEntry* entry = this; entry != nullptr; entry = entry->outer_) {
    if (entry->wrapper_ == &wrapper) return true;
  }
  return false;
}

void* QueueStackEntry::read(BlockValue& self) {
  auto& entry = static_cast<QueueStackEntry&>(self);
  Ref<NSMutableArray>& array = entry.outermost_.array_;
  if (!array) {
    const Ref<NSMutableArray> made = NSMutableArray::array();
    entry.append(*made);
    array = made;
  }
  return array.get();
}

/// Appends the outer entries first.
void QueueStackEntry::append(NSMutableArray& array) const {
  if (outer_ != nullptr) outer_->append(array);
  if (wrapper_ != nullptr) array.addObject(ref(*wrapper_));
}

void QueueStackEntry::grow() {
  if (wrapper_ != nullptr) outermost_.array_->addObject(ref(*wrapper_));
}

/// Removes the wrapper only if it is last. If user code has removed it from the array, another wrapper is last and
/// stays.
void QueueStackEntry::shrink() {
  NSMutableArray& array = *outermost_.array_;
  if (wrapper_ != nullptr && array.lastObject().object() == wrapper_) array.removeLastObject();
}

}  // namespace norvik::detail
