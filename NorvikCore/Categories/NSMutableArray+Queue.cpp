#include "NorvikCore/Categories/NSMutableArray+Queue.h"

namespace norvik {

void enqueue(NSMutableArray& queue, const Value& object) { queue.addObject(object); }

Value dequeue(NSMutableArray& queue) {
  Value first = queue.firstObject();
  if (!first.isAbsent()) queue.removeObjectAtIndex(0);
  return first;
}

Value queuePeek(const NSMutableArray& queue) { return queue.firstObject(); }

Ref<NKCursor> queueCursor(const NSMutableArray& queue) {
  return NKCursor::cursorWithCount(static_cast<std::int64_t>(queue.count()), 0);
}

}  // namespace norvik
