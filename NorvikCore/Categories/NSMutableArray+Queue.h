// NorvikCore/Categories/NSMutableArray+Queue.h - an array whose first element is the head of a queue.
//
//   enqueue(*waiting, "a");
//   dequeue(*waiting);                                 // "a"
#pragma once

#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/values/NKCursor.h"

namespace norvik {

/// An absent object raises NSInvalidArgumentException.
NK_EXPORT void enqueue(NSMutableArray& queue, const Value& object);
/// Removes and returns the first element, in constant time on average. If the queue is empty, the result is absent.
NK_EXPORT Value dequeue(NSMutableArray& queue);
/// The first element; absent if the queue is empty.
[[nodiscard]] NK_EXPORT Value queuePeek(const NSMutableArray& queue);
/// A cursor at the first of as many positions as the queue has elements now. Later changes of the queue do not affect
/// it.
[[nodiscard]] NK_EXPORT Ref<NKCursor> queueCursor(const NSMutableArray& queue);

}  // namespace norvik
