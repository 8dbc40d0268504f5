// A reference to the object of a temporary Ref does not retain it, and the Ref is destroyed at the end of the line.
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
