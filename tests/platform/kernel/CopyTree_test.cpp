#include "NorvikCore/platform/kernel/CopyTree.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <optional>

#include "NorvikCore/platform/kernel/Directory.h"
#include "NorvikCore/platform/kernel/ExtendedAttributes.h"
#include "NorvikCore/platform/kernel/FileStatus.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik {
namespace {

namespace fs = std::filesystem;
using norvik::test::TemporaryFolder;

kernel::FileStatus statusAt(const std::string& path) {
  kernel::FileStatus status;
  EXPECT_EQ(kernel::readFileStatus(path, status, kernel::Links::stay), 0) << path;
  return status;
}

// With attributes of the file system, and with side files.
class CopyTree : public ::testing::TestWithParam<bool> {
 protected:
  CopyTree() {
    if (GetParam()) off_.emplace();
  }
  TemporaryFolder folder;

 private:
  std::optional<kernel::WithoutExtendedAttributes> off_;
};
INSTANTIATE_TEST_SUITE_P(SideFiles, CopyTree, ::testing::Bool());

TEST_P(CopyTree, HeaderExample) {
  fs::create_directory(folder.path("2024-25"));
  EXPECT_EQ(kernel::copyTree(folder.path("2024-25"), folder.path("archive")), 0);
  EXPECT_TRUE(fs::is_directory(folder.path("archive")));
  EXPECT_EQ(kernel::copyTree(folder.path("2023-24"), folder.path("other")), ENOENT);
}

TEST_P(CopyTree, AFileIsCopiedWithPermissionsTimeAndAttributes) {
  const std::string content = std::string(300'000, 'x') + "end", from = folder.write("a", content),
                    to = folder.path("b");
  ASSERT_EQ(kernel::setAttribute(from, "payroll.locked", "yes"), 0);
  ASSERT_EQ(kernel::setPermissions(from, 0440), 0);
  ASSERT_EQ(kernel::setModificationTime(from, 1'000'000'000'123'456'789), 0);
  EXPECT_EQ(kernel::copyTree(from, to), 0);
  EXPECT_EQ(folder.read(to), content);
  EXPECT_EQ(statusAt(to).permissions, 0440U);
  EXPECT_EQ(statusAt(to).modification, 1'000'000'000'123'456'789);
  EXPECT_TRUE(kernel::hasAttribute(to, "payroll.locked"));
  EXPECT_TRUE(fs::exists(from));
}

TEST_P(CopyTree, AFolderIsCopiedWithAllThatIsInIt) {
  ASSERT_EQ(kernel::createDirectories(folder.path("a/b")), 0);
  ASSERT_EQ(kernel::setAttribute(folder.write("a/b/pay.csv", "12"), "payroll.locked", ""), 0);
  fs::create_symlink("b/pay.csv", folder.path("a/link"));
  ASSERT_EQ(kernel::setPermissions(folder.path("a/b"), 0555), 0);
  EXPECT_EQ(kernel::copyTree(folder.path("a"), folder.path("copy")), 0);
  EXPECT_EQ(folder.read(folder.path("copy/link")), "12");
  EXPECT_EQ(fs::read_symlink(folder.path("copy/link")), "b/pay.csv");
  EXPECT_EQ(statusAt(folder.path("copy/b")).permissions, 0555U);
  EXPECT_TRUE(kernel::hasAttribute(folder.path("copy/b/pay.csv"), "payroll.locked"));
  ASSERT_EQ(kernel::setPermissions(folder.path("a/b"), 0755), 0);
  ASSERT_EQ(kernel::setPermissions(folder.path("copy/b"), 0755), 0);
}

TEST_P(CopyTree, WhatIsThereAlreadyStays) {
  const std::string from = folder.write("a", "new"), to = folder.write("b", "old");
  EXPECT_EQ(kernel::copyTree(from, to), EEXIST);
  EXPECT_EQ(folder.read(to), "old");
}

TEST_P(CopyTree, AFolderIsNotCopiedIntoItself) {
  ASSERT_EQ(kernel::createDirectories(folder.path("a/b")), 0);
  EXPECT_EQ(kernel::copyTree(folder.path("a"), folder.path("a/c")), EINVAL);
  EXPECT_EQ(kernel::copyTree(folder.path("a"), folder.path("a/b/../b/c")), EINVAL);
  EXPECT_EQ(kernel::copyTree(folder.path("a"), folder.path("ab")), 0);
}

TEST_P(CopyTree, NothingIsLeftOfACopyThatFails) {
  ASSERT_EQ(kernel::createDirectories(folder.path("a")), 0);
  folder.write("a/file");
  ASSERT_EQ(mkfifo(folder.path("a/pipe").c_str(), 0600), 0);
  EXPECT_EQ(kernel::copyTree(folder.path("a"), folder.path("copy")), ENOTSUP);
  EXPECT_FALSE(fs::exists(folder.path("copy")));
  EXPECT_EQ(kernel::copyTree(folder.path("absent"), folder.path("copy")), ENOENT);
  EXPECT_EQ(kernel::copyTree(folder.path("a/file"), folder.path("absent/copy")), ENOENT);
  EXPECT_EQ(kernel::copyTree(folder.path("a/file"), ""), ENOENT);
}

}  // namespace
}  // namespace norvik
