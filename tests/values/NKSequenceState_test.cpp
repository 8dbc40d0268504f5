#include "NorvikCore/values/NKSequenceState.h"

#include "NorvikCore/platform/values/Decimal_literal.h"
#include "NorvikCore/platform/values/NSException.h"

#include <gtest/gtest.h>

#include <limits>

namespace norvik {
namespace {

TEST(NKSequenceState, HeaderExample) {
  auto state = make<NKSequenceState>();
  EXPECT_EQ(state->increment(), 0);
  EXPECT_EQ(state->position(), 1);
  (*state)["total"] = 12.50_dec;
  EXPECT_EQ((*state)["total"], Value(12.50_dec));
  state->reset();
  EXPECT_EQ(state->position(), 0);
  EXPECT_EQ((*state)["total"], Value(12.50_dec));
}

TEST(NKSequenceState, IncrementGivesThePositionAsItWas) {
  auto state = make<NKSequenceState>();
  EXPECT_EQ(state->position(), 0);
  state->setPosition(4);
  EXPECT_EQ(state->increment(), 4);
  EXPECT_EQ(state->position(), 5);
  state->setPosition(std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(state->increment(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(state->position(), std::numeric_limits<std::int64_t>::min());
}

TEST(NKSequenceState, ResetKeepsWhatIsStored) {
  auto state = make<NKSequenceState>();
  state->increment();
  (*state)["total"] = 12.50_dec;
  state->reset();
  EXPECT_EQ(state->position(), 0);
  EXPECT_EQ((*state)["total"], Value(12.5));
}

TEST(NKSequenceState, StoresUnderKeys) {
  auto state = make<NKSequenceState>();
  ASSERT_TRUE(state->store());
  EXPECT_EQ(state->store()->count(), 0u);
  EXPECT_TRUE(Value((*state)["a"]).isAbsent());
  state->setObject(1, "a");
  (*state)[2] = "two";
  EXPECT_EQ(state->objectForKeyedSubscript("a"), Value(1));
  EXPECT_EQ(state->store()->objectForKey(2), Value("two"));
  const NKSequenceState& unchanged = *state;
  EXPECT_EQ(unchanged["a"], Value(1));
  EXPECT_EQ(state->performSelector("objectForKeyedSubscript:", "a"), Value(1));
  state->performSelector("setObject:forKeyedSubscript:", 3, "a");
  EXPECT_EQ(state->objectForKeyedSubscript("a"), Value(3));
}

TEST(NKSequenceState, SettingNothingRemovesTheEntry) {
  auto state = make<NKSequenceState>();
  state->setObject(1, "a");
  (*state)["a"] = Value();
  EXPECT_EQ(state->store()->count(), 0u);
  state->setObject(Value(), "b");
  state->setObject(Value(), Value());
  EXPECT_TRUE(state->objectForKeyedSubscript(Value()).isAbsent());
  EXPECT_THROW(state->setObject(1, Value()), NSException);
}

TEST(NKSequenceState, WithoutAStoreReadsNothingAndMakesOne) {
  auto state = make<NKSequenceState>();
  state->setStore(nullptr);
  EXPECT_TRUE(state->objectForKeyedSubscript("a").isAbsent());
  state->setObject(Value(), "a");
  EXPECT_FALSE(state->store());
  state->setObject(1, "a");
  EXPECT_EQ(state->store()->objectForKey("a"), Value(1));
}

}  // namespace
}  // namespace norvik
