// A decimal literal is refused if it would have to be rounded.
#include "NorvikCore/platform/values/Decimal_literal.h"

using namespace norvik::literals;

norvik::Decimal amount() {
#ifdef SHOULD_NOT_COMPILE
  return 1.00000000000000000000000000000000000001_dec;
#else
  return 1.0000000000000000000000000000000000001_dec;
#endif
}
