#include "NorvikCore/Categories/NSCalendar+Norvik.h"

#include "NorvikCore/Categories/NSLocale+Norvik.h"
#include "NorvikCore/Categories/NSTimeZone+Norvik.h"
#include "NorvikCore/platform/values/Format.h"

namespace norvik {
namespace {

Ref<NSCalendar> gregorianIn(const Ref<NSTimeZone>& zone) {
  Ref<NSCalendar> calendar = NSCalendar::calendarWithIdentifier(NSGregorianCalendar);
  calendar->setLocale(nk_defaultLocale());
  calendar->setTimeZone(zone);
  return calendar;
}

}  // namespace

const Ref<NSCalendar>& nk_defaultCalendar() {
  static const auto& calendar = *new Ref<NSCalendar>(gregorianIn(nk_defaultTimeZone()));
  return calendar;
}

const Ref<NSCalendar>& nk_ukCalendar() {
  static const auto& calendar = *new Ref<NSCalendar>(gregorianIn(nk_ukTimeZone()));
  return calendar;
}

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
