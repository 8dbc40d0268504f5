// A literal that is not UTF-8 is refused where a text refers to its bytes.
#include "NorvikCore/platform/values/NSString.h"

using namespace norvik::literals;

norvik::NSString name() {
#ifdef SHOULD_NOT_COMPILE
  return "caf\xE9"_ns;
#else
  return "caf\xC3\xA9"_ns;
#endif
}
