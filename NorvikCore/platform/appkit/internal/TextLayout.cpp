#include "NorvikCore/platform/appkit/internal/TextLayout.h"

#include "NorvikCore/platform/appkit/internal/CairoContext.h"
#include "NorvikCore/platform/appkit/internal/DrawingFont.h"
#include "NorvikCore/platform/appkit/internal/TextStyle.h"
#include "NorvikCore/platform/foundation/NSCharacterClass.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <string_view>
#include <utility>

namespace norvik::detail {
namespace {

constexpr double inPoints(std::int64_t units) { return static_cast<double>(units) / PANGO_SCALE; }

// Pango stores a line's width in an int, which overflows at two million points. Lines are wrapped well below that.
constexpr int greatestWidth = 1 << 29;
// Pango's time for a long word is quadratic in its length, so a long paragraph is laid out in pieces.
constexpr std::size_t pieceSize = 4096;

int pangoWidth(double width) {
  const double units = std::max(0.0, width) * PANGO_SCALE;
  return units < greatestWidth ? static_cast<int>(units) : greatestWidth;
}

// Appends UTF-8 for Pango, each line break as a line feed. True if the text ends with CR, so that an LF at the start of
// the next text belongs to it.
bool appendDrawn(std::string& drawn, const NSString& text, bool isBehindReturn) {
  const std::string drawable = drawableText(text);
  for (std::size_t at = 0; at < drawable.size();) {
    const utf8::Character character = utf8::decode(drawable.data() + at);
    if (!isLineBreak(character.point)) {
      drawn.append(drawable, at, character.size);
    } else if (!isBehindReturn || character.point != '\n') {
      drawn += '\n';
    }
    isBehindReturn = character.point == '\r';
    at += character.size;
  }
  return isBehindReturn;
}

// Cairo writes a URL to the file unchanged. Characters that would end the URL there are percent-encoded.
std::string encoded(const std::string& address) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string text;
  for (const char c : address) {
    if (std::string_view("'\\()").find(c) == std::string_view::npos) {
      text += c;
    } else {
      text += {'%', digits[c >> 4], digits[c & 15]};
    }
  }
  return text;
}

// A link's attributes for Cairo, with a space before each number. Not formatted by {fmt}, because that library would be
// loaded for this alone.
std::string linkTag(const std::string& address, const NSRect& place) {
  std::string tag = "uri='" + address + "' rect=[";
  for (const double number : {place.origin.x, place.origin.y, place.size.width, place.size.height}) {
    char text[400];  // the greatest double has 309 digits
    tag.append(" ").append(text, std::to_chars(text, std::end(text), number, std::chars_format::fixed, 3).ptr);
  }
  return tag + "]";
}

constexpr double whole = 65'535;

guint16 component(double part) { return static_cast<guint16>(std::lround(part * whole)); }

bool isHighHalf(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
bool isLowHalf(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

}  // namespace

TextLayout::TextLayout(const NSAttributedString& text, double width, FontUse& fonts) : fonts_(fonts), width_(width) {
  collectRuns(text);
  if (!measurePlainLine()) layOut();
}

// A character whose two surrogates are in different runs belongs to the first run.
void TextLayout::collectRuns(const NSAttributedString& text) {
  const NSString string = text.string();
  const NSUInteger length = string.length();
  NSUInteger from = 0;
  bool isBehindReturn = false;
  for (const auto& [range, attributes] : text) {
    NSUInteger end = range.location + range.length;
    if (!string.isAscii() && end < length && isHighHalf(string.characterAtIndex(end - 1)) &&
        isLowHalf(string.characterAtIndex(end))) {
      ++end;
    }
    if (end <= from) continue;
    Run run;
    run.from = text_.size();
    isBehindReturn = appendDrawn(text_, string.substringWithRange({from, end - from}), isBehindReturn);
    run.to = text_.size();
    run.font = drawingFont(attributes);
    const TextStyle style = styleOf(*attributes);
    const Value color = attributes->objectForKey(NSForegroundColorAttributeName);  // transparent colours are used too
    run.foreground = Ref<const NSColor>(color.object<NSColor>());
    run.background = style.background;
    run.isUnderlined = style.isUnderlined;
    run.link = encoded(style.address);
    runs_.push_back(std::move(run));
    from = end;
  }
}

bool TextLayout::measurePlainLine() {
  if (text_.find_first_of("\n\t") != std::string::npos) return false;
  double width = 0, descent = 0;
  if (runs_.empty()) {
    const KeptFont& font = fonts_.fontFor(*drawingFont(nullptr));
    ascent_ = inPoints(font.ascent());
    descent = inPoints(font.height() - font.ascent());
  }
  for (Run& run : runs_) {
    if (run.isUnderlined) return false;
    KeptFont& font = fonts_.fontFor(*run.font);
    if (!font.blank().isPlain) return false;
    const std::string_view text = std::string_view(text_).substr(run.from, run.to - run.from);
    std::int64_t units = 0;
    for (std::size_t at = 0; at < text.size();) {
      if (text[at] == ' ') {
        units += font.blankWidth();
        ++at;
        continue;
      }
      const std::size_t end = std::min(text.find(' ', at), text.size());
      const ShapedWord& word = font.word(text.substr(at, end - at));
      if (!word.isPlain) return false;
      units += word.width;
      at = end;
    }
    run.width = inPoints(units);
    width += run.width;
    if (!(width <= width_)) return false;
    ascent_ = std::max(ascent_, inPoints(font.ascent()));
    descent = std::max(descent, inPoints(font.height() - font.ascent()));
  }
  size_ = {width, ascent_ + descent};
  return true;
}

OwnedAttributes TextLayout::attributes(std::size_t from, std::size_t to) const {
  const PangoLibrary& pango = pangoLibrary();
  OwnedAttributes list(pango.pango_attr_list_new());
  for (auto run = runAt(from); run != runs_.end() && run->from < to; ++run) {
    const auto add = [&](PangoAttribute* attribute) {
      attribute->start_index = static_cast<guint>(std::max(run->from, from) - from);
      attribute->end_index = static_cast<guint>(std::min(run->to, to) - from);
      pango.pango_attr_list_insert(list.get(), attribute);
    };
    add(pango.pango_attr_font_desc_new(describe(*run->font).get()));
    add(pango.pango_attr_insert_hyphens_new(FALSE));
    if (const NSColor* const color = run->foreground.get()) {
      add(pango.pango_attr_foreground_new(component(color->redComponent()), component(color->greenComponent()),
                                          component(color->blueComponent())));
      add(pango.pango_attr_foreground_alpha_new(component(color->alphaComponent())));
    }
    if (const NSColor* const color = run->background.get()) {
      add(pango.pango_attr_background_new(component(color->redComponent()), component(color->greenComponent()),
                                          component(color->blueComponent())));
      add(pango.pango_attr_background_alpha_new(component(color->alphaComponent())));
    }
    if (run->isUnderlined) add(pango.pango_attr_underline_new(PANGO_UNDERLINE_SINGLE));
  }
  return list;
}

std::vector<TextLayout::Run>::const_iterator TextLayout::runAt(std::size_t place) const {
  return std::partition_point(runs_.begin(), runs_.end(), [&](const Run& run) { return run.to <= place; });
}

void TextLayout::layOut() {
  size_ = {};
  double greatestFont = 0;
  for (const Run& run : runs_) greatestFont = std::max(greatestFont, run.font->pointSize());
  const double inPiece = inPoints(greatestWidth) / greatestFont;  // much less for fonts of thousands of points
  const auto most = static_cast<std::size_t>(std::clamp(inPiece, 16.0, static_cast<double>(pieceSize)));
  for (std::size_t from = 0; from != std::string::npos;) from = addPiece(from, most);
}

// A piece ends at a line break, or it leaves out its last line, which begins the next piece.
std::size_t TextLayout::addPiece(std::size_t from, std::size_t most) {
  const PangoLibrary& pango = pangoLibrary();
  const std::string_view text = text_;
  std::size_t to = text.size();
  bool isCut = text.size() - from > most;
  if (isCut) {
    const std::size_t lineEnd = text.substr(from, most + 1).rfind('\n');
    isCut = lineEnd == std::string_view::npos;
    to = from + (isCut ? most : lineEnd);
    while (isCut && utf8::isContinuation(text[to])) --to;
  }
  Piece piece{from, layoutOf(from, to), 0, size_.height};
  PangoLayout* const layout = piece.layout.get();
  piece.lines = pango.pango_layout_get_line_count(layout) - (isCut ? 1 : 0);
  if (piece.lines == 0) return addPiece(from, 2 * most);
  const OwnedIterator iterator(pango.pango_layout_get_iter(layout));
  for (int line = 0; line < piece.lines; ++line, pango.pango_layout_iter_next_line(iterator.get())) {
    PangoRectangle logical;
    pango.pango_layout_iter_get_line_extents(iterator.get(), nullptr, &logical);
    size_.width = std::max(size_.width, inPoints(logical.width));
    size_.height = piece.top + inPoints(logical.y + logical.height);
  }
  pieces_.push_back(std::move(piece));
  if (isCut) {
    return from + static_cast<std::size_t>(pango.pango_layout_iter_get_line_readonly(iterator.get())->start_index);
  }
  return to < text.size() ? to + 1 : std::string::npos;
}

PangoOwned<PangoLayout> TextLayout::layoutOf(std::size_t from, std::size_t to) const {
  const PangoLibrary& pango = pangoLibrary();
  PangoOwned<PangoLayout> made(pango.pango_layout_new(fonts_.context()));
  PangoLayout* const layout = made.get();
  pango.pango_layout_set_font_description(layout, describe(*drawingFont(nullptr)).get());
  pango.pango_layout_set_width(layout, pangoWidth(width_));
  pango.pango_layout_set_wrap(layout, PANGO_WRAP_WORD_CHAR);
  const std::string_view text = std::string_view(text_).substr(from, to - from);
  pango.pango_layout_set_text(layout, text.data(), pangoLength(text));
  pango.pango_layout_set_attributes(layout, attributes(from, to).get());
  const Run* known = nullptr;
  OwnedDescription description;
  for (int i = 0; i < pango.pango_layout_get_line_count(layout); ++i) {
    for (const GSList* item = pango.pango_layout_get_line_readonly(layout, i)->runs; item; item = item->next) {
      const PangoItem& shaped = *static_cast<const PangoLayoutRun*>(item->data)->item;
      const Run& run = *runAt(from + static_cast<std::size_t>(shaped.offset));
      if (&run != known) description = describe(*run.font);
      known = &run;
      settle(fonts_.context(), *description, shaped.analysis.language);
    }
  }
  return made;
}

double TextLayout::indent(double lineWidth, NSTextAlignment alignment) const {
  if (alignment == NSTextAlignmentLeft || !std::isfinite(width_)) return 0;
  const double left = width_ - lineWidth;
  return alignment == NSTextAlignmentRight ? left : left / 2;
}

void TextLayout::draw(cairo_t* cairo, NSPoint at, NSTextAlignment alignment) {
  if (pieces_.empty()) drawPlainLine(cairo, {at.x + indent(size_.width, alignment), at.y});
  for (const Piece& piece : pieces_) drawPiece(cairo, piece, at, alignment);
}

void TextLayout::drawPlainLine(cairo_t* cairo, NSPoint at) {
  const PangoLibrary& pango = pangoLibrary();
  double x = at.x;
  for (const Run& run : runs_) {
    if (run.background) {
      setColor(cairo, *run.background);
      pango.cairo_rectangle(cairo, x, at.y, run.width, size_.height);
      pango.cairo_fill(cairo);
    }
    if (!run.link.empty()) pango.cairo_tag_begin(cairo, CAIRO_TAG_LINK, ("uri='" + run.link + "'").c_str());
    setColor(cairo, run.foreground ? *run.foreground : *NSColor::blackColor());
    drawPlainRun(cairo, run, {x, at.y + ascent_});
    if (!run.link.empty()) pango.cairo_tag_end(cairo, CAIRO_TAG_LINK);
    x += run.width;
  }
}

// Draws the words and spaces of one font at once, so that programs that read the file find a line and not single words.
void TextLayout::drawPlainRun(cairo_t* cairo, const Run& run, NSPoint at) {
  const PangoLibrary& pango = pangoLibrary();
  KeptFont& font = fonts_.fontFor(*run.font);
  const std::string_view text = std::string_view(text_).substr(0, run.to);
  GlyphRun shown;
  std::size_t shownFrom = run.from, end = run.from;
  const auto show = [&] {
    if (!shown.glyphs.empty()) {
      pango.cairo_set_scaled_font(cairo, shown.font);
      pango.cairo_show_text_glyphs(cairo, text_.data() + shownFrom, static_cast<int>(end - shownFrom),
                                   shown.glyphs.data(), static_cast<int>(shown.glyphs.size()), shown.clusters.data(),
                                   static_cast<int>(shown.clusters.size()), cairo_text_cluster_flags_t{});
    }
    shown.glyphs.clear();
    shown.clusters.clear();
    shownFrom = end;
  };
  double x = at.x;
  while (end < run.to) {
    const bool isBlank = text_[end] == ' ';
    const std::size_t wordEnd = isBlank ? end + 1 : std::min(text.find(' ', end), text.size());
    const ShapedWord& word = isBlank ? font.blank() : font.word(text.substr(end, wordEnd - end));
    if (word.run.font != shown.font) show();
    shown.font = word.run.font;
    for (cairo_glyph_t glyph : word.run.glyphs) {
      glyph.x += x;
      glyph.y += at.y;
      shown.glyphs.push_back(glyph);
    }
    shown.clusters.insert(shown.clusters.end(), word.run.clusters.begin(), word.run.clusters.end());
    x += inPoints(word.width);
    end = wordEnd;
  }
  show();
}

void TextLayout::drawPiece(cairo_t* cairo, const Piece& piece, NSPoint at, NSTextAlignment alignment) const {
  const PangoLibrary& pango = pangoLibrary();
  const OwnedIterator iterator(pango.pango_layout_get_iter(piece.layout.get()));
  const double top = at.y + piece.top;
  for (int i = 0; i < piece.lines; ++i, pango.pango_layout_iter_next_line(iterator.get())) {
    PangoRectangle logical;
    pango.pango_layout_iter_get_line_extents(iterator.get(), nullptr, &logical);
    PangoLayoutLine* const line = pango.pango_layout_iter_get_line_readonly(iterator.get());
    const double x = at.x + indent(inPoints(logical.width), alignment);
    setColor(cairo, *NSColor::blackColor());
    pango.cairo_move_to(cairo, x, top + inPoints(pango.pango_layout_iter_get_baseline(iterator.get())));
    pango.pango_cairo_show_layout_line(cairo, line);
    linkLine(cairo, piece, *line, logical, {x, top + inPoints(logical.y)});
  }
}

void TextLayout::linkLine(cairo_t* cairo, const Piece& piece, PangoLayoutLine& line, const PangoRectangle& place,
                          NSPoint at) const {
  const PangoLibrary& pango = pangoLibrary();
  const std::size_t from = piece.from + static_cast<std::size_t>(line.start_index);
  const std::size_t to = from + static_cast<std::size_t>(line.length);
  for (auto run = runAt(from); run != runs_.end() && run->from < to; ++run) {
    if (run->link.empty()) continue;
    int* found = nullptr;
    int count = 0;
    pango.pango_layout_line_get_x_ranges(&line, static_cast<int>(std::max(run->from, from) - piece.from),
                                         static_cast<int>(std::min(run->to, to) - piece.from), &found, &count);
    const PangoOwned<int, &PangoLibrary::g_free> ranges(found);
    for (int i = 0; i < count; ++i) {
      const double left = inPoints(std::max(0, found[2 * i] - place.x));
      const double right = inPoints(std::min(place.width, found[2 * i + 1] - place.x));
      const std::string tag = linkTag(run->link, {{at.x + left, at.y}, {right - left, inPoints(place.height)}});
      pango.cairo_tag_begin(cairo, CAIRO_TAG_LINK, tag.c_str());
      pango.cairo_tag_end(cairo, CAIRO_TAG_LINK);
    }
  }
}

}  // namespace norvik::detail
