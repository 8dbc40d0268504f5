// NorvikCore/logging/internal/ConsoleStamp.h - the time of a message as the console shows it.
//
//   ConsoleStamp stamp;
//   stamp.text(message.timestamp());      // "2021-05-10 14:30:12:045", local time
//
// The local time is that of the default time zone at each call, in the user's calendar. Years before year 1 are those
// of their era. Milliseconds are rounded down, before 2001 too, so that they belong to the second shown. Not more than
// 23 characters: a year after 9999 leaves no room for the last digits of the milliseconds.
//
// Threads: confined. Cost: a new second takes about a microsecond, the same one next to nothing.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSCalendar.h"
#include "NorvikCore/platform/values/Date.h"

#include <cstdint>
#include <string_view>

namespace norvik::detail {

class NK_EXPORT ConsoleStamp {
 public:
  ConsoleStamp();
  ~ConsoleStamp();

  /// Valid until the next call.
  [[nodiscard]] std::string_view text(Date timestamp);

 private:
  static constexpr std::size_t size = 23;

  Ref<NSCalendar> calendar;
  NSCalendarUnit calendarUnitFlags;
  std::int64_t second_ = INT64_MIN;  // the one that buffer_ shows
  std::size_t length_ = 0;           // of buffer_ up to the milliseconds
  char buffer_[96] = {};
};

}  // namespace norvik::detail
