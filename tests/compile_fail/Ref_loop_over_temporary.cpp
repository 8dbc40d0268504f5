// A range-based for does not retain the Ref of its collection, so the array would be destroyed during the loop.
#include "NorvikCore/platform/collections/NSArray.h"

norvik::Ref<norvik::NSArray> slips();
void print(const norvik::NSArray& array);

void printAll() {
#ifdef SHOULD_NOT_COMPILE
  for (const norvik::Value& slip : *slips()) print(*slip.object<norvik::NSArray>());
#else
  print(*slips());
  const norvik::Ref<norvik::NSArray> kept = slips();
  for (const norvik::Value& slip : *kept) print(*slip.object<norvik::NSArray>());
  for (norvik::NSArray& slip : slips()->as<norvik::NSArray>()) print(slip);  // `as` keeps the array
#endif
}
