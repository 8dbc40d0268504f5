#include "NorvikCore/platform/appkit/PNGImage.h"

#include "NorvikCore/platform/appkit/internal/ByteSink.h"
#include "NorvikCore/platform/appkit/internal/CairoContext.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/values/NSException.h"

#include <cmath>

namespace norvik {
namespace {

constexpr double longestSide = 32'000;  // Cairo's limit is 32,767

cairo_surface_t* makeImage(NSSize size, double scale) {
  const auto pixels = [&](double side) {
    const double count = std::ceil(side * scale);
    if (!(scale > 0 && count >= 1 && count <= longestSide)) {
      NSException::raise(NSInvalidArgumentException, "a picture's side is not between 1 and 32,000 pixels");
    }
    return static_cast<int>(count);
  };
  const int width = pixels(size.width), height = pixels(size.height);
  return detail::pangoLibrary().cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
}

}  // namespace

PNGImage::PNGImage(NSSize size, double scale, const NSColor& background)
    : Canvas(size), context_(new detail::CairoContext(makeImage(size, scale))) {
  fillRect({{0, 0}, {longestSide, longestSide}}, background);
  detail::pangoLibrary().cairo_scale(context_->cairo(), scale, scale);
}

PNGImage::~PNGImage() = default;

Ref<NSData> PNGImage::data() const {
  const kernel::ForkHold hold;
  const detail::PangoLibrary& pango = detail::pangoLibrary();
  detail::checkCairo(pango.cairo_status(context_->cairo()));
  detail::ByteSink drawn;
  detail::checkCairo(pango.cairo_surface_write_to_png_stream(context_->surface(), detail::ByteSink::append, &drawn));
  const std::string& bytes = drawn.bytes();
  return NSData::dataWithBytes(bytes.data(), bytes.size());
}

}  // namespace norvik
