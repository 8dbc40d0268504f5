// NorvikCore/platform/values/Date_fmt.h - dates in {fmt} format strings.
//
//   fmt::print("{}", payday);          // 2021-05-10 00:00:00 +0000
//   fmt::print("{:.10}", payday);      // 2021-05-10: width, fill and precision as for any text
#pragma once  // include time: <fmt/format.h> is the purpose of this header

#include "NorvikCore/platform/values/Date.h"

#include <fmt/format.h>

template <>
struct fmt::formatter<norvik::Date> : fmt::formatter<std::string_view> {
  template <class Context>
  auto format(norvik::Date date, Context& context) const {
    return fmt::formatter<std::string_view>::format(date.description(), context);
  }
};
