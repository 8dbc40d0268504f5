#include "NorvikCore/formatters/NKPlainTextFormatter.h"

#include "NorvikCore/platform/foundation/NSStringCase.h"
#include "NorvikCore/platform/object/AnnouncedChange.h"

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
  setCase({"upperCase", upperCase_}, upperCase, {"lowerCase", lowerCase_});
}

void NKPlainTextFormatter::setLowerCase(bool lowerCase) {
  setCase({"lowerCase", lowerCase_}, lowerCase, {"upperCase", upperCase_});
}

/// If both flags change, observers of either are notified after both have changed.
void NKPlainTextFormatter::setCase(const CaseFlag& set, bool value, const CaseFlag& other) {
  const auto store = [&] {
    set.flag = value;
    if (value) other.flag = false;
  };
  if (value && other.flag) {
    detail::changeProperty(*this, set.key, [&] { detail::changeProperty(*this, other.key, store); });
  } else {
    detail::changeProperty(*this, set.key, store);
  }
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
  const bool isTooLong = static_cast<std::int64_t>(proposed.length()) > maxLength();
  const NSUInteger limit = maxLength() > 0 ? static_cast<NSUInteger>(maxLength()) : 0;
  const NSUInteger location = std::min(originalSelection.location, original.length());
  const NSUInteger length = std::min(originalSelection.length, original.length() - location);
  const NSUInteger kept = original.length() - length;
  const bool onlyDeletes = proposed.length() < kept;
  if (isTooLong && !onlyDeletes) {
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
