// A directive is refused if its argument is of another kind.
#include "NorvikCore/platform/values/Format.h"

norvik::NSString line(int count, const norvik::NSString& name) {
#ifdef SHOULD_NOT_COMPILE
  return norvik::stringWithFormat("%d of %@", name, count);
#else
  return norvik::stringWithFormat("%d of %@", count, name);
#endif
}
