// NorvikCore/Categories/NSDate+Norvik_Coercion.h - rounding a date with a time of day to a start of day.
//
//   nk_nearestStartOfDay("2021-05-10 12:59:59"_date);      // 2021-05-10
//   nk_nearestStartOfDay("2021-05-10 13:00:00"_date);      // 2021-05-11
//
// Times of day are those of the default calendar (UTC). An hour of 12 is rounded down, deliberately. Any thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/Date.h"

namespace norvik {

/// The start of the date's own day if the time is at most 12:59:59, otherwise the start of the next day. A date at
/// 00:00:00 is returned unchanged, with its fraction of a second.
[[nodiscard]] NK_EXPORT Date nk_nearestStartOfDay(Date date);
/// The same. If `loggedWarning` is true and the time is not 00:00:00, it also logs the warning "Date time component is
/// non zero : " with the date's nk_utcDescription.
[[nodiscard]] NK_EXPORT Date nk_nearestStartOfDayWithLoggedWarning(Date date, bool loggedWarning);

}  // namespace norvik
