// nullptr does not convert to a text.
#include "NorvikCore/platform/values/NSString.h"

norvik::NSString name() {
#ifdef SHOULD_NOT_COMPILE
  return nullptr;
#else
  return "";
#endif
}
