// NorvikCore/platform/values/DateFields.h - the fields of a date as text, for Date_fmt.h. Users need not read it.
//
//   detail::dateText(payday, "%d/%m/%Y");         // "10/05/2021"
//
// It does not use {fmt}, so that the library does not load it. Date_fmt.h lists the fields.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/Date.h"

#include <string>
#include <string_view>

namespace norvik::detail {

/// True if every % is followed by the letter of a field.
constexpr bool isDatePattern(std::string_view pattern) noexcept {
  constexpr std::string_view letters = "YCymdeBbhAaHIMSpFDTRGgVjuwzZsnt%";
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] != '%') continue;
    if (++i == pattern.size() || letters.find(pattern[i]) == std::string_view::npos) return false;
  }
  return true;
}

/// `pattern` is one for which isDatePattern() is true.
[[nodiscard]] NK_EXPORT std::string dateText(Date date, std::string_view pattern);

}  // namespace norvik::detail
