#include "NorvikCore/platform/foundation/NSDateComponents.h"
#include "NorvikCore/platform/foundation/NSCalendar.h"
#include "NorvikCore/platform/foundation/NSTimeZone.h"

#include <gtest/gtest.h>

namespace norvik {
namespace {

TEST(NSDateComponents, HeaderExample) {
  const auto calendar = NSCalendar::calendarWithIdentifier(NSGregorianCalendar);
  calendar->setTimeZone(NSTimeZone::timeZoneForSecondsFromGMT(0));
  auto parts = make<NSDateComponents>();
  parts->setYear(2021);
  parts->setMonth(5);
  EXPECT_EQ(calendar->dateFromComponents(*parts).description(), "2021-05-01 00:00:00 +0000");
}

TEST(NSDateComponents, NoFieldIsSetAtFirst) {
  const auto parts = make<NSDateComponents>();
  for (NSUInteger bit = NSCalendarUnitEra; bit <= NSCalendarUnitNanosecond; bit <<= 1)
    EXPECT_EQ(parts->valueForComponent(static_cast<NSCalendarUnit>(bit)), NSUndefinedDateComponent) << bit;
  EXPECT_FALSE(parts->timeZone());
  EXPECT_EQ(parts->description(), "<NSDateComponents:>");
}

TEST(NSDateComponents, FieldsAreFoundByUnitNameAndAccessor) {
  const auto parts = make<NSDateComponents>();
  parts->setYear(2021);
  parts->setValue_forComponent(5, NSCalendarUnitMonth);
  parts->setValue_forKey(19, "weekOfYear");
  EXPECT_EQ(parts->valueForComponent(NSCalendarUnitYear), 2021);
  EXPECT_EQ(parts->month(), 5);
  EXPECT_EQ(parts->weekOfYear(), 19);
  EXPECT_EQ(parts->valueForKey("month"), Value(5));
  EXPECT_EQ(parts->description(), "<NSDateComponents: year 2021, month 5, weekOfYear 19>");
}

TEST(NSDateComponents, ASumOfUnitsNamesNoField) {
  const auto parts = make<NSDateComponents>();
  parts->setValue_forComponent(5, NSCalendarUnitMonth | NSCalendarUnitDay);
  EXPECT_EQ(parts->month(), NSUndefinedDateComponent);
  EXPECT_EQ(parts->valueForComponent(NSCalendarUnitMonth | NSCalendarUnitDay), NSUndefinedDateComponent);
}

TEST(NSDateComponents, UnitsHaveThePlatformsNumbers) {
  EXPECT_EQ(NSCalendarUnitEra, 2u);
  EXPECT_EQ(NSCalendarUnitYear, 4u);
  EXPECT_EQ(NSCalendarUnitMonth, 8u);
  EXPECT_EQ(NSCalendarUnitDay, 16u);
  EXPECT_EQ(NSCalendarUnitHour, 32u);
  EXPECT_EQ(NSCalendarUnitMinute, 64u);
  EXPECT_EQ(NSCalendarUnitSecond, 128u);
  EXPECT_EQ(NSWeekCalendarUnit, 256u);
  EXPECT_EQ(NSCalendarUnitWeekday, 512u);
  EXPECT_EQ(NSCalendarUnitWeekOfYear, 8192u);
}

TEST(NSDateComponents, AreEqualFieldByField) {
  const auto a = make<NSDateComponents>(), b = make<NSDateComponents>();
  a->setDay(1);
  EXPECT_FALSE(a->isEqual(*b));
  b->setDay(1);
  EXPECT_TRUE(a->isEqual(*b));
  EXPECT_EQ(a->hash(), b->hash());
  a->setTimeZone(NSTimeZone::timeZoneWithName("UTC"));
  EXPECT_FALSE(a->isEqual(*b));
  b->setTimeZone(NSTimeZone::timeZoneWithName("UTC"));
  EXPECT_TRUE(a->isEqual(*b));
}

}  // namespace
}  // namespace norvik
