// NorvikCore/Categories/NSMutableArray+Stack.h - an array whose last element is the top of a stack.
//
//   push(*open, "b");
//   pop(*open);                                        // "b"
#pragma once

#include "NorvikCore/platform/collections/NSMutableArray.h"

namespace norvik {

/// An absent object raises NSInvalidArgumentException.
NK_EXPORT void push(NSMutableArray& stack, const Value& object);
/// Removes and returns the last element. If the stack is empty, the result is absent.
NK_EXPORT Value pop(NSMutableArray& stack);
/// The last element; absent if the stack is empty.
[[nodiscard]] NK_EXPORT Value stackPeek(const NSMutableArray& stack);

}  // namespace norvik
