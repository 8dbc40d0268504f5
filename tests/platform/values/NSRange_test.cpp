#include "NorvikCore/platform/values/NSRange.h"

#include <gtest/gtest.h>

#include <sstream>
#include <unordered_set>

namespace norvik {
namespace {

TEST(NSRange, HeaderExample) {
  const NSRange word{6, 5};
  EXPECT_EQ(NSMaxRange(word), 11u);
  EXPECT_EQ(NSIntersectionRange(word, NSRange{0, 8}), (NSRange{6, 2}));
}

TEST(NSRange, HoldsItsFirstPositionAndNotTheOneAfterItsLast) {
  const NSRange range{3, 2};
  EXPECT_FALSE(NSLocationInRange(2, range));
  EXPECT_TRUE(NSLocationInRange(3, range));
  EXPECT_TRUE(NSLocationInRange(4, range));
  EXPECT_FALSE(NSLocationInRange(5, range));
  EXPECT_FALSE(NSLocationInRange(3, NSRange{3, 0}));
}

TEST(NSRange, IntersectionIsWhatBothHold) {
  const struct {
    const char* why;
    NSRange a, b, expected;
  } rows[] = {
      {"overlapping", {0, 5}, {3, 5}, {3, 2}}, {"one inside the other", {0, 9}, {2, 3}, {2, 3}},
      {"touching", {0, 3}, {3, 2}, {0, 0}},    {"apart", {0, 2}, {5, 2}, {0, 0}},
      {"empty", {4, 0}, {0, 9}, {0, 0}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(NSIntersectionRange(row.a, row.b), row.expected) << row.why;
    EXPECT_EQ(NSIntersectionRange(row.b, row.a), row.expected) << row.why;
  }
}

TEST(NSRange, UnionHoldsBothAndWhatLiesBetween) {
  EXPECT_EQ(NSUnionRange({0, 2}, {5, 2}), (NSRange{0, 7}));
  EXPECT_EQ(NSUnionRange({5, 2}, {0, 2}), (NSRange{0, 7}));
  EXPECT_EQ(NSUnionRange({1, 9}, {2, 3}), (NSRange{1, 9}));
}

TEST(NSRange, EqualRangesHashAlikeAndOrderIsByLocationFirst) {
  const std::unordered_set<NSRange> ranges{{1, 2}, {1, 2}, {2, 1}};
  EXPECT_EQ(ranges.size(), 2u);
  EXPECT_LT((NSRange{1, 9}), (NSRange{2, 0}));
  EXPECT_LT((NSRange{1, 1}), (NSRange{1, 2}));
}

TEST(NSRange, PrintsLocationAndLength) {
  std::ostringstream out;
  out << NSRange{6, 5};
  EXPECT_EQ(out.str(), "{6, 5}");
}

TEST(NSRange, NotFoundIsTheLargestSignedInteger) { EXPECT_EQ(NSNotFound, 9223372036854775807u); }

}  // namespace
}  // namespace norvik
