// A double becomes a decimal number only by an explicit conversion.
#include "NorvikCore/platform/values/Decimal.h"

norvik::Decimal amount(double value) {
#ifdef SHOULD_NOT_COMPILE
  return value;
#else
  return norvik::Decimal(value);
#endif
}
