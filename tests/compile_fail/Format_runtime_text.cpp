// Text that is not a literal is refused unless it is marked as a run-time format.
#include "NorvikCore/platform/values/Format.h"

norvik::NSString line(int count, const norvik::NSString& name) {
#ifdef SHOULD_NOT_COMPILE
  return norvik::stringWithFormat(name, count);
#else
  return norvik::stringWithFormat(norvik::runtimeFormat(name), count);
#endif
}
