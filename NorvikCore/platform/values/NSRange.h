// NorvikCore/platform/values/NSRange.h - a range of positions: the first position and their number.
//
//   NSRange word{6, 5};                              // units 6 to 10
//   NSMaxRange(word);                                // 11: the first unit after it
//   NSIntersectionRange(word, NSRange{0, 8});        // {6, 2}
//
// In a text the positions are UTF-16 code units. Every function is pure, takes constant time and is safe on any thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSInteger.h"

#include <compare>
#include <cstddef>
#include <iosfwd>
#include <string_view>

namespace norvik {

struct NSRange {
  NSUInteger location = 0;
  NSUInteger length = 0;

  /// Ordered by location, then by length.
  friend constexpr auto operator<=>(const NSRange&, const NSRange&) noexcept = default;
  /// Writes "{location, length}".
  NK_EXPORT friend std::ostream& operator<<(std::ostream& out, const NSRange& range);
};

[[nodiscard]] constexpr NSRange NSMakeRange(NSUInteger location, NSUInteger length) noexcept {
  return {location, length};
}

/// The first position after the range; it wraps around if location + length does.
[[nodiscard]] constexpr NSUInteger NSMaxRange(NSRange range) noexcept { return range.location + range.length; }

[[nodiscard]] constexpr bool NSLocationInRange(NSUInteger location, NSRange range) noexcept {
  return location >= range.location && location - range.location < range.length;
}

[[nodiscard]] constexpr bool NSEqualRanges(NSRange a, NSRange b) noexcept { return a == b; }

/// The positions that are in both ranges; {0, 0} if there are none.
[[nodiscard]] constexpr NSRange NSIntersectionRange(NSRange a, NSRange b) noexcept {
  const NSUInteger from = a.location > b.location ? a.location : b.location;
  const NSUInteger to = NSMaxRange(a) < NSMaxRange(b) ? NSMaxRange(a) : NSMaxRange(b);
  return from < to ? NSRange{from, to - from} : NSRange{};
}

/// The shortest range that contains both, including the positions between them.
[[nodiscard]] constexpr NSRange NSUnionRange(NSRange a, NSRange b) noexcept {
  const NSUInteger from = a.location < b.location ? a.location : b.location;
  const NSUInteger to = NSMaxRange(a) > NSMaxRange(b) ? NSMaxRange(a) : NSMaxRange(b);
  return {from, to - from};
}

}  // namespace norvik

template <>
struct std::hash<norvik::NSRange> {
  std::size_t operator()(const norvik::NSRange& range) const noexcept {
    return range.location * 0x9E3779B97F4A7C15u ^ (range.length + (range.location >> 7));
  }
};
