#include "NorvikCore/platform/kernel/HostInfo.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>

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
  EXPECT_EQ(&kernel::operatingSystemVersionString(), &kernel::operatingSystemVersionString());
  EXPECT_EQ(&kernel::processName(), &kernel::processName());
}

/// A simulated machine: the files by which the system describes it, in a fresh folder.
class Machine {
 public:
  void write(const std::string& path, const std::string& content) const {
    std::filesystem::create_directories(std::filesystem::path(folder_.path(path)).parent_path());
    folder_.write(path, content);
  }
  [[nodiscard]] std::string model() const {
    const kernel::SystemFilesOverride instead(folder_.path());
    return kernel::hardwareModel();
  }
  [[nodiscard]] SystemVersion version() const {
    const kernel::SystemFilesOverride instead(folder_.path());
    return kernel::operatingSystemVersion();
  }
  [[nodiscard]] std::string path(const std::string& name) const { return folder_.path(name); }

 private:
  test::TemporaryFolder folder_;
};

constexpr const char *product = "sys/devices/virtual/dmi/id/product_name",
                     *board = "sys/devices/virtual/dmi/id/board_name", *deviceTree = "proc/device-tree/model";

TEST(HostInfo, TheModelIsTheOneOfTheFirmware) {
  const struct {
    const char* why;
    std::string_view content, expected;
  } rows[] = {
      {"a desktop", "OptiPlex 7010\n", "OptiPlex 7010"},
      {"white space around it", "  20HRCTO1WW \t\n", "20HRCTO1WW"},
      {"a virtual machine", "Standard PC (Q35 + ICH9, 2009)\n", "Standard PC (Q35 + ICH9, 2009)"},
      {"no line end", "KVM", "KVM"},
      {"several lines", "KVM\nand more\n", "KVM"},
      {"bytes that are no UTF-8", "Mod\xE8le\n", "Mod\xE8le"},
      {"nothing", "", ""},
      {"an empty line", "\n", ""},
      {"white space only", " \t\n", ""},
  };
  for (const auto& row : rows) {
    const Machine machine;
    machine.write(product, std::string(row.content));
    EXPECT_EQ(machine.model(), row.expected) << row.why;
  }
}

TEST(HostInfo, AZeroEndsTheModelAndIsNotPartOfIt) {
  const Machine machine;
  machine.write(deviceTree, std::string("Raspberry Pi 4 Model B Rev 1.1\0", 31));
  EXPECT_EQ(machine.model(), "Raspberry Pi 4 Model B Rev 1.1");
  machine.write(deviceTree, std::string("\0", 1));
  EXPECT_EQ(machine.model(), "");
}

TEST(HostInfo, WhereTheMakerFilledNothingInTheBoardIsTheModel) {
  for (const char* unfilled : {"System Product Name\n", "To Be Filled By O.E.M.\n", "Default string\n", "None\n"}) {
    const Machine machine;
    machine.write(product, unfilled);
    EXPECT_EQ(machine.model(), "") << unfilled;
    machine.write(board, "PRIME B450M-A\n");
    EXPECT_EQ(machine.model(), "PRIME B450M-A") << unfilled;
  }
}

TEST(HostInfo, TheProductComesBeforeTheBoardAndThatBeforeTheDeviceTree) {
  const Machine machine;
  machine.write(deviceTree, "third");
  EXPECT_EQ(machine.model(), "third");
  machine.write(board, "second");
  EXPECT_EQ(machine.model(), "second");
  machine.write(product, "first");
  EXPECT_EQ(machine.model(), "first");
}

TEST(HostInfo, AMachineThatSaysNothingHasNoModel) {
  EXPECT_EQ(Machine().model(), "");
  const kernel::SystemFilesOverride nowhere("/nowhere/at/all");
  EXPECT_EQ(kernel::hardwareModel(), "");
}

TEST(HostInfo, WhatIsNoFileInThePlaceOfTheModelIsPassedOver) {
  const Machine machine;
  machine.write(deviceTree, "the device tree's");
  std::filesystem::create_directories(machine.path(product));
  ASSERT_EQ(mkfifo(machine.path(board).c_str(), 0600), 0);
  EXPECT_EQ(machine.model(), "the device tree's");
}

TEST(HostInfo, TheModelOfThisMachineIsOneLine) {
  const std::string model = kernel::hardwareModel();
  EXPECT_EQ(model.find_first_of(std::string_view("\n\0", 2)), std::string::npos);
}

TEST(HostInfo, TheVersionIsTheDistributionsOrElseTheKernels) {
  const Machine machine;
  const SystemVersion ofKernel = machine.version();
  EXPECT_GE(ofKernel.major, 2U);
  machine.write("usr/lib/os-release", "NAME=Debian\nVERSION_ID='11'\n");
  EXPECT_EQ(machine.version(), (SystemVersion{11, 0, 0}));
  machine.write("etc/os-release", "NAME=Debian\nVERSION_ID=\"10.15.7\"\n");
  EXPECT_EQ(machine.version(), (SystemVersion{10, 15, 7}));
  machine.write("etc/os-release", "NAME=Debian\nVERSION_ID=trixie/sid\n");
  EXPECT_EQ(machine.version(), ofKernel);
}

TEST(HostInfo, TheFormerFilesComeBackWhenAnOverrideEnds) {
  const SystemVersion real = kernel::operatingSystemVersion();
  const Machine first, second;
  first.write("etc/os-release", "VERSION_ID=1\n");
  second.write("etc/os-release", "VERSION_ID=2\n");
  {
    const kernel::SystemFilesOverride outer(first.path("."));
    EXPECT_EQ(second.version(), (SystemVersion{2, 0, 0}));
    EXPECT_EQ(kernel::operatingSystemVersion(), (SystemVersion{1, 0, 0}));
  }
  EXPECT_EQ(kernel::operatingSystemVersion(), real);
}

TEST(HostInfo, TheEffectiveUserIsTheOneWhoOwnsNewFiles) {
  const test::TemporaryFolder folder;
  struct stat status {};
  ASSERT_EQ(stat(folder.write("file").c_str(), &status), 0);
  EXPECT_EQ(kernel::effectiveUserId(), status.st_uid);
}

}  // namespace
}  // namespace norvik
