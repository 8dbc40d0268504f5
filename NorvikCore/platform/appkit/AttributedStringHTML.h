// NorvikCore/platform/appkit/AttributedStringHTML.h - attributed text as a fragment of HTML.
//
//   htmlText(*text);                  // "<span style=\"font-weight:bold\">Pay</span> now"
//   htmlText(*text, body.get());      // within an element of that font: sizes are relative to it
//
// The fragment holds text, <br>, <span style> and <a href style>, so it may stand wherever text may, in a paragraph or
// a cell. It refers to nothing outside but the addresses of links. A link is an <a> where its address is one of http,
// https or mailto; any other, such as javascript:, is left out and its text stays.
//
// Whatever the text holds is text: & < > " and ' are written as entities. A line break of any kind, CR LF as one,
// becomes <br>; a control character other than the tab, and a lone surrogate half, U+FFFD. Browsers collapse blanks
// unless the fragment's element says `white-space: pre-wrap`.
//
// Any thread. Linear.
#pragma once

#include "NorvikCore/platform/appkit/NSFont.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"

#include <string>

namespace norvik {

/// UTF-8. Without a surrounding font sizes are in points, and every font names its family; with one, only what differs
/// from it is written, and sizes are in em.
[[nodiscard]] NK_EXPORT std::string htmlText(const NSAttributedString& text, const NSFont* surroundingFont = nullptr);

/// Plain text, escaped in the same way.
[[nodiscard]] NK_EXPORT std::string htmlText(const NSString& text);

}  // namespace norvik
