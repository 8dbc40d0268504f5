// NorvikCore/platform/foundation/NSCalendar.h - dates as years, months, weeks, days and times of day in a time zone.
//
//   Ref<NSCalendar> calendar = NSCalendar::calendarWithIdentifier(NSGregorianCalendar);
//   calendar->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));        // weeks start on Monday
//   calendar->setTimeZone(NSTimeZone::timeZoneWithName("Europe/London"));
//   calendar->component(NSCalendarUnitHour, "2021-07-01"_date);                // 1: summer time
//   calendar->dateByAddingUnit(NSCalendarUnitMonth, 1, "2021-01-31"_date);     // 2021-02-28
//
// One Gregorian calendar for all times, also before 1582; years before year 1 are years of era 0, counted backwards.
// Dates beyond the range of CivilDate.h count as its ends. A local time that the time zone skips moves forward by what
// is skipped; of one that occurs twice the first is meant.
//
// Units from the day up keep the time of day when they are added; hours, minutes and seconds pass as on a stop-watch.
//
// Threads: reading is safe on any threads at once; setters are confined.
// Cost:    constant time and no allocation, but for the operations that make components.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSDateComponents.h"
#include "NorvikCore/platform/foundation/NSLocale.h"
#include "NorvikCore/platform/foundation/NSTimeZone.h"
#include "NorvikCore/platform/object/NSCoder.h"
#include "NorvikCore/platform/values/NSRange.h"

namespace norvik {

NK_EXPORT extern const NSString NSGregorianCalendar;
NK_EXPORT extern const NSString NSISO8601Calendar;  ///< the same with weeks from Monday, four days in the first

class NK_EXPORT NSCalendar : public NSObject, public NSCoding {
  NK_OBJECT(NSCalendar, NSObject)
  NK_DECODED_BY(calendarWithCoder)

  /// A calendar of the root locale in the default time zone; empty for an identifier other than the two above.
  [[nodiscard]] static Ref<NSCalendar> calendarWithIdentifier(const NSString& identifier);
  [[nodiscard]] static Ref<NSCalendar> initWithCalendarIdentifier(const NSString& identifier) {
    return calendarWithIdentifier(identifier);
  }
  /// A new Gregorian calendar of the user: the current locale, the default time zone.
  [[nodiscard]] static Ref<NSCalendar> currentCalendar();

  [[nodiscard]] const NSString& calendarIdentifier() const noexcept { return identifier_; }
  [[nodiscard]] const Ref<NSLocale>& locale() const noexcept { return locale_; }
  /// Also sets the week as the locale has it, where it was not set itself. Empty is the root locale.
  void setLocale(const Ref<NSLocale>& locale);
  [[nodiscard]] const Ref<NSTimeZone>& timeZone() const noexcept { return timeZone_; }
  /// Empty is the default time zone of now.
  void setTimeZone(const Ref<NSTimeZone>& timeZone);
  /// 1 is Sunday, 2 Monday ... 7 Saturday. Setting another number raises NSInvalidArgumentException.
  [[nodiscard]] NSUInteger firstWeekday() const noexcept { return static_cast<NSUInteger>(firstWeekday_); }
  void setFirstWeekday(NSUInteger weekday);
  /// How many days of a year its first week has at least: 1 to 7. Setting another number raises
  /// NSInvalidArgumentException.
  [[nodiscard]] NSUInteger minimumDaysInFirstWeek() const noexcept { return static_cast<NSUInteger>(minimumDays_); }
  void setMinimumDaysInFirstWeek(NSUInteger days);

  /// One field of the date; NSUndefinedDateComponent for a sum of units.
  [[nodiscard]] NSInteger component(NSCalendarUnit unit, Date date) const noexcept;
  /// The fields named by `units`, the others not set. The old week unit sets `week` and `weekOfYear`.
  [[nodiscard]] Ref<NSDateComponents> components(NSCalendarUnit units, Date fromDate) const;
  /// How much of each unit lies between the dates, the largest first: the rest in the next smaller. Negative where
  /// `toDate` is the earlier. Years, quarters, months, weeks, days, hours, minutes, seconds and nanoseconds, of which
  /// 292 years at the most are counted. The old week unit sets `week` and `weekOfYear`. dateByAddingComponents() leads
  /// from `fromDate` back to `toDate`, up to what is smaller than the smallest unit.
  [[nodiscard]] Ref<NSDateComponents> components(NSCalendarUnit units, Date fromDate, Date toDate) const;

  /// The date with these fields. Fields out of range carry over; ones that are not set are their first: 1 for year,
  /// month and day, 0 for the time. Without month and day, a week of the year with a weekday counts; with a month and
  /// without a day, a weekday with its ordinal or week of the month. A time zone among the fields counts in place of
  /// the calendar's.
  [[nodiscard]] Date dateFromComponents(const NSDateComponents& components) const;

  /// The date `value` units later; for 0 exactly `toDate`, whatever it is. A day that a shorter month does not have
  /// becomes the last of that month. `options` must be 0; others raise NSInvalidArgumentException. Era and sums of
  /// units add nothing.
  [[nodiscard]] Date dateByAddingUnit(NSCalendarUnit unit, NSInteger value, Date toDate, NSUInteger options = 0) const;
  /// The same with every field that is set, one after the other, the largest first: a year and a month after
  /// 2020-02-29 is 2021-03-28, because a year after it is 2021-02-28. Time zone and era add nothing.
  [[nodiscard]] Date dateByAddingComponents(const NSDateComponents& components, Date toDate,
                                            NSUInteger options = 0) const;

  /// The numbers that the smaller unit has within the larger one that holds the date: days in a month are {1, 28} to
  /// {1, 31}. {NSNotFound, 0} where the units do not go together.
  [[nodiscard]] NSRange rangeOfUnit(NSCalendarUnit smaller, NSCalendarUnit inUnit, Date forDate) const noexcept;
  /// The place of the smaller unit that holds the date within the larger one, from 1: the day in the year, the day in
  /// the era. Counts within the era go on through zero before year 1, so that differences count units. NSNotFound where
  /// the units do not go together.
  [[nodiscard]] NSInteger ordinalityOfUnit(NSCalendarUnit smaller, NSCalendarUnit inUnit, Date forDate) const noexcept;

  /// The first instant of the date's day, never later than the date: 00:00, or the first time after it where that is
  /// skipped.
  [[nodiscard]] Date startOfDayForDate(Date date) const noexcept;
  /// The date falls on the day of the current date; false where there is no current date.
  [[nodiscard]] bool isDateInToday(Date date) const;

  [[nodiscard]] NSString description() const override;
  /// Equal in identifier, locale, time zone and week.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;

  /// The week as well, where it was set itself.
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
