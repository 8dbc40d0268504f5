#include "NorvikCore/platform/kernel/UUID.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace norvik {
namespace {

using kernel::UUID;

const UUID known{{0x3F, 0x25, 0x04, 0xE0, 0x4F, 0x89, 0x41, 0xD3, 0x9A, 0x0C, 0x03, 0x05, 0xE8, 0x2C, 0x33, 0x01}};

TEST(UUID, HeaderExample) {
  EXPECT_THAT(kernel::makeUUID().text(),
              ::testing::MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
}

TEST(UUID, TheTextIsUpperCaseHexadecimal) { EXPECT_EQ(known.text(), "3F2504E0-4F89-41D3-9A0C-0305E82C3301"); }

TEST(UUID, NoTwoAreTheSame) {
  std::set<UUID> all;
  for (int i = 0; i < 10'000; ++i) all.insert(kernel::makeUUID());
  EXPECT_EQ(all.size(), 10'000U);
}

TEST(UUID, VersionAndVariantAreThoseOfARandomOne) {
  for (int i = 0; i < 1'000; ++i) {
    const UUID uuid = kernel::makeUUID();
    ASSERT_EQ(uuid.bytes[6] & 0xF0, 0x40);
    ASSERT_EQ(uuid.bytes[8] & 0xC0, 0x80);
  }
}

TEST(UUID, ATextIsReadInEitherCase) {
  EXPECT_EQ(kernel::parseUUID("3F2504E0-4F89-41D3-9A0C-0305E82C3301"), known);
  EXPECT_EQ(kernel::parseUUID("3f2504e0-4f89-41d3-9a0C-0305e82c3301"), known);
}

TEST(UUID, OtherTextsAreRefused) {
  for (const char* text : {"", "3F2504E0-4F89-41D3-9A0C-0305E82C330", "3F2504E0-4F89-41D3-9A0C-0305E82C33011",
                           "3F2504E0-4F89-41D3-9A0C-0305E82C330G", "3F2504E0 4F89-41D3-9A0C-0305E82C3301",
                           "3F2504E04-F89-41D3-9A0C-0305E82C3301", "{3F2504E0-4F89-41D3-9A0C-0305E82C33}"}) {
    EXPECT_EQ(kernel::parseUUID(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace norvik
