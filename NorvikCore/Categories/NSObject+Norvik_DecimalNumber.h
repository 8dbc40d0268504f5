// NorvikCore/Categories/NSObject+Norvik_DecimalNumber.h - the sum of several of an object's values.
//
//   nk_decimalNumberBySummingValueForKey(*slip, *NSArray::arrayWith({"grossPay", "bonus"}));      // 120
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSSet.h"

namespace norvik {

/// The sum of the object's own values for all the keys, added in the keys' order by the default behaviour. The name
/// says one key, but a collection of keys is meant. The sum for no keys is 0. A key that the object does not have
/// raises NSUndefinedKeyException; a value that is not a number raises NSInvalidArgumentException.
[[nodiscard]] NK_EXPORT Decimal nk_decimalNumberBySummingValueForKey(const NSObject& object, const NSArray& keys);
[[nodiscard]] NK_EXPORT Decimal nk_decimalNumberBySummingValueForKey(const NSObject& object, const NSSet& keys);

}  // namespace norvik
