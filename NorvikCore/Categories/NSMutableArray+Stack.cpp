#include "NorvikCore/Categories/NSMutableArray+Stack.h"

namespace norvik {

void push(NSMutableArray& stack, const Value& object) { stack.addObject(object); }

Value pop(NSMutableArray& stack) {
  Value last = stack.lastObject();
  stack.removeLastObject();
  return last;
}

Value stackPeek(const NSMutableArray& stack) { return stack.lastObject(); }

}  // namespace norvik
