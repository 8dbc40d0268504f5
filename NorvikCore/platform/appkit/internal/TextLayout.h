// NorvikCore/platform/appkit/internal/TextLayout.h - styled text in lines, ready to be drawn.
//
// Most text on a form is one short line of common words: it is put together from glyphs that are known already. All
// else (more lines, tabs, underlines, right to left, letters of other fonts) is laid out by Pango. Both take the same
// room to a hundredth of a point.
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
    Ref<const NSColor> foreground, background;  ///< empty for black, and for none
    bool isUnderlined = false;
    std::string link;  ///< empty for none
    double width = 0;  ///< where the text is one plain line
  };

  /// Whole lines of a long text.
  struct Piece {
    std::size_t from;  ///< its first byte of text_
    PangoOwned<PangoLayout> layout;
    int lines;   ///< that count; a last one may be the next piece's first
    double top;  ///< below the text's, in points
  };

  void collectRuns(const NSAttributedString& text);
  [[nodiscard]] bool measurePlainLine();
  void layOut();
  /// Returns where the next piece begins; npos behind the last. Such a piece has so many bytes at first, and more if
  /// that is less than a line.
  [[nodiscard]] std::size_t addPiece(std::size_t from, std::size_t most);
  [[nodiscard]] PangoOwned<PangoLayout> layoutOf(std::size_t from, std::size_t to) const;
  [[nodiscard]] OwnedAttributes attributes(std::size_t from, std::size_t to) const;
  /// The run that holds the byte; the end where none does.
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
  std::vector<Piece> pieces_;  ///< none for a plain line
};

}  // namespace norvik::detail
