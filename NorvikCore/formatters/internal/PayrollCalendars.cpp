#include "NorvikCore/formatters/internal/PayrollCalendars.h"

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
  static const auto& locale = *new Ref<NSLocale>(NSLocale::localeWithLocaleIdentifier("en_GB"));
  return locale;
}

const Ref<NSLocale>& ukLocale() {
  static const auto& locale = *new Ref<NSLocale>(NSLocale::localeWithLocaleIdentifier("en_GB"));
  return locale;
}

const Ref<NSTimeZone>& defaultTimeZone() {
  static const auto& zone = *new Ref<NSTimeZone>(NSTimeZone::timeZoneWithName("UTC"));
  return zone;
}

const Ref<NSTimeZone>& ukTimeZone() {
  static const auto& zone = *new Ref<NSTimeZone>(NSTimeZone::timeZoneWithName("Europe/London"));
  return zone;
}

const Ref<NSCalendar>& defaultCalendar() {
  static const auto& calendar = *new Ref<NSCalendar>(gregorianIn(defaultTimeZone()));
  return calendar;
}

const Ref<NSCalendar>& ukCalendar() {
  static const auto& calendar = *new Ref<NSCalendar>(gregorianIn(ukTimeZone()));
  return calendar;
}

}  // namespace norvik::detail
