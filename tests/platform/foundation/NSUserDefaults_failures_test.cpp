// What happens if the database cannot be written or read: a line is written on the console, and the process continues.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/resource.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "NorvikCore/platform/foundation/NSUserDefaults.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "tests/support/DefaultsFolder.h"
#include "tests/support/ForeignDatabase.h"
#include "tests/support/InChild.h"
#include "tests/support/PrivateMount.h"

namespace norvik {
namespace {

using kernel::SystemLogCapture;
using norvik::test::DefaultsFolder;
using norvik::test::ForeignDatabase;
using norvik::test::PrivateMount;
using norvik::test::TemporaryFolder;
using ::testing::AllOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

std::string cannotBeRead(const std::string& path, const std::string& why) {
  return "The preferences in " + path + " cannot be read: " + why + ".";
}
std::string cannotBeWritten(const std::string& path, const std::string& why) {
  return "The preferences in " + path + " cannot be written: " + why +
         ". Values that are set are kept in memory, and writing is tried again until this process ends.";
}

TEST(NSUserDefaultsFailures, AFileThatIsNoDatabaseIsToldOnceAndLeftAsItIs) {
  const TemporaryFolder folder;
  const std::string content(8192, 'x');
  const std::string path = folder.write("defaults.sqlite", content);
  const SystemLogCapture console;
  const auto defaults = make<NSUserDefaults>(NSString(path));
  EXPECT_EQ(defaults->integerForKey("rate"), 0);
  defaults->setInteger(2, "rate");
  defaults->setInteger(3, "rate");
  EXPECT_FALSE(defaults->synchronize());
  EXPECT_EQ(defaults->integerForKey("rate"), 3);
  EXPECT_THAT(console.lines(), ElementsAre(cannotBeRead(path, "file is not a database"),
                                           cannotBeWritten(path, "file is not a database")));
  EXPECT_EQ(TemporaryFolder::read(path), content);
}

TEST(NSUserDefaultsFailures, ADatabaseOfSomethingElseIsLeftAsItIs) {
  const TemporaryFolder folder;
  const std::string path = folder.path("cookies.sqlite");
  ForeignDatabase(path).run("CREATE TABLE cookie(name TEXT)");
  const SystemLogCapture console;
  const auto defaults = make<NSUserDefaults>(NSString(path));
  defaults->setInteger(2, "rate");
  EXPECT_EQ(defaults->integerForKey("rate"), 2);
  EXPECT_THAT(console.lines(), ElementsAre(cannotBeRead(path, "it is another application's database"),
                                           cannotBeWritten(path, "it is another application's database")));
}

TEST(NSUserDefaultsFailures, ADatabaseOfAnotherApplicationIsLeftAsItIsWhateverItsVersion) {
  for (const char* sql : {"CREATE TABLE cookie(name TEXT); PRAGMA user_version = 1",
                          "CREATE TABLE preference(name TEXT); PRAGMA user_version = 1",
                          "CREATE TABLE cookie(name TEXT); PRAGMA user_version = 7", "PRAGMA application_id = 5",
                          "CREATE TABLE preference(key PRIMARY KEY, value BLOB NOT NULL) WITHOUT ROWID; "
                          "PRAGMA user_version = 1; PRAGMA application_id = 5"}) {
    const TemporaryFolder folder;
    const std::string path = folder.path("cookies.sqlite");
    ForeignDatabase(path).run(sql);
    std::filesystem::permissions(path, std::filesystem::perms(0644));
    const std::string content = TemporaryFolder::read(path);
    {
      const SystemLogCapture console;
      const auto defaults = make<NSUserDefaults>(NSString(path));
      defaults->setInteger(2, "rate");
      EXPECT_EQ(defaults->integerForKey("rate"), 2);
      EXPECT_THAT(console.lines(), ElementsAre(cannotBeRead(path, "it is another application's database"),
                                               cannotBeWritten(path, "it is another application's database")))
          << sql;
    }
    EXPECT_TRUE(TemporaryFolder::read(path) == content) << sql;
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0644)) << sql;
    EXPECT_FALSE(std::filesystem::exists(path + "-wal")) << sql;
  }
}

TEST(NSUserDefaultsFailures, TheLogOfAnotherApplicationsDatabaseIsLeftAsItIs) {
  const TemporaryFolder folder;
  const std::string path = folder.path("cookies.sqlite"), copy = folder.path("copy.sqlite");
  ForeignDatabase another(path);
  another.run("PRAGMA journal_mode = WAL");
  another.run("CREATE TABLE cookie(name TEXT)");
  for (const char* end : {"", "-wal"}) std::filesystem::copy(path + end, copy + end);
  const std::string content = TemporaryFolder::read(copy), log = TemporaryFolder::read(copy + "-wal");
  const SystemLogCapture console;
  make<NSUserDefaults>(NSString(copy))->setInteger(2, "rate");
  EXPECT_EQ(console.lines().size(), 2u);
  EXPECT_TRUE(TemporaryFolder::read(copy) == content);
  EXPECT_TRUE(TemporaryFolder::read(copy + "-wal") == log);
}

TEST(NSUserDefaultsFailures, ADatabaseWithoutAnApplicationsNumberIsReadAndWritten) {
  const DefaultsFolder folder;
  folder.open()->setInteger(1, "rate");
  ForeignDatabase(folder.path()).run("PRAGMA application_id = 0");
  folder.open()->setInteger(2, "rate");
  EXPECT_EQ(folder.open()->integerForKey("rate"), 2);
}

TEST(NSUserDefaultsFailures, ADatabaseThatIsCutShortIsToldAndLeftAsItIs) {
  const DefaultsFolder folder;
  {
    const Ref<NSUserDefaults> defaults = folder.open();
    for (int i = 0; i < 500; ++i) defaults->setObject(NSString(std::string(100, 'a')), NSString(std::to_string(i)));
  }
  const std::string whole = TemporaryFolder::read(folder.path());
  ASSERT_GT(whole.size(), 16384u);
  for (const std::size_t size : {2u, 50u, 100u, 4095u, 4096u, 12288u, 13000u}) {
    const std::string content = whole.substr(0, size);
    folder.folder().write("pay/defaults.sqlite", content);
    const SystemLogCapture console;
    {
      const Ref<NSUserDefaults> defaults = folder.open();
      EXPECT_TRUE(defaults->objectForKey("499").isAbsent()) << size;
      defaults->setInteger(2, "rate");
      EXPECT_EQ(defaults->integerForKey("rate"), 2) << size;
      EXPECT_EQ(console.lines().size(), 2u) << size;
    }
    EXPECT_TRUE(TemporaryFolder::read(folder.path()) == content) << size;
  }
}

// The change alone would succeed, because the damage is in another page.
TEST(NSUserDefaultsFailures, NothingIsWrittenToADatabaseThatCannotBeReadAsAWhole) {
  const DefaultsFolder folder;
  {
    const Ref<NSUserDefaults> defaults = folder.open();
    for (int i = 100; i < 600; ++i) defaults->setObject(NSString(std::string(100, 'a')), NSString(std::to_string(i)));
  }
  std::string content = TemporaryFolder::read(folder.path());
  // The leaf page that contains one of the keys in the middle.
  const std::size_t page = content.find("350", 8192) / 4096 * 4096;
  content.replace(page, 8, 8, '\xFF');
  folder.folder().write("pay/defaults.sqlite", content);
  const SystemLogCapture console;
  {
    const Ref<NSUserDefaults> defaults = folder.open();
    defaults->setInteger(2, "zzz");
    EXPECT_EQ(defaults->integerForKey("zzz"), 2);
    EXPECT_FALSE(defaults->synchronize());
  }
  EXPECT_TRUE(TemporaryFolder::read(folder.path()) == content);
}

TEST(NSUserDefaultsFailures, AnEmptyFileIsAFreshDatabase) {
  const TemporaryFolder folder;
  const std::string path = folder.write("defaults.sqlite");
  const SystemLogCapture console;
  make<NSUserDefaults>(NSString(path))->setInteger(2, "rate");
  EXPECT_EQ(make<NSUserDefaults>(NSString(path))->integerForKey("rate"), 2);
  EXPECT_TRUE(console.lines().empty());
}

// As after a process that was killed between creating the database and changing its mode.
TEST(NSUserDefaultsFailures, ADatabaseThatIsNotInWriteAheadModeGetsThere) {
  const DefaultsFolder folder;
  folder.open()->setInteger(1, "rate");
  EXPECT_EQ(ForeignDatabase(folder.path()).run("PRAGMA journal_mode = DELETE"), "delete");
  const Ref<NSUserDefaults> defaults = folder.open();
  EXPECT_EQ(defaults->integerForKey("rate"), 1);
  defaults->setInteger(2, "rate");
  EXPECT_EQ(ForeignDatabase(folder.path()).run("PRAGMA journal_mode"), "wal");
  EXPECT_EQ(folder.open()->integerForKey("rate"), 2);
}

TEST(NSUserDefaultsFailures, ADatabaseOfALaterVersionIsLeftAsItIs) {
  const DefaultsFolder folder;
  folder.open()->setInteger(1, "rate");
  ForeignDatabase(folder.path()).run("PRAGMA user_version = 2");
  const SystemLogCapture console;
  EXPECT_EQ(folder.open()->integerForKey("rate"), 0);
  EXPECT_THAT(console.lines(), ElementsAre(cannotBeRead(folder.path(), "it was written by a later version")));
}

TEST(NSUserDefaultsFailures, ADamagedDatabaseIsToldAndNothingCrashes) {
  const DefaultsFolder folder;
  {
    const Ref<NSUserDefaults> defaults = folder.open();
    for (int i = 0; i < 500; ++i) defaults->setObject(NSString(std::string(100, 'a')), NSString(std::to_string(i)));
  }
  std::string content = TemporaryFolder::read(folder.path());
  ASSERT_GT(content.size(), 16384u);
  for (std::size_t i = 4096; i < content.size(); ++i) content[i] = static_cast<char>(i * 7);
  folder.folder().write("pay/defaults.sqlite", content);
  const SystemLogCapture console;
  const Ref<NSUserDefaults> defaults = folder.open();
  EXPECT_TRUE(defaults->objectForKey("1").isAbsent());
  defaults->setInteger(2, "rate");
  EXPECT_EQ(defaults->integerForKey("rate"), 2);
  EXPECT_THAT(console.lines(), ElementsAre(cannotBeRead(folder.path(), "database disk image is malformed"),
                                           cannotBeWritten(folder.path(), "database disk image is malformed")));
}

TEST(NSUserDefaultsFailures, ADamagedValueIsToldOnceAndTheOthersAreRead) {
  const DefaultsFolder folder;
  folder.open()->setInteger(1, "good");
  folder.open()->setInteger(1, "bad");
  ForeignDatabase(folder.path()).run("UPDATE preference SET value = x'00' WHERE key = 'bad'");
  const SystemLogCapture console;
  const Ref<NSUserDefaults> defaults = folder.open();
  EXPECT_EQ(defaults->integerForKey("good"), 1);
  EXPECT_TRUE(defaults->objectForKey("bad").isAbsent());
  EXPECT_EQ(defaults->dictionaryRepresentation()->count(), 1u);
  EXPECT_TRUE(defaults->synchronize());
  EXPECT_THAT(console.lines(), ElementsAre(StartsWith("The preference \"bad\" in " + folder.path() + " is damaged: ")));
  defaults->setInteger(2, "bad");
  EXPECT_EQ(folder.open()->integerForKey("bad"), 2);
}

TEST(NSUserDefaultsFailures, ADatabaseThatIsRemovedIsMadeAnew) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  defaults->setInteger(1, "old");
  std::filesystem::remove_all(folder.folder().path("pay"));
  EXPECT_TRUE(defaults->synchronize());
  EXPECT_TRUE(defaults->objectForKey("old").isAbsent());
  defaults->setInteger(2, "new");
  EXPECT_EQ(folder.open()->integerForKey("new"), 2);
  EXPECT_EQ(folder.open()->dictionaryRepresentation()->count(), 1u);
}

TEST(NSUserDefaultsFailures, ADatabaseThatIsReplacedIsReadAnew) {
  const DefaultsFolder folder, other;
  const Ref<NSUserDefaults> defaults = folder.open();
  defaults->setInteger(1, "rate");
  other.open()->setInteger(2, "rate");
  std::filesystem::remove_all(folder.folder().path("pay"));
  std::filesystem::rename(other.folder().path("pay"), folder.folder().path("pay"));
  EXPECT_TRUE(defaults->synchronize());
  EXPECT_EQ(defaults->integerForKey("rate"), 2);
}

TEST(NSUserDefaultsFailures, AFolderThatCannotBeMadeIsTold) {
  const TemporaryFolder folder;
  const std::string file = folder.write("file");
  const SystemLogCapture console;
  const auto defaults = make<NSUserDefaults>(NSString(file + "/pay/defaults.sqlite"));
  defaults->setInteger(2, "rate");
  EXPECT_EQ(defaults->integerForKey("rate"), 2);
  EXPECT_THAT(console.lines(), ElementsAre(cannotBeWritten(file + "/pay/defaults.sqlite",
                                                           "the folder " + file + " cannot be created: File exists")));
}

TEST(NSUserDefaultsFailures, WhatAnotherProcessLocksIsWrittenLater) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  defaults->setInteger(1, "first");
  const SystemLogCapture console;
  {
    ForeignDatabase somebody(folder.path());
    somebody.run("BEGIN IMMEDIATE");
    defaults->setInteger(2, "second");
    EXPECT_EQ(defaults->integerForKey("second"), 2);
    EXPECT_EQ(folder.open()->integerForKey("second"), 0);
  }
  EXPECT_THAT(console.lines(), ElementsAre(cannotBeWritten(folder.path(), "database is locked")));
  defaults->setInteger(3, "third");
  EXPECT_EQ(folder.open()->integerForKey("second"), 2);
  EXPECT_EQ(folder.open()->integerForKey("third"), 3);
}

TEST(NSUserDefaultsFailures, WhatWasLockedIsWrittenByTheNextLookAndByTheEndOfTheObject) {
  const DefaultsFolder folder;
  Ref<NSUserDefaults> reader = folder.open(), writer = folder.open();
  reader->setInteger(1, "first");
  const SystemLogCapture console;
  {
    ForeignDatabase somebody(folder.path());
    somebody.run("BEGIN IMMEDIATE");
    reader->setInteger(2, "second");
    writer->setInteger(3, "third");
  }
  const auto start = std::chrono::steady_clock::now();
  const Ref<NSUserDefaults> another = folder.open();
  do {
    EXPECT_EQ(reader->integerForKey("first"), 1);
  } while (another->integerForKey("second") != 2 &&
           std::chrono::steady_clock::now() - start < std::chrono::seconds(20));
  EXPECT_EQ(another->integerForKey("second"), 2);
  EXPECT_EQ(folder.open()->integerForKey("third"), 0);
  writer = nullptr;
  EXPECT_EQ(folder.open()->integerForKey("third"), 3);
}

TEST(NSUserDefaultsFailures, ALockIsWaitedForOnceAndNotByEachOfManyValues) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  defaults->setInteger(1, "first");
  const SystemLogCapture console;
  ForeignDatabase somebody(folder.path());
  somebody.run("BEGIN IMMEDIATE");
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < 20; ++i) defaults->setInteger(i, "second");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  EXPECT_EQ(console.lines().size(), 1u);
}

TEST(NSUserDefaultsFailures, WhatCouldNotBeWrittenIsNotOverwrittenByWhatAnotherHadBefore) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  defaults->setInteger(1, "rate");
  defaults->setInteger(1, "removed");
  const SystemLogCapture console;
  {
    ForeignDatabase somebody(folder.path());
    somebody.run("BEGIN IMMEDIATE");
    defaults->setInteger(2, "rate");
    defaults->removeObjectForKey("removed");
    somebody.run("INSERT INTO preference SELECT 'another', value FROM preference WHERE key = 'rate'");
    somebody.run("COMMIT");
  }
  EXPECT_EQ(defaults->integerForKey("rate"), 2);
  EXPECT_TRUE(defaults->synchronize());
  EXPECT_EQ(defaults->integerForKey("rate"), 2);
  EXPECT_TRUE(defaults->objectForKey("removed").isAbsent());
  EXPECT_EQ(defaults->integerForKey("another"), 1);
  EXPECT_EQ(folder.open()->integerForKey("rate"), 2);
  EXPECT_EQ(folder.open()->dictionaryRepresentation()->count(), 2u);
}

/// Called by SQLite for each new connection of the process: limits values to 50,000 bytes.
int shortenEverything(sqlite3* database, char**, const void*) {
  sqlite3_limit(database, SQLITE_LIMIT_LENGTH, 50'000);
  return SQLITE_OK;
}

TEST(NSUserDefaultsFailures, AValueThatIsTooLongIsToldOnceAndTheOthersAreWritten) {
  const auto function = reinterpret_cast<void (*)()>(&shortenEverything);
  ASSERT_EQ(sqlite3_auto_extension(function), SQLITE_OK);
  const DefaultsFolder folder;
  {
    const SystemLogCapture console;
    const Ref<NSUserDefaults> defaults = folder.open();
    defaults->setInteger(1, "long");
    defaults->setObject(NSString(std::string(60'000, 'a')), "long");
    defaults->setObject(2, NSString(std::string(60'000, 'k')));
    defaults->setInteger(3, "rate");
    EXPECT_FALSE(defaults->synchronize());
    EXPECT_EQ(defaults->stringForKey("long")->length(), 60'000u);
    EXPECT_EQ(folder.open()->integerForKey("rate"), 3);
    EXPECT_EQ(folder.open()->integerForKey("long"), 1);
    EXPECT_THAT(
        console.lines(),
        ElementsAre("The preferences in " + folder.path() +
                        " cannot be written: the value of \"long\" is too long to be stored. It is kept until this "
                        "process ends.",
                    "The preferences in " + folder.path() + " cannot be written: the value of \"" +
                        std::string(80, 'k') + "...\" is too long to be stored. It is kept until this process ends."));
    defaults->removeObjectForKey(NSString(std::string(60'000, 'k')));
    defaults->setInteger(4, "long");
    EXPECT_TRUE(defaults->synchronize());
    EXPECT_EQ(folder.open()->integerForKey("long"), 4);
  }
  sqlite3_cancel_auto_extension(function);
}

// The limit on the size of files simulates a full disk. It applies to every user, and exceeding it sends a deadly
// signal.
TEST(NSUserDefaultsFailures, AFullDiskIsToldAndWhatIsLeftIsWrittenOnceThereIsRoom) {
  RUN_IN_CHILD({
    const DefaultsFolder folder;
    const Ref<NSUserDefaults> defaults = folder.open();
    defaults->setInteger(1, "before");
    const SystemLogCapture console;
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlim_t greatest = limit.rlim_cur;
    limit.rlim_cur = 65536;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    for (int i = 0; i < 40; ++i) defaults->setObject(NSString(std::string(4000, 'a')), NSString(std::to_string(i)));
    EXPECT_EQ(defaults->stringForKey("39")->length(), 4000u);
    EXPECT_FALSE(defaults->synchronize());
    EXPECT_EQ(folder.open()->integerForKey("before"), 1);
    EXPECT_TRUE(folder.open()->objectForKey("39").isAbsent());
    limit.rlim_cur = greatest;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    EXPECT_TRUE(defaults->synchronize());
    EXPECT_EQ(folder.open()->dictionaryRepresentation()->count(), 41u);
    // More than one line if a write succeeds in between, after the log was copied to the database.
    EXPECT_THAT(console.lines(),
                AllOf(Not(IsEmpty()), Each(cannotBeWritten(folder.path(), "disk I/O error (File too large)"))));
    sigset_t waiting;
    ASSERT_EQ(sigpending(&waiting), 0);
    EXPECT_EQ(sigismember(&waiting, SIGXFSZ), 0);
  });
}

TEST(NSUserDefaultsFailures, AFullFileSystemIsToldAndTheDatabaseStaysWhole) {
  RUN_IN_CHILD({
    const PrivateMount disk("tmpfs", "size=192k");
    if (!disk.mounted()) return;  // mounting is not permitted here; the limit on the size of files is tested above
    const std::string path = disk.folder().path("pay/defaults.sqlite");
    const auto defaults = make<NSUserDefaults>(NSString(path));
    defaults->setInteger(1, "before");
    const SystemLogCapture console;
    for (int i = 0; i < 60; ++i) defaults->setObject(NSString(std::string(4000, 'a')), NSString(std::to_string(i)));
    EXPECT_EQ(defaults->stringForKey("59")->length(), 4000u);
    EXPECT_THAT(console.lines(), ElementsAre(cannotBeWritten(path, "database or disk is full")));
    EXPECT_EQ(make<NSUserDefaults>(NSString(path))->integerForKey("before"), 1);
  });
}

TEST(NSUserDefaultsFailures, WhereNothingCanBeWrittenWhatIsThereIsRead) {
  RUN_IN_CHILD({
    const PrivateMount disk("tmpfs");
    if (!disk.mounted()) return;  // mounting is not permitted here
    const std::string path = disk.folder().path("pay%3F?/defaults.sqlite");
    make<NSUserDefaults>(NSString(path))->setInteger(1, "rate");
    ASSERT_TRUE(disk.makeReadOnly());
    const SystemLogCapture console;
    const auto defaults = make<NSUserDefaults>(NSString(path));
    EXPECT_EQ(defaults->integerForKey("rate"), 1);
    EXPECT_THAT(console.lines(), IsEmpty());
    defaults->setInteger(2, "rate");
    defaults->setInteger(3, "another");
    EXPECT_EQ(defaults->integerForKey("rate"), 2);
    EXPECT_FALSE(defaults->synchronize());
    EXPECT_EQ(defaults->integerForKey("rate"), 2);
    EXPECT_EQ(defaults->integerForKey("another"), 3);
    EXPECT_THAT(console.lines(), ElementsAre(StartsWith("The preferences in " + path + " cannot be written: ")));
  });
}

}  // namespace
}  // namespace norvik
