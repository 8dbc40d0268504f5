#include <gtest/gtest.h>

#include "NorvikCore/Categories/NSDate+Norvik_Coercion.h"
#include "NorvikCore/platform/values/Date_literals.h"

namespace norvik {
namespace {

TEST(NSDateNorvikCoercion, HeaderExample) {
  EXPECT_EQ(nk_nearestStartOfDay("2021-05-10 12:59:59"_date), "2021-05-10"_date);
  EXPECT_EQ(nk_nearestStartOfDay("2021-05-10 13:00:00"_date), "2021-05-11"_date);
}

TEST(NSDateNorvikCoercion, GoesDownUpToTheTwelfthHourAndUpAfterIt) {
  const struct {
    const char *why, *date, *expected;
  } rows[] = {
      {"a start of day", "2021-05-10 00:00:00", "2021-05-10"},
      {"a second after it", "2021-05-10 00:00:01", "2021-05-10"},
      {"a minute after it", "2021-05-10 00:01:00", "2021-05-10"},
      {"noon", "2021-05-10 12:00:00", "2021-05-10"},
      {"the last second before 13:00", "2021-05-10 12:59:59", "2021-05-10"},
      {"13:00", "2021-05-10 13:00:00", "2021-05-11"},
      {"the last second", "2021-05-10 23:59:59", "2021-05-11"},
      {"over the new year", "2020-12-31 13:00:00", "2021-01-01"},
      {"a fraction beside a second", "2021-05-10T00:00:01.5Z", "2021-05-10"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(nk_nearestStartOfDay(*Date::dateWithString(row.date)), *Date::dateWithString(row.expected)) << row.why;
}

TEST(NSDateNorvikCoercion, AFractionOfASecondAloneIsLeft) {
  EXPECT_EQ(nk_nearestStartOfDay("2021-05-10 00:00:00.4 +0000"_date), "2021-05-10 00:00:00.4 +0000"_date);
}

}  // namespace
}  // namespace norvik
