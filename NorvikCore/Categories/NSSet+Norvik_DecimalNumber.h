// NorvikCore/Categories/NSSet+Norvik_DecimalNumber.h - the sum of a set of numbers.
//
//   nk_decimalNumberBySumming(*NSSet::setWith({100_dec, 20_dec}));      // 120
#pragma once

#include "NorvikCore/platform/collections/NSSet.h"

namespace norvik {

/// The sum of the members, added in the set's order by the default behaviour: nothing is rounded to a scale,
/// not-a-number makes the sum not-a-number, overflow raises. The sum of an empty set is 0. A member that is not a
/// number raises NSInvalidArgumentException.
[[nodiscard]] NK_EXPORT Decimal nk_decimalNumberBySumming(const NSSet& numbers);

}  // namespace norvik
