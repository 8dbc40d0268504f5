#include "NorvikCore/logging/internal/ConsoleStamp.h"

#include "NorvikCore/platform/foundation/NSTimeZone.h"
#include "NorvikCore/platform/values/CivilDate.h"

#include <gtest/gtest.h>

#include <limits>

namespace norvik {
namespace {

using detail::ConsoleStamp;

class ConsoleStamps : public ::testing::Test {
 protected:
  void SetUp() override { NSTimeZone::setDefaultTimeZone(NSTimeZone::timeZoneWithName("Europe/London")); }
  void TearDown() override { NSTimeZone::setDefaultTimeZone(nullptr); }
};

TEST_F(ConsoleStamps, AStampIsLocalTimeToTheMillisecond) {
  const struct {
    const char* why;
    CivilDateTime utc;
    const char* expected;
  } rows[] = {
      {"summer time", {{2021, 5, 10}, {13, 30, 12, 45'500'000}}, "2021-05-10 14:30:12:045"},
      {"winter time", {{2021, 1, 10}, {13, 30, 12, 999'900'000}}, "2021-01-10 13:30:12:999"},
      {"the second before 2001", {{2000, 12, 31}, {23, 59, 59, 250'000'000}}, "2000-12-31 23:59:59:250"},
      {"the first of 2001", {{2001, 1, 1}, {0, 0, 0, 0}}, "2001-01-01 00:00:00:000"},
      {"long before", {{987, 6, 5}, {4, 3, 2, 500'000'000}}, "0987-06-05 04:01:47:500"},
      {"the last year of four digits", {{9999, 12, 31}, {23, 59, 59, 500'000'000}}, "9999-12-31 23:59:59:500"},
      {"one digit more, one less at the end", {{10000, 1, 1}, {0, 0, 0, 750'000'000}}, "10000-01-01 00:00:00:75"},
      {"two digits more", {{123456, 1, 1}, {0, 0, 0, 750'000'000}}, "123456-01-01 00:00:00:7"},
      {"1 BC is year 1 of its era", {{0, 3, 1}, {12, 0, 0, 0}}, "0001-03-01 11:58:45:000"},
  };
  ConsoleStamp stamp;
  for (const auto& row : rows) EXPECT_EQ(stamp.text(dateFromCivil(row.utc)), row.expected) << row.why;
}

TEST_F(ConsoleStamps, MillisecondsChangeWithinASecond) {
  ConsoleStamp stamp;
  EXPECT_EQ(stamp.text(dateFromCivil({{2021, 5, 10}, {13, 30, 12, 1'500'000}})), "2021-05-10 14:30:12:001");
  EXPECT_EQ(stamp.text(dateFromCivil({{2021, 5, 10}, {13, 30, 12, 750'500'000}})), "2021-05-10 14:30:12:750");
  EXPECT_EQ(stamp.text(dateFromCivil({{2021, 5, 10}, {13, 30, 13, 0}})), "2021-05-10 14:30:13:000");
}

TEST_F(ConsoleStamps, AnotherTimeZoneCountsFromTheNextStampOn) {
  ConsoleStamp stamp;
  const Date date = dateFromCivil({{2021, 5, 10}, {13, 30, 12, 0}});
  EXPECT_EQ(stamp.text(date), "2021-05-10 14:30:12:000");
  NSTimeZone::setDefaultTimeZone(NSTimeZone::timeZoneWithName("Asia/Kathmandu"));
  EXPECT_EQ(stamp.text(date), "2021-05-10 19:15:12:000");
}

TEST_F(ConsoleStamps, WhatIsNoTimeHasAStampAllTheSame) {
  ConsoleStamp stamp;
  EXPECT_EQ(stamp.text(Date::fromReferenceSeconds(std::numeric_limits<double>::quiet_NaN())),
            "2001-01-01 00:00:00:000");
  EXPECT_EQ(stamp.text(Date::fromReferenceSeconds(std::numeric_limits<double>::infinity())).size(), 23U);
  EXPECT_EQ(stamp.text(Date::fromReferenceSeconds(-std::numeric_limits<double>::infinity())).size(), 23U);
}

}  // namespace
}  // namespace norvik
