// NorvikCore/platform/appkit/NSGeometry.h - positions and sizes on a page, in points: 72 to the inch.
//
// The origin is the page's upper left corner; x grows to the right, y downwards.
#pragma once

#include "NorvikCore/platform/export.h"

namespace norvik {

/// A position on a page.
struct NSPoint {
  double x = 0, y = 0;
  friend constexpr bool operator==(const NSPoint&, const NSPoint&) = default;
};

/// A width and a height.
struct NSSize {
  double width = 0, height = 0;
  friend constexpr bool operator==(const NSSize&, const NSSize&) = default;
};

/// A part of a page: its upper left corner and its size.
struct NSRect {
  NSPoint origin;
  NSSize size;
  friend constexpr bool operator==(const NSRect&, const NSRect&) = default;
};

}  // namespace norvik
