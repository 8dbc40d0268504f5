// Absent text is no text: nullptr makes none.
#include "NorvikCore/platform/values/NSString.h"

norvik::NSString name() {
#ifdef SHOULD_NOT_COMPILE
  return nullptr;
#else
  return "";
#endif
}
