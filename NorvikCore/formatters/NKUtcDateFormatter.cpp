#include "NorvikCore/formatters/NKUtcDateFormatter.h"

#include "NorvikCore/formatters/internal/MainThreadFormatters.h"
#include "NorvikCore/formatters/internal/PayrollCalendars.h"

namespace norvik {

NKUtcDateFormatter::~NKUtcDateFormatter() = default;

bool NKUtcDateFormatter::init() {
  if (!Super::init()) return false;
  setCalendar(detail::defaultCalendar());
  setLocale(detail::defaultLocale());
  setTimeZone(detail::defaultTimeZone());
  return true;
}

NSString NKUtcDateFormatter::localizedStringFromDate(Date date, NSDateFormatterStyle dateStyle,
                                                     NSDateFormatterStyle timeStyle) {
  return detail::mainThreadFormatters().utcStyle.use([&](NKUtcDateFormatter& formatter) {
    if (formatter.dateStyle() != dateStyle) formatter.setDateStyle(dateStyle);
    if (formatter.timeStyle() != timeStyle) formatter.setTimeStyle(timeStyle);
    return formatter.stringFromDate(date);
  });
}

}  // namespace norvik
