#include "NorvikCore/formatters/NKPlainTextFormatter.h"

#include "NorvikCore/platform/foundation/NSStringCase.h"

#include <algorithm>

namespace norvik {
namespace {

constexpr std::int64_t practicallyNoLimit = 2147483647;

}  // namespace

NKPlainTextFormatter::NKPlainTextFormatter() = default;
NKPlainTextFormatter::~NKPlainTextFormatter() = default;

bool NKPlainTextFormatter::init() {
  if (!Super::init()) return false;
  setMaxLength(practicallyNoLimit);
  return true;
}

void NKPlainTextFormatter::encodeWithCoder(NSCoder&) const {}

bool NKPlainTextFormatter::initWithCoder(NSCoder&) {
  setMaxLength(practicallyNoLimit);
  return true;
}

void NKPlainTextFormatter::setUpperCase(bool upperCase) {
  change(upperCase_, upperCase, "upperCase");
  if (upperCase && lowerCase_) change(lowerCase_, false, "lowerCase");
}

void NKPlainTextFormatter::setLowerCase(bool lowerCase) {
  change(lowerCase_, lowerCase, "lowerCase");
  if (lowerCase && upperCase_) change(upperCase_, false, "upperCase");
}

void NKPlainTextFormatter::change(bool& flag, bool value, const NSString& key) {
  willChangeValueForKey(key);
  flag = value;
  didChangeValueForKey(key);
}

NSString NKPlainTextFormatter::converted(const NSString& text) const {
  return upperCase_ ? uppercaseString(text) : lowerCase_ ? lowercaseString(text) : text;
}

std::optional<NSString> NKPlainTextFormatter::stringForObjectValue(const Value& value) const {
  const NSString* text = value.string();
  return text ? std::optional(converted(*text)) : std::nullopt;
}

bool NKPlainTextFormatter::getObjectValue_forString_errorDescription(Value& value, const NSString& text,
                                                                     NSString*) const {
  value = converted(text);
  return true;
}

bool NKPlainTextFormatter::isPartialStringValid(NSString& proposed, NSRange& selection, const NSString& original,
                                                NSRange originalSelection, NSString*) const {
  bool accepted = true;
  if (const NSUInteger limit = maxLength() > 0 ? static_cast<NSUInteger>(maxLength()) : 0; proposed.length() > limit) {
    const NSUInteger location = std::min(originalSelection.location, original.length());
    const NSUInteger length = std::min(originalSelection.length, original.length() - location);
    const NSUInteger kept = original.length() - length;
    const NSUInteger room = kept < limit ? limit - kept : 0;
    const NSUInteger fitting = std::min(room, proposed.length() - std::min(location, proposed.length()));
    proposed = original.substringToIndex(location) +
               proposed.substringWithRange({std::min(location, proposed.length()), fitting}) +
               original.substringFromIndex(location + length);
    selection = {location + fitting, 0};
    accepted = false;
  }
  if (!upperCase_ && !lowerCase_) return accepted;
  proposed = converted(proposed);
  return false;
}

}  // namespace norvik
