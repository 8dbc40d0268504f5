// NorvikCore/platform/appkit/internal/CairoContext.h - a surface of Cairo and the context that draws on it.
#pragma once

#include "NorvikCore/platform/appkit/NSColor.h"
#include "NorvikCore/platform/appkit/internal/PangoLibrary.h"

namespace norvik::detail {

struct CairoContext {
  /// Owns the surface. Raises NSGenericException if it is not valid.
  explicit CairoContext(cairo_surface_t* made);
  ~CairoContext();
  CairoContext(const CairoContext&) = delete;
  CairoContext& operator=(const CairoContext&) = delete;

  /// Raises NSInternalInconsistencyException once the surface is finished.
  [[nodiscard]] cairo_t* cairo() const;
  [[nodiscard]] cairo_surface_t* surface() const noexcept { return surface_; }
  /// After this nothing can be drawn. Raises NSGenericException, on each call, if an earlier drawing failed.
  void finish();

 private:
  cairo_surface_t* surface_;
  cairo_t* cairo_;
  cairo_status_t failure_ = CAIRO_STATUS_SUCCESS;
};

/// Raises NSGenericException with Cairo's text for a failure.
void checkCairo(cairo_status_t status);

void setColor(cairo_t* cairo, const NSColor& color);

}  // namespace norvik::detail
