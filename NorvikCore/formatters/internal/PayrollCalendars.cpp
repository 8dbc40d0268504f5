#include "NorvikCore/formatters/internal/PayrollCalendars.h"

#include "NorvikCore/platform/kernel/MadeOnce.h"

namespace norvik::detail {
namespace {

Ref<NSCalendar> gregorianIn(const Ref<NSTimeZone>& zone) {
  Ref<NSCalendar> calendar = NSCalendar::calendarWithIdentifier(NSGregorianCalendar);
  calendar->setLocale(defaultLocale());
  calendar->setTimeZone(zone);
  return calendar;
}

}  // namespace

const Ref<NSLocale>& defaultLocale() {
  return kernel::madeOnce([] { return new Ref<NSLocale>(NSLocale::localeWithLocaleIdentifier("en_GB")); });
}

const Ref<NSLocale>& ukLocale() {
  return kernel::madeOnce([] { return new Ref<NSLocale>(NSLocale::localeWithLocaleIdentifier("en_GB")); });
}

const Ref<NSTimeZone>& defaultTimeZone() {
  return kernel::madeOnce([] { return new Ref<NSTimeZone>(NSTimeZone::timeZoneWithName("UTC")); });
}

const Ref<NSTimeZone>& ukTimeZone() {
  return kernel::madeOnce([] { return new Ref<NSTimeZone>(NSTimeZone::timeZoneWithName("Europe/London")); });
}

const Ref<NSCalendar>& defaultCalendar() {
  return kernel::madeOnce([] { return new Ref<NSCalendar>(gregorianIn(defaultTimeZone())); });
}

const Ref<NSCalendar>& ukCalendar() {
  return kernel::madeOnce([] { return new Ref<NSCalendar>(gregorianIn(ukTimeZone())); });
}

}  // namespace norvik::detail
