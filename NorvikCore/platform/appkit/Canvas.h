// NorvikCore/platform/appkit/Canvas.h - a page to draw on: of a PDFDocument, or a PNGImage.
//
//   const NSSize used = page.drawText(*address, {56, 56}, 200);                // wrapped within 200 points
//   page.drawText(*amount, {440, 56}, 100, NSTextAlignmentRight);
//   page.drawLine({56, 56 + used.height}, {540, 56 + used.height}, 0.5, *NSColor::blackColor());
//
// Places and sizes are in points, from the page's upper left corner. What is drawn later covers what is there.
//
// Text is drawn as its attributes say: NSFontAttributeName (else the system's font), NSForegroundColorAttributeName
// (else black), NSBackgroundColorAttributeName, NSUnderlineStyleAttributeName, and NSLinkAttributeName, which makes a
// link of addresses that begin with http, https or mailto, and nothing of others. Arabic and Hebrew run from right to
// left; a line of them stands at the side that the alignment says.
//
// Confined to one thread at a time; several canvases on several threads draw at once. A place or size that is no finite
// number raises NSInvalidArgumentException.
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

  /// The text between `at.x` and `at.x + width`, from `at.y` downwards, however many lines it has. Returns the room
  /// that it takes, as sizeOfText() does. Without a width lines end at line breaks only, and all are set at `at.x`.
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
