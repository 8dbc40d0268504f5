// NorvikCore/Categories/NSTimeZone+Norvik.h - the library's time zones.
//
//   nk_defaultTimeZone()->name();      // "UTC": the zone of payroll dates
//   nk_ukTimeZone()->name();           // "Europe/London": the zone of British local time
//
// Each is one object that lives until the process ends. Any thread.
#pragma once

#include "NorvikCore/platform/foundation/NSTimeZone.h"

namespace norvik {

[[nodiscard]] NK_EXPORT const Ref<NSTimeZone>& nk_defaultTimeZone();
[[nodiscard]] NK_EXPORT const Ref<NSTimeZone>& nk_ukTimeZone();

}  // namespace norvik
