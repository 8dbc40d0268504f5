// A double becomes a decimal number only when asked to.
#include "NorvikCore/platform/values/Decimal.h"

norvik::Decimal amount(double value) {
#ifdef SHOULD_NOT_COMPILE
  return value;
#else
  return norvik::Decimal(value);
#endif
}
