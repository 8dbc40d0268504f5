// NorvikCore/Categories/NSTimeZone+Norvik.h - the library's time zones.
//
//   nk_defaultTimeZone()->name();      // "UTC": what payroll dates are counted in
//   nk_ukTimeZone()->name();           // "Europe/London": what a clock on a British wall shows
//
// Each is one object that lives until the process ends. Any thread.
#pragma once

#include "NorvikCore/platform/foundation/NSTimeZone.h"

namespace norvik {

[[nodiscard]] NK_EXPORT const Ref<NSTimeZone>& nk_defaultTimeZone();
[[nodiscard]] NK_EXPORT const Ref<NSTimeZone>& nk_ukTimeZone();

}  // namespace norvik
