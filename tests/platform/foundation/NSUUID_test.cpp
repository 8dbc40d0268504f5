#include "NorvikCore/platform/foundation/NSUUID.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace norvik {
namespace {

const NSString known = "3F2504E0-4F89-41D3-9A0C-0305E82C3301";

TEST(NSUUID, HeaderExample) {
  EXPECT_THAT(NSUUID::UUID()->UUIDString().str(),
              ::testing::MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
  EXPECT_EQ(NSUUID::initWithUUIDString("3f2504e0-4f89-41d3-9a0c-0305e82c3301")->UUIDString(), known);
}

TEST(NSUUID, AnyOtherFormGivesAnEmptyRef) {
  EXPECT_FALSE(NSUUID::initWithUUIDString(""));
  EXPECT_FALSE(NSUUID::initWithUUIDString("{3F2504E0-4F89-41D3-9A0C-0305E82C3301}"));
}

TEST(NSUUID, TheSameBytesAreEqualWithEqualHashes) {
  const Ref<NSUUID> a = NSUUID::initWithUUIDString(known), b = NSUUID::initWithUUIDString(known);
  EXPECT_TRUE(a->isEqual(*b));
  EXPECT_EQ(a->hash(), b->hash());
  EXPECT_FALSE(a->isEqual(*NSUUID::UUID()));
  EXPECT_EQ(a->description(), known);
}

}  // namespace
}  // namespace norvik
