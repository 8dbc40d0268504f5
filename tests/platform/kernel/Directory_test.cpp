#include "NorvikCore/platform/kernel/Directory.h"

#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <thread>

#include "NorvikCore/platform/kernel/ExtendedAttributes.h"
#include "tests/support/AnotherUser.h"
#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik {
namespace {

namespace fs = std::filesystem;
using norvik::test::TemporaryFolder;
using ::testing::UnorderedElementsAre;

TEST(Directory, HeaderExample) {
  const TemporaryFolder folder;
  std::string failedPath;
  EXPECT_EQ(kernel::createDirectories(folder.path("2024/april"), 0700, &failedPath), 0);
  EXPECT_EQ(fs::status(folder.path("2024/april")).permissions(), fs::perms::owner_all);
  EXPECT_EQ(failedPath, "");
  folder.write("2025");
  EXPECT_EQ(kernel::createDirectories(folder.path("2025/april"), 0700, &failedPath), EEXIST);
  EXPECT_EQ(failedPath, folder.path("2025"));
}

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

TEST(Directory, APathThatIsTooLongMakesNoFolder) {
  const TemporaryFolder folder;
  std::string path = folder.path("d");
  while (path.size() < 3900) path += "/" + std::string(99, 'd');
  path += "/" + std::string(4094 - path.size(), 'd');
  std::string failed;
  for (const std::string& longer : {path + "d", path + "/" + std::string(1000, 'd')}) {
    EXPECT_EQ(kernel::createDirectories(longer, 0777, &failed), ENAMETOOLONG);
    EXPECT_EQ(failed, longer);
    EXPECT_TRUE(fs::is_empty(folder.path()));
  }
  EXPECT_EQ(kernel::createDirectories(path), 0);
  EXPECT_TRUE(fs::is_directory(path));
  EXPECT_EQ(kernel::removeTree(folder.path("d")), 0);
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

TEST(Directory, ALinkWithASlashBehindItIsRemovedAndNotWhatItLeadsTo) {
  const TemporaryFolder folder;
  ASSERT_EQ(kernel::createDirectories(folder.path("kept")), 0);
  const std::string kept = folder.write("kept/pay.csv");
  for (const char* slashes : {"/", "//"}) {
    fs::create_directory_symlink("kept", folder.path("link"));
    EXPECT_EQ(kernel::removeTree(folder.path("link") + slashes), 0);
    EXPECT_FALSE(fs::is_symlink(fs::symlink_status(folder.path("link"))));
    EXPECT_TRUE(fs::exists(kept));
  }
  EXPECT_EQ(kernel::removeTree(kept + "/"), ENOTDIR);
  EXPECT_TRUE(fs::exists(kept));
  EXPECT_EQ(kernel::removeTree(folder.path("kept//")), 0);
  EXPECT_FALSE(fs::exists(kept));
}

TEST(Directory, APathThatEndsInFullStopsIsRefusedBeforeAnythingIsRemoved) {
  const TemporaryFolder folder;
  ASSERT_EQ(kernel::createDirectories(folder.path("a/b")), 0);
  const std::string inner = folder.write("a/b/pay.csv"), outer = folder.write("a/pay.csv");
  for (const char* path : {"a/b/.", "a/b/./", "a/b/..", "a/b/..//", "a/."}) {
    std::string failed;
    EXPECT_EQ(kernel::removeTree(folder.path(path), &failed), EINVAL) << path;
    EXPECT_EQ(failed, folder.path(path));
    EXPECT_TRUE(fs::exists(inner) && fs::exists(outer)) << path;
  }
  fs::create_directory(folder.path("a/..."));
  EXPECT_EQ(kernel::removeTree(folder.path("a/...")), 0);
  EXPECT_EQ(kernel::removeTree(folder.path("a/../a")), 0) << "only the end counts";
}

TEST(Directory, AFolderThatIsDeeperThanAPathMayBeIsRemoved) {
  const TemporaryFolder folder;
  constexpr int depth = 300;
  const std::string name(50, 'd');
  ASSERT_EQ(mkdir(folder.path("deep").c_str(), 0700), 0);
  int level = open(folder.path("deep").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  for (int i = 0; i < depth; ++i) {
    ASSERT_EQ(mkdirat(level, name.c_str(), 0700), 0);
    const int next = openat(level, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    close(level);
    level = next;
  }
  close(openat(level, "pay.csv", O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  close(level);
  EXPECT_EQ(kernel::removeTree(folder.path("deep")), 0);
  EXPECT_FALSE(fs::exists(folder.path("deep")));
}

TEST(Directory, WhatCannotBeRemovedIsNamed) {
  RUN_IN_CHILD({
    const TemporaryFolder folder;
    if (geteuid() == 0) {
      ASSERT_TRUE(test::becomeUserWithoutRights(folder.path()));
    }
    ASSERT_EQ(kernel::createDirectories(folder.path("a/closed/below")), 0);
    ASSERT_EQ(kernel::createDirectories(folder.path("a/empty")), 0);
    ASSERT_EQ(chmod(folder.path("a/empty").c_str(), 0400), 0);
    ASSERT_EQ(chmod(folder.path("a/closed").c_str(), 0500), 0);
    std::string failed;
    EXPECT_EQ(kernel::removeTree(folder.path("a"), &failed), EACCES);
    EXPECT_EQ(failed, folder.path("a/closed/below"));
    ASSERT_EQ(chmod(folder.path("a/closed").c_str(), 0700), 0);
    EXPECT_EQ(kernel::removeTree(folder.path("a"), &failed), 0);
  });
}

TEST(Directory, AFolderThatSomebodyTurnsIntoALinkMeanwhileIsNotFollowed) {
  const TemporaryFolder folder;
  ASSERT_EQ(kernel::createDirectories(folder.path("victim")), 0);
  const std::string kept = folder.write("victim/pay.csv");
  const std::string inside = folder.path("tree/inside"), link = folder.path("link");
  std::atomic<bool> isOver{false};
  std::thread enemy([&] {
    while (!isOver) renameat2(AT_FDCWD, inside.c_str(), AT_FDCWD, link.c_str(), RENAME_EXCHANGE);
  });
  for (int round = 0; round < 200 && fs::exists(kept); ++round) {
    static_cast<void>(kernel::createDirectories(inside));
    symlink(folder.path("victim").c_str(), link.c_str());
    static_cast<void>(kernel::removeTree(folder.path("tree")));
    static_cast<void>(kernel::removeTree(link));
  }
  isOver = true;
  enemy.join();
  EXPECT_TRUE(fs::exists(kept));
}

/// Runs in a root folder of its own, because a failure would empty that folder.
TEST(Directory, TheRootFolderIsRefusedBeforeAnythingIsRemoved) {
  RUN_IN_CHILD({
    const TemporaryFolder folder;
    folder.write("pay.csv");
    const int former = open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (chroot(folder.path().c_str()) != 0) return;
    ASSERT_EQ(chdir("/"), 0);
    ASSERT_EQ(access("/pay.csv", F_OK), 0);
    ASSERT_NE(access("/etc", F_OK), 0);
    for (const char* path : {"/", "//", "/.", "/..", "/../"}) {
      EXPECT_NE(kernel::removeTree(path), 0) << path;
      EXPECT_EQ(access("/pay.csv", F_OK), 0) << path;
    }
    EXPECT_EQ(kernel::removeTree("/"), EBUSY);
    ASSERT_EQ(fchdir(former), 0);
    ASSERT_EQ(chroot("."), 0);
    close(former);
  });
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
  if (geteuid() != 0) return;  // only root may change the owner of a folder
  fs::permissions(own, fs::perms(0700));
  ASSERT_EQ(chown(own.c_str(), 54321, 54321), 0);
  EXPECT_EQ(kernel::createOwnDirectory(own), EPERM);
}

}  // namespace
}  // namespace norvik
