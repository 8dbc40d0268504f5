// NorvikCore/Categories/internal/DecimalSumming.h - the loop that sums a collection.
#pragma once

#include "NorvikCore/platform/object/Value.h"
#include "NorvikCore/platform/values/DecimalSum.h"

namespace norvik::detail {

/// The sum of the values that `amount` returns for the elements.
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
