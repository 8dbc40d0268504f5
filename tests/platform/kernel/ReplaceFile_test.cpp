#include "NorvikCore/platform/kernel/ReplaceFile.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>
#include <optional>
#include <string>

#include "NorvikCore/platform/kernel/ExtendedAttributes.h"
#include "NorvikCore/platform/kernel/FileDescriptor.h"
#include "tests/support/AnotherUser.h"
#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik {
namespace {

namespace fs = std::filesystem;
using norvik::test::TemporaryFolder;

std::string wholeTextOf(const std::string& path) {
  std::string text;
  EXPECT_EQ(kernel::readFile(path, text), 0) << path;
  return text;
}

struct stat entryAt(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
  return status;
}

std::size_t entryCountIn(const std::string& folder) {
  return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

/// While it lives, no file can have more bytes: like a full disk.
class LargestFile {
 public:
  explicit LargestFile(rlim_t bytes) {
    EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &before_), 0);
    const rlimit limit = {bytes, before_.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  }
  ~LargestFile() { setrlimit(RLIMIT_FSIZE, &before_); }
  LargestFile(const LargestFile&) = delete;
  LargestFile& operator=(const LargestFile&) = delete;

 private:
  rlimit before_{};
};

// With attributes of the file system, and with side files.
class ReplaceFile : public ::testing::TestWithParam<bool> {
 protected:
  ReplaceFile() {
    if (GetParam()) without_.emplace();
  }
  const TemporaryFolder folder;
  const std::string path = folder.path("pay.csv");

 private:
  std::optional<kernel::WithoutExtendedAttributes> without_;
};
INSTANTIATE_TEST_SUITE_P(Attributes, ReplaceFile, ::testing::Values(false, true));

TEST_P(ReplaceFile, AFailureLeavesTheOldContentAndNothingElse) {
  ASSERT_EQ(kernel::replaceFile(path, "old"), 0);
  const std::string large(100'000, 'x');
  {
    const LargestFile full(50'000);
    EXPECT_EQ(kernel::replaceFile(path, large), EFBIG);
    EXPECT_EQ(kernel::replaceFile(folder.path("new"), large), EFBIG);
  }
  EXPECT_EQ(wholeTextOf(path), "old");
  EXPECT_EQ(entryCountIn(folder.path()), 1U);
  EXPECT_EQ(kernel::replaceFile(path, large), 0);
  EXPECT_EQ(wholeTextOf(path), large);
  EXPECT_EQ(entryCountIn(folder.path()), 1U);
}

TEST_P(ReplaceFile, PermissionsAttributesAndLinksStay) {
  ASSERT_EQ(kernel::replaceFile(path, "old"), 0);
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  ASSERT_EQ(kernel::setAttribute(path, "payroll.locked", "yes"), 0);
  const std::string link = folder.path("link");
  ASSERT_EQ(symlink("pay.csv", link.c_str()), 0);
  EXPECT_EQ(kernel::replaceFile(link, "new"), 0);
  EXPECT_EQ(wholeTextOf(path), "new");
  EXPECT_TRUE(S_ISLNK(entryAt(link).st_mode));
  EXPECT_EQ(entryAt(path).st_mode & 07777, 0640U);
  std::string value;
  EXPECT_EQ(kernel::getAttribute(path, "payroll.locked", value), 0);
  EXPECT_EQ(value, "yes");
}

TEST_P(ReplaceFile, AReaderKeepsTheOldContent) {
  ASSERT_EQ(kernel::replaceFile(path, "old"), 0);
  kernel::FileDescriptor reader;
  ASSERT_EQ(kernel::openFile(path, {.read = true}, reader), 0);
  EXPECT_EQ(kernel::replaceFile(path, "new"), 0);
  std::string text;
  EXPECT_EQ(kernel::readAll(reader.get(), text), 0);
  EXPECT_EQ(text, "old");
}

TEST_P(ReplaceFile, AllNamesOfAFileHaveTheNewContent) {
  ASSERT_EQ(kernel::replaceFile(path, "a longer old content"), 0);
  const std::string other = folder.path("other");
  ASSERT_EQ(link(path.c_str(), other.c_str()), 0);
  EXPECT_EQ(kernel::replaceFile(path, "new"), 0);
  EXPECT_EQ(wholeTextOf(other), "new");
}

TEST_P(ReplaceFile, AnAccessListStays) {
  ASSERT_EQ(kernel::replaceFile(path, "a longer old content"), 0);
  // Version 2; read and write for the owner, read for the user 1234, nothing for the group, a mask, nothing for others.
  constexpr std::string_view list(
      "\2\0\0\0"
      "\1\0\6\0\xff\xff\xff\xff\2\0\4\0\xd2\4\0\0\4\0\0\0\xff\xff\xff\xff"
      "\20\0\4\0\xff\xff\xff\xff\40\0\0\0\xff\xff\xff\xff",
      44);
  constexpr const char* name = "system.posix_acl_access";
  if (setxattr(path.c_str(), name, list.data(), list.size(), 0) != 0) GTEST_SKIP() << "no access lists here";
  EXPECT_EQ(kernel::replaceFile(path, "new"), 0);
  EXPECT_EQ(wholeTextOf(path), "new");
  char kept[64];
  const ssize_t size = getxattr(path.c_str(), name, kept, sizeof kept);
  ASSERT_GT(size, 0);
  EXPECT_EQ(std::string_view(kept, static_cast<std::size_t>(size)), list);
}

TEST_P(ReplaceFile, ADanglingLinkGetsItsTarget) {
  const std::string link = folder.path("link");
  ASSERT_EQ(symlink("pay.csv", link.c_str()), 0);
  EXPECT_EQ(kernel::replaceFile(link, "new"), 0);
  EXPECT_EQ(wholeTextOf(path), "new");
  EXPECT_TRUE(S_ISLNK(entryAt(link).st_mode));
}

TEST_P(ReplaceFile, APipeReceivesTheContent) {
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const kernel::FileDescriptor reader(open(path.c_str(), O_RDWR | O_CLOEXEC));
  ASSERT_TRUE(reader.isOpen());
  EXPECT_EQ(kernel::replaceFile(path, "new"), 0);
  char bytes[3];
  EXPECT_EQ(read(reader.get(), bytes, sizeof bytes), 3);
  EXPECT_TRUE(S_ISFIFO(entryAt(path).st_mode));
}

TEST_P(ReplaceFile, AFileInAFolderWithoutRoomForOthersIsWrittenInPlace) {
  ASSERT_EQ(kernel::replaceFile(path, "a longer old content"), 0);
  ASSERT_EQ(chmod(folder.path().c_str(), 0500), 0);
  EXPECT_EQ(kernel::replaceFile(path, "new"), 0);
  ASSERT_EQ(chmod(folder.path().c_str(), 0700), 0);
  EXPECT_EQ(wholeTextOf(path), "new");
}

TEST_P(ReplaceFile, AFileThatIsNotWritableIsRefused) {
  RUN_IN_CHILD({
    if (geteuid() == 0) {  // root may write every file
      ASSERT_TRUE(norvik::test::becomeUserWithoutRights(folder.path()));
    }
    ASSERT_EQ(kernel::replaceFile(path, "old"), 0);
    ASSERT_EQ(chmod(path.c_str(), 0400), 0);
    EXPECT_EQ(kernel::replaceFile(path, "new"), EACCES);
    EXPECT_EQ(wholeTextOf(path), "old");
  });
}

}  // namespace
}  // namespace norvik
