// NorvikCore/Categories/internal/DecimalSumming.h - the one loop behind the sums over collections.
#pragma once

#include "NorvikCore/platform/object/Value.h"
#include "NorvikCore/platform/values/DecimalSum.h"

namespace norvik::detail {

/// The sum of what `amount` gives for each element.
template <class Collection, class Amount>
Decimal sumOf(const Collection& collection, Amount&& amount) {
  DecimalSum sum;
  for (const Value& element : collection) {
    const Value summand = amount(element);
    sum += summand.as<Decimal>();
  }
  return sum.value();
}

}  // namespace norvik::detail
