// This file is a program of its own. Each counter belongs to one test, which sees it from the start of the process.
#include "NorvikCore/values/NKUITag.h"

#include <gtest/gtest.h>

namespace norvik {
namespace {

TEST(NKUITag, HeaderExampleOfTags) {
  for (const std::int64_t low : {329, 330, 331}) {
    const std::int64_t tag = NKDeriveUniqueUITag(2);
    EXPECT_EQ(tag >> 32, 2);
    EXPECT_EQ(tag & 0xFFFFFFFF, low);
  }
  EXPECT_EQ(NKDeriveUniqueUITag(0), 332);
  EXPECT_EQ(NKDeriveUniqueUITag(-1), static_cast<std::int64_t>(0xFFFFFFFF0000014D));  // 333 below a group of all ones
  EXPECT_EQ(NKDeriveUniqueUITag(std::int64_t{1} << 32), 334);                         // the group's high half is lost
}

TEST(NKUITag, HeaderExampleOfIdentifiers) {
  EXPECT_EQ(NKViewIdentifier("row"), "row_0");
  EXPECT_EQ(NKViewIdentifier("row"), "row_1");
  EXPECT_EQ(NKViewIdentifier("column"), "column_2");
  EXPECT_EQ(NKViewIdentifier(""), "_3");
}

}  // namespace
}  // namespace norvik
