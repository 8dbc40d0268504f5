// NorvikCore/platform/values/NSComparisonResult.h - the result of comparing two values, with the platform's numbers.
#pragma once

#include <compare>

namespace norvik {

enum NSComparisonResult : int { NSOrderedAscending = -1, NSOrderedSame = 0, NSOrderedDescending = 1 };

/// The result of `a <=> b` in the platform's terms; unordered counts as NSOrderedSame.
template <class Ordering>
[[nodiscard]] constexpr NSComparisonResult comparisonResult(Ordering ordering) noexcept {
  return ordering < 0 ? NSOrderedAscending : ordering > 0 ? NSOrderedDescending : NSOrderedSame;
}

}  // namespace norvik
