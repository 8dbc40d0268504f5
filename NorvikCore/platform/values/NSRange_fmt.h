// NorvikCore/platform/values/NSRange_fmt.h - ranges in {fmt} format strings. The user must have {fmt}.
//
//   fmt::format("{}", NSRange{6, 5});             // "{6, 5}"; width, fill and precision as for any text
#pragma once  // include time: <fmt/format.h> is the purpose of this header

#include "NorvikCore/platform/values/NSRange.h"

#include <fmt/format.h>

template <>
struct fmt::formatter<norvik::NSRange> : fmt::formatter<fmt::string_view> {
  constexpr void set_debug_format(bool /*isQuoted*/ = true) noexcept {}  // not quoted within a range

  template <class Context>
  auto format(const norvik::NSRange& range, Context& context) const {
    char text[48];
    const auto end = fmt::format_to(text, "{{{}, {}}}", range.location, range.length);
    return fmt::formatter<fmt::string_view>::format({text, static_cast<std::size_t>(end - text)}, context);
  }
};
