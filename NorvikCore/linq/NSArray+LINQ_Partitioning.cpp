#include "NorvikCore/linq/NSArray+LINQ_Partitioning.h"

namespace norvik {

Ref<NSArray> linq_skip(const NSArray& receiver, std::size_t count) {
  if (count >= receiver.count()) return NSArray::array();
  return receiver.subarrayWithRange({count, receiver.count() - count});
}

Ref<NSArray> linq_take(const NSArray& receiver, std::size_t count) {
  if (count >= receiver.count()) return NSArray::array();
  return receiver.subarrayWithRange({0, count});
}

}  // namespace norvik
