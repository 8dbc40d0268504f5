// NorvikCore/platform/appkit/NSStringDrawing.h - the size of a text when it is drawn.
//
//   auto font = NSFont::fontWithName("DejaVu Sans", 11);
//   widthInFont("1,234.50", *font);                                             // points
//   sizeWithAttributes("Pay\nNet", NSDictionary::dictionaryWithObject(font, NSFontAttributeName));
//
// Sizes are in points, 72 to the inch, and are not rounded to pixels: they are the same for a screen, a picture and
// paper, and are proportional to the font's size. A font that the machine does not have is replaced by fontconfig's
// choice; a character that a font lacks is taken from another font.
//
// The width of a line includes the spaces between its words. A tab reaches to the next multiple of eight spaces. Lone
// surrogate halves, NUL and noncharacters (U+FFFE, U+FFFF, ...) are measured and drawn as U+FFFD. A font larger than
// 10,000 points is treated as one of 10,000.
//
// Threads: any. Errors: NSGenericException if Pango or Cairo cannot be loaded or the machine has no font.
// Cost:    the first use in a process loads Pango and Cairo (milliseconds). A word is laid out when it is first used
//          (microseconds); the widths of some thousand words of each font are cached.
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

/// The width of the widest line and the height of all lines; an empty text has the height of one line. Of the
/// attributes only NSFontAttributeName is used; the default is the system's font in its size.
[[nodiscard]] NK_EXPORT NSSize sizeWithAttributes(const NSString& text, const Ref<NSDictionary>& attributes = nullptr);

/// The size in which a Canvas draws the text. A line that is wider than `width` is broken between words; a word that is
/// wider is broken within the word, without a hyphen. A line that Pango lays out is broken at half a million points
/// even without a width.
[[nodiscard]] NK_EXPORT NSSize sizeOfText(const NSAttributedString& text, double width = unlimitedWidth);

}  // namespace norvik
