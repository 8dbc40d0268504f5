// Nothing keeps the object that a reference is made to out of a Ref that goes at the end of the line.
#include "NorvikCore/platform/collections/NSArray.h"

norvik::Ref<norvik::NSArray> slips();

std::size_t count() {
#ifdef SHOULD_NOT_COMPILE
  auto& array = *slips();
#else
  const norvik::Ref<norvik::NSArray> array_ = slips();
  auto& array = *array_;
#endif
  return array.count() + slips()->count();
}
