// NorvikCore/platform/values/NSString_fmt.h - NSString in {fmt} format strings, as its UTF-8 text. The user must have
// {fmt}.
//
//   fmt::format("{:<6}|", name);       // "Ann   |": width, fill and precision as for any text
#pragma once  // include time: <fmt/format.h> is the purpose of this header

#include "NorvikCore/platform/values/NSString.h"

#include <fmt/format.h>

#include <type_traits>

template <class T>
requires std::is_base_of_v<norvik::NSString, T>
struct fmt::formatter<T> : fmt::formatter<fmt::string_view> {
  template <class Context>
  auto format(const norvik::NSString& text, Context& context) const {
    if (text.isWellFormed()) return fmt::formatter<fmt::string_view>::format(text.view(), context);
    const std::string printable = text.utf8();
    return fmt::formatter<fmt::string_view>::format(printable, context);
  }
};
