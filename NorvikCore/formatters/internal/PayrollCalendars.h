// NorvikCore/formatters/internal/PayrollCalendars.h - the fixed calendars, locales and time zones: each is one object
// for the life of the process.
//
// They are made here, at the level of the formatters that are set up with them. Users have them by nk_defaultCalendar()
// and its kind, in Categories/. Any thread.
#pragma once

#include "NorvikCore/platform/foundation/NSCalendar.h"
#include "NorvikCore/platform/foundation/NSLocale.h"
#include "NorvikCore/platform/foundation/NSTimeZone.h"

namespace norvik::detail {

[[nodiscard]] const Ref<NSLocale>& defaultLocale();
[[nodiscard]] const Ref<NSLocale>& ukLocale();
[[nodiscard]] const Ref<NSTimeZone>& defaultTimeZone();
[[nodiscard]] const Ref<NSTimeZone>& ukTimeZone();
[[nodiscard]] const Ref<NSCalendar>& defaultCalendar();
[[nodiscard]] const Ref<NSCalendar>& ukCalendar();

}  // namespace norvik::detail
