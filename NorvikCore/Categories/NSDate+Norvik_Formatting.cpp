#include "NorvikCore/Categories/NSDate+Norvik_Formatting.h"

#include "NorvikCore/Categories/NSDateFormatter+Norvik.h"
#include "NorvikCore/formatters/internal/MainThreadFormatters.h"

namespace norvik {

NSString nk_utcDateStringWithFormat(Date date, const NSString& format) {
  return detail::mainThreadFormatters().utcPattern.use(
      [&](NSDateFormatter& formatter) { return nk_stringFromDate(formatter, date, format); });
}

NSString nk_localDateStringWithFormat(Date date, const NSString& format) {
  return detail::mainThreadFormatters().localPattern.use(
      [&](NSDateFormatter& formatter) { return nk_stringFromDate(formatter, date, format); });
}

NSString nk_ukDateStringWithFormat(Date date, const NSString& format) {
  return detail::mainThreadFormatters().ukPattern.use(
      [&](NSDateFormatter& formatter) { return nk_stringFromDate(formatter, date, format); });
}

NSString nk_utcDescription(Date date) { return date.description(); }

}  // namespace norvik
