#include "NorvikCore/Categories/NSProcessInfo+Norvik.h"

#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "NorvikCore/platform/kernel/FileDescriptor.h"
#include "NorvikCore/platform/kernel/HostInfo.h"
#include "NorvikCore/platform/kernel/OpenDescriptors.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "tests/support/InChild.h"
#include "tests/support/OnThreads.h"
#include "tests/support/Sanitizers.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WarningRecorder.h"

namespace norvik {
namespace {

using kernel::DescriptorSourceOverride;
using kernel::FileDescriptor;
using kernel::SystemFilesOverride;
using kernel::SystemLogCapture;
using test::RecordedWarning;
using test::TemporaryFolder;
using test::WarningRecorder;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const NSProcessInfo& info() { return NSProcessInfo::processInfo(); }

/// System files that a test defines.
class System {
 public:
  void write(const std::string& path, const std::string& content) const {
    std::filesystem::create_directories(std::filesystem::path(folder_.path(path)).parent_path());
    folder_.write(path, content);
  }

 private:
  TemporaryFolder folder_;
  SystemFilesOverride override_{folder_.path()};
};

/// Descriptors that a test defines, by number.
class Descriptors final : public kernel::DescriptorSource {
 public:
  struct One {
    std::string path;
    int result = 0;
  };
  explicit Descriptors(std::map<int, One> all) : all_(std::move(all)) {}

  int list(std::vector<int>& numbers) const override {
    numbers.clear();
    for (const auto& [number, one] : all_) numbers.push_back(number);
    return listResult;
  }
  int pathOf(int number, std::string& path) const override {
    path = all_.at(number).path;
    return 0;
  }
  int test(int number) const noexcept override {
    tested.push_back(number);
    return all_.at(number).result;
  }

  int listResult = 0;
  mutable std::vector<int> tested;

 private:
  const std::map<int, One> all_;
};

Value descriptorOf(const Ref<NSMutableDictionary>& files, const std::string& path) {
  return files->objectForKey(NSString::fromBytes(path));
}

TEST(NSProcessInfoNorvik, HeaderExample) {
  RUN_IN_CHILD({
    const System system;
    system.write("etc/os-release", "VERSION_ID=\"12\"\n");
    system.write("sys/devices/virtual/dmi/id/product_name", "OptiPlex 7010\n");
    EXPECT_EQ(nk_operatingSystemVersionString(), "12.0.0");
    EXPECT_EQ(nk_macHardwareModel(info()), NSString("OptiPlex 7010"));
    const TemporaryFolder folder;
    const FileDescriptor april(open(folder.write("april.payroll").c_str(), O_RDONLY | O_CLOEXEC));
    const auto files = NSMutableDictionary::dictionary();
    EXPECT_EQ(nk_validateOpenFileDescriptors(info(), files), 1);
    EXPECT_EQ(files->objectForKey(NSString(folder.path("april.payroll"))), Value(april.get()));
  });
}

TEST(NSProcessInfoNorvik, TheVersionIsThreeNumbersWithFullStops) {
  const struct {
    const char *release, *expected;
  } rows[] = {
      {"VERSION_ID=\"10.15.7\"\n", "10.15.7"},
      {"VERSION_ID=12\n", "12.0.0"},
      {"VERSION_ID=22.04\n", "22.4.0"},
      {"VERSION_ID=0.0.1\n", "0.0.1"},
      {"VERSION_ID=18446744073709551615.18446744073709551614.18446744073709551613\n",
       "18446744073709551615.18446744073709551614.18446744073709551613"},
  };
  for (const auto& row : rows) {
    RUN_IN_CHILD({
      const System system;
      system.write("etc/os-release", row.release);
      EXPECT_EQ(nk_operatingSystemVersionString(), NSString(row.expected));
    });
  }
}

TEST(NSProcessInfoNorvik, TheVersionIsReadOnce) {
  RUN_IN_CHILD({
    {
      const System system;
      system.write("etc/os-release", "VERSION_ID=10.15.7\n");
      EXPECT_EQ(nk_operatingSystemVersion().minorVersion, 15U);
      system.write("etc/os-release", "VERSION_ID=11.1\n");
      EXPECT_EQ(nk_operatingSystemVersion().majorVersion, 10U);
    }
    EXPECT_EQ(nk_operatingSystemVersion().majorVersion, 10U);
    EXPECT_EQ(nk_operatingSystemVersion().minorVersion, 15U);
    EXPECT_EQ(nk_operatingSystemVersion().patchVersion, 7U);
  });
}

TEST(NSProcessInfoNorvik, ThreadsThatAskFirstAllGetTheWholeVersion) {
  RUN_IN_CHILD({
    const System system;
    system.write("etc/os-release", "VERSION_ID=10.15.7\n");
    test::onThreads(8, [](int) { EXPECT_EQ(nk_operatingSystemVersionString(), "10.15.7"); });
  });
}

TEST(NSProcessInfoNorvik, TheVersionIsThatOfTheProcessInformation) {
  const NSOperatingSystemVersion expected = info().operatingSystemVersion(), version = nk_operatingSystemVersion();
  EXPECT_EQ(version.majorVersion, expected.majorVersion);
  EXPECT_EQ(version.minorVersion, expected.minorVersion);
  EXPECT_EQ(version.patchVersion, expected.patchVersion);
  EXPECT_GT(version.majorVersion, 0U);
}

TEST(NSProcessInfoNorvik, TheModelHasNoZeroAtItsEnd) {
  const System system;
  system.write("proc/device-tree/model", std::string("Raspberry Pi 4 Model B Rev 1.1\0", 31));
  const std::optional<NSString> model = nk_macHardwareModel(info());
  ASSERT_TRUE(model);
  EXPECT_EQ(*model, "Raspberry Pi 4 Model B Rev 1.1");
  EXPECT_EQ(model->length(), 30U);
}

TEST(NSProcessInfoNorvik, AMachineWithoutAModelHasNone) {
  const System system;
  EXPECT_EQ(nk_macHardwareModel(info()), std::nullopt);
  system.write("proc/device-tree/model", std::string("\0", 1));
  EXPECT_EQ(nk_macHardwareModel(info()), std::nullopt);
  system.write("sys/devices/virtual/dmi/id/product_name", "KVM\n");
  EXPECT_EQ(nk_macHardwareModel(info()), NSString("KVM")) << "read anew";
}

TEST(NSProcessInfoNorvik, TheModelIsTakenAsUtf8AndOtherBytesAreKept) {
  const System system;
  system.write("sys/devices/virtual/dmi/id/product_name", "Mod\xC3\xA8le \xE8\n");
  const std::optional<NSString> model = nk_macHardwareModel(info());
  ASSERT_TRUE(model);
  EXPECT_EQ(model->bytes(), "Mod\xC3\xA8le \xE8");
  EXPECT_EQ(model->substringToIndex(6), NSString("Mod\u00E8le"));
}

TEST(NSProcessInfoNorvik, OpenFilesAreValid) {
  const TemporaryFolder folder;
  const FileDescriptor file(open(folder.write("pay.csv").c_str(), O_RDONLY | O_CLOEXEC));
  const FileDescriptor directory(open(folder.path().c_str(), O_RDONLY | O_CLOEXEC));
  const FileDescriptor device(open("/dev/urandom", O_RDONLY | O_CLOEXEC));
  WarningRecorder warnings;
  const SystemLogCapture console;
  EXPECT_EQ(nk_validateOpenFileDescriptors(info()), 1);
  EXPECT_EQ(nk_validateOpenFileDescriptors(info(), nullptr), 1);
  const auto files = NSMutableDictionary::dictionaryWith({{"kept", "as it was"}});
  EXPECT_EQ(nk_validateOpenFileDescriptors(info(), files), 1);
  EXPECT_EQ(descriptorOf(files, folder.path("pay.csv")), Value(file.get()));
  EXPECT_EQ(descriptorOf(files, folder.path()), Value(directory.get()));
  EXPECT_EQ(descriptorOf(files, "/dev/urandom"), Value(device.get()));
  EXPECT_EQ(files->objectForKey("kept"), Value("as it was"));
  EXPECT_THAT(warnings.take(), IsEmpty());
  EXPECT_THAT(console.lines(), IsEmpty());
}

TEST(NSProcessInfoNorvik, OfSeveralDescriptorsForAPathTheLargestIsTold) {
  const TemporaryFolder folder;
  const FileDescriptor first(open(folder.write("pay.csv").c_str(), O_RDONLY | O_CLOEXEC));
  const FileDescriptor second(fcntl(first.get(), F_DUPFD_CLOEXEC, first.get() + 1));
  const auto files = NSMutableDictionary::dictionary();
  EXPECT_EQ(nk_validateOpenFileDescriptors(info(), files), 1);
  EXPECT_EQ(descriptorOf(files, folder.path("pay.csv")), Value(second.get()));
}

TEST(NSProcessInfoNorvik, ARemovedFileIsValidUnderAPathThatSaysSo) {
  const TemporaryFolder folder;
  const FileDescriptor file(open(folder.write("pay.csv").c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(unlink(folder.path("pay.csv").c_str()), 0);
  const auto files = NSMutableDictionary::dictionary();
  EXPECT_EQ(nk_validateOpenFileDescriptors(info(), files), 1);
  EXPECT_EQ(descriptorOf(files, folder.path("pay.csv") + " (deleted)"), Value(file.get()));
  EXPECT_TRUE(descriptorOf(files, folder.path("pay.csv")).isAbsent());
}

TEST(NSProcessInfoNorvik, WhatHasNoPathIsNotChecked) {
  const Descriptors open({{3, {"", EBADF}}, {4, {"/pay.csv"}}});
  const DescriptorSourceOverride instead(open);
  const auto files = NSMutableDictionary::dictionary();
  EXPECT_EQ(nk_validateOpenFileDescriptors(info(), files), 1);
  EXPECT_THAT(open.tested, ElementsAre(4));
  EXPECT_EQ(files->count(), 1U);
}

TEST(NSProcessInfoNorvik, AProcessWithoutOpenFilesHasNoBadOne) {
  const Descriptors none({});
  const DescriptorSourceOverride instead(none);
  EXPECT_EQ(nk_validateOpenFileDescriptors(info()), 1);
}

TEST(NSProcessInfoNorvik, ABadDescriptorEndsTheCheckAndIsToldOnTheConsole) {
  const Descriptors open({{3, {"/first"}}, {4, {"/pay 100%s.csv", EBADF}}, {5, {"/third"}}});
  const DescriptorSourceOverride instead(open);
  WarningRecorder warnings;
  const SystemLogCapture console;
  const auto files = NSMutableDictionary::dictionary();
  EXPECT_EQ(nk_validateOpenFileDescriptors(info(), files), 2);
  EXPECT_TRUE(files->isEqual(*NSDictionary::dictionaryWith({{"/first", 3}})));
  EXPECT_THAT(console.lines(), ElementsAre("Cannot get file descriptor info for : /pay 100%s.csv"));
  EXPECT_THAT(warnings.take(), IsEmpty());
  EXPECT_EQ(nk_validateOpenFileDescriptors(info()), 2) << "without a dictionary too";
}

TEST(NSProcessInfoNorvik, ACheckThatFailsOtherwiseEndsInSilence) {
  const Descriptors open({{3, {"/first"}}, {4, {"/second", EPERM}}, {5, {"/third", EBADF}}});
  const DescriptorSourceOverride instead(open);
  WarningRecorder warnings;
  const SystemLogCapture console;
  const auto files = NSMutableDictionary::dictionary();
  EXPECT_EQ(nk_validateOpenFileDescriptors(info(), files), 3);
  EXPECT_TRUE(files->isEqual(*NSDictionary::dictionaryWith({{"/first", 3}})));
  EXPECT_THAT(open.tested, ElementsAre(3, 4));
  EXPECT_THAT(console.lines(), IsEmpty());
  EXPECT_THAT(warnings.take(), IsEmpty());
}

/// After this call the kernel answers each query of a descriptor's flags with that error. False if this process may not
/// install a filter.
bool refuseFlagsWith(int error) {
  sock_filter rules[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_fcntl, 0, 3),
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[1])),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, F_GETFD, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned>(error)),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  const sock_fprog filter{std::size(rules), rules};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

TEST(NSProcessInfoNorvik, WhatTheKernelAnswersIsTheStatus) {
  const struct {
    int error, expected;
    std::size_t lines;
  } rows[] = {{EBADF, 2, 1}, {EPERM, 3, 0}, {EIO, 3, 0}};
  for (const auto& row : rows) {
    RUN_IN_CHILD({
      const TemporaryFolder folder;
      const FileDescriptor file(open(folder.write("pay.csv").c_str(), O_RDONLY | O_CLOEXEC));
      EXPECT_EQ(nk_validateOpenFileDescriptors(info()), 1);
      if (!refuseFlagsWith(row.error)) return;
      const SystemLogCapture console;
      EXPECT_EQ(nk_validateOpenFileDescriptors(info()), row.expected);
      const std::vector<std::string> lines = console.lines();
      ASSERT_THAT(lines, SizeIs(row.lines));
      if (row.lines == 1) {
        EXPECT_EQ(lines[0].substr(0, 39), "Cannot get file descriptor info for : /");
      }
    });
  }
}

TEST(NSProcessInfoNorvik, WithoutAListThereIsAWarning) {
  for (const int error : {ENOENT, EACCES, EPERM}) {
    Descriptors open({{3, {"/first", EBADF}}});
    open.listResult = error;
    const DescriptorSourceOverride instead(open);
    WarningRecorder warnings;
    EXPECT_EQ(nk_validateOpenFileDescriptors(info()), 0);
    const std::vector<RecordedWarning> taken = warnings.take();
    ASSERT_THAT(taken, SizeIs(1));
    EXPECT_EQ(taken[0].text, "Unable to get open file handles for " + std::to_string(getpid()) + "\n");
    EXPECT_EQ(taken[0].file, "Categories/NSProcessInfo+Norvik");
    EXPECT_EQ(taken[0].function, "nk_validateOpenFileDescriptors:");
    EXPECT_EQ(taken[0].flag, 2);
    EXPECT_THAT(open.tested, IsEmpty());
  }
}

TEST(NSProcessInfoNorvik, WithoutMemoryForTheListThereIsAWarning) {
  Descriptors open({{3, {"/first"}}, {4, {"/second"}}});
  open.listResult = ENOMEM;
  const DescriptorSourceOverride instead(open);
  WarningRecorder warnings;
  EXPECT_EQ(nk_validateOpenFileDescriptors(info()), 0);
  const std::vector<RecordedWarning> taken = warnings.take();
  ASSERT_THAT(taken, SizeIs(1));
  EXPECT_EQ(taken[0].text,
            "nk_validateOpenFileDescriptors: : Out of memory. Unable to allocate buffer with 24 bytes\n");
}

TEST(NSProcessInfoNorvik, WithoutProcTheStatusIsZero) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may change the root folder";
  const TemporaryFolder folder;
  RUN_IN_CHILD({
    ASSERT_EQ(chroot(folder.path().c_str()), 0);
    EXPECT_EQ(nk_validateOpenFileDescriptors(info()), 0);
  });
}

TEST(NSProcessInfoNorvik, WithAllDescriptorsInUseTheCheckIsStillMade) {
#ifdef NK_TEST_ADDRESS_SANITIZER
  GTEST_SKIP() << "the undefined behaviour sanitizer checks the kind of an object through a pipe of its own";
#endif
  const TemporaryFolder folder;
  const std::string path = folder.write("pay.csv");
  RUN_IN_CHILD({
    close_range(64, ~0U, 0);  // descriptors that the test's caller left open
    const rlimit few{64, 64};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    while (open(path.c_str(), O_RDONLY | O_CLOEXEC) >= 0) continue;
    const auto files = NSMutableDictionary::dictionary();
    EXPECT_EQ(nk_validateOpenFileDescriptors(info(), files), 1);
    EXPECT_EQ(descriptorOf(files, path), Value(63));
  });
}

TEST(NSProcessInfoNorvik, EveryFileIsValidWhileOtherThreadsOpenAndClose) {
  const TemporaryFolder folder;
  const std::string path = folder.write("pay.csv");
  const FileDescriptor kept(open(folder.write("kept.csv").c_str(), O_RDONLY | O_CLOEXEC));
  std::atomic<bool> isOver{false};
  std::atomic<int> opened{0};
  std::vector<std::thread> busy;
  for (int thread = 0; thread < 3; ++thread) {
    busy.emplace_back([&] {
      while (!isOver) {
        const FileDescriptor one(open(path.c_str(), O_RDONLY | O_CLOEXEC));
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) continue;
        const FileDescriptor reader(ends[0]), writer(ends[1]);
        ++opened;
      }
    });
  }
  std::thread other([&] {
    for (int round = 0; round < 500; ++round) EXPECT_EQ(nk_validateOpenFileDescriptors(info()), 1);
  });
  for (int round = 0; round < 500; ++round) {
    const auto files = NSMutableDictionary::dictionary();
    EXPECT_EQ(nk_validateOpenFileDescriptors(info(), files), 1);
    EXPECT_EQ(descriptorOf(files, folder.path("kept.csv")), Value(kept.get()));
  }
  other.join();
  isOver = true;
  for (std::thread& thread : busy) thread.join();
  EXPECT_GT(opened, 1000);
}

}  // namespace
}  // namespace norvik
