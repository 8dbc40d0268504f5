#include "NorvikCore/platform/appkit/internal/CairoContext.h"

#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/values/NSException.h"

#include <utility>

namespace norvik::detail {

void checkCairo(cairo_status_t status) {
  if (status == CAIRO_STATUS_SUCCESS) return;
  NSException::raise(NSGenericException, NSString("drawing failed: ") + pangoLibrary().cairo_status_to_string(status));
}

void setColor(cairo_t* cairo, const NSColor& color) {
  pangoLibrary().cairo_set_source_rgba(cairo, color.redComponent(), color.greenComponent(), color.blueComponent(),
                                       color.alphaComponent());
}

CairoContext::CairoContext(cairo_surface_t* made) : surface_(made), cairo_(pangoLibrary().cairo_create(made)) {
  const cairo_status_t status = pangoLibrary().cairo_status(cairo_);
  if (status == CAIRO_STATUS_SUCCESS) return;
  pangoLibrary().cairo_destroy(cairo_);
  pangoLibrary().cairo_surface_destroy(surface_);
  checkCairo(status);
}

CairoContext::~CairoContext() {
  const kernel::ForkHold hold;
  if (cairo_) pangoLibrary().cairo_destroy(cairo_);
  pangoLibrary().cairo_surface_destroy(surface_);
}

cairo_t* CairoContext::cairo() const {
  if (!cairo_)
    NSException::raise(NSInternalInconsistencyException, "a canvas cannot be drawn on after its data was taken");
  return cairo_;
}

void CairoContext::finish() {
  if (cairo_) {
    const kernel::ForkHold hold;
    const PangoLibrary& pango = pangoLibrary();
    failure_ = pango.cairo_status(cairo_);
    pango.cairo_destroy(std::exchange(cairo_, nullptr));
    pango.cairo_surface_finish(surface_);
    if (failure_ == CAIRO_STATUS_SUCCESS) failure_ = pango.cairo_surface_status(surface_);
  }
  checkCairo(failure_);
}

}  // namespace norvik::detail
