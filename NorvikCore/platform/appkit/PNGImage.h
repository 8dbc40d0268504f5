// NorvikCore/platform/appkit/PNGImage.h - a canvas whose content becomes a PNG file in memory.
//
//   PNGImage picture({200, 80}, 2);                    // 400 by 160 pixels
//   picture.drawText(*text, {10, 10}, 180);
//   Ref<NSData> file = picture.data();
//
// Canvas describes what can be drawn.
#pragma once

#include "NorvikCore/platform/appkit/Canvas.h"
#include "NorvikCore/platform/collections/NSData.h"
#include "NorvikCore/platform/kernel/Hidden.h"

namespace norvik {

class NK_EXPORT PNGImage final : public Canvas {
 public:
  /// `scale` is the number of pixels per point in each direction. The image is filled with `background` first. A side
  /// that is not between 1 and 32,000 pixels raises NSInvalidArgumentException.
  explicit PNGImage(NSSize size, double scale = 1, const NSColor& background = *NSColor::whiteColor());
  ~PNGImage() override;

  /// The file with everything drawn so far. Raises NSGenericException if there is no memory for it.
  [[nodiscard]] Ref<NSData> data() const;

 protected:
  [[nodiscard]] detail::CairoContext& context() override { return *context_; }

 private:
  detail::Hidden<detail::CairoContext> context_;
};

}  // namespace norvik
