#include "NorvikCore/formatters/NKUtcDateFormatter.h"

#include "NorvikCore/Categories/NSCalendar+Norvik.h"
#include "NorvikCore/Categories/NSLocale+Norvik.h"
#include "NorvikCore/Categories/NSTimeZone+Norvik.h"
#include "NorvikCore/formatters/internal/MainThreadFormatters.h"

namespace norvik {

NKUtcDateFormatter::~NKUtcDateFormatter() = default;

bool NKUtcDateFormatter::init() {
  if (!Super::init()) return false;
  setCalendar(nk_defaultCalendar());
  setLocale(nk_defaultLocale());
  setTimeZone(nk_defaultTimeZone());
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
