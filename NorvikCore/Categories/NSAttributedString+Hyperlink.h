// NorvikCore/Categories/NSAttributedString+Hyperlink.h - text that is a link.
//
//   hyperlinkFromString("HMRC", "https://www.gov.uk/");      // blue, with the URL as NSLinkAttributeName
#pragma once

#include "NorvikCore/platform/foundation/NSAttributedString.h"

namespace norvik {

/// A new text with the URL and NSColor::blueColor() over its whole length. The URL is stored as it is given.
[[nodiscard]] NK_EXPORT Ref<NSMutableAttributedString> hyperlinkFromString(const NSString& string,
                                                                           const NSString& withURL);

}  // namespace norvik
