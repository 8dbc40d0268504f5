#include "NorvikCore/platform/foundation/NSCalendar.h"

#include "NorvikCore/platform/foundation/internal/LocaleData.h"
#include "NorvikCore/platform/foundation/internal/ZoneRules.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/values/CivilDate.h"
#include "NorvikCore/platform/values/Format.h"
#include "NorvikCore/platform/values/NSException.h"

#include <unicode/calendar.h>

#include <cmath>
#include <memory>
#include <utility>

namespace norvik {

constinit const NSString NSGregorianCalendar = "gregorian";
constinit const NSString NSISO8601Calendar = "iso8601";

namespace {

using detail::clamped;
using detail::floorDivide;
using detail::floorModulo;
using detail::saturatedSum;
using detail::secondsPerDay;

constexpr NSInteger undefined = NSUndefinedDateComponent;

/// The product, or the limit of the type that it exceeds.
NSInteger saturatedProduct(NSInteger a, NSInteger b) {
  NSInteger product = 0;
  if (!__builtin_mul_overflow(a, b, &product)) return product;
  return (a < 0) == (b < 0) ? INT64_MAX : INT64_MIN;
}

/// The time between two instants: the seconds from the earlier to the later one, rounded down, and the rest in
/// nanoseconds.
struct Elapsed {
  std::int64_t seconds;
  double nanoseconds;
};

NSInteger orElse(NSInteger value, NSInteger otherwise) { return value == undefined ? otherwise : value; }

/// The fraction of a second that wholeSeconds() cuts off.
double fractionOf(Date date) {
  return detail::instantInRange(date.timeIntervalSinceReferenceDate()) -
         static_cast<double>(detail::wholeSeconds(date));
}

/// Exact, although the difference of the two doubles may be rounded.
Elapsed elapsed(Date earlier, Date later) {
  const std::int64_t seconds = detail::wholeSeconds(later) - detail::wholeSeconds(earlier);
  const double fraction = fractionOf(later) - fractionOf(earlier);
  if (fraction < 0) return {seconds - 1, (fraction + 1) * 1e9};
  return {seconds, fraction * 1e9};
}

Date dateFromLocal(const detail::ZoneRules& zone, std::int64_t localSeconds, double fraction) {
  constexpr std::int64_t bound = maximalReferenceDay * secondsPerDay;
  return Date::fromReferenceSeconds(static_cast<double>(zone.instantOfLocal(clamped(localSeconds, bound))) + fraction);
}

NSInteger eraOfYear(std::int64_t year) { return year > 0 ? 1 : 0; }
NSInteger yearOfEra(std::int64_t year) { return year > 0 ? year : 1 - year; }

/// The week within a month or a year whose first day has the weekday `weekdayOfFirst`, for its day `dayIndex` (0 is the
/// first). Days before the first week are in week 0.
std::int32_t weekWithin(std::int32_t weekdayOfFirst, std::int64_t dayIndex, std::int32_t firstWeekday,
                        std::int32_t minimumDays) {
  const std::int64_t daysBefore = floorModulo(weekdayOfFirst - firstWeekday, 7);
  return static_cast<std::int32_t>((daysBefore + dayIndex) / 7) + (7 - daysBefore >= minimumDays ? 1 : 0);
}

void requireNoOptions(NSUInteger options) {
  if (options != 0) NSException::raise(NSInvalidArgumentException, "the options of a calendar calculation must be 0");
}

}  // namespace

/// The fields of a date in the calendar's time zone.
struct NSCalendar::Fields {
  std::int64_t localSeconds, day;
  std::int32_t secondOfDay;
  double fraction;
  CivilDate date;

  Fields(const detail::ZoneRules& zone, Date instant) noexcept {
    const std::int64_t seconds = detail::wholeSeconds(instant);
    localSeconds = seconds + zone.typeAt(seconds).offset;
    day = clamped(floorDivide(localSeconds, secondsPerDay), maximalReferenceDay);
    secondOfDay = static_cast<std::int32_t>(floorModulo(localSeconds, secondsPerDay));
    fraction = fractionOf(instant);
    date = civilDate(day);
  }
};

NSCalendar::NSCalendar(const NSString& identifier)
    : identifier_(identifier), locale_(NSLocale::systemLocale()), timeZone_(NSTimeZone::defaultTimeZone()) {
  if (identifier == NSISO8601Calendar) {
    firstWeekday_ = 2;
    minimumDays_ = 4;
    firstWeekdayIsSet_ = minimumDaysAreSet_ = true;
  }
  takeWeekFromLocale();
}

NSCalendar::~NSCalendar() = default;

Ref<NSCalendar> NSCalendar::calendarWithIdentifier(const NSString& identifier) {
  if (identifier != NSGregorianCalendar && identifier != NSISO8601Calendar) return nullptr;
  return make<NSCalendar>(identifier);
}

Ref<NSCalendar> NSCalendar::currentCalendar() {
  Ref<NSCalendar> calendar = calendarWithIdentifier(NSGregorianCalendar);
  calendar->setLocale(NSLocale::currentLocale());
  return calendar;
}

void NSCalendar::setLocale(const Ref<NSLocale>& locale) {
  locale_ = locale ? locale : NSLocale::systemLocale();
  takeWeekFromLocale();
}

void NSCalendar::setTimeZone(const Ref<NSTimeZone>& timeZone) {
  timeZone_ = timeZone ? timeZone : NSTimeZone::defaultTimeZone();
}

void NSCalendar::setFirstWeekday(NSUInteger weekday) {
  if (weekday < 1 || weekday > 7)
    NSException::raise(NSInvalidArgumentException, "a weekday is 1 to 7, not " + std::to_string(weekday));
  firstWeekday_ = static_cast<std::int32_t>(weekday);
  firstWeekdayIsSet_ = true;
}

void NSCalendar::setMinimumDaysInFirstWeek(NSUInteger days) {
  if (days < 1 || days > 7)
    NSException::raise(NSInvalidArgumentException,
                       "a first week has at least 1 to 7 days, not " + std::to_string(days));
  minimumDays_ = static_cast<std::int32_t>(days);
  minimumDaysAreSet_ = true;
}

void NSCalendar::takeWeekFromLocale() {
  if (firstWeekdayIsSet_ && minimumDaysAreSet_) return;
  const kernel::ForkHold hold;
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::Calendar> model(icu::Calendar::createInstance(detail::icuLocale(*locale_), status));
  if (U_FAILURE(status)) return;
  if (!firstWeekdayIsSet_) firstWeekday_ = model->getFirstDayOfWeek(status);
  if (!minimumDaysAreSet_) minimumDays_ = model->getMinimalDaysInFirstWeek();
}

NSCalendar::Fields NSCalendar::fields(Date date) const noexcept { return {timeZone_->rules(), date}; }

NSInteger NSCalendar::component(NSCalendarUnit unit, Date date) const noexcept {
  const Fields fields = this->fields(date);
  switch (unit) {
    case NSCalendarUnitEra:
      return eraOfYear(fields.date.year);
    case NSCalendarUnitYear:
      return yearOfEra(fields.date.year);
    case NSCalendarUnitMonth:
      return fields.date.month;
    case NSCalendarUnitDay:
      return fields.date.day;
    case NSCalendarUnitHour:
      return fields.secondOfDay / 3600;
    case NSCalendarUnitMinute:
      return fields.secondOfDay / 60 % 60;
    case NSCalendarUnitSecond:
      return fields.secondOfDay % 60;
    case NSCalendarUnitNanosecond:
      return static_cast<NSInteger>(fields.fraction * 1e9);
    case NSWeekCalendarUnit:
    case NSCalendarUnitWeekOfYear:
      return norvik::weekOfYear(fields.day, firstWeekday_, minimumDays_).week;
    case NSCalendarUnitYearForWeekOfYear:
      return norvik::weekOfYear(fields.day, firstWeekday_, minimumDays_).year;
    case NSCalendarUnitWeekday:
      return norvik::weekday(fields.day);
    case NSCalendarUnitWeekdayOrdinal:
      return (fields.date.day - 1) / 7 + 1;
    case NSCalendarUnitQuarter:
      return (fields.date.month - 1) / 3 + 1;
    case NSCalendarUnitWeekOfMonth:
      return weekWithin(norvik::weekday(fields.day - fields.date.day + 1), fields.date.day - 1, firstWeekday_,
                        minimumDays_);
    case NSCalendarUnitTimeZone:
      break;
  }
  return undefined;
}

Ref<NSDateComponents> NSCalendar::components(NSCalendarUnit units, Date fromDate) const {
  auto components = make<NSDateComponents>();
  for (NSUInteger bit = NSCalendarUnitEra; bit <= NSCalendarUnitNanosecond; bit <<= 1) {
    const auto unit = static_cast<NSCalendarUnit>(bit);
    if (units & bit) components->setValue_forComponent(component(unit, fromDate), unit);
  }
  if (units & NSWeekCalendarUnit) components->setWeekOfYear(components->week());
  if (units & NSCalendarUnitTimeZone) components->setTimeZone(timeZone_);
  return components;
}

Ref<NSDateComponents> NSCalendar::components(NSCalendarUnit units, Date fromDate, Date toDate) const {
  constexpr struct {
    NSCalendarUnit unit;
    double days;  // on average
  } civilSteps[] = {{NSCalendarUnitYear, 365.2425},       {NSCalendarUnitQuarter, 365.2425 / 4},
                    {NSCalendarUnitMonth, 365.2425 / 12}, {NSWeekCalendarUnit, 7},
                    {NSCalendarUnitWeekOfYear, 7},        {NSCalendarUnitDay, 1}};
  constexpr struct {
    NSCalendarUnit unit;
    std::int64_t seconds;
  } passingSteps[] = {{NSCalendarUnitHour, 3600}, {NSCalendarUnitMinute, 60}, {NSCalendarUnitSecond, 1}};
  auto components = make<NSDateComponents>();
  const Date to = Date::fromReferenceSeconds(detail::instantInRange(toDate.timeIntervalSinceReferenceDate()));
  Date from = Date::fromReferenceSeconds(detail::instantInRange(fromDate.timeIntervalSinceReferenceDate()));
  const NSInteger sign = to < from ? -1 : 1;
  const auto passes = [&](Date date) { return sign > 0 ? date > to : date < to; };
  const auto rest = [&] { return sign > 0 ? elapsed(from, to) : elapsed(to, from); };

  // The two names of the week are one unit.
  const bool countsOldWeek = (units & NSWeekCalendarUnit) != 0;
  for (const auto& step : civilSteps) {
    if (!(units & step.unit) || (step.unit == NSCalendarUnitWeekOfYear && countsOldWeek)) continue;
    // An estimate of the number that fits, then the exact number, because the steps differ in length.
    auto count = static_cast<NSInteger>(to.timeIntervalSinceDate(from) / (step.days * secondsPerDay));
    for (int i = 0; i < 4 && count != 0 && passes(addUnit(step.unit, count, from)); ++i) count -= sign;
    // At the end of the calendar another step does not change the date.
    for (Date next = addUnit(step.unit, count + sign, from); !passes(next) && next != addUnit(step.unit, count, from);
         next = addUnit(step.unit, count + sign, from))
      count += sign;
    components->setValue_forComponent(count, step.unit);
    from = addUnit(step.unit, count, from);
  }
  if (countsOldWeek) components->setWeekOfYear(components->week());

  for (const auto& step : passingSteps) {
    if (!(units & step.unit)) continue;
    const NSInteger count = sign * (rest().seconds / step.seconds);
    components->setValue_forComponent(count, step.unit);
    from = addUnit(step.unit, count, from);
  }
  if (units & NSCalendarUnitNanosecond) {
    const Elapsed left = rest();
    NSInteger nanoseconds = std::llround(left.nanoseconds);
    if ((units & NSCalendarUnitSecond) && nanoseconds == 1'000'000'000) nanoseconds -= 1;
    nanoseconds = saturatedSum(saturatedProduct(left.seconds, 1'000'000'000), nanoseconds);
    components->setNanosecond(sign * nanoseconds);
  }
  return components;
}

Date NSCalendar::dateFromComponents(const NSDateComponents& parts) const {
  NSInteger year = orElse(parts.year(), 1);
  if (parts.era() == 0) year = saturatedSum(1, -clamped(year, INT64_MAX));
  const NSInteger month = orElse(parts.month(), 1);
  const NSInteger weekOfYear = orElse(parts.weekOfYear(), parts.week());
  const NSInteger weekday = clamped(orElse(parts.weekday(), firstWeekday_), INT32_MAX);

  std::int64_t day = 0;
  if (parts.day() == undefined && parts.month() == undefined && weekOfYear != undefined) {
    const std::int64_t newYear = normalizedReferenceDay(orElse(parts.yearForWeekOfYear(), year), 1, 1);
    const std::int64_t daysBefore = floorModulo(norvik::weekday(newYear) - firstWeekday_, 7);
    const std::int64_t firstWeek = newYear - daysBefore + (7 - daysBefore >= minimumDays_ ? 0 : 7);
    day = firstWeek + 7 * (clamped(weekOfYear, INT32_MAX) - 1) + floorModulo(weekday - firstWeekday_, 7);
  } else if (parts.day() == undefined && parts.weekday() != undefined && parts.weekdayOrdinal() != undefined) {
    const std::int64_t first = normalizedReferenceDay(year, month, 1);
    day =
        first + floorModulo(weekday - norvik::weekday(first), 7) + 7 * (clamped(parts.weekdayOrdinal(), INT32_MAX) - 1);
  } else if (parts.day() == undefined && parts.weekOfMonth() != undefined) {
    const std::int64_t first = normalizedReferenceDay(year, month, 1);
    const std::int64_t daysBefore = floorModulo(norvik::weekday(first) - firstWeekday_, 7);
    const std::int64_t firstWeek = first - daysBefore + (7 - daysBefore >= minimumDays_ ? 0 : 7);
    day = firstWeek + 7 * (clamped(parts.weekOfMonth(), INT32_MAX) - 1) + floorModulo(weekday - firstWeekday_, 7);
  } else {
    day = normalizedReferenceDay(year, month, orElse(parts.day(), 1));
  }

  std::int64_t seconds = day * secondsPerDay;
  seconds = saturatedSum(seconds, saturatedProduct(orElse(parts.hour(), 0), 3600));
  seconds = saturatedSum(seconds, saturatedProduct(orElse(parts.minute(), 0), 60));
  seconds = saturatedSum(seconds, orElse(parts.second(), 0));
  const NSInteger nanoseconds = orElse(parts.nanosecond(), 0);
  seconds = saturatedSum(seconds, floorDivide(nanoseconds, 1'000'000'000));
  const double fraction = static_cast<double>(floorModulo(nanoseconds, 1'000'000'000)) / 1e9;
  const NSTimeZone& zone = parts.timeZone() ? *parts.timeZone() : *timeZone_;
  return dateFromLocal(zone.rules(), seconds, fraction);
}

Date NSCalendar::addUnit(NSCalendarUnit unit, NSInteger value, Date date) const noexcept {
  if (value == 0) return date;
  const auto passing = [&](double seconds) {
    return date.dateByAddingTimeInterval(static_cast<double>(value) * seconds);
  };
  const auto onDay = [&](const Fields& fields, std::int64_t day) {
    return dateFromLocal(timeZone_->rules(), clamped(day, maximalReferenceDay) * secondsPerDay + fields.secondOfDay,
                         fields.fraction);
  };
  const auto daysLater = [&](NSInteger days) {
    const Fields fields = this->fields(date);
    return onDay(fields, saturatedSum(fields.day, days));
  };
  const auto monthsLater = [&](NSInteger months) {
    const Fields fields = this->fields(date);
    return onDay(fields, addMonths(fields.day, months));
  };
  switch (unit) {
    case NSCalendarUnitYear:
      return monthsLater(saturatedProduct(value, 12));
    case NSCalendarUnitQuarter:
      return monthsLater(saturatedProduct(value, 3));
    case NSCalendarUnitMonth:
      return monthsLater(value);
    case NSWeekCalendarUnit:
    case NSCalendarUnitWeekOfYear:
    case NSCalendarUnitWeekOfMonth:
    case NSCalendarUnitWeekdayOrdinal:
      return daysLater(saturatedProduct(value, 7));
    case NSCalendarUnitDay:
    case NSCalendarUnitWeekday:
      return daysLater(value);
    case NSCalendarUnitYearForWeekOfYear: {  // the same week, or the last one of a year that has fewer weeks
      const Fields fields = this->fields(date);
      const CivilWeek week = norvik::weekOfYear(fields.day, firstWeekday_, minimumDays_);
      const std::int64_t year = clamped(saturatedSum(week.year, value), 95'000'000);
      const std::int64_t lastDay = referenceDay(year, 12, 31);
      const CivilWeek last = norvik::weekOfYear(lastDay, firstWeekday_, minimumDays_);
      const std::int32_t weeks =
          last.year == year ? last.week : norvik::weekOfYear(lastDay - 7, firstWeekday_, minimumDays_).week;
      const std::int64_t anyDay = referenceDay(year, 1, 7);
      const std::int64_t inFirstWeek = anyDay - 7 * (norvik::weekOfYear(anyDay, firstWeekday_, minimumDays_).week - 1);
      const std::int64_t start = inFirstWeek - floorModulo(norvik::weekday(inFirstWeek) - firstWeekday_, 7);
      const std::int64_t weekdayIndex = floorModulo(norvik::weekday(fields.day) - firstWeekday_, 7);
      return onDay(fields, start + 7 * ((week.week < weeks ? week.week : weeks) - 1) + weekdayIndex);
    }
    case NSCalendarUnitHour:
      return passing(3600);
    case NSCalendarUnitMinute:
      return passing(60);
    case NSCalendarUnitSecond:
      return passing(1);
    case NSCalendarUnitNanosecond: {
      // Seconds and fraction are added separately, so that the sum is rounded once.
      const std::int64_t seconds = detail::wholeSeconds(date) + floorDivide(value, 1'000'000'000);
      const double fraction = static_cast<double>(floorModulo(value, 1'000'000'000)) / 1e9;
      return Date::fromReferenceSeconds(static_cast<double>(seconds) + (fractionOf(date) + fraction));
    }
    case NSCalendarUnitEra:
    case NSCalendarUnitTimeZone:
      break;
  }
  return date;
}

Date NSCalendar::dateByAddingUnit(NSCalendarUnit unit, NSInteger value, Date toDate, NSUInteger options) const {
  requireNoOptions(options);
  return addUnit(unit, value, toDate);
}

Date NSCalendar::dateByAddingComponents(const NSDateComponents& parts, Date toDate, NSUInteger options) const {
  requireNoOptions(options);
  const std::pair<NSCalendarUnit, NSInteger> fields[] = {
      {NSCalendarUnitYear, parts.year()},
      {NSCalendarUnitYearForWeekOfYear, parts.yearForWeekOfYear()},
      {NSCalendarUnitQuarter, parts.quarter()},
      {NSCalendarUnitMonth, parts.month()},
      {NSCalendarUnitWeekOfYear, orElse(parts.weekOfYear(), parts.week())},
      {NSCalendarUnitWeekOfMonth, parts.weekOfMonth()},
      {NSCalendarUnitWeekdayOrdinal, parts.weekdayOrdinal()},
      {NSCalendarUnitDay, parts.day()},
      {NSCalendarUnitWeekday, parts.weekday()},
      {NSCalendarUnitHour, parts.hour()},
      {NSCalendarUnitMinute, parts.minute()},
      {NSCalendarUnitSecond, parts.second()},
      {NSCalendarUnitNanosecond, parts.nanosecond()},
  };
  Date date = toDate;
  for (const auto& [unit, value] : fields) date = addUnit(unit, orElse(value, 0), date);
  return date;
}

NSRange NSCalendar::rangeOfUnit(NSCalendarUnit smaller, NSCalendarUnit inUnit, Date forDate) const noexcept {
  constexpr NSRange none{NSNotFound, 0};
  const Fields fields = this->fields(forDate);
  const std::int64_t year = fields.date.year;
  const auto count = [](std::int64_t number) { return NSRange{1, static_cast<NSUInteger>(number)}; };
  const NSCalendarUnit larger = inUnit == NSWeekCalendarUnit ? NSCalendarUnitWeekOfYear : inUnit;
  const bool inWeek = larger == NSCalendarUnitWeekOfYear || larger == NSCalendarUnitWeekOfMonth;
  const bool inDay = larger == NSCalendarUnitDay || larger == NSCalendarUnitWeekday;
  const std::int32_t daysOfMonth = daysInMonth(year, fields.date.month);
  switch (smaller) {
    case NSCalendarUnitMonth:
      if (larger == NSCalendarUnitYear) return count(12);
      if (larger == NSCalendarUnitQuarter) return {static_cast<NSUInteger>((fields.date.month - 1) / 3 * 3 + 1), 3};
      return none;
    case NSCalendarUnitQuarter:
      return larger == NSCalendarUnitYear ? count(4) : none;
    case NSCalendarUnitDay: {
      if (larger == NSCalendarUnitMonth) return count(daysOfMonth);
      if (larger == NSCalendarUnitYear) return count(isLeapYear(year) ? 366 : 365);
      if (larger != NSCalendarUnitQuarter) return none;
      const std::int32_t first = (fields.date.month - 1) / 3 * 3 + 1;
      return count(daysInMonth(year, first) + daysInMonth(year, first + 1) + daysInMonth(year, first + 2));
    }
    case NSCalendarUnitWeekday:
      return inWeek || larger == NSCalendarUnitMonth || larger == NSCalendarUnitYear ? count(7) : none;
    case NSCalendarUnitWeekdayOrdinal:
      return larger == NSCalendarUnitMonth ? count((daysOfMonth + 6) / 7) : none;
    case NSCalendarUnitWeekOfMonth: {
      if (larger != NSCalendarUnitMonth) return none;
      const std::int32_t weekdayOfFirst = norvik::weekday(fields.day - fields.date.day + 1);
      const std::int32_t first = weekWithin(weekdayOfFirst, 0, firstWeekday_, minimumDays_);
      const std::int32_t last = weekWithin(weekdayOfFirst, daysOfMonth - 1, firstWeekday_, minimumDays_);
      return {static_cast<NSUInteger>(first), static_cast<NSUInteger>(last - first + 1)};
    }
    case NSWeekCalendarUnit:
    case NSCalendarUnitWeekOfYear: {
      if (larger != NSCalendarUnitYear && larger != NSCalendarUnitYearForWeekOfYear) return none;
      const std::int64_t weekYear =
          larger == NSCalendarUnitYear ? year : norvik::weekOfYear(fields.day, firstWeekday_, minimumDays_).year;
      const std::int64_t lastDay = referenceDay(weekYear, 12, 31);
      const CivilWeek last = norvik::weekOfYear(lastDay, firstWeekday_, minimumDays_);
      return count(last.year == weekYear ? last.week
                                         : norvik::weekOfYear(lastDay - 7, firstWeekday_, minimumDays_).week);
    }
    case NSCalendarUnitHour:
      return inDay ? NSRange{0, 24} : none;
    case NSCalendarUnitMinute:
      return larger == NSCalendarUnitHour ? NSRange{0, 60} : none;
    case NSCalendarUnitSecond:
      return larger == NSCalendarUnitMinute ? NSRange{0, 60} : none;
    case NSCalendarUnitNanosecond:
      return larger == NSCalendarUnitSecond ? NSRange{0, 1'000'000'000} : none;
    case NSCalendarUnitEra:
    case NSCalendarUnitYear:
    case NSCalendarUnitYearForWeekOfYear:
    case NSCalendarUnitTimeZone:
      break;
  }
  return none;
}

NSInteger NSCalendar::ordinalityOfUnit(NSCalendarUnit smaller, NSCalendarUnit inUnit, Date forDate) const noexcept {
  constexpr auto none = static_cast<NSInteger>(NSNotFound);
  const Fields fields = this->fields(forDate);
  const std::int64_t year = fields.date.year;
  const NSInteger weekdayIndex = floorModulo(norvik::weekday(fields.day) - firstWeekday_, 7);
  const NSInteger weekOfMonth = component(NSCalendarUnitWeekOfMonth, forDate);
  const NSInteger monthOfQuarter = (fields.date.month - 1) % 3 + 1;

  // The start of the larger unit, in local seconds.
  std::int64_t start = 0;
  switch (inUnit) {
    case NSCalendarUnitEra:
      start = referenceDay(1, 1, 1) * secondsPerDay;
      if (smaller == NSCalendarUnitYear) return year;
      if (smaller == NSCalendarUnitQuarter) return (year - 1) * 4 + (fields.date.month - 1) / 3 + 1;
      if (smaller == NSCalendarUnitMonth) return (year - 1) * 12 + fields.date.month;
      break;
    case NSCalendarUnitYear:
      start = referenceDay(year, 1, 1) * secondsPerDay;
      if (smaller == NSCalendarUnitQuarter) return (fields.date.month - 1) / 3 + 1;
      if (smaller == NSCalendarUnitMonth) return fields.date.month;
      if (smaller == NSCalendarUnitWeekOfYear || smaller == NSWeekCalendarUnit)
        return component(NSCalendarUnitWeekOfYear, forDate);
      if (smaller == NSCalendarUnitWeekday || smaller == NSCalendarUnitWeekdayOrdinal)
        return (dayOfYear(fields.day) - 1) / 7 + 1;
      break;
    case NSCalendarUnitQuarter:
      start = referenceDay(year, (fields.date.month - 1) / 3 * 3 + 1, 1) * secondsPerDay;
      if (smaller == NSCalendarUnitMonth) return monthOfQuarter;
      break;
    case NSCalendarUnitMonth:
      start = (fields.day - fields.date.day + 1) * secondsPerDay;
      if (smaller == NSCalendarUnitWeekOfMonth) return weekOfMonth;
      if (smaller == NSCalendarUnitWeekday || smaller == NSCalendarUnitWeekdayOrdinal)
        return (fields.date.day - 1) / 7 + 1;
      break;
    case NSWeekCalendarUnit:
    case NSCalendarUnitWeekOfYear:
    case NSCalendarUnitWeekOfMonth:
      start = (fields.day - weekdayIndex) * secondsPerDay;
      if (smaller == NSCalendarUnitWeekday) return weekdayIndex + 1;
      break;
    case NSCalendarUnitDay:
    case NSCalendarUnitWeekday:
      start = fields.day * secondsPerDay;
      if (smaller == NSCalendarUnitDay) return none;
      break;
    case NSCalendarUnitHour:
      start = fields.localSeconds - fields.secondOfDay % 3600;
      if (smaller == NSCalendarUnitDay || smaller == NSCalendarUnitHour) return none;
      break;
    case NSCalendarUnitMinute:
      start = fields.localSeconds - fields.secondOfDay % 60;
      if (smaller != NSCalendarUnitSecond) return none;
      break;
    default:
      return none;
  }
  const std::int64_t seconds = fields.day * secondsPerDay + fields.secondOfDay - start;
  switch (smaller) {
    case NSCalendarUnitDay:
      return floorDivide(seconds, secondsPerDay) + 1;
    case NSCalendarUnitHour:
      return floorDivide(seconds, 3600) + 1;
    case NSCalendarUnitMinute:
      return floorDivide(seconds, 60) + 1;
    case NSCalendarUnitSecond:
      return seconds + 1;
    default:
      return none;
  }
}

Date NSCalendar::startOfDayForDate(Date date) const noexcept {
  const std::int64_t start = timeZone_->rules().startOfLocalDay(fields(date).day * secondsPerDay);
  return Date::fromReferenceSeconds(static_cast<double>(start));
}

bool NSCalendar::isDateInToday(Date date) const {
  const std::optional<Date> now = NSDate::date();
  return now && fields(*now).day == fields(date).day;
}

NSString NSCalendar::description() const {
  return stringWithFormat("<NSCalendar: %@, locale %@, time zone %@>", identifier_, locale_->localeIdentifier(),
                          timeZone_->name());
}

bool NSCalendar::isEqual(const NSObject& other) const {
  const auto* calendar = dynamic_cast<const NSCalendar*>(&other);
  return calendar && identifier_ == calendar->identifier_ && locale_->isEqual(*calendar->locale_) &&
         timeZone_->isEqual(*calendar->timeZone_) && firstWeekday_ == calendar->firstWeekday_ &&
         minimumDays_ == calendar->minimumDays_;
}

std::size_t NSCalendar::hash() const { return timeZone_->hash() * 31 + locale_->hash(); }

void NSCalendar::encodeWithCoder(NSCoder& coder) const {
  coder.encodeObject(identifier_, "identifier");
  coder.encodeObject(locale_, "locale");
  coder.encodeObject(timeZone_, "timeZone");
  if (firstWeekdayIsSet_) coder.encodeInteger(firstWeekday_, "firstWeekday");
  if (minimumDaysAreSet_) coder.encodeInteger(minimumDays_, "minimumDaysInFirstWeek");
}

Ref<NSCalendar> NSCalendar::calendarWithCoder(NSCoder& coder) {
  const Ref<NSCalendar> calendar = calendarWithIdentifier(coder.decode<NSString>("identifier"));
  if (!calendar) NSException::raise(NSInvalidUnarchiveOperationException, "there is no calendar of that identifier");
  calendar->setLocale(coder.decode<Ref<NSLocale>>("locale"));
  calendar->setTimeZone(coder.decode<Ref<NSTimeZone>>("timeZone"));
  if (const auto weekday = coder.decode<std::optional<NSUInteger>>("firstWeekday")) calendar->setFirstWeekday(*weekday);
  if (const auto days = coder.decode<std::optional<NSUInteger>>("minimumDaysInFirstWeek")) {
    calendar->setMinimumDaysInFirstWeek(*days);
  }
  return calendar;
}

}  // namespace norvik
