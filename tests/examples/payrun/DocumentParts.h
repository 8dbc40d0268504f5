// tests/examples/payrun/DocumentParts.h - texts and cells of documents, for tests of the classes that write documents.
#pragma once

#include "Document.h"
#include "NorvikCore/platform/appkit/NSFont.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"

namespace payrun_test {

inline norvik::Ref<norvik::NSAttributedString> text(const norvik::NSString& string, bool isBold = false) {
  using namespace norvik;
  if (!isBold) return NSAttributedString::attributedStringWithString(string);
  return NSAttributedString::attributedStringWithString(
      string, NSDictionary::dictionaryWithObject(make<NSFont>("Sans", 10, true), NSFontAttributeName));
}

inline payrun::Cell left(const norvik::NSString& string) { return {text(string), payrun::Side::Left}; }
inline payrun::Cell right(const norvik::NSString& string) { return {text(string), payrun::Side::Right}; }

}  // namespace payrun_test
