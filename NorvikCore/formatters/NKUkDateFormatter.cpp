#include "NorvikCore/formatters/NKUkDateFormatter.h"

#include "NorvikCore/Categories/NSCalendar+Norvik.h"
#include "NorvikCore/Categories/NSLocale+Norvik.h"
#include "NorvikCore/Categories/NSTimeZone+Norvik.h"

namespace norvik {

NKUkDateFormatter::~NKUkDateFormatter() = default;

bool NKUkDateFormatter::init() {
  if (!Super::init()) return false;
  setCalendar(nk_ukCalendar());
  setLocale(nk_ukLocale());
  setTimeZone(nk_ukTimeZone());
  return true;
}

}  // namespace norvik
