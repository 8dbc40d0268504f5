#include "NorvikCore/platform/foundation/internal/PosixZoneRule.h"

#include <gtest/gtest.h>

#include "NorvikCore/platform/values/CivilDate.h"
#include "NorvikCore/platform/values/Date_literals.h"

namespace norvik::detail {
namespace {

std::int64_t instant(const char* text) { return wholeSeconds(*Date::dateWithString(text)); }

TEST(PosixZoneRule, LondonMovesOnTheLastSundaysOfMarchAndOctober) {
  const auto rule = PosixZoneRule::parse("GMT0BST,M3.5.0/1,M10.5.0");
  ASSERT_TRUE(rule);
  const ZoneType winter{0, false, "GMT"}, summer{3600, true, "BST"};
  EXPECT_EQ(rule->typeAt(instant("2050-03-27 00:59:59")), winter);
  EXPECT_EQ(rule->typeAt(instant("2050-03-27 01:00:00")), summer);
  EXPECT_EQ(rule->typeAt(instant("2050-10-30 00:59:59")), summer);
  EXPECT_EQ(rule->typeAt(instant("2050-10-30 01:00:00")), winter);
  const ZoneSpan span = rule->spanAt(instant("2050-07-01"));
  EXPECT_EQ(span.from, instant("2050-03-27 01:00:00"));
  EXPECT_EQ(span.until, instant("2050-10-30 01:00:00"));
  const ZoneSpan overNewYear = rule->spanAt(instant("2050-12-31"));
  EXPECT_EQ(overNewYear.from, instant("2050-10-30 01:00:00"));
  EXPECT_EQ(overNewYear.until, instant("2051-03-26 01:00:00"));
}

TEST(PosixZoneRule, SouthernSummersGoOverTheNewYear) {
  const auto rule = PosixZoneRule::parse("AEST-10AEDT,M10.1.0,M4.1.0/3");
  ASSERT_TRUE(rule);
  EXPECT_EQ(rule->typeAt(instant("2050-01-01")), (ZoneType{39600, true, "AEDT"}));
  EXPECT_EQ(rule->typeAt(instant("2050-07-01")), (ZoneType{36000, false, "AEST"}));
  EXPECT_EQ(rule->spanAt(instant("2050-01-01")).until, instant("2050-04-02 16:00:00"));
  EXPECT_EQ(rule->spanAt(instant("2050-07-01")).until, instant("2050-10-01 16:00:00"));
}

TEST(PosixZoneRule, DublinsWinterIsTheTimeThatIsMovedBack) {
  const auto rule = PosixZoneRule::parse("IST-1GMT0,M10.5.0,M3.5.0/1");
  ASSERT_TRUE(rule);
  EXPECT_EQ(rule->typeAt(instant("2050-01-01")), (ZoneType{0, true, "GMT"}));
  EXPECT_EQ(rule->typeAt(instant("2050-07-01")), (ZoneType{3600, false, "IST"}));
  EXPECT_EQ(rule->spanAt(instant("2050-07-01")).until, instant("2050-10-30 01:00:00"));
}

TEST(PosixZoneRule, DaysOfTheYearCountWithOrWithoutTheLeapDay) {
  const auto julian = PosixZoneRule::parse("AAA0BBB,J60/0,J300/0");
  ASSERT_TRUE(julian);
  EXPECT_EQ(julian->spanAt(instant("2023-05-01")).from, instant("2023-03-01"));
  EXPECT_EQ(julian->spanAt(instant("2024-05-01")).from, instant("2024-03-01"));
  const auto zeroBased = PosixZoneRule::parse("AAA0BBB,59/0,300/0");
  ASSERT_TRUE(zeroBased);
  EXPECT_EQ(zeroBased->spanAt(instant("2023-05-01")).from, instant("2023-03-01"));
  EXPECT_EQ(zeroBased->spanAt(instant("2024-05-01")).from, instant("2024-02-29"));
}

TEST(PosixZoneRule, SummerTimeAllTheYearNeverChanges) {
  const auto rule = PosixZoneRule::parse("EST5EDT,0/0,J365/25");
  ASSERT_TRUE(rule);
  for (const char* date : {"2023-12-31 12:00", "2024-01-01 04:59:59", "2024-01-01 05:00", "2024-07-01"})
    EXPECT_EQ(rule->typeAt(instant(date)), (ZoneType{-14400, true, "EDT"})) << date;
  EXPECT_EQ(rule->spanAt(instant("2024-07-01")).until, INT64_MAX);
  EXPECT_EQ(rule->spanAt(instant("2024-07-01")).from, INT64_MIN);
}

TEST(PosixZoneRule, ChangesThatOvertakeEachOtherStillFollowInOrder) {
  const auto rule = PosixZoneRule::parse("EST5EDT,0/02,J365/31");  // each end is on the day after the next start
  ASSERT_TRUE(rule);
  const ZoneSpan span = rule->spanAt(instant("2024-01-01 08:00"));
  EXPECT_EQ(span.from, instant("2024-01-01 07:00:00"));
  EXPECT_EQ(span.until, instant("2024-01-01 11:00:00"));
  EXPECT_EQ(*span.type, (ZoneType{-14400, true, "EDT"}));
  EXPECT_EQ(rule->spanAt(instant("2024-07-01")).from, instant("2024-01-01 11:00:00"));
  EXPECT_EQ(rule->typeAt(instant("2024-07-01")), (ZoneType{-18000, false, "EST"}));
}

TEST(PosixZoneRule, FixedZonesAndNamesInBrackets) {
  const auto kathmandu = PosixZoneRule::parse("<+0545>-5:45");
  ASSERT_TRUE(kathmandu);
  EXPECT_EQ(kathmandu->typeAt(0), (ZoneType{20700, false, "+0545"}));
  EXPECT_EQ(kathmandu->spanAt(0).until, INT64_MAX);
  const auto withSeconds = PosixZoneRule::parse("LMT+0:01:15");
  ASSERT_TRUE(withSeconds);
  EXPECT_EQ(withSeconds->typeAt(0).offset, -75);
}

TEST(PosixZoneRule, TimesOfChangeReachBeyondTheDay) {
  const auto greenland = PosixZoneRule::parse("<-02>2<-01>,M3.5.0/-1,M10.5.0/0");
  ASSERT_TRUE(greenland);
  EXPECT_EQ(greenland->spanAt(instant("2050-05-01")).from, instant("2050-03-27 01:00:00"));
  const auto gaza = PosixZoneRule::parse("EET-2EEST,M3.4.4/50,M10.4.4/50");
  ASSERT_TRUE(gaza);
  EXPECT_EQ(gaza->spanAt(instant("2050-05-01")).from, instant("2050-03-26 00:00:00"));
}

TEST(PosixZoneRule, RefusesWhatIsNotWhollyARule) {
  const char* const texts[] = {"",
                               "GM0",
                               "GMT",
                               "GMT0BST",
                               "GMT0BST,M3.5.0",
                               "GMT0BST,M3.5.0,M13.5.0",
                               "GMT0BST,M3.6.0,M10.5.0",
                               "GMT0BST,M3.0.0,M10.5.0",
                               "GMT0BST,M3.5.7,M10.5.0",
                               "GMT0BST,J0,J100",
                               "GMT0BST,J366,J100",
                               "GMT0BST,366,100",
                               "GMT25",
                               "GMT0:60",
                               "GMT0BST,M3.5.0/168,M10.5.0",
                               "GMT0BST,M3.5.0/1,M10.5.0 ",
                               "<GMT0",
                               "GMT0000000000",
                               "Europe/London"};
  for (const char* text : texts) EXPECT_FALSE(PosixZoneRule::parse(text)) << text;
}

TEST(PosixZoneRule, InstantsBeyondTheCalendarAreDefined) {
  const auto rule = PosixZoneRule::parse("GMT0BST,M3.5.0/1,M10.5.0");
  ASSERT_TRUE(rule);
  for (const std::int64_t far : {INT64_MIN, INT64_MAX, INT64_MIN + 1, INT64_MAX - 1}) {
    const ZoneSpan span = rule->spanAt(far);
    EXPECT_LE(span.from, far);
    EXPECT_GE(span.until, far);
  }
}

}  // namespace
}  // namespace norvik::detail
