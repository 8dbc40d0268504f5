// NorvikCore/platform/appkit/AttributedStringHTML.h - attributed text as a fragment of HTML.
//
//   htmlText(*text);                  // "<span style=\"font-weight:bold\">Pay</span> now"
//   htmlText(*text, body.get());      // inside an element with that font: sizes are relative to it
//
// The fragment consists of text, <br>, <span style> and <a href style>, so it may be placed wherever text is allowed,
// such as a paragraph or a cell. It refers to nothing outside it except the URLs of links. A link becomes an <a> only
// if its URL is one of http, https or mailto. For any other URL, such as javascript:, only the text of the link is
// written.
//
// All content of the text is escaped: & < > " and ' are written as entities. A line break of any kind (CR LF is one)
// becomes <br>. A control character other than the tab and a lone surrogate half become U+FFFD. Browsers show
// consecutive spaces as one unless the fragment's element has `white-space: pre-wrap`.
//
// Any thread. Linear.
#pragma once

#include "NorvikCore/platform/appkit/NSFont.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"

#include <string>

namespace norvik {

/// UTF-8. Without a surrounding font, sizes are in points and every font has its family. With one, only differences
/// from it are written, and sizes are in em.
[[nodiscard]] NK_EXPORT std::string htmlText(const NSAttributedString& text, const NSFont* surroundingFont = nullptr);

/// Plain text, escaped in the same way.
[[nodiscard]] NK_EXPORT std::string htmlText(const NSString& text);

}  // namespace norvik
