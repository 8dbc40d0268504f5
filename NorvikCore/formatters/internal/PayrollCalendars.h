// NorvikCore/formatters/internal/PayrollCalendars.h - the fixed calendars, locales and time zones; each is one object
// that lives until the process ends.
//
// They are created in this folder because the formatters here need them. nk_defaultCalendar() and similar functions in
// Categories/ give access to them. Any thread.
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
