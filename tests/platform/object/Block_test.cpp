#include "NorvikCore/platform/object/Block.h"
#include "NorvikCore/platform/object/Value.h"

#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <memory>

using namespace norvik;

TEST(Block, HeaderExample) {
  Block<bool(const Value&)> positive = [](const Value& v) { return v.as<Decimal>() > 0; };
  ASSERT_TRUE(positive);
  EXPECT_TRUE(positive(Value(5)));
  auto same = positive;
  EXPECT_TRUE(same == positive);
}

TEST(Block, CallsItsClosure) {
  const Block<int(int)> twice = [](int x) { return 2 * x; };
  EXPECT_EQ(twice(21), 42);
}

TEST(Block, CopiesShareOneClosureAndAreTheSame) {
  const Block<int()> count = [n = 0]() mutable { return ++n; };
  const Block<int()> same = count;
  const Block<int()> other = [n = 0]() mutable { return ++n; };
  EXPECT_EQ(count(), 1);
  EXPECT_EQ(same(), 2);
  EXPECT_EQ(count, same);
  EXPECT_FALSE(count == other);
}

TEST(Block, KeepsAClosureThatCanOnlyBeMoved) {
  const Block<int()> kept = [owned = std::make_unique<int>(7)] { return *owned; };
  EXPECT_EQ(kept(), 7);
}

TEST(Block, TheAbsentOneIsTestedAndRaisesWhenCalled) {
  const Block<void()> absent = nullptr;
  EXPECT_FALSE(absent);
  EXPECT_EQ(absent, nullptr);
  EXPECT_RAISES(absent(), "NSInvalidArgumentException");
}

TEST(Block, GoesThroughAValueAndComesBackTheSame) {
  const Block<int(int)> next = [](int x) { return x + 1; };
  const Value value = next;
  EXPECT_EQ(value.classObject().isSubclassOf(NSBlock::staticClass()), true);
  EXPECT_EQ(value.as<Block<int(int)>>(), next);
  EXPECT_RAISES((void)value.as<Block<void()>>(), "NSInvalidArgumentException");
  EXPECT_TRUE(Value(Block<int()>()).isAbsent());
}
