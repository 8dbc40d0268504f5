// NorvikCore/platform/appkit/Canvas.h - a page for drawing: a page of a PDFDocument, or a PNGImage.
//
//   const NSSize used = page.drawText(*address, {56, 56}, 200);                // wrapped within 200 points
//   page.drawText(*amount, {440, 56}, 100, NSTextAlignmentRight);
//   page.drawLine({56, 56 + used.height}, {540, 56 + used.height}, 0.5, *NSColor::blackColor());
//
// Positions and sizes are in points, from the page's upper left corner. Later drawings cover earlier ones.
//
// Text is drawn with these attributes: NSFontAttributeName (default: the system's font), NSForegroundColorAttributeName
// (default: black), NSBackgroundColorAttributeName, NSUnderlineStyleAttributeName, and NSLinkAttributeName, which makes
// a link if the URL begins with http, https or mailto and is ignored otherwise. Arabic and Hebrew run from right to
// left; the alignment alone determines at which side their lines are.
//
// Confined to one thread at a time; several threads may draw on different canvases at once. A position or size that is
// not a finite number raises NSInvalidArgumentException.
#pragma once

#include "NorvikCore/platform/appkit/NSColor.h"
#include "NorvikCore/platform/appkit/NSGeometry.h"
#include "NorvikCore/platform/appkit/NSStringDrawing.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"

namespace norvik {

namespace detail {
struct CairoContext;
}

enum NSTextAlignment { NSTextAlignmentLeft, NSTextAlignmentRight, NSTextAlignmentCenter };

class NK_EXPORT Canvas {
 public:
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;
  virtual ~Canvas();

  [[nodiscard]] NSSize size() const noexcept { return size_; }

  /// Draws the text between `at.x` and `at.x + width`, from `at.y` downwards, with any number of lines. Returns the
  /// size of the text, as sizeOfText() does. Without a width, lines end at line breaks only, and all begin at `at.x`.
  NSSize drawText(const NSAttributedString& text, NSPoint at, double width = unlimitedWidth,
                  NSTextAlignment alignment = NSTextAlignmentLeft);
  void drawLine(NSPoint from, NSPoint to, double thickness, const NSColor& color);
  void fillRect(const NSRect& rect, const NSColor& color);

 protected:
  explicit Canvas(NSSize size);
  [[nodiscard]] virtual detail::CairoContext& context() = 0;

 private:
  const NSSize size_;
};

}  // namespace norvik
