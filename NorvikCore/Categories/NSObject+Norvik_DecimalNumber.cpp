#include "NorvikCore/Categories/NSObject+Norvik_DecimalNumber.h"

#include "NorvikCore/Categories/internal/DecimalSumming.h"

namespace norvik {
namespace {

template <class Keys>
Decimal sumOfValues(const NSObject& object, const Keys& keys) {
  return detail::sumOf(keys, [&](const Value& key) { return object.valueForKey(key.as<NSString>()); });
}

}  // namespace

Decimal nk_decimalNumberBySummingValueForKey(const NSObject& object, const NSArray& keys) {
  return sumOfValues(object, keys);
}

Decimal nk_decimalNumberBySummingValueForKey(const NSObject& object, const NSSet& keys) {
  return sumOfValues(object, keys);
}

}  // namespace norvik
