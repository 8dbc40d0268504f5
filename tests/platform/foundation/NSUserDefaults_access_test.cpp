// Which users can read the database, and what happens if something else has its path.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "NorvikCore/platform/foundation/NSUserDefaults.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "tests/support/AnotherUser.h"
#include "tests/support/DefaultsFolder.h"
#include "tests/support/ForeignDatabase.h"
#include "tests/support/InChild.h"

namespace norvik {
namespace {

using kernel::SystemLogCapture;
using norvik::test::becomeUserWithoutRights;
using norvik::test::DefaultsFolder;
using norvik::test::ForeignDatabase;
using norvik::test::TemporaryFolder;
using norvik::test::userWithoutRights;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

unsigned modeOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
  return status.st_mode & 07777;
}

std::string cannotBe(const std::string& done, const std::string& path, const std::string& why) {
  return "The preferences in " + path + " cannot be " + done + ": " + why + "." +
         (done == "written"
              ? " Values that are set are kept in memory, and writing is tried again until this process ends."
              : "");
}

TEST(NSUserDefaultsAccess, NoFileIsEverMadeThatOthersMayRead) {
  const DefaultsFolder folder;
  const mode_t before = umask(0);
  const Ref<NSUserDefaults> defaults = folder.open();
  defaults->setInteger(1, "rate");
  EXPECT_EQ(modeOf(folder.path()), 0600u);
  EXPECT_EQ(modeOf(folder.path() + "-wal"), 0600u);
  EXPECT_EQ(modeOf(folder.path() + "-shm"), 0600u);
  EXPECT_EQ(modeOf(folder.folder().path("pay")), 0700u);
  umask(before);
}

TEST(NSUserDefaultsAccess, AMaskThatTakesEverythingLeavesTheUserTheFile) {
  RUN_IN_CHILD({
    const DefaultsFolder folder;
    std::filesystem::create_directory(folder.folder().path("pay"));
    if (geteuid() == 0) {
      ASSERT_EQ(chown(folder.folder().path("pay").c_str(), userWithoutRights, userWithoutRights), 0);
      ASSERT_TRUE(becomeUserWithoutRights(folder.folder().path()));
    }
    umask(0777);
    folder.open()->setInteger(1, "rate");
    EXPECT_EQ(folder.open()->integerForKey("rate"), 1);
    EXPECT_EQ(modeOf(folder.path()), 0600u);
  });
}

TEST(NSUserDefaultsAccess, AFileThatOthersMayReadIsTakenFromThem) {
  const DefaultsFolder folder;
  folder.open()->setInteger(1, "rate");
  ASSERT_EQ(chmod(folder.path().c_str(), 0644), 0);
  const Ref<NSUserDefaults> defaults = folder.open();
  defaults->setInteger(2, "rate");
  EXPECT_EQ(modeOf(folder.path()), 0600u);
  EXPECT_EQ(modeOf(folder.path() + "-wal"), 0600u);
  EXPECT_EQ(modeOf(folder.path() + "-shm"), 0600u);
}

TEST(NSUserDefaultsAccess, ADatabaseThatWasReadWhileItCouldNotBeWrittenCanBeWrittenLater) {
  RUN_IN_CHILD({
    const DefaultsFolder folder;
    if (!becomeUserWithoutRights(folder.folder().path()) && geteuid() == 0) return;
    folder.open()->setInteger(1, "rate");
    ASSERT_EQ(chmod(folder.path().c_str(), 0400), 0);
    const Ref<NSUserDefaults> reader = folder.open();
    EXPECT_EQ(reader->integerForKey("rate"), 1);
    EXPECT_FALSE(std::filesystem::exists(folder.path() + "-shm"));
    EXPECT_FALSE(std::filesystem::exists(folder.path() + "-wal"));
    ASSERT_EQ(chmod(folder.path().c_str(), 0600), 0);
    const SystemLogCapture console;
    const Ref<NSUserDefaults> writer = folder.open();
    writer->setInteger(2, "rate");
    EXPECT_TRUE(writer->synchronize());
    EXPECT_TRUE(reader->synchronize());
    EXPECT_EQ(reader->integerForKey("rate"), 2);
    EXPECT_EQ(folder.open()->integerForKey("rate"), 2);
    EXPECT_THAT(console.lines(), IsEmpty());
  });
}

TEST(NSUserDefaultsAccess, SideFilesThatWereMadeUnwritableAreMended) {
  RUN_IN_CHILD({
    const DefaultsFolder folder;
    if (!becomeUserWithoutRights(folder.folder().path()) && geteuid() == 0) return;
    const Ref<NSUserDefaults> kept = folder.open();
    kept->setInteger(1, "rate");
    ASSERT_EQ(chmod((folder.path() + "-shm").c_str(), 0400), 0);
    ASSERT_EQ(chmod((folder.path() + "-wal").c_str(), 0444), 0);
    const SystemLogCapture console;
    const Ref<NSUserDefaults> writer = folder.open();
    writer->setInteger(2, "rate");
    EXPECT_TRUE(writer->synchronize());
    EXPECT_EQ(modeOf(folder.path() + "-wal"), 0600u);
    EXPECT_THAT(console.lines(), IsEmpty());
  });
}

TEST(NSUserDefaultsAccess, WhatWasWrittenLastIsReadWhereNothingCanBeWritten) {
  RUN_IN_CHILD({
    const DefaultsFolder folder;
    if (!becomeUserWithoutRights(folder.folder().path()) && geteuid() == 0) return;
    const Ref<NSUserDefaults> kept = folder.open();
    kept->setInteger(1, "rate");  // is in the log, not in the database
    ASSERT_EQ(chmod(folder.path().c_str(), 0400), 0);
    const SystemLogCapture console;
    const Ref<NSUserDefaults> reader = folder.open();
    EXPECT_EQ(reader->integerForKey("rate"), 1);
    reader->setInteger(2, "rate");
    EXPECT_EQ(reader->integerForKey("rate"), 2);
    EXPECT_THAT(console.lines(), ElementsAre(cannotBe("written", folder.path(), "Permission denied")));
  });
}

TEST(NSUserDefaultsAccess, AFolderThatCannotBeWrittenIsRead) {
  RUN_IN_CHILD({
    const DefaultsFolder folder;
    if (!becomeUserWithoutRights(folder.folder().path()) && geteuid() == 0) return;
    folder.open()->setInteger(1, "rate");
    ASSERT_EQ(chmod(folder.folder().path("pay").c_str(), 0500), 0);
    const SystemLogCapture console;
    const Ref<NSUserDefaults> defaults = folder.open();
    EXPECT_EQ(defaults->integerForKey("rate"), 1);
    defaults->setInteger(2, "rate");
    EXPECT_EQ(defaults->integerForKey("rate"), 2);
    EXPECT_EQ(console.lines().size(), 1u);
    ASSERT_EQ(chmod(folder.folder().path("pay").c_str(), 0700), 0);
    EXPECT_TRUE(defaults->synchronize());
    EXPECT_EQ(folder.open()->integerForKey("rate"), 2);
  });
}

TEST(NSUserDefaultsAccess, WhatIsNoFileIsToldOnceAndLeftAlone) {
  const struct {
    const char* what;
    int (*make)(const char* path);
  } rows[] = {
      {"a folder", [](const char* path) { return mkdir(path, 0700); }},
      {"a named pipe", [](const char* path) { return mkfifo(path, 0600); }},
      {"a device", [](const char* path) { return symlink("/dev/null", path); }},
      {"a device", [](const char* path) { return symlink("/dev/zero", path); }},
      {"a socket",
       [](const char* path) {
         const int end = socket(AF_UNIX, SOCK_STREAM, 0);
         sockaddr_un address{};
         address.sun_family = AF_UNIX;
         std::string(path).copy(address.sun_path, sizeof address.sun_path - 1);
         const int result = bind(end, reinterpret_cast<sockaddr*>(&address), sizeof address);
         close(end);
         return result;
       }},
  };
  for (const auto& row : rows) {
    const TemporaryFolder folder;
    const std::string path = folder.path("defaults.sqlite");
    ASSERT_EQ(row.make(path.c_str()), 0) << row.what;
    const SystemLogCapture console;
    const auto defaults = make<NSUserDefaults>(NSString(path));
    EXPECT_EQ(defaults->integerForKey("rate"), 0);
    defaults->setInteger(2, "rate");
    defaults->setInteger(3, "rate");
    EXPECT_FALSE(defaults->synchronize());
    EXPECT_EQ(defaults->integerForKey("rate"), 3);
    const std::string why = std::string(row.what) + " is in its place";
    EXPECT_THAT(console.lines(), ElementsAre(cannotBe("read", path, why), cannotBe("written", path, why)));
  }
}

TEST(NSUserDefaultsAccess, SideFilesThatAreNoFilesAreToldOnceAndNothingWaits) {
  for (const char* side : {"-wal", "-journal", "-shm"}) {
    const DefaultsFolder folder;
    folder.open()->setInteger(1, "rate");
    ASSERT_EQ(mkfifo((folder.path() + side).c_str(), 0600), 0);
    const SystemLogCapture console;
    const Ref<NSUserDefaults> defaults = folder.open();
    defaults->setInteger(2, "rate");
    EXPECT_EQ(defaults->integerForKey("rate"), 2);
    const std::string why = "a named pipe is in the place of " + folder.path() + side;
    EXPECT_THAT(console.lines(),
                ElementsAre(cannotBe("read", folder.path(), why), cannotBe("written", folder.path(), why)));
  }
}

TEST(NSUserDefaultsAccess, TheUsersOwnLinksAreFollowed) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.path("real"));
  std::filesystem::create_directory_symlink("real", folder.path("link"));
  std::filesystem::create_symlink("target.sqlite", folder.path("real/defaults.sqlite"));
  const std::string path = folder.path("link/defaults.sqlite");
  make<NSUserDefaults>(NSString(path))->setInteger(1, "rate");
  EXPECT_EQ(make<NSUserDefaults>(NSString(folder.path("real/target.sqlite")))->integerForKey("rate"), 1);
  EXPECT_EQ(make<NSUserDefaults>(NSString(path))->integerForKey("rate"), 1);
  const std::string detour = folder.path("./link//../real/../link/defaults.sqlite");
  EXPECT_EQ(make<NSUserDefaults>(NSString(detour))->integerForKey("rate"), 1);
  EXPECT_EQ(modeOf(folder.path("real/target.sqlite")), 0600u);
}

TEST(NSUserDefaultsAccess, LinksThatGoRoundAreTold) {
  const TemporaryFolder folder;
  const std::string path = folder.path("defaults.sqlite");
  std::filesystem::create_symlink("defaults.sqlite", path);
  const SystemLogCapture console;
  const auto defaults = make<NSUserDefaults>(NSString(path));
  defaults->setInteger(1, "rate");
  EXPECT_EQ(defaults->integerForKey("rate"), 1);
  EXPECT_THAT(console.lines(), ElementsAre(cannotBe("read", path, "Too many levels of symbolic links"),
                                           cannotBe("written", path, "Too many levels of symbolic links")));
}

/// A folder in which every user may create files but remove only their own, such as /tmp.
class SharedFolder {
 public:
  SharedFolder() { EXPECT_EQ(chmod(folder_.path().c_str(), 01777), 0); }
  [[nodiscard]] const TemporaryFolder& operator*() const { return folder_; }
  void giveAway(const std::string& path) const { EXPECT_EQ(lchown(path.c_str(), 1234, 1234), 0); }

 private:
  TemporaryFolder folder_;
};

void expectRefused(const std::string& path, const std::string& foreign) {
  const SystemLogCapture console;
  const auto defaults = make<NSUserDefaults>(NSString(path));
  EXPECT_EQ(defaults->integerForKey("rate"), 0);
  defaults->setInteger(2, "rate");
  EXPECT_EQ(defaults->integerForKey("rate"), 2);
  const std::string why = foreign + " belongs to another user";
  EXPECT_THAT(console.lines(), ElementsAre(cannotBe("read", path, why), cannotBe("written", path, why)));
}

TEST(NSUserDefaultsAccess, AnotherUsersLinkInASharedFolderIsNotFollowed) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can make another user's files";
  const SharedFolder shared;
  const TemporaryFolder trap;
  trap.write("caught.sqlite");
  trap.write("defaults.sqlite");
  std::filesystem::create_symlink(trap.path("caught.sqlite"), (*shared).path("a.sqlite"));
  shared.giveAway((*shared).path("a.sqlite"));
  expectRefused((*shared).path("a.sqlite"), (*shared).path("a.sqlite"));
  std::filesystem::create_directory_symlink(trap.path(), (*shared).path("pay"));
  shared.giveAway((*shared).path("pay"));
  expectRefused((*shared).path("pay/defaults.sqlite"), (*shared).path("pay"));
  EXPECT_EQ(TemporaryFolder::read(trap.path("caught.sqlite")), "");
  EXPECT_EQ(TemporaryFolder::read(trap.path("defaults.sqlite")), "");
  std::filesystem::remove(trap.path("defaults.sqlite"));
  const SystemLogCapture console;
  make<NSUserDefaults>(NSString((*shared).path("pay/defaults.sqlite")))->setInteger(1, "rate");
  EXPECT_THAT(console.lines(), ElementsAre(cannotBe("written", (*shared).path("pay/defaults.sqlite"),
                                                    (*shared).path("pay") + " belongs to another user")));
  EXPECT_FALSE(std::filesystem::exists(trap.path("defaults.sqlite")));
}

TEST(NSUserDefaultsAccess, AnotherUsersFolderOrFileInASharedFolderIsNotUsed) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can make another user's files";
  const SharedFolder shared;
  std::filesystem::create_directory((*shared).path("pay"));
  (*shared).write("pay/defaults.sqlite");
  shared.giveAway((*shared).path("pay"));
  expectRefused((*shared).path("pay/defaults.sqlite"), (*shared).path("pay"));
  EXPECT_EQ(TemporaryFolder::read((*shared).path("pay/defaults.sqlite")), "");
  shared.giveAway((*shared).write("b.sqlite"));
  expectRefused((*shared).path("b.sqlite"), (*shared).path("b.sqlite"));
  EXPECT_EQ(TemporaryFolder::read((*shared).path("b.sqlite")), "");
  for (const char* side : {"-wal", "-shm", "-journal"}) {
    const std::string path = (*shared).path(std::string("c") + side + ".sqlite");
    make<NSUserDefaults>(NSString(path))->setInteger(1, "rate");
    (*shared).write(std::filesystem::path(path + side).filename());
    shared.giveAway(path + side);
    expectRefused(path, path + side);
    EXPECT_EQ(TemporaryFolder::read(path + side), "");
  }
}

// Another user can create a second name for a file that they may not change, so that its owner would overwrite the
// file.
TEST(NSUserDefaultsAccess, ASecondNameOfAFileInASharedFolderIsNotUsed) {
  const SharedFolder shared;
  const TemporaryFolder elsewhere;
  const std::string victim = elsewhere.write("victim", "text"), path = (*shared).path("defaults.sqlite");
  for (const char* side : {"", "-wal", "-shm", "-journal"}) {
    std::filesystem::remove(path);
    if (*side != '\0') make<NSUserDefaults>(NSString(path))->setInteger(1, "rate");
    std::filesystem::create_hard_link(victim, path + side);
    const SystemLogCapture console;
    make<NSUserDefaults>(NSString(path))->setInteger(2, "rate");
    const std::string place = *side == '\0' ? "its place" : "the place of " + path + side;
    EXPECT_THAT(console.lines(), ElementsAre(cannotBe("read", path, "another name of a file is in " + place),
                                             cannotBe("written", path, "another name of a file is in " + place)));
    EXPECT_EQ(TemporaryFolder::read(victim), "text") << side;
    std::filesystem::remove(path + side);
  }
}

TEST(NSUserDefaultsAccess, OnesOwnFolderInASharedFolderIsUsed) {
  const SharedFolder shared;
  const SystemLogCapture console;
  const std::string path = (*shared).path("pay/defaults.sqlite");
  make<NSUserDefaults>(NSString(path))->setInteger(1, "rate");
  EXPECT_EQ(make<NSUserDefaults>(NSString(path))->integerForKey("rate"), 1);
  EXPECT_EQ(modeOf((*shared).path("pay")), 0700u);
  EXPECT_THAT(console.lines(), IsEmpty());
}

}  // namespace
}  // namespace norvik
