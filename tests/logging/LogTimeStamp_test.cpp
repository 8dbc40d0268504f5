#include "NorvikCore/logging/internal/LogTimeStamp.h"

#include "tests/support/InChild.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace norvik::detail {
namespace {

std::string stampAt(LogTimeStamp& stamp, double unixSeconds) {
  char text[LogTimeStamp::length];
  stamp.write(Date::dateWithTimeIntervalSince1970(unixSeconds), text);
  return {text, sizeof text};
}

TEST(LogTimeStamp, FollowsLocalTimeAcrossMinutesAndTransitions) {
  RUN_IN_CHILD({
    setenv("TZ", "Europe/London", 1);
    LogTimeStamp stamp;
    const struct {
      double seconds;
      const char* expected;
    } rows[] = {
        {1620653412.0625, "2021/05/10 14:30:12:062"},
        {1620653412.9375, "2021/05/10 14:30:12:937"},
        {1620653459.5, "2021/05/10 14:30:59:500"},
        {1620653460.0, "2021/05/10 14:31:00:000"},
        {1620653412.0, "2021/05/10 14:30:12:000"},
        {1616893199.75, "2021/03/28 00:59:59:750"},
        {1616893200.0, "2021/03/28 02:00:00:000"},
        {1635641999.0, "2021/10/31 01:59:59:000"},
        {1635642000.0, "2021/10/31 01:00:00:000"},
        {1609459199.5, "2020/12/31 23:59:59:500"},
        {1609459200.0, "2021/01/01 00:00:00:000"},
        {1582934400.0, "2020/02/29 00:00:00:000"},
        {-0.5, "1970/01/01 00:59:59:500"},
    };
    for (const auto& row : rows) EXPECT_EQ(stampAt(stamp, row.seconds), row.expected) << row.seconds;
  });
}

}  // namespace
}  // namespace norvik::detail
