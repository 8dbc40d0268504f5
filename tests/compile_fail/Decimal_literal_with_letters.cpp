// A decimal literal is refused if it is not a decimal number.
#include "NorvikCore/platform/values/Decimal_literal.h"

using namespace norvik::literals;

norvik::Decimal amount() {
#ifdef SHOULD_NOT_COMPILE
  return 0x10_dec;
#else
  return 0.10_dec;
#endif
}
