// NorvikCore/Categories/NSDateFormatter+Norvik.h - a date in a pattern, by any date formatter.
//
//   auto formatter = make<NKUkDateFormatter>();
//   nk_stringFromDate(*formatter, "2021-07-01"_date, "dd/MM/yyyy HH:mm");      // "01/07/2021 01:00"
#pragma once

#include "NorvikCore/platform/foundation/NSDateFormatter.h"

namespace norvik {

/// The date in the pattern, which becomes the formatter's. A new pattern that holds "YY" logs a warning first: it shows
/// the year of the week, which is not always that of the day; the pattern is used as it is. The formatter's present
/// pattern is not checked again.
[[nodiscard]] NK_EXPORT NSString nk_stringFromDate(NSDateFormatter& formatter, Date date, const NSString& format);

}  // namespace norvik
