#include "NorvikCore/values/NKCursor.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace norvik {
namespace {

TEST(NKCursor, HeaderExample) {
  auto cursor = NKCursor::cursorWithCount(3, 1);
  cursor->increment();
  EXPECT_EQ(cursor->index(), 2);
  cursor->increment();
  EXPECT_EQ(cursor->index(), 2);
}

TEST(NKCursor, IncrementStopsAtTheLastPlace) {
  constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min(), greatest = -(least + 1);
  const struct {
    const char* why;
    std::int64_t count, index, expected;
  } rows[] = {
      {"forward", 3, 0, 1},
      {"to the last", 3, 1, 2},
      {"it stays at the last", 3, 2, 2},
      {"behind the end", 3, 7, 7},
      {"no places", 0, 0, 0},
      {"before the first", 3, -2, -1},
      {"a negative count", -1, -3, -2},
      {"a negative count, at its last", -1, -2, -2},
      {"the greatest index", greatest, greatest, greatest},
      {"the last of the most places", greatest, greatest - 1, greatest - 1},
      {"the least index", least, least, least},
  };
  for (const auto& row : rows) {
    auto cursor = NKCursor::cursorWithCount(row.count, row.index);
    EXPECT_EQ(cursor->count(), row.count) << row.why;
    EXPECT_EQ(cursor->index(), row.index) << row.why;
    cursor->increment();
    EXPECT_EQ(cursor->index(), row.expected) << row.why;
  }
}

TEST(NKCursor, IsSetAsItIsTold) {
  auto cursor = make<NKCursor>();
  EXPECT_EQ(cursor->count(), 0);
  EXPECT_EQ(cursor->index(), 0);
  cursor->initWithCount(2, 9);
  EXPECT_EQ(cursor->index(), 9) << "an index beyond the count is kept";
  cursor->setCount(5);
  cursor->setIndex(3);
  cursor->increment();
  cursor->increment();
  EXPECT_EQ(cursor->index(), 4);
}

}  // namespace
}  // namespace norvik
