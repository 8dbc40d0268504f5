#include "NorvikCore/Categories/NSTimeZone+Norvik.h"

#include "NorvikCore/formatters/internal/PayrollCalendars.h"

namespace norvik {

const Ref<NSTimeZone>& nk_defaultTimeZone() { return detail::defaultTimeZone(); }

const Ref<NSTimeZone>& nk_ukTimeZone() { return detail::ukTimeZone(); }

}  // namespace norvik
