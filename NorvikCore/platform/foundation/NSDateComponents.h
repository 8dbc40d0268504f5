// NorvikCore/platform/foundation/NSDateComponents.h - the fields of a date or of a span of time, each set or not set.
//
//   auto parts = make<NSDateComponents>();
//   parts->setYear(2021);
//   parts->setMonth(5);
//   calendar->dateFromComponents(*parts);          // 2021-05-01 00:00 in the calendar's time zone
//
// A field that is not set has the value NSUndefinedDateComponent.
//
// Threads: confined, like every object with setters.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSTimeZone.h"
#include "NorvikCore/platform/object/NSCoder.h"
#include "NorvikCore/platform/values/NSInteger.h"

namespace norvik {

/// The value of a field that is not set.
inline constexpr NSInteger NSUndefinedDateComponent = INT64_MAX;

/// The fields of a calendar. Units may be combined by `|`.
enum NSCalendarUnit : NSUInteger {
  NSCalendarUnitEra = 2,
  NSCalendarUnitYear = 4,
  NSCalendarUnitMonth = 8,
  NSCalendarUnitDay = 16,
  NSCalendarUnitHour = 32,
  NSCalendarUnitMinute = 64,
  NSCalendarUnitSecond = 128,
  NSWeekCalendarUnit = 256,  ///< the old name of the week of the year
  NSCalendarUnitWeekday = 512,
  NSCalendarUnitWeekdayOrdinal = 1024,
  NSCalendarUnitQuarter = 2048,
  NSCalendarUnitWeekOfMonth = 4096,
  NSCalendarUnitWeekOfYear = 8192,
  NSCalendarUnitYearForWeekOfYear = 16384,
  NSCalendarUnitNanosecond = 32768,
  NSCalendarUnitTimeZone = 1 << 21,
};
[[nodiscard]] constexpr NSCalendarUnit operator|(NSCalendarUnit a, NSCalendarUnit b) noexcept {
  return static_cast<NSCalendarUnit>(static_cast<NSUInteger>(a) | static_cast<NSUInteger>(b));
}

class NK_EXPORT NSDateComponents : public NSObject, public NSCoding {
  NK_OBJECT(NSDateComponents, NSObject)
  NK_CODING
  NK_PROPERTY(NSInteger, era, setEra)    // 0 before year 1, 1 after
  NK_PROPERTY(NSInteger, year, setYear)  // of the era
  NK_PROPERTY(NSInteger, month, setMonth)
  NK_PROPERTY(NSInteger, day, setDay)
  NK_PROPERTY(NSInteger, hour, setHour)
  NK_PROPERTY(NSInteger, minute, setMinute)
  NK_PROPERTY(NSInteger, second, setSecond)
  NK_PROPERTY(NSInteger, nanosecond, setNanosecond)
  NK_PROPERTY(NSInteger, week, setWeek)                      // as weekOfYear
  NK_PROPERTY(NSInteger, weekday, setWeekday)                // 1 is Sunday
  NK_PROPERTY(NSInteger, weekdayOrdinal, setWeekdayOrdinal)  // the second Monday of a month has 2
  NK_PROPERTY(NSInteger, quarter, setQuarter)                // 1 to 4
  NK_PROPERTY(NSInteger, weekOfMonth, setWeekOfMonth)
  NK_PROPERTY(NSInteger, weekOfYear, setWeekOfYear)
  NK_PROPERTY(NSInteger, yearForWeekOfYear, setYearForWeekOfYear)
  NK_PROPERTY(Ref<NSTimeZone>, timeZone, setTimeZone)  // used instead of the calendar's

  /// No field is set.
  NSDateComponents();
  ~NSDateComponents() override;

  /// The field of one unit; NSUndefinedDateComponent for a sum of units.
  [[nodiscard]] NSInteger valueForComponent(NSCalendarUnit unit) const;
  /// Sums of units and the time zone are ignored.
  void setValue_forComponent(NSInteger value, NSCalendarUnit unit);

  /// The fields that are set: "<NSDateComponents: year 2021, month 5>".
  [[nodiscard]] NSString description() const override;
  /// Equal if every field is equal, set or not.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;

  /// Archives the fields that are set, each under its name.
  void encodeWithCoder(NSCoder& coder) const override;
  bool initWithCoder(NSCoder& coder) override;
};

}  // namespace norvik
