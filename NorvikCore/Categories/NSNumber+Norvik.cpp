#include "NorvikCore/Categories/NSNumber+Norvik.h"

#include "NorvikCore/platform/foundation/NSNumberFormatter.h"

namespace norvik {

Decimal nk_decimalNumber(const NSNumber& number) { return number.decimalValue(); }

NSString nk_wordString(const NSNumber& number) {
  const auto formatter = make<NSNumberFormatter>();
  formatter->setNumberStyle(NSNumberFormatterSpellOutStyle);
  return formatter->stringFromNumber(number);
}

NSNumber nk_invertBool(const NSNumber& number) { return number.boolValue() ? 0 : 1; }

}  // namespace norvik
