#include "NorvikCore/platform/foundation/internal/IcuText.h"

#include <cstdint>

namespace norvik::detail {

NSString stringFromIcu(const icu::UnicodeString& text) {
  return NSString::fromUtf16({text.getBuffer(), static_cast<std::size_t>(text.length())});
}

icu::UnicodeString icuString(const NSString& text) {
  if (text.isAscii()) return icuString(text.view());
  const std::u16string units = text.toUtf16();
  return {units.data(), static_cast<std::int32_t>(units.size())};
}

icu::UnicodeString icuString(std::string_view utf8) {
  return icu::UnicodeString::fromUTF8({utf8.data(), static_cast<std::int32_t>(utf8.size())});
}

std::string utf8FromIcu(const icu::UnicodeString& text) {
  std::string utf8;
  text.toUTF8String(utf8);
  return utf8;
}

}  // namespace norvik::detail
