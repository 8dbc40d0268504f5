#include "NorvikCore/platform/appkit/NSStringDrawing.h"

#include "NorvikCore/platform/appkit/internal/DrawingFont.h"
#include "NorvikCore/platform/appkit/internal/ShapedText.h"
#include "NorvikCore/platform/appkit/internal/TextLayout.h"
#include "NorvikCore/platform/foundation/NSCharacterClass.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace norvik {
namespace {

/// The width is in Pango's units.
struct Extent {
  std::int64_t width = 0;
  std::int64_t lines = 0;
};

Extent extentOf(const NSString& text, detail::KeptFont& font) {
  const bool isDrawable = detail::isDrawable(text);
  const std::string sanitised = isDrawable ? std::string() : detail::drawableText(text);
  const std::string_view bytes = isDrawable ? text.view() : std::string_view(sanitised);
  Extent extent;
  const auto addLine = [&](std::string_view line) {
    extent.width = std::max(extent.width, font.widthOf(line));
    ++extent.lines;
  };
  std::size_t from = 0;
  for (std::size_t at = 0; at < bytes.size();) {
    const auto byte = static_cast<unsigned char>(bytes[at]);
    if (byte >= 0x20 && byte < 0x80) {
      ++at;
      continue;
    }
    const utf8::Character character = utf8::decode(bytes.data() + at);
    const std::size_t end = at + (bytes.substr(at).starts_with("\r\n") ? 2 : character.size);
    if (isLineBreak(character.point)) {
      addLine(bytes.substr(from, at - from));
      from = end;
    }
    at = end;
  }
  addLine(bytes.substr(from));
  return extent;
}

constexpr double inPoints(std::int64_t units) { return static_cast<double>(units) / PANGO_SCALE; }

}  // namespace

double widthInFont(const NSString& text, const NSFont& font) {
  detail::FontUse fonts;
  return inPoints(extentOf(text, fonts.fontFor(font)).width);
}

NSSize sizeWithAttributes(const NSString& text, const Ref<NSDictionary>& attributes) {
  const Ref<const NSFont> font = detail::drawingFont(attributes);
  detail::FontUse fonts;
  detail::KeptFont& kept = fonts.fontFor(*font);
  const Extent extent = extentOf(text, kept);
  return {inPoints(extent.width), inPoints(extent.lines * kept.height())};
}

NSSize sizeOfText(const NSAttributedString& text, double width) {
  detail::FontUse fonts;
  return detail::TextLayout(text, width, fonts).size();
}

}  // namespace norvik
