// NorvikCore/logging/internal/ConsoleStamp.h - the time of a message as the console shows it.
//
//   ConsoleStamp stamp;
//   stamp.text(message.timestamp());      // "2021-05-10 14:30:12:045", local time
//
// The local time is that of the default time zone at each call, in the user's calendar. Years before year 1 are years
// of their era. Milliseconds are rounded down, also before 2001, so that they belong to the second shown. The text has
// at most 23 characters: a year after 9999 leaves no room for the last digits of the milliseconds.
//
// Threads: confined.
// Cost:    about a microsecond for a new second, almost nothing for the same second.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSCalendar.h"
#include "NorvikCore/platform/values/Date.h"

#include <cstdint>
#include <string_view>

namespace norvik::detail {

class NK_EXPORT_FOR_TESTS ConsoleStamp {
 public:
  ConsoleStamp();
  ~ConsoleStamp();

  /// Valid until the next call.
  [[nodiscard]] std::string_view text(Date timestamp);

 private:
  static constexpr std::size_t size = 23;

  Ref<NSCalendar> calendar;
  NSCalendarUnit calendarUnitFlags;
  std::int64_t second_ = INT64_MIN;  // the second that buffer_ shows
  std::size_t length_ = 0;           // length of buffer_ without the milliseconds
  char buffer_[96] = {};
};

}  // namespace norvik::detail
