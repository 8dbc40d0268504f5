#include "NorvikCore/Categories/NSDateFormatter+Norvik.h"

#include "NorvikCore/logging/internal/LibraryWarning.h"

namespace norvik {

NSString nk_stringFromDate(NSDateFormatter& formatter, Date date, const NSString& format) {
  if (formatter.dateFormat() != format) {
    if (format.containsString("YY") && detail::libraryWarnings())
      detail::libraryWarning("Categories/NSDateFormatter+Norvik", "nk_stringFromDate:format:", __LINE__,
                             "Format string %@ contains YY symbols which will give erroneous year values on occasion. "
                             "Use yy instead.",
                             format);
    formatter.setDateFormat(format);
  }
  return formatter.stringFromDate(date);
}

}  // namespace norvik
