// NorvikCore/Categories/NSDate+Mock.h - a current date for tests, for the whole process.
//
//   setMockDateStringValue("2021-04-06 00:00:00 +0000");
//   NSDate::date();           // 2021-04-06 00:00:00 +0000, and so for nk_today() and everything else that asks
//   mockCurrentDate();        // the real clock
//
// The first call exchanges the two operations `date` and `mockCurrentDate`: from then on NSDate::date() gives the mock
// date, and mockCurrentDate() what NSDate::date() gave before, the real clock. That is never undone. Log messages keep
// the real time.
//
// Meant to be called once, at start-up; synchronised nevertheless.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/Date.h"
#include "NorvikCore/platform/values/NSString.h"

#include <optional>

namespace norvik {

/// Makes the date that the text names the current one, in place of an earlier one. The texts are those of
/// Date::dateWithString; any other text leaves the process without a current date.
NK_EXPORT void setMockDateStringValue(const NSString& text);

/// Nothing until a mock date was set for the first time; from then on the real clock, see above.
[[nodiscard]] NK_EXPORT std::optional<Date> mockCurrentDate();

}  // namespace norvik
