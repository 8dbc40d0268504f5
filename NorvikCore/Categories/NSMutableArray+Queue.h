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
/// Takes the first element out, in constant time on average; absent where there is none, and then changes nothing.
NK_EXPORT Value dequeue(NSMutableArray& queue);
/// The first element; absent where there is none.
[[nodiscard]] NK_EXPORT Value queuePeek(const NSMutableArray& queue);
/// A cursor at the first of as many places as there are elements now. It does not follow the queue.
[[nodiscard]] NK_EXPORT Ref<NKCursor> queueCursor(const NSMutableArray& queue);

}  // namespace norvik
