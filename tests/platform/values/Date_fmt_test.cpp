#include "NorvikCore/platform/values/Date_fmt.h"

#include <gtest/gtest.h>

#include "NorvikCore/platform/values/Date_literals.h"

namespace norvik {
namespace {

TEST(DateFmt, HeaderExample) {
  Date payday = "2021-05-10"_date;
  EXPECT_EQ(fmt::format("{}", payday), "2021-05-10 00:00:00 +0000");
  EXPECT_EQ(fmt::format("{:.10}", payday), "2021-05-10");
}

TEST(DateFmt, TakesWidthAndFill) {
  EXPECT_EQ(fmt::format("{:*>27}", "2021-05-10"_date), "**2021-05-10 00:00:00 +0000");
}

}  // namespace
}  // namespace norvik
