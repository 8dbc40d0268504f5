// tests/support/StyledText.h - a text with one attribute.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"

namespace norvik::test {

inline Ref<NSAttributedString> styled(const NSString& text, const NSString& name, const Value& value) {
  return NSAttributedString::attributedStringWithString(text, NSDictionary::dictionaryWithObject(value, name));
}

}  // namespace norvik::test
