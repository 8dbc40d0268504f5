#include "NorvikCore/platform/kernel/OpenDescriptors.h"

#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <string>
#include <thread>
#include <vector>

#include "NorvikCore/platform/kernel/Directory.h"
#include "NorvikCore/platform/kernel/FileDescriptor.h"
#include "tests/support/InChild.h"
#include "tests/support/Sanitizers.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik {
namespace {

using kernel::checkDescriptor;
using kernel::DescriptorSource;
using kernel::DescriptorSourceOverride;
using kernel::DescriptorState;
using kernel::FileDescriptor;
using kernel::SystemDescriptors;
using test::TemporaryFolder;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

const SystemDescriptors fromSystem;

std::vector<int> listed(const DescriptorSource& source = fromSystem) {
  std::vector<int> numbers;
  EXPECT_EQ(source.list(numbers), 0);
  return numbers;
}

std::string pathOf(int number) {
  std::string path = "not set";
  EXPECT_EQ(fromSystem.pathOf(number, path), 0);
  return path;
}

/// One descriptor that is always open with the same path, and whose tests give the results that a test case sets.
class Scripted : public DescriptorSource {
 public:
  int list(std::vector<int>& numbers) const override {
    numbers = {7};
    return 0;
  }
  int pathOf(int, std::string& path) const override {
    ++asked;
    if (!paths.empty()) {
      std::string next = paths.front();
      if (paths.size() > 1) paths.pop_front();
      path = next;
      return next == "closed" ? ENOENT : 0;
    }
    path = "/pay.csv";
    return pathError;
  }
  int test(int) const noexcept override {
    ++tested;
    if (results.empty()) return result;
    const int next = results.front();
    results.pop_front();
    return next;
  }

  int result = 0, pathError = 0;
  mutable std::deque<int> results;        // used first, before `result`
  mutable std::deque<std::string> paths;  // the last one is repeated
  mutable int asked = 0, tested = 0;
};

TEST(OpenDescriptors, HeaderExample) {
  const TemporaryFolder folder;
  const FileDescriptor file(open(folder.write("pay.csv").c_str(), O_RDONLY | O_CLOEXEC));
  const DescriptorSource& source = kernel::descriptorSource();
  std::vector<int> numbers;
  ASSERT_EQ(source.list(numbers), 0);
  std::vector<std::pair<std::string, int>> reported;
  std::string path;
  for (int number : numbers) {
    if (checkDescriptor(source, number, path) == DescriptorState::valid) reported.emplace_back(path, number);
  }
  EXPECT_THAT(reported, Contains(std::pair(folder.path("pay.csv"), file.get())));
}

TEST(OpenDescriptors, TheListHasWhatIsOpenInOrderAndNothingElse) {
  const TemporaryFolder folder;
  FileDescriptor low(open(folder.write("low").c_str(), O_RDONLY | O_CLOEXEC));
  const FileDescriptor high(fcntl(low.get(), F_DUPFD_CLOEXEC, 40));
  std::vector<int> numbers = listed();
  EXPECT_THAT(numbers, Contains(low.get()));
  EXPECT_THAT(numbers, Contains(high.get()));
  EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
  for (const int number : numbers) EXPECT_GE(fcntl(number, F_GETFD), 0) << number << " was open for the list only";
  const int closed = low.get();
  low.close();
  EXPECT_THAT(listed(), Not(Contains(closed)));
}

TEST(OpenDescriptors, WhatIsInTheFileSystemHasAPath) {
  const TemporaryFolder folder;
  ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
  const FileDescriptor file(open(folder.write("a b\n\xE9").c_str(), O_RDONLY | O_CLOEXEC));
  const FileDescriptor directory(open(folder.path().c_str(), O_RDONLY | O_CLOEXEC));
  const FileDescriptor device(open("/dev/urandom", O_RDONLY | O_CLOEXEC));
  const FileDescriptor pipe(open(folder.path("pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  const FileDescriptor place(open(folder.path().c_str(), O_PATH | O_CLOEXEC));
  EXPECT_EQ(pathOf(file.get()), folder.path("a b\n\xE9"));
  EXPECT_EQ(pathOf(directory.get()), folder.path());
  EXPECT_EQ(pathOf(device.get()), "/dev/urandom");
  EXPECT_EQ(pathOf(pipe.get()), folder.path("pipe"));
  EXPECT_EQ(pathOf(place.get()), folder.path());
}

TEST(OpenDescriptors, WhatIsNotInTheFileSystemHasNone) {
  int ends[2], sockets[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets), 0);
  const FileDescriptor reader(ends[0]), writer(ends[1]), one(sockets[0]), other(sockets[1]);
  const FileDescriptor event(eventfd(0, EFD_CLOEXEC)), memory(memfd_create("pay", MFD_CLOEXEC));
  for (const int number : {reader.get(), writer.get(), one.get(), event.get(), memory.get()}) {
    EXPECT_EQ(pathOf(number), "");
    std::string path = "not set";
    EXPECT_EQ(checkDescriptor(fromSystem, number, path), DescriptorState::withoutPath);
    EXPECT_EQ(path, "");
  }
}

TEST(OpenDescriptors, ARemovedFileIsValidAndSaysSoInItsPath) {
  const TemporaryFolder folder;
  const FileDescriptor file(open(folder.write("pay.csv").c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(unlink(folder.path("pay.csv").c_str()), 0);
  std::string path;
  EXPECT_EQ(checkDescriptor(fromSystem, file.get(), path), DescriptorState::valid);
  EXPECT_EQ(path, folder.path("pay.csv") + " (deleted)");
}

TEST(OpenDescriptors, WhatIsNotOpenIsClosed) {
  std::string path = "not set";
  EXPECT_EQ(checkDescriptor(fromSystem, 1'000'000, path), DescriptorState::closed);
  EXPECT_EQ(path, "");
  EXPECT_EQ(fromSystem.test(1'000'000), EBADF);
  EXPECT_EQ(fromSystem.pathOf(1'000'000, path), ENOENT);
}

TEST(OpenDescriptors, AFolderThatCannotBeListedSaysWhy) {
  const TemporaryFolder folder;
  std::vector<int> numbers = {4711};
  EXPECT_EQ(SystemDescriptors("/nowhere").list(numbers), ENOENT);
  EXPECT_THAT(numbers, IsEmpty());
  EXPECT_EQ(SystemDescriptors(folder.write("file")).list(numbers), ENOTDIR);
}

TEST(OpenDescriptors, NamesThatAreNoNumbersAreLeftOut) {
  const TemporaryFolder folder;
  // Greater than the number of the folder's own descriptor, which the list leaves out.
  for (const char* name : {"1000000", "900000", "x", "7x", "99999999999", " 8"}) folder.write(name);
  EXPECT_THAT(listed(SystemDescriptors(folder.path())), ElementsAre(900'000, 1'000'000));
}

TEST(OpenDescriptors, WithoutProcTheListFails) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may change the root folder";
  const TemporaryFolder folder;
  RUN_IN_CHILD({
    ASSERT_EQ(chroot(folder.path().c_str()), 0);
    std::vector<int> numbers;
    EXPECT_EQ(kernel::descriptorSource().list(numbers), ENOENT);
  });
}

TEST(OpenDescriptors, WithoutAFreeDescriptorTheListIsStillWhole) {
#ifdef NK_TEST_ADDRESS_SANITIZER
  GTEST_SKIP() << "the undefined behaviour sanitizer checks the kind of an object through a pipe of its own";
#endif
  const TemporaryFolder folder;
  const std::string path = folder.write("pay.csv");
  RUN_IN_CHILD({
    close_range(64, ~0U, 0);  // descriptors that the caller of the test has left open
    const rlimit few{64, 64};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    int last = -1;
    for (int next; (next = open(path.c_str(), O_RDONLY | O_CLOEXEC)) >= 0;) last = next;
    ASSERT_EQ(errno, EMFILE);
    std::vector<int> numbers = listed();
    EXPECT_EQ(numbers.size(), 64U);
    EXPECT_EQ(numbers.back(), 63);
    close(last);
    std::vector<int> fewer = listed();
    EXPECT_EQ(fewer.size(), 63U);
    EXPECT_THAT(fewer, Not(Contains(last)));
  });
}

TEST(OpenDescriptors, WithoutAFreeDescriptorAFolderThatCannotBeListedSaysWhyToo) {
#ifdef NK_TEST_ADDRESS_SANITIZER
  GTEST_SKIP() << "the undefined behaviour sanitizer checks the kind of an object through a pipe of its own";
#endif
  const TemporaryFolder folder;
  const std::string path = folder.write("pay.csv");
  RUN_IN_CHILD({
    close_range(64, ~0U, 0);
    const rlimit few{64, 64};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    while (open(path.c_str(), O_RDONLY | O_CLOEXEC) >= 0) continue;
    ASSERT_EQ(errno, EMFILE);
    std::vector<int> numbers;
    EXPECT_EQ(SystemDescriptors("/nowhere").list(numbers), ENOENT);
    EXPECT_EQ(SystemDescriptors(path).list(numbers), ENOTDIR);
    EXPECT_THAT(numbers, IsEmpty());
  });
}

TEST(OpenDescriptors, AThreadSeesTheDescriptorsAfterTheMainThreadHasEnded) {
  const TemporaryFolder folder;
  const std::string path = folder.write("pay.csv");
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        std::thread([&] {
          while (access("/proc/self/fd/0", F_OK) == 0) sched_yield();  // until the main thread has ended
          const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
          const std::vector<int> numbers = listed();
          _exit(std::count(numbers.begin(), numbers.end(), file) == 1 ? 0 : 1);
        }).detach();
        syscall(SYS_exit, 0);  // ends this thread only
      },
      ::testing::ExitedWithCode(0), "");
}

TEST(OpenDescriptors, OneThatTestsWellIsValid) {
  const Scripted source;
  std::string path;
  EXPECT_EQ(checkDescriptor(source, 7, path), DescriptorState::valid);
  EXPECT_EQ(path, "/pay.csv");
  EXPECT_EQ(source.tested, 1);
}

TEST(OpenDescriptors, OneThatStaysListedAndTestsBadIsBad) {
  Scripted source;
  source.result = EBADF;
  std::string path;
  EXPECT_EQ(checkDescriptor(source, 7, path), DescriptorState::bad);
  EXPECT_EQ(path, "/pay.csv");
  EXPECT_EQ(source.tested, 256);
}

TEST(OpenDescriptors, AnyOtherErrorIsAFailureAtOnce) {
  for (const int error : {EPERM, EIO, ENOSYS}) {
    Scripted source;
    source.result = error;
    std::string path;
    EXPECT_EQ(checkDescriptor(source, 7, path), DescriptorState::failed);
    EXPECT_EQ(source.tested, 1);
  }
}

TEST(OpenDescriptors, OneThatIsClosedBeforeItIsTestedIsNotBad) {
  Scripted source;
  source.result = EBADF;
  source.paths = {"/pay.csv", "closed"};
  std::string path;
  EXPECT_EQ(checkDescriptor(source, 7, path), DescriptorState::closed);
  EXPECT_EQ(path, "");
}

TEST(OpenDescriptors, OneThatIsClosedAndOpenedAgainTimeAfterTimeIsNotBad) {
  Scripted source;
  source.result = EBADF;
  source.results = std::deque<int>(255, EBADF);
  source.results.push_back(0);
  std::string path;
  EXPECT_EQ(checkDescriptor(source, 7, path), DescriptorState::valid) << "the 256th look finds it open";
  EXPECT_EQ(path, "/pay.csv");
}

TEST(OpenDescriptors, ANumberThatIsUsedAgainIsLookedAtAgain) {
  Scripted source;
  source.paths = {"/old.csv", "/new.csv"};
  std::string path;
  EXPECT_EQ(checkDescriptor(source, 7, path), DescriptorState::valid);
  EXPECT_EQ(path, "/new.csv");
  EXPECT_EQ(source.tested, 2);
  source.paths = {"/old.csv", ""};
  EXPECT_EQ(checkDescriptor(source, 7, path), DescriptorState::withoutPath) << "a socket now";
}

TEST(OpenDescriptors, ANumberThatIsNeverTheSameTwiceIsPassedOver) {
  Scripted source;
  for (int i = 0; i < 300; ++i) source.paths.push_back("/" + std::to_string(i));
  std::string path;
  EXPECT_EQ(checkDescriptor(source, 7, path), DescriptorState::closed);
  EXPECT_EQ(path, "");
  EXPECT_EQ(source.tested, 256);
}

TEST(OpenDescriptors, APathThatMayNotBeReadIsNone) {
  Scripted source;
  source.pathError = EACCES;
  std::string path;
  EXPECT_EQ(checkDescriptor(source, 7, path), DescriptorState::withoutPath);
  EXPECT_EQ(path, "");
  EXPECT_EQ(source.tested, 0);
}

TEST(OpenDescriptors, AFileThatIsDeeperThanAPathMayBeHasNone) {
  const TemporaryFolder folder;
  const std::string name(99, 'd');
  FileDescriptor level(open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  for (int i = 0; i < 45; ++i) {
    ASSERT_EQ(mkdirat(level.get(), name.c_str(), 0700), 0);
    level = FileDescriptor(openat(level.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  }
  std::string path;
  EXPECT_EQ(checkDescriptor(kernel::descriptorSource(), level.get(), path), DescriptorState::withoutPath);
  EXPECT_EQ(path, "");
  EXPECT_EQ(kernel::removeTree(folder.path(name)), 0);
}

TEST(OpenDescriptors, TheFormerSourceComesBackWhenAnOverrideEnds) {
  const DescriptorSource& usual = kernel::descriptorSource();
  const Scripted first, second;
  {
    const DescriptorSourceOverride outer(first);
    {
      const DescriptorSourceOverride inner(second);
      EXPECT_EQ(&kernel::descriptorSource(), &second);
    }
    EXPECT_EQ(&kernel::descriptorSource(), &first);
  }
  EXPECT_EQ(&kernel::descriptorSource(), &usual);
}

TEST(OpenDescriptors, NothingIsBadWhileOtherThreadsOpenAndClose) {
  const TemporaryFolder folder;
  const std::string path = folder.write("pay.csv");
  std::atomic<bool> isOver{false};
  std::vector<std::thread> busy;
  for (int thread = 0; thread < 3; ++thread) {
    busy.emplace_back([&] {
      while (!isOver) {
        const FileDescriptor one(open(path.c_str(), O_RDONLY | O_CLOEXEC));
        const FileDescriptor two(open("/dev/null", O_RDONLY | O_CLOEXEC));
      }
    });
  }
  int valid = 0, closed = 0, faults = 0;
  std::string found;
  for (int round = 0; round < 2000; ++round) {
    for (const int number : listed()) {
      const DescriptorState state = checkDescriptor(fromSystem, number, found);
      valid += state == DescriptorState::valid;
      closed += state == DescriptorState::closed;
      faults += state == DescriptorState::bad || state == DescriptorState::failed;
    }
  }
  isOver = true;
  for (std::thread& thread : busy) thread.join();
  EXPECT_EQ(faults, 0);
  EXPECT_GT(valid, 0);
  EXPECT_GT(closed, 0) << "no descriptor was closed between list and look";
}

}  // namespace
}  // namespace norvik
