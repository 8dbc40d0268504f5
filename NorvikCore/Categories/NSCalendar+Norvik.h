// NorvikCore/Categories/NSCalendar+Norvik.h - the library's calendars, day counts, and a calendar's settings as text.
//
//   daysWithinEraFromDate(*nk_defaultCalendar(), newYearsEve, newYearsDay);      // 1
//
// Both calendars are Gregorian in the locale "en_GB": weeks begin on Monday, and the first week of a year has at least
// four of its days. The default one counts in UTC, the United Kingdom's in "Europe/London". Each is one object for the
// life of the process. They are for everyone to read, on any thread, and for nobody to change.
#pragma once

#include "NorvikCore/platform/foundation/NSCalendar.h"

#include <cstdint>

namespace norvik {

[[nodiscard]] NK_EXPORT const Ref<NSCalendar>& nk_defaultCalendar();
[[nodiscard]] NK_EXPORT const Ref<NSCalendar>& nk_ukCalendar();

/// The calendar days, in the calendar's time zone, from the one on which `from` falls to the one on which `to` falls;
/// negative where `to` is earlier. Times of day do not count.
[[nodiscard]] NK_EXPORT std::int64_t daysWithinEraFromDate(const NSCalendar& calendar, Date from, Date to);

/// For diagnostics: identifier, first weekday (1 is Sunday), time zone and locale, a line each, the locale with all its
/// properties.
[[nodiscard]] NK_EXPORT NSString nk_description(const NSCalendar& calendar);

}  // namespace norvik
