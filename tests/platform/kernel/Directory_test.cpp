#include "NorvikCore/platform/kernel/Directory.h"

#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "NorvikCore/platform/kernel/ExtendedAttributes.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik {
namespace {

namespace fs = std::filesystem;
using norvik::test::TemporaryFolder;
using ::testing::UnorderedElementsAre;

TEST(Directory, MissingParentsAreMade) {
  const TemporaryFolder folder;
  EXPECT_EQ(kernel::createDirectories(folder.path("2024/April/Pay")), 0);
  EXPECT_TRUE(fs::is_directory(folder.path("2024/April/Pay")));
  EXPECT_EQ(kernel::createDirectories(folder.path("2025//May/")), 0);
  EXPECT_TRUE(fs::is_directory(folder.path("2025/May")));
}

TEST(Directory, AFolderThatIsThereIsSuccess) {
  const TemporaryFolder folder;
  fs::create_directory_symlink(folder.path(), folder.path("link"));
  EXPECT_EQ(kernel::createDirectories(folder.path()), 0);
  EXPECT_EQ(kernel::createDirectories(folder.path("link")), 0);
  EXPECT_EQ(kernel::createDirectories("/"), 0);
}

TEST(Directory, AFileInTheWayIsNamed) {
  const TemporaryFolder folder;
  const std::string file = folder.write("file");
  std::string failed;
  EXPECT_EQ(kernel::createDirectories(file, 0777, &failed), EEXIST);
  EXPECT_EQ(failed, file);
  EXPECT_EQ(kernel::createDirectories(file + "/below/it", 0777, &failed), EEXIST);
  EXPECT_EQ(failed, file);
  EXPECT_EQ(kernel::createDirectories(""), ENOENT);
}

TEST(Directory, NewFoldersHaveTheGivenPermissions) {
  const TemporaryFolder folder;
  ASSERT_EQ(kernel::createDirectories(folder.path("private"), 0700), 0);
  struct stat status {};
  ASSERT_EQ(stat(folder.path("private").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0700U);
}

TEST(Directory, SeveralThreadsMayMakeTheSameFolders) {
  const TemporaryFolder folder;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] { EXPECT_EQ(kernel::createDirectories(folder.path("a/b/c/d/e/f/g")), 0); });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(Directory, AListHasEveryEntryHiddenOnesToo) {
  const TemporaryFolder folder;
  folder.write("pay.csv");
  folder.write(".hidden");
  folder.write("not \xFF utf-8");
  std::vector<std::string> names = {"before"};
  EXPECT_EQ(kernel::listDirectory(folder.path(), names), 0);
  EXPECT_THAT(names, UnorderedElementsAre("pay.csv", ".hidden", "not \xFF utf-8"));
  EXPECT_EQ(kernel::listDirectory(folder.path("absent"), names), ENOENT);
  EXPECT_EQ(kernel::listDirectory(folder.path("pay.csv"), names), ENOTDIR);
}

TEST(Directory, AFolderIsRemovedWithAllThatIsInIt) {
  const TemporaryFolder folder;
  ASSERT_EQ(kernel::createDirectories(folder.path("a/b")), 0);
  folder.write("a/pay.csv");
  const std::string kept = folder.write("kept");
  fs::create_symlink(kept, folder.path("a/b/link"));
  EXPECT_EQ(kernel::removeTree(folder.path("a")), 0);
  EXPECT_FALSE(fs::exists(folder.path("a")));
  EXPECT_TRUE(fs::exists(kept));
  EXPECT_EQ(kernel::removeTree(folder.path("a")), ENOENT);
}

TEST(Directory, SideFilesOfAttributesGoWithTheFolder) {
  const kernel::WithoutExtendedAttributes off;
  const TemporaryFolder folder;
  ASSERT_EQ(kernel::createDirectories(folder.path("a")), 0);
  ASSERT_EQ(kernel::setAttribute(folder.path("a"), "payroll.locked", ""), 0);
  ASSERT_EQ(kernel::setAttribute(folder.write("a/pay.csv"), "payroll.locked", ""), 0);
  EXPECT_EQ(kernel::removeTree(folder.path("a")), 0);
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(Directory, OneFolderIsMadeWhereNothingIsYet) {
  const TemporaryFolder folder;
  EXPECT_EQ(kernel::createDirectory(folder.path("a"), 0700), 0);
  EXPECT_EQ(kernel::createDirectory(folder.path("a")), EEXIST);
  EXPECT_EQ(kernel::createDirectory(folder.path("b/c")), ENOENT);
}

TEST(Directory, ATemporaryFolderIsNewAndPrivate) {
  std::string first, second;
  ASSERT_EQ(kernel::makeTemporaryDirectory("norvik-", first), 0);
  ASSERT_EQ(kernel::makeTemporaryDirectory("norvik-", second), 0);
  EXPECT_NE(first, second);
  struct stat status {};
  ASSERT_EQ(stat(first.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0700U);
  EXPECT_EQ(kernel::removeTree(first), 0);
  EXPECT_EQ(kernel::removeTree(second), 0);
}

TEST(Directory, AFolderAmongThoseOfOthersIsTheUsersAloneOrIsRefused) {
  const TemporaryFolder folder;
  const std::string own = folder.path("own");
  EXPECT_EQ(kernel::checkOwnDirectory(own), ENOENT);
  ASSERT_EQ(kernel::createOwnDirectory(own, 0777), 0);
  EXPECT_EQ(fs::status(own).permissions() & fs::perms(022), fs::perms::none);
  EXPECT_EQ(kernel::createOwnDirectory(own), 0);
  EXPECT_EQ(kernel::checkOwnDirectory(own), 0);
  EXPECT_EQ(kernel::createOwnDirectory(folder.path("missing/own")), ENOENT);
  fs::create_directory_symlink(own, folder.path("link"));
  EXPECT_EQ(kernel::createOwnDirectory(folder.path("link")), EPERM);
  fs::create_symlink("nowhere", folder.path("dangling"));
  EXPECT_EQ(kernel::createOwnDirectory(folder.path("dangling")), EPERM);
  EXPECT_EQ(kernel::createOwnDirectory(folder.write("file")), EPERM);
  for (const unsigned writable : {0720U, 0702U}) {
    fs::permissions(own, fs::perms(writable));
    EXPECT_EQ(kernel::createOwnDirectory(own), EPERM) << writable;
  }
  if (geteuid() != 0) return;  // only root may make a folder somebody else's
  fs::permissions(own, fs::perms(0700));
  ASSERT_EQ(chown(own.c_str(), 54321, 54321), 0);
  EXPECT_EQ(kernel::createOwnDirectory(own), EPERM);
}

}  // namespace
}  // namespace norvik
