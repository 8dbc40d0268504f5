#include "NorvikCore/Categories/NSArray+Norvik_DecimalNumber.h"

#include "NorvikCore/Categories/internal/DecimalSumming.h"

#include <functional>

namespace norvik {

Decimal nk_decimalNumberBySumming(const NSArray& numbers) { return detail::sumOf(numbers, std::identity()); }

}  // namespace norvik
