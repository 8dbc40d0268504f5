// NorvikCore/platform/foundation/internal/IcuText.h - converts text between ICU and the library. Lone surrogates are
// kept.
#pragma once

#include "NorvikCore/platform/values/NSString.h"

#include <unicode/unistr.h>

#include <string>
#include <string_view>

namespace norvik::detail {

[[nodiscard]] NSString stringFromIcu(const icu::UnicodeString& text);
[[nodiscard]] icu::UnicodeString icuString(const NSString& text);
/// From UTF-8.
[[nodiscard]] icu::UnicodeString icuString(std::string_view utf8);
/// To UTF-8.
[[nodiscard]] std::string utf8FromIcu(const icu::UnicodeString& text);

}  // namespace norvik::detail
