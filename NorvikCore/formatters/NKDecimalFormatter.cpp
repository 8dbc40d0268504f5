#include "NorvikCore/formatters/NKDecimalFormatter.h"

#include "NorvikCore/formatters/internal/AdditionalAttributes.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"

#include <algorithm>

namespace norvik {

NKDecimalFormatter::NKDecimalFormatter() = default;
NKDecimalFormatter::~NKDecimalFormatter() = default;

bool NKDecimalFormatter::init() {
  if (!Super::init()) return false;
  setup();
  return true;
}

bool NKDecimalFormatter::initWithCoder(NSCoder& coder) {
  if (!Super::initWithCoder(coder)) return false;
  setup();
  return true;
}

void NKDecimalFormatter::setup() {
  setFormatterBehavior(NSNumberFormatterBehavior10_4);
  setNumberStyle(NSNumberFormatterDecimalStyle);
  setAllowsFloats(true);
  setMinimumIntegerDigits(1);
  setMinimumFractionDigits(2);
  setMaximumFractionDigits(2);
  setHasThousandSeparators(true);
  setLenient(true);
  setKeepsEveryDigit(true);
}

void NKDecimalFormatter::setMaximum(std::optional<NSNumber> maximum) {
  Super::setMaximum(maximum);
  if (formatterBehavior() != NSNumberFormatterBehavior10_4) setFormatterBehavior(NSNumberFormatterBehavior10_4);
  // A double's stringValue() may be "1e+05"; a decimal's digits are always plain.
  const auto length = maximum ? static_cast<std::int64_t>(maximum->decimalValue().stringValue().length()) : 0;
  if (length == 0) return;
  setMaximumIntegerDigits(static_cast<int>(length));
  setMaxLength(length + length / 3 + 4);
}

Ref<NSAttributedString> NKDecimalFormatter::attributedStringForObjectValue_withDefaultAttributes(
    const Value& value, const Ref<NSDictionary>& attributes) const {
  return detail::customAttributedString(*this,
                                        Super::attributedStringForObjectValue_withDefaultAttributes(value, attributes));
}

std::optional<NSString> NKDecimalFormatter::editingStringForObjectValue(const Value& value) const {
  return Super::editingStringForObjectValue(value);
}

bool NKDecimalFormatter::isPartialStringValid(NSString& proposed, NSRange& selection, const NSString& original,
                                              NSRange originalSelection, NSString*) const {
  if (maxLength() <= 0) return true;
  const auto limit = static_cast<NSUInteger>(maxLength());
  if (proposed.length() <= limit) return true;
  const NSUInteger kept = original.length() - originalSelection.length;
  const NSUInteger location = originalSelection.location;
  const NSUInteger room = kept < limit ? limit - kept : 0;
  const NSUInteger fitting = std::min(room, proposed.length() - std::min(location, proposed.length()));
  proposed = original.substringToIndex(location) + proposed.substringWithRange({location, fitting}) +
             original.substringFromIndex(location + originalSelection.length);
  selection = {location + fitting, 0};
  return false;
}

}  // namespace norvik
