// A decimal literal is refused if no decimal number has its exponent.
#include "NorvikCore/platform/values/Decimal_literal.h"

using namespace norvik::literals;

norvik::Decimal amount() {
#ifdef SHOULD_NOT_COMPILE
  return 1E128_dec;
#else
  return 1E127_dec;
#endif
}
