#include "NorvikCore/platform/foundation/NSTimeZone.h"

#include <gtest/gtest.h>

#include "NorvikCore/platform/values/Date_literals.h"

namespace norvik {
namespace {

TEST(NSTimeZone, HeaderExample) {
  Ref<NSTimeZone> london = NSTimeZone::timeZoneWithName("Europe/London");
  EXPECT_EQ(london->secondsFromGMTForDate("2021-07-01"_date), 3600);
  EXPECT_EQ(london->abbreviationForDate("2021-07-01"_date), "BST");
  EXPECT_EQ(london->nextDaylightSavingTimeTransitionAfterDate("2021-07-01"_date), "2021-10-31 01:00:00"_date);
}

TEST(NSTimeZone, KnowsBothSidesOfAChange) {
  Ref<NSTimeZone> london = NSTimeZone::timeZoneWithName("Europe/London");
  EXPECT_FALSE(london->isDaylightSavingTimeForDate("2021-03-28 00:59:59"_date));
  EXPECT_TRUE(london->isDaylightSavingTimeForDate("2021-03-28 01:00:00"_date));
  EXPECT_EQ(london->secondsFromGMTForDate("2021-03-28 00:59:59.9 +0000"_date), 0);
  EXPECT_EQ(london->secondsFromGMTForDate("2021-03-28 01:00:00"_date), 3600);
  EXPECT_EQ(london->abbreviationForDate("2021-01-01"_date), "GMT");
}

TEST(NSTimeZone, UtcNeverChanges) {
  Ref<NSTimeZone> utc = NSTimeZone::timeZoneWithName("UTC");
  EXPECT_EQ(utc->secondsFromGMT(), 0);
  EXPECT_EQ(utc->abbreviationForDate(Date::distantPast()), "UTC");
  EXPECT_EQ(utc->nextDaylightSavingTimeTransitionAfterDate("2021-07-01"_date), std::nullopt);
  EXPECT_EQ(utc->description(), "UTC (UTC) offset 0");
}

TEST(NSTimeZone, AnUnknownNameGivesNone) {
  EXPECT_FALSE(NSTimeZone::timeZoneWithName("Europe/Nowhere"));
  EXPECT_FALSE(NSTimeZone::timeZoneWithName(""));
}

TEST(NSTimeZone, FixedOffsetsAreRoundedToMinutes) {
  EXPECT_EQ(NSTimeZone::timeZoneForSecondsFromGMT(5400)->name(), "GMT+0130");
  EXPECT_EQ(NSTimeZone::timeZoneForSecondsFromGMT(-12600)->name(), "GMT-0330");
  EXPECT_EQ(NSTimeZone::timeZoneForSecondsFromGMT(-12600)->secondsFromGMT(), -12600);
  EXPECT_EQ(NSTimeZone::timeZoneForSecondsFromGMT(29)->name(), "GMT");
  EXPECT_EQ(NSTimeZone::timeZoneForSecondsFromGMT(30)->secondsFromGMT(), 60);
  EXPECT_TRUE(NSTimeZone::timeZoneForSecondsFromGMT(18 * 3600));
  EXPECT_FALSE(NSTimeZone::timeZoneForSecondsFromGMT(18 * 3600 + 1));
  EXPECT_FALSE(NSTimeZone::timeZoneForSecondsFromGMT(-18 * 3600 - 1));
}

TEST(NSTimeZone, ZonesOfOneNameAreEqual) {
  Ref<NSTimeZone> a = NSTimeZone::timeZoneWithName("Europe/London"), b = NSTimeZone::timeZoneWithName("Europe/London");
  EXPECT_TRUE(a->isEqual(*b));
  EXPECT_EQ(a->hash(), b->hash());
  EXPECT_FALSE(a->isEqualToTimeZone(*NSTimeZone::timeZoneWithName("Europe/Dublin")));
}

TEST(NSTimeZone, TheDefaultIsTheSystemsUntilItIsSet) {
  EXPECT_TRUE(NSTimeZone::defaultTimeZone()->isEqual(*NSTimeZone::systemTimeZone()));
  const Ref<NSTimeZone> tokyo = NSTimeZone::timeZoneWithName("Asia/Tokyo");
  NSTimeZone::setDefaultTimeZone(tokyo);
  EXPECT_EQ(NSTimeZone::defaultTimeZone(), tokyo);
  EXPECT_EQ(NSTimeZone::localTimeZone(), tokyo);
  NSTimeZone::setDefaultTimeZone(nullptr);
  EXPECT_TRUE(NSTimeZone::localTimeZone()->isEqual(*NSTimeZone::systemTimeZone()));
}

TEST(NSTimeZone, TheSystemsZoneIsAskedAgainAfterAReset) {
  ASSERT_EQ(setenv("TZ", "Asia/Kathmandu", 1), 0);
  NSTimeZone::resetSystemTimeZone();
  EXPECT_EQ(NSTimeZone::systemTimeZone()->name(), "Asia/Kathmandu");
  ASSERT_EQ(setenv("TZ", "ABC-2", 1), 0);
  EXPECT_EQ(NSTimeZone::systemTimeZone()->name(), "Asia/Kathmandu");
  NSTimeZone::resetSystemTimeZone();
  EXPECT_EQ(NSTimeZone::systemTimeZone()->secondsFromGMT(), 7200);
  ASSERT_EQ(unsetenv("TZ"), 0);
  NSTimeZone::resetSystemTimeZone();
  EXPECT_TRUE(NSTimeZone::systemTimeZone());
}

}  // namespace
}  // namespace norvik
