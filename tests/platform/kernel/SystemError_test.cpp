#include "NorvikCore/platform/kernel/SystemError.h"
#include "NorvikCore/platform/kernel/ExtendedAttributes.h"

#include <errno.h>
#include <gtest/gtest.h>

namespace norvik {
namespace {

TEST(SystemError, HeaderExample) {
  std::string value, report;
  if (const int error = kernel::getAttribute("/there/is/no/such/file", "payroll.locked", value)) {
    report = kernel::errorText(error);
  }
  EXPECT_EQ(report, "No such file or directory");
}

TEST(SystemError, ErrorNumbersHaveWords) {
  EXPECT_EQ(kernel::errorText(ENOSPC), "No space left on device");
  EXPECT_EQ(kernel::errorText(kernel::attributeAbsent), "Attribute not found");
  EXPECT_EQ(kernel::errorText(4711), "Unknown error 4711");
  EXPECT_EQ(kernel::errorText(-5), "Unknown error -5");
}

}  // namespace
}  // namespace norvik
