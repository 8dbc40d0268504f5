// Compares fields of dates and steps from them with ICU's calendar: all days from 1970 to 2037 in zones whose clocks
// change by an hour, by half an hour, in the other half of the year, or never.
#include "NorvikCore/platform/foundation/NSCalendar.h"

#include "NorvikCore/platform/foundation/internal/ZoneRules.h"
#include "NorvikCore/platform/values/CivilDate.h"

#include <gtest/gtest.h>
#include <unicode/gregocal.h>
#include <unicode/strenum.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <tuple>
#include <vector>

using namespace norvik;

namespace {

constexpr struct {
  NSCalendarUnit unit;
  UCalendarDateFields field;
  int icusFirst;  ///< the first value in ICU if this library counts from 1
} fields[] = {{NSCalendarUnitYear, UCAL_YEAR, 1},
              {NSCalendarUnitMonth, UCAL_MONTH, 0},
              {NSCalendarUnitDay, UCAL_DATE, 1},
              {NSCalendarUnitHour, UCAL_HOUR_OF_DAY, 1},
              {NSCalendarUnitMinute, UCAL_MINUTE, 1},
              {NSCalendarUnitSecond, UCAL_SECOND, 1},
              {NSCalendarUnitWeekday, UCAL_DAY_OF_WEEK, 1},
              {NSCalendarUnitWeekdayOrdinal, UCAL_DAY_OF_WEEK_IN_MONTH, 1},
              {NSCalendarUnitWeekOfMonth, UCAL_WEEK_OF_MONTH, 1},
              {NSCalendarUnitWeekOfYear, UCAL_WEEK_OF_YEAR, 1},
              {NSCalendarUnitYearForWeekOfYear, UCAL_YEAR_WOY, 1}};

constexpr struct {
  NSCalendarUnit unit;
  UCalendarDateFields field;
  int most;
} steps[] = {{NSCalendarUnitYear, UCAL_YEAR, 30},        {NSCalendarUnitMonth, UCAL_MONTH, 400},
             {NSCalendarUnitWeekOfYear, UCAL_DATE, 400}, {NSCalendarUnitDay, UCAL_DATE, 400},
             {NSCalendarUnitHour, UCAL_HOUR, 4000},      {NSCalendarUnitMinute, UCAL_MINUTE, 4000}};

using Place = std::tuple<const char*, const char*>;  // time zone and locale

class NSCalendarProperty : public testing::TestWithParam<Place> {
 protected:
  NSCalendarProperty() {
    const auto [zone, locale] = GetParam();
    calendar_->setTimeZone(NSTimeZone::timeZoneWithName(zone));
    calendar_->setLocale(NSLocale::localeWithLocaleIdentifier(locale));
    UErrorCode status = U_ZERO_ERROR;
    model_ = std::make_unique<icu::GregorianCalendar>(icu::TimeZone::createTimeZone(zone), icu::Locale(locale), status);
    EXPECT_TRUE(U_SUCCESS(status));
  }

  /// Half of the dates are on a full or half hour, when clocks change.
  Date anyDate() {
    std::uniform_int_distribution<std::int64_t> seconds(0, 2'145'916'799);
    const std::int64_t since1970 = seconds(random_);
    return Date::dateWithTimeIntervalSince1970(
        static_cast<double>(random_() % 2 == 0 ? since1970 : since1970 / 1800 * 1800));
  }
  int upTo(int most) { return std::uniform_int_distribution<int>(-most, most)(random_); }

  void setModel(Date date) {
    UErrorCode status = U_ZERO_ERROR;
    model_->setTime(date.timeIntervalSince1970() * 1000, status);
    ASSERT_TRUE(U_SUCCESS(status));
  }
  int modelsField(UCalendarDateFields field) {
    UErrorCode status = U_ZERO_ERROR;
    const int value = model_->get(field, status);
    EXPECT_TRUE(U_SUCCESS(status));
    return value;
  }
  /// The local time in the model. If a local time occurs twice, calendar and model may mean different instants.
  std::string modelsClock() {
    std::string text;
    for (const auto field : {UCAL_YEAR, UCAL_MONTH, UCAL_DATE, UCAL_HOUR_OF_DAY, UCAL_MINUTE, UCAL_SECOND})
      text += std::to_string(modelsField(field) + (field == UCAL_MONTH ? 1 : 0)) + " ";
    return text;
  }
  std::string clock(Date date) const {
    std::string text;
    for (const auto unit : {NSCalendarUnitYear, NSCalendarUnitMonth, NSCalendarUnitDay, NSCalendarUnitHour,
                            NSCalendarUnitMinute, NSCalendarUnitSecond})
      text += std::to_string(calendar_->component(unit, date)) + " ";
    return text;
  }

  Ref<NSCalendar> calendar_ = NSCalendar::calendarWithIdentifier(NSGregorianCalendar);
  std::unique_ptr<icu::GregorianCalendar> model_;
  std::mt19937_64 random_{1847};
};

TEST_P(NSCalendarProperty, FieldsAreTheModels) {
  for (int i = 0; i < 5000; ++i) {
    const Date date = anyDate();
    setModel(date);
    for (const auto& field : fields)
      ASSERT_EQ(calendar_->component(field.unit, date), modelsField(field.field) + 1 - field.icusFirst)
          << date << " unit " << field.unit;
    ASSERT_EQ(calendar_->ordinalityOfUnit(NSCalendarUnitDay, NSCalendarUnitYear, date), modelsField(UCAL_DAY_OF_YEAR))
        << date;
  }
}

TEST_P(NSCalendarProperty, StepsLeadWhereTheModelsLead) {
  for (int i = 0; i < 5000; ++i) {
    const Date date = anyDate();
    for (const auto& step : steps) {
      const int count = upTo(step.most);
      setModel(date);
      UErrorCode status = U_ZERO_ERROR;
      model_->add(step.field, step.unit == NSCalendarUnitWeekOfYear ? 7 * count : count, status);
      ASSERT_TRUE(U_SUCCESS(status));
      ASSERT_EQ(clock(calendar_->dateByAddingUnit(step.unit, count, date)), modelsClock())
          << date << " and " << count << " of unit " << step.unit;
    }
  }
}

TEST_P(NSCalendarProperty, DaysStartWhenTheModelsStart) {
  for (int i = 0; i < 5000; ++i) {
    const Date date = anyDate();
    setModel(date);
    for (const auto field : {UCAL_HOUR_OF_DAY, UCAL_MINUTE, UCAL_SECOND}) model_->set(field, 0);
    ASSERT_EQ(clock(calendar_->startOfDayForDate(date)), modelsClock()) << date;
  }
}

TEST_P(NSCalendarProperty, DifferencesAddedLeadBack) {
  constexpr NSCalendarUnit units[] = {NSCalendarUnitYear, NSCalendarUnitQuarter,    NSCalendarUnitMonth,
                                      NSWeekCalendarUnit, NSCalendarUnitWeekOfYear, NSCalendarUnitDay,
                                      NSCalendarUnitHour, NSCalendarUnitMinute,     NSCalendarUnitSecond};
  for (int i = 0; i < 20'000; ++i) {
    const Date from = anyDate();
    Date to = i % 3 == 0 ? from.dateByAddingTimeInterval(upTo(200'000)) : anyDate();
    if (i % 4 == 0) to = to.dateByAddingTimeInterval(upTo(1000) / 1000.0);
    NSCalendarUnit wanted = NSCalendarUnitNanosecond;
    for (const NSCalendarUnit unit : units) {
      if (random_() % 2 == 0) wanted = wanted | unit;
    }
    // A count of nanoseconds alone is limited to 292 years.
    const Ref<NSDateComponents> between = calendar_->components(wanted, from, to);
    ASSERT_EQ(calendar_->dateByAddingComponents(*between, from), to) << from << " to " << to << ' ' << wanted;
    Date oneByOne = from;
    for (const NSCalendarUnit unit : units) {
      if ((wanted & unit) == 0 || (unit == NSCalendarUnitWeekOfYear && (wanted & NSWeekCalendarUnit))) continue;
      const NSInteger count = between->valueForComponent(unit);
      ASSERT_TRUE(to < from ? count <= 0 : count >= 0) << from << " to " << to << ' ' << wanted;
      oneByOne = calendar_->dateByAddingUnit(unit, count, oneByOne);
    }
    oneByOne = calendar_->dateByAddingUnit(NSCalendarUnitNanosecond, between->nanosecond(), oneByOne);
    ASSERT_EQ(oneByOne, to) << from << " to " << to << ' ' << wanted;
  }
}

TEST_P(NSCalendarProperty, DifferencesFromMonthEndsLeadBack) {
  const auto all = NSCalendarUnitYear | NSCalendarUnitMonth | NSCalendarUnitDay | NSCalendarUnitSecond;
  const std::int64_t leapDay = referenceDay(2020, 2, 29);
  for (std::int64_t day = leapDay - 1600; day <= leapDay + 1600; ++day) {
    for (const std::int64_t from : {leapDay, leapDay - 29, leapDay + 31}) {
      const Date a = dateFromReferenceDay(from), b = dateFromReferenceDay(day);
      ASSERT_EQ(calendar_->dateByAddingComponents(*calendar_->components(all, a, b), a), b) << a << " to " << b;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Places, NSCalendarProperty,
                         testing::Values(Place("UTC", "en_GB"), Place("Europe/London", "en_GB"),
                                         Place("America/New_York", "en_US"), Place("Australia/Lord_Howe", "en_AU"),
                                         Place("Asia/Kathmandu", "ar_EG")));

/// The first second at which clocks show the same day as at the instant: the earliest of all candidates, which are the
/// changes nearby and all instants that could be a midnight.
std::int64_t slowStartOfDay(const detail::ZoneRules& rules, std::int64_t instant) {
  constexpr std::int64_t reach = 3 * detail::secondsPerDay;
  const auto dayAt = [&](std::int64_t at) {
    return detail::floorDivide(at + rules.typeAt(at).offset, detail::secondsPerDay);
  };
  const std::int64_t day = dayAt(instant);
  std::vector<std::int64_t> candidates;
  for (std::int64_t at = instant - reach; at <= instant + reach;) {
    const detail::ZoneSpan span = rules.spanAt(at);
    candidates.push_back(span.from);
    candidates.push_back(day * detail::secondsPerDay - span.type->offset);
    if (span.until == INT64_MAX) break;
    at = span.until;
  }
  std::int64_t first = instant;
  for (const std::int64_t candidate : candidates) {
    if (candidate > instant - reach && candidate < first && dayAt(candidate) == day) first = candidate;
  }
  return first;
}

TEST(NSCalendarZones, EveryDayNearEveryChangeOfEveryZoneStartsAtItsFirstInstant) {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::StringEnumeration> names(icu::TimeZone::createEnumeration(status));
  ASSERT_TRUE(U_SUCCESS(status));
  const Ref<NSCalendar> calendar = NSCalendar::calendarWithIdentifier(NSGregorianCalendar);
  std::int64_t checked = 0;
  while (const char* name = names->next(nullptr, status)) {
    const Ref<NSTimeZone> zone = NSTimeZone::timeZoneWithName(name);
    if (!zone) continue;
    calendar->setTimeZone(zone);
    const detail::ZoneRules& rules = zone->rules();
    std::vector<std::int64_t> changes = rules.instants();
    std::int64_t at = referenceDay(2039, 1, 1) * detail::secondsPerDay;
    for (int later = 0; later < 6; ++later) {
      const auto next = rules.nextChangeAfter(at);
      if (!next) break;
      changes.push_back(at = *next);
    }
    for (const std::int64_t change : changes) {
      if (change < -detail::secondsPerDay * 100'000) continue;  // before clocks existed
      for (const std::int64_t distance : {-90'000, -3601, -1, 0, 1, 1799, 3600, 40'000, 90'000}) {
        const std::int64_t instant = change + distance;
        const Date date = Date::fromReferenceSeconds(static_cast<double>(instant) + 0.5);
        const Date start = calendar->startOfDayForDate(date);
        ASSERT_EQ(start, Date::fromReferenceSeconds(static_cast<double>(slowStartOfDay(rules, instant))))
            << name << ' ' << date;
        ASSERT_LE(start, date) << name;
        ++checked;
      }
    }
  }
  EXPECT_GT(checked, 400'000);
}

}  // namespace
