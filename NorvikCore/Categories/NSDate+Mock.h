// NorvikCore/Categories/NSDate+Mock.h - a current date for tests, for the whole process.
//
//   setMockDateStringValue("2021-04-06 00:00:00 +0000");
//   NSDate::date();           // 2021-04-06 00:00:00 +0000; nk_today() and all other code use this date too
//   mockCurrentDate();        // the real clock
//
// The first call exchanges the two operations `date` and `mockCurrentDate`. After that NSDate::date() gives the mock
// date, and mockCurrentDate() gives the real clock, as NSDate::date() did before. The exchange is never undone. Log
// messages keep the real time.
//
// Meant to be called once, at start-up. Synchronised nevertheless.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/Date.h"
#include "NorvikCore/platform/values/NSString.h"

#include <optional>

namespace norvik {

/// Makes the date in the text the current date; a later call replaces it. The accepted texts are those of
/// Date::dateWithString. With any other text the process has no current date.
NK_EXPORT void setMockDateStringValue(const NSString& text);

/// Absent until a mock date is set for the first time; after that the real clock, see above.
[[nodiscard]] NK_EXPORT std::optional<Date> mockCurrentDate();

}  // namespace norvik
