#include "NorvikCore/platform/foundation/NSProcessInfo.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "NorvikCore/platform/kernel/HostInfo.h"

namespace norvik {
namespace {

TEST(NSProcessInfo, HeaderExample) {
  NSProcessInfo& info = NSProcessInfo::processInfo();
  EXPECT_EQ(info.processName(), "foundation_system_tests");
  EXPECT_EQ(info.processIdentifier(), getpid());
  EXPECT_TRUE(info.operatingSystemVersionString().containsString("Linux "));
  EXPECT_EQ(&NSProcessInfo::processInfo(), &info);
}

TEST(NSProcessInfo, AMachineThatReportsNoProcessorHasOne) {
  const kernel::ProcessorCountOverride none(0);
  EXPECT_EQ(NSProcessInfo::processInfo().processorCount(), 1U);
}

TEST(NSProcessInfo, TheEnvironmentIsThatOfTheMoment) {
  ASSERT_EQ(setenv("NORVIK_TEST", "a=b \xC3\xAB", 1), 0);
  EXPECT_EQ(NSProcessInfo::processInfo().environment()->objectForKey("NORVIK_TEST"), Value("a=b \u00EB"));
  ASSERT_EQ(unsetenv("NORVIK_TEST"), 0);
  EXPECT_TRUE(NSProcessInfo::processInfo().environment()->objectForKey("NORVIK_TEST").isAbsent());
}

TEST(NSProcessInfo, NoTwoUniqueTextsAreTheSame) {
  EXPECT_NE(NSProcessInfo::processInfo().globallyUniqueString(), NSProcessInfo::processInfo().globallyUniqueString());
}

TEST(NSProcessInfo, ValuesAreReadByKey) {
  EXPECT_EQ(NSProcessInfo::processInfo().valueForKey("processIdentifier"), Value(getpid()));
}

}  // namespace
}  // namespace norvik
