// NorvikCore/Categories/NSCalendar+Norvik.h - the library's calendars, day counts, and a calendar's settings as text.
//
//   daysWithinEraFromDate(*nk_defaultCalendar(), newYearsEve, newYearsDay);      // 1
//
// Both calendars are Gregorian in the locale "en_GB": weeks begin on Monday, and the first week of a year has at least
// four days in that year. The default calendar counts in UTC, the United Kingdom's in "Europe/London". Each is one
// object that lives until the process ends. Any thread may read them; no code may change them.
#pragma once

#include "NorvikCore/platform/foundation/NSCalendar.h"

#include <cstdint>

namespace norvik {

[[nodiscard]] NK_EXPORT const Ref<NSCalendar>& nk_defaultCalendar();
[[nodiscard]] NK_EXPORT const Ref<NSCalendar>& nk_ukCalendar();

/// The number of calendar days, in the calendar's time zone, from the day of `from` to the day of `to`; negative if
/// `to` is earlier. Times of day do not count.
[[nodiscard]] NK_EXPORT std::int64_t daysWithinEraFromDate(const NSCalendar& calendar, Date from, Date to);

/// For diagnostics: identifier, first weekday (1 is Sunday), time zone and locale, one line each. The locale follows
/// with all its properties.
[[nodiscard]] NK_EXPORT NSString nk_description(const NSCalendar& calendar);

}  // namespace norvik
