#include "NorvikCore/version.h"

#include <gtest/gtest.h>

#include <string>

namespace norvik {
namespace {

#if !NORVIKCORE_VERSION_AT_LEAST(0, 2, 0)
#error the comparison does not work in #if
#endif

TEST(Version, HeaderExample) {
#if NORVIKCORE_VERSION_AT_LEAST(0, 2, 0)
  const std::string versions =
      std::string("compiled with " NORVIKCORE_VERSION_STRING ", runs with ") + libraryVersion();
#endif
  EXPECT_EQ(versions, "compiled with " NORVIK_EXPECTED_VERSION ", runs with " NORVIK_EXPECTED_VERSION);
}

TEST(Version, TheMacrosAreThoseOfCMakesProject) {
  EXPECT_STREQ(NORVIKCORE_VERSION_STRING, NORVIK_EXPECTED_VERSION);
  EXPECT_EQ(std::to_string(NORVIKCORE_VERSION_MAJOR) + "." + std::to_string(NORVIKCORE_VERSION_MINOR) + "." +
                std::to_string(NORVIKCORE_VERSION_PATCH),
            NORVIK_EXPECTED_VERSION);
}

TEST(Version, EachNumberIsComparedOnlyIfThoseBeforeItAreTheSame) {
  constexpr int major = NORVIKCORE_VERSION_MAJOR, minor = NORVIKCORE_VERSION_MINOR, patch = NORVIKCORE_VERSION_PATCH;
  EXPECT_TRUE(NORVIKCORE_VERSION_AT_LEAST(major, minor, patch));
  EXPECT_FALSE(NORVIKCORE_VERSION_AT_LEAST(major, minor, patch + 1));
  EXPECT_FALSE(NORVIKCORE_VERSION_AT_LEAST(major, minor + 1, 0));
  EXPECT_FALSE(NORVIKCORE_VERSION_AT_LEAST(major + 1, 0, 0));
  EXPECT_TRUE(NORVIKCORE_VERSION_AT_LEAST(major, minor - 1, patch + 1));
  EXPECT_TRUE(NORVIKCORE_VERSION_AT_LEAST(major - 1, minor + 1, patch + 1));
}

}  // namespace
}  // namespace norvik
