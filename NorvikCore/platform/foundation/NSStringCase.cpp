#include "NorvikCore/platform/foundation/NSStringCase.h"

#include "NorvikCore/platform/foundation/internal/IcuText.h"
#include "NorvikCore/platform/foundation/internal/LocaleData.h"

#include <algorithm>
#include <string>

namespace norvik {
namespace {

/// A fast path for ASCII, because most texts are identifiers.
template <class Change>
NSString changedAscii(const NSString& text, Change&& change) {
  std::string changed(text.view());
  std::ranges::transform(changed, changed.begin(), change);
  return NSString(changed);
}

}  // namespace

NSString uppercaseString(const NSString& text) {
  if (text.isAscii())
    return changedAscii(text, [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
  return detail::stringFromIcu(detail::icuString(text).toUpper(icu::Locale::getRoot()));
}

NSString lowercaseString(const NSString& text) {
  if (text.isAscii())
    return changedAscii(text, [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return detail::stringFromIcu(detail::icuString(text).toLower(icu::Locale::getRoot()));
}

NSString capitalizedString(const NSString& text) {
  if (text.isAscii() && text.view().size() == 1) return uppercaseString(text);
  return detail::stringFromIcu(detail::icuString(text).toTitle(nullptr, icu::Locale::getRoot()));
}

}  // namespace norvik
