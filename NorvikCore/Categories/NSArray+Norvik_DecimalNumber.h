// NorvikCore/Categories/NSArray+Norvik_DecimalNumber.h - the sum of an array of numbers.
//
//   nk_decimalNumberBySumming(*NSArray::arrayWith({1.10_dec, 2.205_dec}));      // 3.305
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"

namespace norvik {

/// The sum of the elements, added in order by the default behaviour: nothing is rounded to a scale, not-a-number makes
/// the sum not-a-number, overflow raises. The sum of an empty array is 0. An element that is not a number raises
/// NSInvalidArgumentException.
[[nodiscard]] NK_EXPORT Decimal nk_decimalNumberBySumming(const NSArray& numbers);

}  // namespace norvik
