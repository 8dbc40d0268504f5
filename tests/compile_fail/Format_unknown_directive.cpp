// A percent sign is refused if it starts no directive.
#include "NorvikCore/platform/values/Format.h"

norvik::NSString line(int count, const norvik::NSString& name) {
#ifdef SHOULD_NOT_COMPILE
  return norvik::stringWithFormat("%d %y of %@", count, name);
#else
  return norvik::stringWithFormat("%d %% of %@", count, name);
#endif
}
