// NorvikCore/platform/appkit/NSStringDrawing.h - how much room a text takes when it is drawn.
//
//   auto font = NSFont::fontWithName("DejaVu Sans", 11);
//   widthInFont("1,234.50", *font);                                             // points
//   sizeWithAttributes("Pay\nNet", NSDictionary::dictionaryWithObject(font, NSFontAttributeName));
//
// Sizes are in points, 72 to the inch, without rounding to pixels: they are the same for a screen, a picture and paper,
// and grow with the font's size. A font that the machine does not have is replaced as fontconfig says; a character that
// a font lacks is taken from another font.
//
// The width of a line is that of its words and of the blanks between them. A tab reaches to the next multiple of eight
// blanks. Lone surrogate halves, NUL and noncharacters (U+FFFE, U+FFFF, ...) are measured and drawn as U+FFFD. A font
// of more than 10,000 points counts as one of 10,000.
//
// Threads: any. Errors: where Pango or Cairo cannot be loaded, or the machine has no font, NSGenericException says so.
// Cost:    the first use in a process loads Pango and Cairo (milliseconds), and a word not seen before is laid out
//          (microseconds); the widths of some thousand words in each font are kept.
#pragma once

#include "NorvikCore/platform/appkit/NSFont.h"
#include "NorvikCore/platform/appkit/NSGeometry.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"
#include "NorvikCore/platform/values/NSString.h"

#include <limits>

namespace norvik {

constexpr double unlimitedWidth = std::numeric_limits<double>::infinity();

/// The width of the widest line; lines end at line breaks (U+000A to U+000D, U+0085, U+2028, U+2029).
[[nodiscard]] NK_EXPORT double widthInFont(const NSString& text, const NSFont& font);

/// The widest line, and the height of all of them; an empty text is one line high. Of the attributes only
/// NSFontAttributeName counts; without it the font is the system's, in its size.
[[nodiscard]] NK_EXPORT NSSize sizeWithAttributes(const NSString& text, const Ref<NSDictionary>& attributes = nullptr);

/// The room that a Canvas draws the text in, each line broken between words where it is wider than `width`, and within
/// a word that is wider alone, without a hyphen. A line that is laid out by Pango is broken at half a million points
/// even without a width.
[[nodiscard]] NK_EXPORT NSSize sizeOfText(const NSAttributedString& text, double width = unlimitedWidth);

}  // namespace norvik
