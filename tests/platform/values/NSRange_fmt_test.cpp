#include "NorvikCore/platform/values/NSRange_fmt.h"

#include <gtest/gtest.h>

namespace norvik {
namespace {

TEST(NSRangeFmt, HeaderExample) { EXPECT_EQ(fmt::format("{}", NSRange{6, 5}), "{6, 5}"); }

TEST(NSRangeFmt, TakesWidthAndFill) {
  EXPECT_EQ(fmt::format("{:*>9}", NSRange{6, 5}), "***{6, 5}");
  EXPECT_EQ(fmt::format("{}", NSRange{NSNotFound, ~NSUInteger{0}}), "{9223372036854775807, 18446744073709551615}");
}

}  // namespace
}  // namespace norvik
