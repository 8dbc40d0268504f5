// tests/support/Picture.h - the pixels of a PNG file, as Cairo reads them.
#pragma once

#include <cairo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace norvik::test {

class Picture {
 public:
  explicit Picture(const std::string& png) {
    std::string_view rest = png;
    surface_ = cairo_image_surface_create_from_png_stream(
        [](void* closure, unsigned char* to, unsigned int count) {
          auto& from = *static_cast<std::string_view*>(closure);
          if (from.size() < count) return CAIRO_STATUS_READ_ERROR;
          std::memcpy(to, from.data(), count);
          from.remove_prefix(count);
          return CAIRO_STATUS_SUCCESS;
        },
        &rest);
    EXPECT_EQ(cairo_surface_status(surface_), CAIRO_STATUS_SUCCESS);
  }
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;
  ~Picture() { cairo_surface_destroy(surface_); }

  [[nodiscard]] int width() const { return cairo_image_surface_get_width(surface_); }
  [[nodiscard]] int height() const { return cairo_image_surface_get_height(surface_); }

  struct Area {
    int left, top, right, bottom;  // right and bottom are exclusive
  };
  /// The number of pixels of the area with exactly this colour, 0xRRGGBB.
  [[nodiscard]] int count(Area area, std::uint32_t color) const {
    int found = 0;
    const unsigned char* const pixels = cairo_image_surface_get_data(surface_);
    for (int y = area.top; y < std::min(area.bottom, height()); ++y) {
      for (int x = area.left; x < std::min(area.right, width()); ++x) {
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, pixels + y * cairo_image_surface_get_stride(surface_) + 4 * x, sizeof pixel);
        found += (pixel & 0xFFFFFF) == color ? 1 : 0;
      }
    }
    return found;
  }

 private:
  cairo_surface_t* surface_;
};

}  // namespace norvik::test
