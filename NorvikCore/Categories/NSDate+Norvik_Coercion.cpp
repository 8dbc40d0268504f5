#include "NorvikCore/Categories/NSDate+Norvik_Coercion.h"

#include "NorvikCore/Categories/NSDate+Norvik.h"
#include "NorvikCore/Categories/NSDate+Norvik_Formatting.h"
#include "NorvikCore/logging/internal/LibraryWarning.h"
#include "NorvikCore/platform/values/CivilDate.h"

namespace norvik {

Date nk_nearestStartOfDay(Date date) { return nk_nearestStartOfDayWithLoggedWarning(date, false); }

Date nk_nearestStartOfDayWithLoggedWarning(Date date, bool loggedWarning) {
  const CivilTime time = civilDateTime(date).time;
  if (time.hour < 1 && time.minute < 1 && time.second < 1) return date;
  if (loggedWarning && detail::libraryWarnings()) [[unlikely]]
    detail::libraryWarning("Categories/NSDate+Norvik", "nk_nearestStartOfDayWithLoggedWarning:", __LINE__,
                           "Date time component is non zero : %@", nk_utcDescription(date));
  return nk_startOfDay(time.hour > 12 ? nk_addHours(date, 12) : date);
}

}  // namespace norvik
