#include "NorvikCore/formatters/NKUkDateFormatter.h"

#include "NorvikCore/formatters/internal/PayrollCalendars.h"

namespace norvik {

NKUkDateFormatter::~NKUkDateFormatter() = default;

bool NKUkDateFormatter::init() {
  if (!Super::init()) return false;
  setCalendar(detail::ukCalendar());
  setLocale(detail::ukLocale());
  setTimeZone(detail::ukTimeZone());
  return true;
}

}  // namespace norvik
