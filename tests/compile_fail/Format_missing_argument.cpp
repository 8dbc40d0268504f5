// A directive is refused if there is no argument for it.
#include "NorvikCore/platform/values/Format.h"

norvik::NSString line(int count, const norvik::NSString& name) {
#ifdef SHOULD_NOT_COMPILE
  return norvik::stringWithFormat("%d of %@ at %f", count, name);
#else
  return norvik::stringWithFormat("%d of %@", count, name);
#endif
}
