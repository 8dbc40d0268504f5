// NorvikCore/platform/appkit/PNGImage.h - a picture: what a canvas shows, as a PNG file in memory.
//
//   PNGImage picture({200, 80}, 2);                    // 400 by 160 pixels
//   picture.drawText(*text, {10, 10}, 180);
//   Ref<NSData> file = picture.data();
//
// See Canvas for what can be drawn.
#pragma once

#include "NorvikCore/platform/appkit/Canvas.h"
#include "NorvikCore/platform/collections/NSData.h"
#include "NorvikCore/platform/kernel/Hidden.h"

namespace norvik {

class NK_EXPORT PNGImage final : public Canvas {
 public:
  /// `scale` is how many pixels a point has each way; the background covers all at first. A side that is not between 1
  /// and 32,000 pixels raises NSInvalidArgumentException.
  explicit PNGImage(NSSize size, double scale = 1, const NSColor& background = *NSColor::whiteColor());
  ~PNGImage() override;

  /// The file of what is drawn so far. NSGenericException where there is no memory for it.
  [[nodiscard]] Ref<NSData> data() const;

 protected:
  [[nodiscard]] detail::CairoContext& context() override { return *context_; }

 private:
  detail::Hidden<detail::CairoContext> context_;
};

}  // namespace norvik
