// tests/support/NumbersIn.h - the elements of an array of integers, for comparison with literal numbers.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"

#include <vector>

namespace norvik::test {

inline std::vector<int> numbersIn(const NSArray& array) {
  std::vector<int> result;
  for (const Value& each : array) result.push_back(each.as<int>());
  return result;
}

}  // namespace norvik::test
