// NorvikCore/Categories/NSDate+Norvik_Formatting.h - a date as text: in UTC, in British time, or in the user's own
// settings.
//
//   nk_utcDateStringWithFormat("2021-07-01"_date, "dd/MM/yyyy HH:mm");      // "01/07/2021 00:00"
//   nk_ukDateStringWithFormat("2021-07-01"_date, "dd/MM/yyyy HH:mm");       // "01/07/2021 01:00"
//   nk_utcDescription("2021-07-01"_date);                                   // "2021-07-01 00:00:00 +0000"
//
// A new pattern that contains "YY" logs a warning, see NSDateFormatter+Norvik.h.
//
// Threads: any. The main thread keeps one formatter for each operation, with the last pattern; the formatter for local
//          dates also keeps the user's settings of its first call. Every other thread makes a formatter for each call.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/Date.h"
#include "NorvikCore/platform/values/NSString.h"

namespace norvik {

[[nodiscard]] NK_EXPORT NSString nk_utcDateStringWithFormat(Date date, const NSString& format);
[[nodiscard]] NK_EXPORT NSString nk_localDateStringWithFormat(Date date, const NSString& format);
[[nodiscard]] NK_EXPORT NSString nk_ukDateStringWithFormat(Date date, const NSString& format);

/// "2021-05-10 00:00:00 +0000", the form used in logs.
[[nodiscard]] NK_EXPORT NSString nk_utcDescription(Date date);

}  // namespace norvik
