#include "NorvikCore/platform/appkit/Canvas.h"

#include "NorvikCore/platform/appkit/internal/CairoContext.h"
#include "NorvikCore/platform/appkit/internal/ShapedText.h"
#include "NorvikCore/platform/appkit/internal/TextLayout.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/values/NSException.h"

#include <cmath>
#include <initializer_list>

namespace norvik {
namespace {

void checkFinite(std::initializer_list<double> numbers) {
  for (const double number : numbers) {
    if (!std::isfinite(number)) {
      NSException::raise(NSInvalidArgumentException, "a place or size to draw at is not a finite number");
    }
  }
}

}  // namespace

Canvas::Canvas(NSSize size) : size_(size) {}

Canvas::~Canvas() = default;

NSSize Canvas::drawText(const NSAttributedString& text, NSPoint at, double width, NSTextAlignment alignment) {
  checkFinite({at.x, at.y});
  cairo_t* const cairo = context().cairo();
  detail::FontUse fonts;
  detail::TextLayout layout(text, width, fonts);
  layout.draw(cairo, at, alignment);
  return layout.size();
}

void Canvas::drawLine(NSPoint from, NSPoint to, double thickness, const NSColor& color) {
  checkFinite({from.x, from.y, to.x, to.y, thickness});
  const kernel::ForkHold hold;
  const detail::PangoLibrary& pango = detail::pangoLibrary();
  cairo_t* const cairo = context().cairo();
  detail::setColor(cairo, color);
  pango.cairo_set_line_width(cairo, thickness);
  pango.cairo_move_to(cairo, from.x, from.y);
  pango.cairo_line_to(cairo, to.x, to.y);
  pango.cairo_stroke(cairo);
}

void Canvas::fillRect(const NSRect& rect, const NSColor& color) {
  checkFinite({rect.origin.x, rect.origin.y, rect.size.width, rect.size.height});
  const kernel::ForkHold hold;
  const detail::PangoLibrary& pango = detail::pangoLibrary();
  cairo_t* const cairo = context().cairo();
  detail::setColor(cairo, color);
  pango.cairo_rectangle(cairo, rect.origin.x, rect.origin.y, rect.size.width, rect.size.height);
  pango.cairo_fill(cairo);
}

}  // namespace norvik
