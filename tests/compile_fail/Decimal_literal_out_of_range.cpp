// A decimal literal whose exponent no decimal number has is refused.
#include "NorvikCore/platform/values/Decimal_literal.h"

using namespace norvik::literals;

norvik::Decimal amount() {
#ifdef SHOULD_NOT_COMPILE
  return 1E128_dec;
#else
  return 1E127_dec;
#endif
}
