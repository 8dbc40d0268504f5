// NorvikCore/platform/foundation/NSCalendar.h - dates as years, months, weeks, days and times of day in a time zone.
//
//   Ref<NSCalendar> calendar = NSCalendar::calendarWithIdentifier(NSGregorianCalendar);
//   calendar->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));        // weeks start on Monday
//   calendar->setTimeZone(NSTimeZone::timeZoneWithName("Europe/London"));
//   calendar->component(NSCalendarUnitHour, "2021-07-01"_date);                // 1: summer time
//   calendar->dateByAddingUnit(NSCalendarUnitMonth, 1, "2021-01-31"_date);     // 2021-02-28
//
// The Gregorian calendar is used for all times, also before 1582. Years before year 1 are years of era 0, counted
// backwards. A date beyond the range of CivilDate.h counts as the end of that range. If the time zone skips a local
// time, the time moves forward by the skipped amount; if a local time occurs twice, the first one is meant.
//
// Adding units from the day up keeps the local time of day. Hours, minutes and seconds are added as elapsed time.
//
// Threads: any number of threads may read at once; setters are confined.
// Cost:    constant time without allocation, except for the operations that create components.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSDateComponents.h"
#include "NorvikCore/platform/foundation/NSLocale.h"
#include "NorvikCore/platform/foundation/NSTimeZone.h"
#include "NorvikCore/platform/object/NSCoder.h"
#include "NorvikCore/platform/values/NSRange.h"

namespace norvik {

NK_EXPORT extern const NSString NSGregorianCalendar;
NK_EXPORT extern const NSString NSISO8601Calendar;  ///< the same; weeks start on Monday, the first has at least 4 days

class NK_EXPORT NSCalendar : public NSObject, public NSCoding {
  NK_OBJECT(NSCalendar, NSObject)
  NK_DECODED_BY(calendarWithCoder)

  /// A calendar of the root locale in the default time zone; an empty Ref for an identifier other than the two above.
  [[nodiscard]] static Ref<NSCalendar> calendarWithIdentifier(const NSString& identifier);
  [[nodiscard]] static Ref<NSCalendar> initWithCalendarIdentifier(const NSString& identifier) {
    return calendarWithIdentifier(identifier);
  }
  /// A new Gregorian calendar with the current locale and the default time zone.
  [[nodiscard]] static Ref<NSCalendar> currentCalendar();

  [[nodiscard]] const NSString& calendarIdentifier() const noexcept { return identifier_; }
  [[nodiscard]] const Ref<NSLocale>& locale() const noexcept { return locale_; }
  /// Also takes the week settings of the locale, unless they were set explicitly. An empty Ref means the root locale.
  void setLocale(const Ref<NSLocale>& locale);
  [[nodiscard]] const Ref<NSTimeZone>& timeZone() const noexcept { return timeZone_; }
  /// An empty Ref means the present default time zone.
  void setTimeZone(const Ref<NSTimeZone>& timeZone);
  /// 1 is Sunday, 2 Monday ... 7 Saturday. Setting another number raises NSInvalidArgumentException.
  [[nodiscard]] NSUInteger firstWeekday() const noexcept { return static_cast<NSUInteger>(firstWeekday_); }
  void setFirstWeekday(NSUInteger weekday);
  /// The smallest number of days of a year that its first week can have: 1 to 7. Setting another number raises
  /// NSInvalidArgumentException.
  [[nodiscard]] NSUInteger minimumDaysInFirstWeek() const noexcept { return static_cast<NSUInteger>(minimumDays_); }
  void setMinimumDaysInFirstWeek(NSUInteger days);

  /// One field of the date; NSUndefinedDateComponent for a sum of units.
  [[nodiscard]] NSInteger component(NSCalendarUnit unit, Date date) const noexcept;
  /// The fields named by `units`; the others are not set. The old week unit sets `week` and `weekOfYear`.
  [[nodiscard]] Ref<NSDateComponents> components(NSCalendarUnit units, Date fromDate) const;
  /// The time between the dates in each of the units, the largest unit first, then the rest in the next smaller one.
  /// Negative if `toDate` is earlier. The units are years, quarters, months, weeks, days, hours, minutes, seconds and
  /// nanoseconds (at most 292 years of them). The old week unit sets `week` and `weekOfYear`.
  /// dateByAddingComponents() leads from `fromDate` to `toDate`, except for a rest below the smallest unit.
  [[nodiscard]] Ref<NSDateComponents> components(NSCalendarUnit units, Date fromDate, Date toDate) const;

  /// The date with these fields. Fields out of range carry over. Fields that are not set have their first value: 1 for
  /// year, month and day, 0 for the time. If the day is not set, it is determined by the week of the year and the
  /// weekday (if the month is not set either), else by the weekday and its ordinal, else by the week of the month and
  /// the weekday. A time zone among the fields is used instead of the calendar's.
  [[nodiscard]] Date dateFromComponents(const NSDateComponents& components) const;

  /// The date `value` units later. For 0 it is exactly `toDate`, even if that is out of range. A day that a shorter
  /// month does not have becomes the last day of that month. `options` must be 0; other values raise
  /// NSInvalidArgumentException. Era and sums of units add nothing.
  [[nodiscard]] Date dateByAddingUnit(NSCalendarUnit unit, NSInteger value, Date toDate, NSUInteger options = 0) const;
  /// The same for each field that is set, one after the other, the largest first: a year and a month after 2020-02-29
  /// is 2021-03-28, because a year after it is 2021-02-28. Time zone and era add nothing.
  [[nodiscard]] Date dateByAddingComponents(const NSDateComponents& components, Date toDate,
                                            NSUInteger options = 0) const;

  /// The values that the smaller unit can have within the larger unit that holds the date: days in a month are {1, 28}
  /// to {1, 31}. {NSNotFound, 0} if the smaller unit is not a part of the larger one.
  [[nodiscard]] NSRange rangeOfUnit(NSCalendarUnit smaller, NSCalendarUnit inUnit, Date forDate) const noexcept;
  /// The number, from 1, of the smaller unit that holds the date within the larger one: the day in the year, the day in
  /// the era. Numbers within the era continue through zero before year 1, so that their differences count units.
  /// NSNotFound if the smaller unit is not a part of the larger one.
  [[nodiscard]] NSInteger ordinalityOfUnit(NSCalendarUnit smaller, NSCalendarUnit inUnit, Date forDate) const noexcept;

  /// The first instant of the date's day, never later than the date: 00:00, or the first time after it if 00:00 is
  /// skipped.
  [[nodiscard]] Date startOfDayForDate(Date date) const noexcept;
  /// True if the date is on the day of the current date; false if there is no current date.
  [[nodiscard]] bool isDateInToday(Date date) const;

  [[nodiscard]] NSString description() const override;
  /// Equal if identifier, locale, time zone and week settings are equal.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;

  /// Archives the week settings only if they were set explicitly.
  void encodeWithCoder(NSCoder& coder) const override;
  [[nodiscard]] static Ref<NSCalendar> calendarWithCoder(NSCoder& coder);

  explicit NSCalendar(const NSString& identifier);
  ~NSCalendar() override;

 private:
  struct Fields;

  [[nodiscard]] Fields fields(Date date) const noexcept;
  [[nodiscard]] Date addUnit(NSCalendarUnit unit, NSInteger value, Date date) const noexcept;
  void takeWeekFromLocale();

  const NSString identifier_;
  Ref<NSLocale> locale_;
  Ref<NSTimeZone> timeZone_;
  std::int32_t firstWeekday_ = 1, minimumDays_ = 1;
  bool firstWeekdayIsSet_ = false, minimumDaysAreSet_ = false;
};

}  // namespace norvik
