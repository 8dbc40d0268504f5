#include "NorvikCore/platform/kernel/HostInfo.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/TemporaryFolder.h"

namespace norvik {
namespace {

using kernel::parseSystemVersion;
using kernel::SystemVersion;

TEST(HostInfo, TheProcessorCountIsTheConfiguredOne) {
  EXPECT_EQ(kernel::processorCount(), static_cast<std::uint32_t>(sysconf(_SC_NPROCESSORS_CONF)));
}

TEST(HostInfo, ASystemThatReportsNoProcessorHasOne) {
  const struct {
    std::int32_t reported;
    std::uint32_t expected;
  } rows[] = {{0, 1}, {-1, 1}, {1, 1}, {2, 2}, {4096, 4096}};
  for (const auto& row : rows) {
    const kernel::ProcessorCountOverride instead(row.reported);
    EXPECT_EQ(kernel::processorCount(), row.expected) << row.reported;
  }
}

TEST(HostInfo, AnOverrideEndsWithItsObject) {
  const std::uint32_t real = kernel::processorCount();
  {
    const kernel::ProcessorCountOverride one(1);
    {
      const kernel::ProcessorCountOverride three(3);
      EXPECT_EQ(kernel::processorCount(), 3U);
    }
    EXPECT_EQ(kernel::processorCount(), 1U);
  }
  EXPECT_EQ(kernel::processorCount(), real);
}

TEST(HostInfo, TheExecutableIsTheProgramsFile) {
  EXPECT_TRUE(kernel::executablePath().ends_with("/kernel_tests")) << kernel::executablePath();
  EXPECT_EQ(access(kernel::executablePath().c_str(), X_OK), 0);
}

TEST(HostInfo, TheProcessIsNamedAfterItsProgram) { EXPECT_EQ(kernel::processName(), "kernel_tests"); }

TEST(HostInfo, AForkedChildHasItsOwnProcessId) {
  EXPECT_EQ(kernel::processId(), getpid());
  const pid_t child = fork();
  if (child == 0) _exit(kernel::processId() == getpid() ? 0 : 1);
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST(HostInfo, AVersionIsReadAsUpToThreeNumbers) {
  const struct {
    std::string_view text;
    SystemVersion expected;
  } rows[] = {
      {"10.15.7", {10, 15, 7}},
      {"12", {12, 0, 0}},
      {"6.1.0-18-amd64", {6, 1, 0}},
      {"22.04.3 LTS", {22, 4, 3}},
      {"12.", {12, 0, 0}},
      {"1.2.3.4", {1, 2, 3}},
      {"18446744073709551615", {18446744073709551615U, 0, 0}},
  };
  for (const auto& row : rows) EXPECT_EQ(parseSystemVersion(row.text), row.expected) << row.text;
}

TEST(HostInfo, ATextThatIsNoVersionGivesNothing) {
  for (const char* text : {"", "trixie/sid", "v12", ".5", "-1", "18446744073709551616"}) {
    EXPECT_EQ(parseSystemVersion(text), std::nullopt) << text;
  }
}

TEST(HostInfo, TheSystemsVersionIsKnown) {
  EXPECT_GT(kernel::operatingSystemVersion().major, 0U);
  EXPECT_NE(kernel::operatingSystemVersionString().find("Linux "), std::string::npos);
}

TEST(HostInfo, TextsAreReadOnce) {
  EXPECT_EQ(&kernel::hardwareModel(), &kernel::hardwareModel());
  EXPECT_EQ(kernel::hardwareModel().find('\n'), std::string::npos);
}

TEST(HostInfo, TheEffectiveUserIsTheOneWhoOwnsNewFiles) {
  const test::TemporaryFolder folder;
  struct stat status {};
  ASSERT_EQ(stat(folder.write("file").c_str(), &status), 0);
  EXPECT_EQ(kernel::effectiveUserId(), status.st_uid);
}

}  // namespace
}  // namespace norvik
