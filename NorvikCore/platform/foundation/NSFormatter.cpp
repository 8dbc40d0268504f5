#include "NorvikCore/platform/foundation/NSFormatter.h"

#include "NorvikCore/platform/foundation/NSAttributedString.h"

namespace norvik {

NSFormatter::~NSFormatter() = default;

Ref<NSAttributedString> NSFormatter::attributedStringForObjectValue_withDefaultAttributes(
    const Value&, const Ref<NSDictionary>&) const {
  return nullptr;
}

std::optional<NSString> NSFormatter::editingStringForObjectValue(const Value& value) const {
  return stringForObjectValue(value);
}

bool NSFormatter::isPartialStringValid(NSString&, NSRange&, const NSString&, NSRange, NSString*) const { return true; }

}  // namespace norvik
