// NorvikCore/platform/appkit/internal/TextLayout.h - styled text, broken into lines and ready to be drawn.
//
// Most text on a form is one short line of common words. It is composed of cached glyphs. All other text (several
// lines, tabs, underlines, right to left, characters of other fonts) is laid out by Pango. The sizes from both methods
// agree to a hundredth of a point.
#pragma once

#include "NorvikCore/platform/appkit/Canvas.h"
#include "NorvikCore/platform/appkit/NSColor.h"
#include "NorvikCore/platform/appkit/NSFont.h"
#include "NorvikCore/platform/appkit/NSGeometry.h"
#include "NorvikCore/platform/appkit/internal/ShapedText.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"

#include <cstdint>
#include <string>
#include <vector>

namespace norvik::detail {

class TextLayout {
 public:
  /// The fonts must outlive it.
  TextLayout(const NSAttributedString& text, double width, FontUse& fonts);
  TextLayout(const TextLayout&) = delete;
  TextLayout& operator=(const TextLayout&) = delete;

  [[nodiscard]] NSSize size() const noexcept { return size_; }
  void draw(cairo_t* cairo, NSPoint at, NSTextAlignment alignment);

 private:
  struct Run {
    std::size_t from = 0, to = 0;  ///< bytes of text_
    Ref<const NSFont> font;
    Ref<const NSColor> foreground, background;  ///< empty Refs mean black, and no background
    bool isUnderlined = false;
    std::string link;  ///< empty if there is none
    double width = 0;  ///< set if the text is one plain line
  };

  /// Some whole lines of a long text.
  struct Piece {
    std::size_t from;  ///< its first byte of text_
    PangoOwned<PangoLayout> layout;
    int lines;   ///< the number that is used; the last line may be left to the next piece
    double top;  ///< distance from the top of the text, in points
  };

  void collectRuns(const NSAttributedString& text);
  [[nodiscard]] bool measurePlainLine();
  void layOut();
  /// Returns the start of the next piece; npos after the last one. The piece has `most` bytes at first, and more if
  /// that is less than one line.
  [[nodiscard]] std::size_t addPiece(std::size_t from, std::size_t most);
  [[nodiscard]] PangoOwned<PangoLayout> layoutOf(std::size_t from, std::size_t to) const;
  [[nodiscard]] OwnedAttributes attributes(std::size_t from, std::size_t to) const;
  /// The run that contains the byte; the end if there is none.
  [[nodiscard]] std::vector<Run>::const_iterator runAt(std::size_t place) const;
  void drawPlainLine(cairo_t* cairo, NSPoint at);
  void drawPlainRun(cairo_t* cairo, const Run& run, NSPoint at);
  void drawPiece(cairo_t* cairo, const Piece& piece, NSPoint at, NSTextAlignment alignment) const;
  void linkLine(cairo_t* cairo, const Piece& piece, PangoLayoutLine& line, const PangoRectangle& place,
                NSPoint at) const;
  [[nodiscard]] double indent(double lineWidth, NSTextAlignment alignment) const;

  FontUse& fonts_;
  const double width_;
  std::string text_;
  std::vector<Run> runs_;
  NSSize size_;
  double ascent_ = 0;          ///< of a plain line
  std::vector<Piece> pieces_;  ///< empty for a plain line
};

}  // namespace norvik::detail
