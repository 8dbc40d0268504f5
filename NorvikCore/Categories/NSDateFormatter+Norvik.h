// NorvikCore/Categories/NSDateFormatter+Norvik.h - a date in a pattern, with any date formatter.
//
//   auto formatter = make<NKUkDateFormatter>();
//   nk_stringFromDate(*formatter, "2021-07-01"_date, "dd/MM/yyyy HH:mm");      // "01/07/2021 01:00"
#pragma once

#include "NorvikCore/platform/foundation/NSDateFormatter.h"

namespace norvik {

/// The date in the pattern. The formatter keeps the pattern. A new pattern that contains "YY" logs a warning first,
/// because "YY" is the year of the week, which can differ from the year of the day; the pattern is used unchanged. If
/// the formatter already has the pattern, it is not checked again.
[[nodiscard]] NK_EXPORT NSString nk_stringFromDate(NSDateFormatter& formatter, Date date, const NSString& format);

}  // namespace norvik
