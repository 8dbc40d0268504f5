#include "NorvikCore/Categories/NSAttributedString+Hyperlink.h"

#include "NorvikCore/platform/appkit/NSColor.h"

namespace norvik {

Ref<NSMutableAttributedString> hyperlinkFromString(const NSString& string, const NSString& withURL) {
  auto link = NSMutableAttributedString::attributedStringWithString(string);
  const NSRange whole{0, link->length()};
  link->beginEditing();
  link->addAttribute(NSLinkAttributeName, withURL, whole);
  link->addAttribute(NSForegroundColorAttributeName, NSColor::blueColor(), whole);
  link->endEditing();
  return link;
}

}  // namespace norvik
