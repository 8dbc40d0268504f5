// NorvikCore/Categories/NSAttributedString+Hyperlink.h - text that is a link.
//
//   hyperlinkFromString("HMRC", "https://www.gov.uk/");      // blue, with the address as NSLinkAttributeName
#pragma once

#include "NorvikCore/platform/foundation/NSAttributedString.h"

namespace norvik {

/// A new text with the address and NSColor::blueColor() over its whole length. The address is stored as it is given.
[[nodiscard]] NK_EXPORT Ref<NSMutableAttributedString> hyperlinkFromString(const NSString& string,
                                                                           const NSString& withURL);

}  // namespace norvik
