// NorvikCore/platform/values/Date_fmt.h - dates in {fmt} format strings, in UTC. The user must have {fmt}.
//
//   fmt::format("{}", payday);                       // "2021-05-10 00:00:00 +0000": description()
//   fmt::format("{:%Y-%m-%d}", payday);              // "2021-05-10"
//   fmt::format("{:%a %e %B %Y, %H:%M}", payday);    // "Mon 10 May 2021, 00:00"
//   fmt::format("{:>12%d/%m/%y}", payday);           // "    10/05/21": width, fill and alignment as for any text
//   fmt::format("{:.10}", payday);                   // "2021-05-10": without a pattern, precision too
//
// A pattern begins at the first % and is checked by the compiler. It shows the fields of the date in UTC, as strftime
// does in the C locale:
//
//   %Y %C %y  year, its hundreds, its last two digits      %H %I %M %S %p  hour (24, 12), minute, second, AM or PM
//   %m %d %e  month, day with 0 or with a space            %F %D %T %R  %Y-%m-%d, %m/%d/%y, %H:%M:%S, %H:%M
//   %B %b %h  month's name, the first three letters        %G %g %V  year and week of ISO 8601
//   %A %a     weekday's name, the first three letters      %j %u %w  day of the year, of the week (Monday 1, Sunday 0)
//   %z %Z     +0000 and UTC                                %s  seconds since 1970;   %n %t %%  line end, tab, %
//
// A second is cut off, not rounded. Other zones and languages: NSDateFormatter. Dates beyond the range of CivilDate.h
// show as its ends.
#pragma once  // include time: <fmt/format.h> is the purpose of this header

#include "NorvikCore/platform/values/Date.h"
#include "NorvikCore/platform/values/DateFields.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

template <>
struct fmt::formatter<norvik::Date> : fmt::formatter<fmt::string_view> {
  constexpr void set_debug_format(bool /*isQuoted*/ = true) noexcept {}  // not quoted within a range

  constexpr auto parse(fmt::format_parse_context& context) {
    const char* const begin = context.begin();
    const char* const end = std::find(begin, context.end(), '}');
    const char* const percent = std::find(begin, end, '%');
    if (percent == end) return fmt::formatter<fmt::string_view>::parse(context);
    if (!norvik::detail::isDatePattern({percent, static_cast<std::size_t>(end - percent)}))
      throw fmt::format_error("a date has no such field: see NorvikCore/platform/values/Date_fmt.h");
    if (std::find(begin, percent, '{') != percent || std::find(begin, percent, '.') != percent)
      throw fmt::format_error("a date with a pattern has a width that is a number, and no precision");
    pattern_ = {percent, static_cast<std::size_t>(end - percent)};
    fmt::format_parse_context field({begin, static_cast<std::size_t>(percent - begin)});
    fmt::formatter<fmt::string_view>::parse(field);
    return end;
  }

  template <class Context>
  auto format(norvik::Date date, Context& context) const {
    if (pattern_.empty()) return fmt::formatter<fmt::string_view>::format(date.description(), context);
    return fmt::formatter<fmt::string_view>::format(norvik::detail::dateText(date, pattern_), context);
  }

 private:
  std::string_view pattern_;
};
