// NorvikCore/platform/appkit/internal/CairoContext.h - a surface of Cairo, what draws on it, and the bytes it becomes.
#pragma once

#include "NorvikCore/platform/appkit/NSColor.h"
#include "NorvikCore/platform/appkit/internal/PangoLibrary.h"

namespace norvik::detail {

struct CairoContext {
  /// Owns the surface. Raises NSGenericException where it is none.
  explicit CairoContext(cairo_surface_t* made);
  ~CairoContext();
  CairoContext(const CairoContext&) = delete;
  CairoContext& operator=(const CairoContext&) = delete;

  /// Raises NSInternalInconsistencyException once the surface is finished.
  [[nodiscard]] cairo_t* cairo() const;
  [[nodiscard]] cairo_surface_t* surface() const noexcept { return surface_; }
  /// Nothing can be drawn any more. Raises NSGenericException, each time, where something that was drawn could not be.
  void finish();

 private:
  cairo_surface_t* surface_;
  cairo_t* cairo_;
  cairo_status_t failure_ = CAIRO_STATUS_SUCCESS;
};

/// Raises NSGenericException with Cairo's words for a failure.
void checkCairo(cairo_status_t status);

void setColor(cairo_t* cairo, const NSColor& color);

}  // namespace norvik::detail
