#include "NorvikCore/logging/internal/ConsoleStamp.h"

#include "NorvikCore/platform/values/CivilDate.h"

#include <algorithm>
#include <cstdio>

namespace norvik::detail {

ConsoleStamp::ConsoleStamp()
    : calendar(NSCalendar::currentCalendar()),
      calendarUnitFlags(NSCalendarUnitYear | NSCalendarUnitMonth | NSCalendarUnitDay | NSCalendarUnitHour |
                        NSCalendarUnitMinute | NSCalendarUnitSecond) {}

ConsoleStamp::~ConsoleStamp() = default;

std::string_view ConsoleStamp::text(Date timestamp) {
  const Ref<NSTimeZone> zone = NSTimeZone::defaultTimeZone();
  const std::int64_t second = wholeSeconds(timestamp);
  if (second != second_ || zone != calendar->timeZone()) {
    calendar->setTimeZone(zone);
    const Ref<NSDateComponents> now = calendar->components(calendarUnitFlags, timestamp);
    const int length = std::snprintf(buffer_, sizeof buffer_, "%04ld-%02ld-%02ld %02ld:%02ld:%02ld:", now->year(),
                                     now->month(), now->day(), now->hour(), now->minute(), now->second());
    length_ = static_cast<std::size_t>(length);
    second_ = second;
  }
  const double fraction = instantInRange(timestamp.timeIntervalSinceReferenceDate()) - static_cast<double>(second);
  const int milliseconds = std::min(static_cast<int>(fraction * 1000), 999);
  const int added = std::snprintf(buffer_ + length_, sizeof buffer_ - length_, "%03d", milliseconds);
  return {buffer_, std::min(length_ + static_cast<std::size_t>(added), size)};
}

}  // namespace norvik::detail
