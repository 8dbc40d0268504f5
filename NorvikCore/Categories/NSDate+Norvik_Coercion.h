// NorvikCore/Categories/NSDate+Norvik_Coercion.h - a date that carries a time of day, brought to a start of day.
//
//   nk_nearestStartOfDay("2021-05-10 12:59:59"_date);      // 2021-05-10
//   nk_nearestStartOfDay("2021-05-10 13:00:00"_date);      // 2021-05-11
//
// Times of day are those of the default calendar (UTC). An hour of 12 still goes down, on purpose. Any thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/Date.h"

namespace norvik {

/// The start of the date's own day up to 12:59:59, else of the next day. A date at 00:00:00 comes back as it is, with a
/// fraction of a second that it may have.
[[nodiscard]] NK_EXPORT Date nk_nearestStartOfDay(Date date);
/// The same; where `loggedWarning` is true and the time is not 00:00:00, it logs the warning "Date time component is
/// non zero : " with the date's nk_utcDescription.
[[nodiscard]] NK_EXPORT Date nk_nearestStartOfDayWithLoggedWarning(Date date, bool loggedWarning);

}  // namespace norvik
