#include "NorvikCore/formatters/NKUKSortCodeFormatter.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace norvik {

NKUKSortCodeFormatter::~NKUKSortCodeFormatter() = default;

bool NKUKSortCodeFormatter::init() {
  if (!Super::init()) return false;
  setup();
  return true;
}

bool NKUKSortCodeFormatter::initWithCoder(NSCoder& coder) {
  if (!Super::initWithCoder(coder)) return false;
  setup();
  return true;
}

void NKUKSortCodeFormatter::setup() { setMaxLength(8); }

Value NKUKSortCodeFormatter::transformedValue(const Value& value) const {
  const NSString* text = value.string();
  if (!text) return {};
  std::string code;
  std::ranges::copy_if(text->view(), std::back_inserter(code), [](char c) { return c >= '0' && c <= '9'; });
  if (code.size() != 6) return *text;
  code.insert(4, 1, '-').insert(2, 1, '-');
  return NSString(code);
}

std::optional<NSString> NKUKSortCodeFormatter::stringForObjectValue(const Value& value) const {
  return transformedValue(value).as<std::optional<NSString>>();
}

bool NKUKSortCodeFormatter::getObjectValue_forString_errorDescription(Value& value, const NSString& text,
                                                                      NSString*) const {
  value = transformedValue(text);
  return true;
}

bool NKUKSortCodeFormatter::isPartialStringValid(NSString& proposed, NSRange& selection, const NSString& original,
                                                 NSRange originalSelection, NSString* error) const {
  return Super::isPartialStringValid(proposed, selection, original, originalSelection, error);
}

}  // namespace norvik
