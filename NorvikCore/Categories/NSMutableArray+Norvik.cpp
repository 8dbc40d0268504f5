#include "NorvikCore/Categories/NSMutableArray+Norvik.h"

namespace norvik {

void nk_removeNulls(NSMutableArray& array) {
  array.removeObjectsPassingTest([](const Value& element) { return element.isNull(); });
}

}  // namespace norvik
