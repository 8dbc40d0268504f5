#include "NorvikCore/platform/kernel/SystemError.h"

#include <errno.h>
#include <gtest/gtest.h>

namespace norvik {
namespace {

TEST(SystemError, ErrorNumbersHaveWords) {
  EXPECT_EQ(kernel::errorText(ENOSPC), "No space left on device");
  EXPECT_EQ(kernel::errorText(kernel::attributeAbsent), "Attribute not found");
  EXPECT_EQ(kernel::errorText(4711), "Unknown error 4711");
  EXPECT_EQ(kernel::errorText(-5), "Unknown error -5");
}

}  // namespace
}  // namespace norvik
