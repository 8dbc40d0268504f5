// NorvikCore/platform/foundation/NSDateFormatter.h - formats dates by a pattern or by a locale's style, and reads them
// back.
//
//   auto formatter = make<NSDateFormatter>();
//   formatter->setLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
//   formatter->setTimeZone(NSTimeZone::timeZoneWithName("Europe/London"));
//   formatter->setDateFormat("EEEE d MMMM yyyy, HH:mm");
//   formatter->stringFromDate("2021-07-01"_date);                         // "Thursday 1 July 2021, 01:00"
//   formatter->dateFromString("Thursday 1 July 2021, 01:00");             // 2021-07-01 00:00:00 +0000
//
// Patterns are those of Unicode's locale data (yyyy is the year, YYYY the year that the week belongs to). The Gregorian
// calendar is used for all times, also before 1582. Times are truncated to milliseconds; a time that falls short of a
// millisecond only by the rounding error of a double shows that millisecond. Years beyond 5.8 million are shown as the
// last date that ICU can format.
//
// Reading succeeds only if the whole text is a date. A field that the pattern does not have is taken from 2000-01-01
// 00:00:00. A weekday without a day means the first such day.
//
// Strict reading is the default. It accepts a text only if the pattern writes that text for some date: spaces, signs
// and the case of letters must be those of the pattern, and fields must not contradict each other. "31/02/2021" is
// refused, and so is "Tuesday 10 May 2021", because that day is a Monday. Without the year, "Tuesday 10 May" is
// accepted as a date of 2000, because the pattern writes that text in other years; the same holds for weeks. Two texts
// are accepted although no date is written that way: a local time that the zone skips, which is read as that much
// later, and the name of the zone's other season. If S or A occurs twice, the last one counts.
//
// Lenient reading (see setLenient) accepts what a clerk types. A text that strict reading accepts gives the same date
// in both modes. Fields out of range carry over (31/02 is 3 March), except hours above 24. Weekdays, weeks and quarters
// are not checked if the text has a full date. The half of the day is checked: "13:15 pm" is accepted, "13:15 am" is
// refused. Case and additional spaces are ignored. A sign may be replaced by another sign or a space: dd/MM/yyyy
// accepts 10.5.2021, 10-05-2021 and 10 5 2021. A sign between a digit and a letter may be missing.
//
//   letters          strict                                          lenient
//   d M L D H h K k  as many digits as letters, more only without    any number of digits that the field can need (2
//   m s w W F e c    a leading zero (dd: "05", d: "5"), all of       for d, 3 for D) or the pattern has, the locale's
//   Q q g A          them the locale's digits                        or 0 to 9; h takes 13 to 24, M names of months
//   y u U r Y        the same, at least four digits: the year 21     two digits: 1950 to 2049; four or more: the year
//                    is "0021" for yyyy, "21" is refused             itself; one or three are refused
//                    and so is 0 except for u and r                  and so is 0 except for u and r
//   yy YY            two digits: 1950 to 2049                        the same as y
//   y beside G       the same as d: "44 BC"                          any number of digits
//   S                as many digits as letters                       1 to 18 digits
//   MMM EEE QQQ a b  the locale's name of that width; a name that    a name of any width, the first letters, three or
//   B G and wider    several share (MMMMM) is only checked           more, of one month or weekday; months by number
//   Z X x            the written form; "+00:00" also instead of      any such form, with or without colon and minutes,
//                    "Z", but never "-00:00"                         "-00:00", "GMT" and "UTC"
//   z v V O ZZZZ     the zone's name as the pattern writes it in     a name in any form that ICU knows
//                    one of its seasons, if ICU reads it; UTC's
//
// If numbers follow each other without a separator (yyyyMMdd), each but the first has as many digits as letters, and
// the first one has the remaining digits. A pattern with more than nine letters of one field (S, A: eighteen) reads
// nothing.
//
// Threads: confined; distinct formatters are independent. A setting takes effect with the next text.
// Cost:    patterns of digits and of the names of months, weekdays, quarters, halves of the day and eras ("EEE d MMM
//          yyyy HH:mm") take some tens of nanoseconds per text; the names are looked up once per locale. Patterns with
//          names of zones need an ICU formatter, which takes tens of microseconds to create: keep the formatter.
//          Reading takes time linear in the text; the first text after a change of settings also includes the look-up
//          of the pattern's names.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/foundation/NSCalendar.h"
#include "NorvikCore/platform/foundation/NSFormatter.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/object/NSCoder.h"

#include <optional>
#include <string>

namespace norvik {

enum NSDateFormatterStyle : unsigned {
  NSDateFormatterNoStyle = 0,
  NSDateFormatterShortStyle = 1,   ///< in en_GB "10/05/2021" and "13:14"
  NSDateFormatterMediumStyle = 2,  ///< "10 May 2021" and "13:14:15"
  NSDateFormatterLongStyle = 3,    ///< "10 May 2021" and "13:14:15 BST"
  NSDateFormatterFullStyle = 4     ///< "Monday, 10 May 2021" and "13:14:15 British Summer Time"
};

enum NSDateFormatterBehavior : unsigned {
  NSDateFormatterBehaviorDefault = 0,
  NSDateFormatterBehavior10_0 = 1000,
  NSDateFormatterBehavior10_4 = 1040
};

class NK_EXPORT NSDateFormatter : public NSFormatter, public NSCoding {
  NK_OBJECT(NSDateFormatter, NSFormatter)
  NK_CODING

  /// No pattern and no style, which gives empty texts; the user's locale, the default time zone and the locale's
  /// calendar.
  NSDateFormatter();
  ~NSDateFormatter() override;

  /// The date in the user's locale and the default time zone.
  [[nodiscard]] static NSString localizedStringFromDate(Date date, NSDateFormatterStyle dateStyle,
                                                        NSDateFormatterStyle timeStyle);

  [[nodiscard]] NSString stringFromDate(Date date) const;
  /// Appends that text as UTF-8. For successive dates: another time of the same second takes a few nanoseconds.
  void appendStringFromDate(Date date, std::string& text) const;
  /// Absent if the text is not a date in the pattern, or if the pattern has letters without a meaning.
  [[nodiscard]] std::optional<Date> dateFromString(const NSString& text) const;

  /// Dates only; absent for any other value.
  [[nodiscard]] std::optional<NSString> stringForObjectValue(const Value& value) const override;
  [[nodiscard]] bool getObjectValue_forString_errorDescription(Value& value, const NSString& text,
                                                               NSString* error = nullptr) const override;

  /// The pattern in use: the one that was set, or that of the styles in the locale.
  [[nodiscard]] NSString dateFormat() const;
  /// Replaces the styles, which become NSDateFormatterNoStyle.
  void setDateFormat(const NSString& pattern);
  [[nodiscard]] NSDateFormatterStyle dateStyle() const noexcept { return dateStyle_; }
  /// Replaces a pattern that was set.
  void setDateStyle(NSDateFormatterStyle style);
  [[nodiscard]] NSDateFormatterStyle timeStyle() const noexcept { return timeStyle_; }
  /// Replaces a pattern that was set.
  void setTimeStyle(NSDateFormatterStyle style);

  [[nodiscard]] const Ref<NSLocale>& locale() const noexcept { return locale_; }
  /// An empty Ref means the user's locale.
  void setLocale(const Ref<NSLocale>& locale);
  [[nodiscard]] const Ref<NSTimeZone>& timeZone() const noexcept { return timeZone_; }
  /// An empty Ref means the present default time zone.
  void setTimeZone(const Ref<NSTimeZone>& timeZone);
  /// The calendar that was set, or a new one of the formatter's locale and time zone.
  [[nodiscard]] Ref<NSCalendar> calendar() const;
  /// The formatter uses the calendar's week settings only. Later changes of the calendar have no effect. An empty Ref
  /// means the locale's calendar.
  void setCalendar(const Ref<NSCalendar>& calendar);

  [[nodiscard]] bool lenient() const noexcept { return lenient_; }
  void setLenient(bool lenient);
  /// Stored and returned only: the formatter always behaves as 10.4.
  [[nodiscard]] NSDateFormatterBehavior formatterBehavior() const noexcept { return behavior_; }
  void setFormatterBehavior(NSDateFormatterBehavior behavior) noexcept { behavior_ = behavior; }

  /// All settings. If styles are set, the pattern is that of the locale data where they are decoded.
  void encodeWithCoder(NSCoder& coder) const override;
  bool initWithCoder(NSCoder& coder) override;

 private:
  struct Engine;

  [[nodiscard]] Engine& engine() const;

  NSString pattern_;
  NSDateFormatterStyle dateStyle_ = NSDateFormatterNoStyle, timeStyle_ = NSDateFormatterNoStyle;
  Ref<NSLocale> locale_;
  Ref<NSTimeZone> timeZone_;
  Ref<NSCalendar> calendar_;
  bool lenient_ = false;
  NSDateFormatterBehavior behavior_ = NSDateFormatterBehaviorDefault;
  mutable detail::Hidden<Engine> engine_;  // built from the settings above when needed
};

}  // namespace norvik
