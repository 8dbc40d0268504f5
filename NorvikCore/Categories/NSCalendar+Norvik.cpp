#include "NorvikCore/Categories/NSCalendar+Norvik.h"

#include "NorvikCore/Categories/NSLocale+Norvik.h"
#include "NorvikCore/formatters/internal/PayrollCalendars.h"
#include "NorvikCore/platform/values/Format.h"

namespace norvik {

const Ref<NSCalendar>& nk_defaultCalendar() { return detail::defaultCalendar(); }

const Ref<NSCalendar>& nk_ukCalendar() { return detail::ukCalendar(); }

std::int64_t daysWithinEraFromDate(const NSCalendar& calendar, Date from, Date to) {
  return calendar.ordinalityOfUnit(NSCalendarUnitDay, NSCalendarUnitEra, to) -
         calendar.ordinalityOfUnit(NSCalendarUnitDay, NSCalendarUnitEra, from);
}

NSString nk_description(const NSCalendar& calendar) {
  return stringWithFormat("Calendar identifier: %@\n", calendar.calendarIdentifier()) +
         stringWithFormat("Calendar first week day: %lu\n", calendar.firstWeekday()) +
         stringWithFormat("Calendar timezone: %@\n", calendar.timeZone()->description()) +
         stringWithFormat("Calendar locale: %@\n", nk_description(*calendar.locale()));
}

}  // namespace norvik
