#include "NorvikCore/logging/DDLogFileManagerDefault.h"

#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/platform/kernel/FileStatus.h"
#include "NorvikCore/platform/kernel/HostInfo.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/support/InChild.h"
#include "tests/support/LogFolder.h"
#include "tests/support/QuietFork.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace norvik {
namespace {

using test::filesIn;
using test::TemporaryFolder;
using ::testing::ElementsAre;
using ::testing::MatchesRegex;
using ::testing::UnorderedElementsAre;

Ref<DDLogFileManagerDefault> managerFor(const TemporaryFolder& folder) {
  return DDLogFileManagerDefault::initWithLogsDirectory(folder.path());
}

/// Makes a log file. If birth times do not count, its creation time is the given second since 1970.
std::string makeFile(const TemporaryFolder& folder, const std::string& name, std::time_t created, bool archived) {
  const std::string path = folder.write(name, "text");
  DDLogFileInfo::logFileWithPath(path)->setIsArchived(archived);
  const std::timespec times[2] = {{created, 0}, {created, 0}};
  EXPECT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  return path;
}

std::vector<std::string> text(const std::vector<NSString>& strings) {
  std::vector<std::string> result;
  for (const NSString& string : strings) result.push_back(string.str());
  return result;
}

TEST(DDLogFileManagerDefault, HeaderExample) {
  const TemporaryFolder folder;
  auto manager = DDLogFileManagerDefault::initWithLogsDirectory(folder.path());
  manager->setMaximumNumberOfLogFiles(7);
  EXPECT_EQ(manager->maximumNumberOfLogFiles(), 7U);
  EXPECT_TRUE(manager->sortedLogFilePaths().empty());
}

TEST(DDLogFileManagerDefault, KeepsFiveFilesUnlessItIsTold) {
  EXPECT_EQ(make<DDLogFileManagerDefault>(NSString("/tmp"))->maximumNumberOfLogFiles(), 5U);
}

TEST(DDLogFileManagerDefault, AFileIsALogFileByTheBeginningOfItsName) {
  const TemporaryFolder folder;
  const auto manager = managerFor(folder);
  const struct {
    const char* name;
    bool isLogFile;
  } rows[] = {
      {"log-ABC123.txt", true},   {"log-ABC123", true},      {"log-000000", true},      {"log-FFFFFF.txt.bak", true},
      {"log-ABC1234.txt", true},  {"log-12ab34.txt", false}, {"log-ABC12", false},      {"log-ABC12.txt", false},
      {"log-ABC12G.txt", false},  {"Log-ABC123.txt", false}, {"log_ABC123.txt", false}, {"", false},
      {" log-ABC123.txt", false},
  };
  for (const auto& row : rows) EXPECT_EQ(manager->isLogFile(row.name), row.isLogFile) << row.name;
}

TEST(DDLogFileManagerDefault, ListsTheLogFilesOfItsFolder) {
  const TemporaryFolder folder;
  for (const char* name : {"log-ABC123.txt", "log-ABC124", "other.txt", "log-12ab34.txt"}) folder.write(name);
  const auto manager = managerFor(folder);
  EXPECT_THAT(text(manager->unsortedLogFileNames()), UnorderedElementsAre("log-ABC123.txt", "log-ABC124"));
  EXPECT_THAT(text(manager->unsortedLogFilePaths()),
              UnorderedElementsAre(folder.path("log-ABC123.txt"), folder.path("log-ABC124")));
  EXPECT_EQ(manager->unsortedLogFileInfos().size(), 2U);
}

TEST(DDLogFileManagerDefault, SortsTheNewestFirst) {
  const kernel::WithoutBirthTimes byModification;
  const TemporaryFolder folder;
  makeFile(folder, "log-000002.txt", 1600000002, true);
  makeFile(folder, "log-000003.txt", 1600000003, true);
  makeFile(folder, "log-000001.txt", 1600000001, true);
  const auto manager = managerFor(folder);
  EXPECT_THAT(text(manager->sortedLogFileNames()), ElementsAre("log-000003.txt", "log-000002.txt", "log-000001.txt"));
  EXPECT_THAT(text(manager->sortedLogFilePaths()),
              ElementsAre(folder.path("log-000003.txt"), folder.path("log-000002.txt"), folder.path("log-000001.txt")));
  ASSERT_EQ(manager->sortedLogFileInfos().size(), 3U);
  EXPECT_EQ(manager->sortedLogFileInfos()[0]->fileName(), "log-000003.txt");
}

TEST(DDLogFileManagerDefault, OfFilesThatShareACreationDateTheOneInUseComesFirst) {
  const kernel::WithoutBirthTimes byModification;
  const TemporaryFolder folder;
  makeFile(folder, "log-000001.txt", 1600000000, true);
  makeFile(folder, "log-000002.txt", 1600000000, false);
  makeFile(folder, "log-000003.txt", 1600000000, true);
  EXPECT_EQ(managerFor(folder)->sortedLogFileNames().front(), "log-000002.txt");
}

TEST(DDLogFileManagerDefault, ANewFileIsEmptyAndHasANewName) {
  const TemporaryFolder folder;
  const auto manager = managerFor(folder);
  const std::string path = manager->createNewLogFile().str();
  EXPECT_THAT(path.substr(folder.path().size()), MatchesRegex("/log-[0-9A-F]{6}\\.txt"));
  EXPECT_EQ(TemporaryFolder::read(path), "");
  EXPECT_NE(manager->createNewLogFile(), path);
}

class SameNames : public DDLogFileManagerDefault {
  NK_OBJECT(SameNames, DDLogFileManagerDefault)
  explicit SameNames(NSString folder) : DDLogFileManagerDefault(std::move(folder)) {}
  NSString generateShortUUID() const override { return ++calls_ < 4 ? "ABC123" : "ABC124"; }

 private:
  mutable int calls_ = 0;
};

TEST(DDLogFileManagerDefault, ANameThatIsTakenIsNotUsedAgain) {
  const TemporaryFolder folder;
  folder.write("log-ABC123.txt", "older text");
  EXPECT_EQ(make<SameNames>(NSString(folder.path()))->createNewLogFile(), folder.path("log-ABC124.txt"));
  EXPECT_EQ(TemporaryFolder::read(folder.path("log-ABC123.txt")), "older text");
}

/// Like a subclass that names files after the day.
class OneName : public DDLogFileManagerDefault {
  NK_OBJECT(OneName, DDLogFileManagerDefault)
  using DDLogFileManagerDefault::DDLogFileManagerDefault;
  NSString generateShortUUID() const override { return "20240430"; }
};

TEST(DDLogFileManagerDefault, WhereEveryNameIsTakenTheFileOfTheLastOneIsLeftAndReported) {
  RUN_IN_CHILD({
    alarm(60);  // the signal ends an endless search
    const TemporaryFolder folder;
    const kernel::SystemLogCapture console;
    const auto manager = make<OneName>(NSString(folder.path()));
    const std::string path = folder.path("log-20240430.txt");
    EXPECT_EQ(manager->createNewLogFile(), path);
    EXPECT_TRUE(console.lines().empty());
    folder.write("log-20240430.txt", "text\n");
    EXPECT_EQ(manager->createNewLogFile(), path);
    EXPECT_EQ(TemporaryFolder::read(path), "text\n");
    ASSERT_EQ(console.lines().size(), 1U);
    EXPECT_THAT(console.lines()[0], ::testing::HasSubstr("File exists"));
  });
}

TEST(DDLogFileManagerDefault, ShortIdentifiersAreSixHexadecimalDigitsThatDiffer) {
  const auto manager = DDLogFileManagerDefault::initWithLogsDirectory("/tmp");
  std::set<std::string> seen;
  for (int i = 0; i < 20; ++i) {
    const std::string identifier = manager->generateShortUUID().str();
    EXPECT_THAT(identifier, MatchesRegex("[0-9A-F]{6}"));
    seen.insert(identifier);
  }
  EXPECT_GT(seen.size(), 15U);
}

TEST(DDLogFileManagerDefault, ANewFileMakesTheOldestArchivedOnesGo) {
  const kernel::WithoutBirthTimes byModification;
  const TemporaryFolder folder;
  for (int i = 1; i <= 7; ++i) {
    makeFile(folder, "log-00000" + std::to_string(i) + ".txt", 1600000000 + i, true);
  }
  const auto manager = managerFor(folder);
  const std::string current = manager->createNewLogFile().str();
  EXPECT_THAT(filesIn(folder.path()),
              UnorderedElementsAre(current, folder.path("log-000007.txt"), folder.path("log-000006.txt"),
                                   folder.path("log-000005.txt"), folder.path("log-000004.txt"),
                                   folder.path("log-000003.txt")));
}

TEST(DDLogFileManagerDefault, WhereTheNewestIsArchivedItCounts) {
  const kernel::WithoutBirthTimes byModification;
  const TemporaryFolder folder;
  for (int i = 1; i <= 7; ++i) {
    makeFile(folder, "log-00000" + std::to_string(i) + ".txt", 1600000000 + i, true);
  }
  managerFor(folder)->deleteOldLogFiles();
  EXPECT_THAT(filesIn(folder.path()), UnorderedElementsAre(folder.path("log-000007.txt"), folder.path("log-000006.txt"),
                                                           folder.path("log-000005.txt"), folder.path("log-000004.txt"),
                                                           folder.path("log-000003.txt")));
}

TEST(DDLogFileManagerDefault, OfEightFilesThatShareACreationDateTheOneInUseIsNeverRemoved) {
  const kernel::WithoutBirthTimes byModification;
  for (int inUse = 0; inUse < 8; ++inUse) {
    const TemporaryFolder folder;
    for (int i = 0; i < 8; ++i) {
      makeFile(folder, "log-00000" + std::to_string(i) + ".txt", 1600000000, i != inUse);
    }
    const auto manager = managerFor(folder);
    manager->setMaximumNumberOfLogFiles(1);
    DDLog::flushLog();
    EXPECT_EQ(filesIn(folder.path()).size(), 2U);
    EXPECT_TRUE(std::filesystem::exists(folder.path("log-00000" + std::to_string(inUse) + ".txt"))) << inUse;
  }
}

TEST(DDLogFileManagerDefault, FilesMadeInOneMomentNeverCostTheOneInUse) {
  const TemporaryFolder folder;
  const auto manager = managerFor(folder);
  manager->setMaximumNumberOfLogFiles(2);
  for (int i = 0; i < 8; ++i) {
    const std::string current = manager->createNewLogFile().str();
    ASSERT_TRUE(std::filesystem::exists(current));
    manager->deleteOldLogFiles();
    ASSERT_TRUE(std::filesystem::exists(current));
    DDLogFileInfo::logFileWithPath(current)->setIsArchived(true);
  }
  EXPECT_LE(filesIn(folder.path()).size(), 3U);
}

TEST(DDLogFileManagerDefault, TheFileJustMadeStaysThoughOthersSeemNewer) {
  const TemporaryFolder folder;
  const auto manager = managerFor(folder);
  manager->setMaximumNumberOfLogFiles(2);
  const std::string current = manager->createNewLogFile().str();
  const kernel::WithoutBirthTimes byModification;
  makeFile(folder, current.substr(folder.path().size() + 1), 1600000000, false);
  for (int i = 1; i <= 3; ++i) {
    makeFile(folder, "log-00000" + std::to_string(i) + ".txt", 1600000000 + i, true);
  }
  manager->deleteOldLogFiles();
  EXPECT_THAT(filesIn(folder.path()),
              UnorderedElementsAre(current, folder.path("log-000003.txt"), folder.path("log-000002.txt")));
}

TEST(DDLogFileManagerDefault, ALimitOfZeroKeepsEverything) {
  const TemporaryFolder folder;
  const auto manager = managerFor(folder);
  manager->setMaximumNumberOfLogFiles(0);
  for (int i = 0; i < 8; ++i) {
    DDLogFileInfo::logFileWithPath(manager->createNewLogFile())->setIsArchived(true);
  }
  manager->deleteOldLogFiles();
  DDLog::flushLog();
  EXPECT_EQ(filesIn(folder.path()).size(), 8U);
}

TEST(DDLogFileManagerDefault, ALowerLimitRemovesFilesOnTheLoggingQueue) {
  const kernel::WithoutBirthTimes byModification;
  const TemporaryFolder folder;
  for (int i = 1; i <= 4; ++i) {
    makeFile(folder, "log-00000" + std::to_string(i) + ".txt", 1600000000 + i, true);
  }
  const auto manager = managerFor(folder);
  manager->setMaximumNumberOfLogFiles(2);
  DDLog::flushLog();
  EXPECT_THAT(filesIn(folder.path()),
              UnorderedElementsAre(folder.path("log-000004.txt"), folder.path("log-000003.txt")));
}

class CountingManager : public DDLogFileManagerDefault {
  NK_OBJECT(CountingManager, DDLogFileManagerDefault)
  explicit CountingManager(NSString folder) : DDLogFileManagerDefault(std::move(folder)) {}
  void deleteOldLogFiles() override {
    wasOnLoggingQueue = dispatch_get_specific(GlobalLoggingQueueIdentityKey) != nullptr;
    ++deletions;
  }
  std::atomic<int> deletions = 0;
  std::atomic<bool> wasOnLoggingQueue = false;
};

TEST(DDLogFileManagerDefault, OnlyAChangeOfTheLimitRemovesFiles) {
  const TemporaryFolder folder;
  const auto manager = make<CountingManager>(NSString(folder.path()));
  manager->setMaximumNumberOfLogFiles(5);
  DDLog::flushLog();
  EXPECT_EQ(manager->deletions, 0);
  manager->setMaximumNumberOfLogFiles(4);
  DDLog::flushLog();
  EXPECT_EQ(manager->deletions, 1);
  EXPECT_TRUE(manager->wasOnLoggingQueue);
  manager->setValue_forKey(3, "maximumNumberOfLogFiles");
  DDLog::flushLog();
  EXPECT_EQ(manager->deletions, 2);
  EXPECT_EQ(manager->maximumNumberOfLogFiles(), 3U);
}

TEST(DDLogFileManagerDefault, AFolderCalledLikeALogFileIsListedButNeverRemoved) {
  const kernel::WithoutBirthTimes byModification;
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.path("log-AAAAAA"));
  makeFile(folder, "log-AAAAAA/inside", 1600000000, false);
  const std::timespec longAgo[2] = {{1500000000, 0}, {1500000000, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, folder.path("log-AAAAAA").c_str(), longAgo, 0), 0);
  for (int i = 1; i <= 3; ++i) {
    makeFile(folder, "log-00000" + std::to_string(i) + ".txt", 1600000000 + i, true);
  }
  const auto manager = managerFor(folder);
  EXPECT_THAT(text(manager->sortedLogFileNames()),
              ElementsAre("log-000003.txt", "log-000002.txt", "log-000001.txt", "log-AAAAAA"));
  manager->setMaximumNumberOfLogFiles(1);
  DDLog::flushLog();
  EXPECT_THAT(filesIn(folder.path()), UnorderedElementsAre(folder.path("log-000003.txt"), folder.path("log-AAAAAA")));
  EXPECT_EQ(TemporaryFolder::read(folder.path("log-AAAAAA/inside")), "text");
}

TEST(DDLogFileManagerDefault, ThreadsThatMakeFilesAtOnceGetFilesOfTheirOwn) {
  const TemporaryFolder folder;
  const auto manager = managerFor(folder);
  manager->setMaximumNumberOfLogFiles(0);
  std::vector<std::string> made[4];
  std::vector<std::thread> threads;
  for (auto& mine : made) {
    threads.emplace_back([&] {
      for (int i = 0; i < 25; ++i) mine.push_back(manager->createNewLogFile().str());
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::set<std::string> all;
  for (const auto& mine : made) all.insert(mine.begin(), mine.end());
  EXPECT_EQ(all.size(), 100U);
  EXPECT_THAT(filesIn(folder.path()), ::testing::UnorderedElementsAreArray(all));
}

TEST(DDLogFileManagerDefault, AnyThreadMayDoAnythingAtAnyTime) {
  const TemporaryFolder folder;
  const auto manager = managerFor(folder);
  std::atomic<bool> done = false;
  std::vector<std::thread> threads;
  threads.emplace_back([&] {
    for (int i = 0; i < 100; ++i) {
      const NSString path = manager->createNewLogFile();
      EXPECT_TRUE(std::filesystem::exists(path.str())) << "the file in use";
      DDLogFileInfo::logFileWithPath(path)->setIsArchived(true);
    }
    done = true;
  });
  threads.emplace_back([&] {
    for (std::uint64_t i = 0; !done; ++i) {
      manager->setMaximumNumberOfLogFiles(2 + i % 2);
      DDLog::flushLog();
    }
  });
  threads.emplace_back([&] {
    while (!done) manager->deleteOldLogFiles();
  });
  threads.emplace_back([&] {
    while (!done) {
      const std::uint64_t limit = manager->maximumNumberOfLogFiles();
      EXPECT_TRUE(limit == 5 || limit == 2 || limit == 3) << limit;
      for (const NSString& name : manager->sortedLogFileNames()) EXPECT_TRUE(manager->isLogFile(name));
    }
  });
  for (std::thread& thread : threads) thread.join();
  DDLog::flushLog();
  manager->setMaximumNumberOfLogFiles(1);
  DDLog::flushLog();
  EXPECT_EQ(filesIn(folder.path()).size(), 1U);
}

TEST(DDLogFileManagerDefault, MakesItsFolderWhereItIsMissing) {
  const TemporaryFolder folder;
  const auto manager = DDLogFileManagerDefault::initWithLogsDirectory(folder.path("a/b/c"));
  EXPECT_FALSE(std::filesystem::exists(folder.path("a")));
  EXPECT_EQ(manager->logsDirectory(), folder.path("a/b/c"));
  EXPECT_TRUE(std::filesystem::is_directory(folder.path("a/b/c")));
}

TEST(DDLogFileManagerDefault, AFolderThatCannotBeMadeIsReported) {
  const TemporaryFolder folder;
  folder.write("file");
  const kernel::SystemLogCapture console;
  const auto manager = DDLogFileManagerDefault::initWithLogsDirectory(folder.path("file/logs"));
  EXPECT_EQ(manager->logsDirectory(), folder.path("file/logs"));
  ASSERT_EQ(console.lines().size(), 1U);
  EXPECT_THAT(console.lines()[0], ::testing::StartsWith("DDFileLogManagerDefault: Error creating logsDirectory: "));
  EXPECT_THAT(console.lines()[0], ::testing::HasSubstr(folder.path("file")));
  EXPECT_TRUE(manager->unsortedLogFilePaths().empty());
}

TEST(DDLogFileManagerDefault, AFolderNameWithAZeroByteNamesNoFolderAndNothingElse) {
  using namespace std::string_literals;
  const TemporaryFolder folder;
  folder.write("file", "text");
  const kernel::SystemLogCapture console;
  for (const std::string& name : {"file\0logs"s, "none\0logs"s}) {
    const auto manager = DDLogFileManagerDefault::initWithLogsDirectory(folder.path(name));
    EXPECT_THAT(manager->createNewLogFile().str().substr(folder.path(name).size()),
                MatchesRegex("/log-[0-9A-F]{6}\\.txt"));
  }
  EXPECT_THAT(filesIn(folder.path()), ElementsAre(folder.path("file")));
  EXPECT_EQ(TemporaryFolder::read(folder.path("file")), "text");
}

TEST(DDLogFileManagerDefault, TheDefaultFolderIsTheProcesssOwnInTheUsersLibrary) {
  RUN_IN_CHILD({
    setenv("XDG_DATA_HOME", "/tmp/library-of-the-user", 1);
    EXPECT_EQ(make<DDLogFileManagerDefault>()->defaultLogsDirectory(),
              "/tmp/library-of-the-user/Logs/" + kernel::processName());
  });
}

TEST(DDLogFileManagerDefault, AForkedChildIsNotHeldUpByWhatOtherThreadsWereAt) {
#ifdef NK_TEST_ADDRESS_SANITIZER
  GTEST_SKIP() << "the address sanitizer's own heap may be locked for ever in a child of a busy process";
#endif
  const TemporaryFolder folder;
  const auto manager = managerFor(folder);
  std::atomic<bool> done = false;
  std::vector<std::thread> threads;
  for (int i = 0; i < 2; ++i) {
    threads.emplace_back([&] {
      while (!done) manager->deleteOldLogFiles();
    });
  }
  int bad = 0;
  for (int i = 0; i < 300 && bad == 0; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      alarm(20);  // the signal ends a child that hangs
      manager->deleteOldLogFiles();
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    bad += status != 0;
  }
  done = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(bad, 0);
}

TEST(DDLogFileManagerDefault, GoesWhenNobodyKeepsIt) {
  const TemporaryFolder folder;
  auto manager = managerFor(folder);
  const Weak<DDLogFileManagerDefault> watched = manager;
  manager = nullptr;
  EXPECT_FALSE(watched.lock());
}

// Permissions

mode_t modeOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
  return status.st_mode & 07777;
}

TEST(DDLogFileManagerDefault, FilesAndFoldersHaveThePermissionsThatAreAskedForWhateverTheUmask) {
  for (const mode_t mask : {0U, 022U, 077U, 0277U}) {
    RUN_IN_CHILD({
      const TemporaryFolder folder;
      umask(mask);
      const auto usual = DDLogFileManagerDefault::initWithLogsDirectory(folder.path("usual"));
      EXPECT_EQ(modeOf(usual->createNewLogFile().str()), 0600U);
      EXPECT_EQ(modeOf(folder.path("usual")), 0700U);
      const auto shared = DDLogFileManagerDefault::initWithLogsDirectory(folder.path("shared"));
      shared->setLogFilePermissions(0664);
      shared->setLogsDirectoryPermissions(0775);
      EXPECT_EQ(shared->logFilePermissions(), 0664U);
      EXPECT_EQ(shared->logsDirectoryPermissions(), 0775U);
      EXPECT_EQ(modeOf(shared->createNewLogFile().str()), 0664U);
      EXPECT_EQ(modeOf(folder.path("shared")), 0775U);
    });
  }
}

TEST(DDLogFileManagerDefault, AFolderThatIsThereKeepsItsPermissions) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.path("logs"));
  ASSERT_EQ(chmod(folder.path("logs").c_str(), 0755), 0);
  EXPECT_EQ(DDLogFileManagerDefault::initWithLogsDirectory(folder.path("logs"))->logsDirectory(), folder.path("logs"));
  EXPECT_EQ(modeOf(folder.path("logs")), 0755U);
}

TEST(DDLogFileManagerDefault, PermissionsThatWereNotWrittenInOctalOrShutTheUserOutAreRefused) {
  const auto manager = DDLogFileManagerDefault::initWithLogsDirectory("/tmp");
  for (const std::uint32_t bad : {600U, 640U, 01600U, 0400U, 0200U, 0177U, 0U}) {
    EXPECT_THROW(manager->setLogFilePermissions(bad), NSException) << bad;
  }
  for (const std::uint32_t bad : {700U, 755U, 01700U, 0600U, 0500U, 0U}) {
    EXPECT_THROW(manager->setLogsDirectoryPermissions(bad), NSException) << bad;
  }
  EXPECT_EQ(manager->logFilePermissions(), 0600U);
  EXPECT_EQ(manager->logsDirectoryPermissions(), 0700U);
  manager->setLogFilePermissions(0777);
  manager->setLogsDirectoryPermissions(0777);
}

// Invalid folders and files

TEST(DDLogFileManagerDefault, AnEmptyFolderNameIsRefused) {
  const kernel::SystemLogCapture console;
  EXPECT_FALSE(DDLogFileManagerDefault::initWithLogsDirectory(""));
  EXPECT_FALSE(make<DDLogFileManagerDefault>(NSString()));
  ASSERT_EQ(console.lines().size(), 2U);
  EXPECT_EQ(console.lines()[0], "DDLogFileManagerDefault: the folder for log files has an empty name");
}

TEST(DDLogFileManagerDefault, AFolderThatCannotBeMadeIsReportedOnceUntilItCouldBeMade) {
  const TemporaryFolder folder;
  const std::string obstacle = folder.write("obstacle");
  const kernel::SystemLogCapture console;
  const auto manager = DDLogFileManagerDefault::initWithLogsDirectory(folder.path("obstacle/logs"));
  for (int i = 0; i < 3; ++i) static_cast<void>(manager->createNewLogFile());
  EXPECT_EQ(console.lines().size(), 1U);
  std::filesystem::remove(obstacle);
  static_cast<void>(manager->logsDirectory());
  EXPECT_EQ(console.lines().size(), 1U);
  std::filesystem::remove_all(obstacle);
  folder.write("obstacle");
  for (int i = 0; i < 3; ++i) static_cast<void>(manager->createNewLogFile());
  EXPECT_EQ(console.lines().size(), 2U);
}

TEST(DDLogFileManagerDefault, AFileThatCannotBeMadeIsReportedOnceUntilOneCould) {
  RUN_IN_CHILD({
    const TemporaryFolder folder;
    if (geteuid() == 0) {  // root may make files anywhere
      ASSERT_EQ(chown(folder.path().c_str(), 54321, 54321), 0);
      ASSERT_EQ(setuid(54321), 0);
    }
    const kernel::SystemLogCapture console;
    const auto manager = managerFor(folder);
    for (std::size_t reports : {1U, 2U}) {
      ASSERT_EQ(chmod(folder.path().c_str(), 0500), 0);
      for (int i = 0; i < 3; ++i) static_cast<void>(manager->createNewLogFile());
      ASSERT_EQ(console.lines().size(), reports);
      EXPECT_THAT(console.lines().back(), ::testing::HasSubstr("Permission denied"));
      ASSERT_EQ(chmod(folder.path().c_str(), 0700), 0);
      EXPECT_TRUE(std::filesystem::exists(manager->createNewLogFile().str()));
    }
  });
}

TEST(DDLogFileManagerDefault, AFolderThatCannotBeListedIsReportedOnceUntilItCouldBeListed) {
  RUN_IN_CHILD({
    const TemporaryFolder folder;
    if (geteuid() == 0) {  // root may list any folder
      ASSERT_EQ(chown(folder.path().c_str(), 54321, 54321), 0);
      ASSERT_EQ(setuid(54321), 0);
    }
    const kernel::SystemLogCapture console;
    const auto manager = managerFor(folder);
    for (std::size_t reports : {1U, 2U}) {
      ASSERT_EQ(chmod(folder.path().c_str(), 0300), 0);
      for (int i = 0; i < 3; ++i) static_cast<void>(manager->createNewLogFile());
      ASSERT_EQ(console.lines().size(), reports);
      EXPECT_EQ(console.lines().back(),
                "DDFileLogManagerDefault: Error listing logsDirectory, no old file is used or removed: list folder " +
                    folder.path() + ": Permission denied");
      ASSERT_EQ(chmod(folder.path().c_str(), 0700), 0);
      EXPECT_EQ(manager->unsortedLogFilePaths().size(), 3 * reports);
    }
  });
}

TEST(DDLogFileManagerDefault, SurplusLinksAndPipesGoButNotWhatLinksLeadTo) {
  const TemporaryFolder folder;
  folder.write("kept", "text");
  std::filesystem::create_directory(folder.path("folder"));
  std::filesystem::create_symlink("nowhere", folder.path("log-000001"));
  std::filesystem::create_symlink("kept", folder.path("log-000002"));
  std::filesystem::create_symlink("folder", folder.path("log-000003"));
  ASSERT_EQ(mkfifo(folder.path("log-000004").c_str(), 0600), 0);
  const auto manager = managerFor(folder);
  manager->setMaximumNumberOfLogFiles(1);
  DDLog::flushLog();
  for (int i = 0; i < 2; ++i) DDLogFileInfo::logFileWithPath(manager->createNewLogFile())->setIsArchived(true);
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
    if (!std::filesystem::is_regular_file(entry.symlink_status()) && entry.path().filename() != "folder") {
      names.push_back(entry.path().filename().string());
    }
  }
  EXPECT_TRUE(names.empty()) << names.size();
  EXPECT_EQ(TemporaryFolder::read(folder.path("kept")), "text");
}

/// Makes the process that of a user without an account and without a home, whose logs are in the given folder. Returns
/// false if there is an account.
bool becomeNobody(const TemporaryFolder& temporary) {
  if (geteuid() == 0) {
    EXPECT_EQ(chmod(temporary.path().c_str(), 01777), 0);
    EXPECT_EQ(setuid(54321), 0);
  }
  for (const char* name : {"HOME", "XDG_DATA_HOME"}) unsetenv(name);
  setenv("TMPDIR", temporary.path().c_str(), 1);
  return !getpwuid(geteuid());
}

TEST(DDLogFileManagerDefault, WithoutAHomeTheDefaultFolderIsInTheTemporaryOne) {
  RUN_IN_CHILD({
    const TemporaryFolder temporary;
    if (!becomeNobody(temporary)) return;
    const std::string expected = temporary.path("Logs/" + kernel::processName());
    const auto manager = make<DDLogFileManagerDefault>();
    EXPECT_EQ(manager->defaultLogsDirectory(), expected);
    EXPECT_TRUE(filesIn(temporary.path()).empty());
    EXPECT_EQ(manager->logsDirectory(), expected);
    EXPECT_EQ(filesIn(expected).size(), 0U);
    EXPECT_EQ(manager->createNewLogFile().stringByDeletingLastPathComponent(), expected);
    EXPECT_EQ(filesIn(expected).size(), 1U);
  });
}

TEST(DDLogFileManagerDefault, AMissingTemporaryFolderIsMade) {
  RUN_IN_CHILD({
    const TemporaryFolder temporary;
    if (!becomeNobody(temporary)) return;
    setenv("TMPDIR", temporary.path("missing").c_str(), 1);
    EXPECT_TRUE(std::filesystem::exists(make<DDLogFileManagerDefault>()->createNewLogFile().str()));
  });
}

TEST(DDLogFileManagerDefault, AFolderOfAnotherUserInTheTemporaryOneIsNotUsed) {
  const struct {
    const char* why;
    std::function<void(const std::string& logs, const std::string& theirs)> put;
  } rows[] = {
      {"a folder of another user",
       [](auto& logs, auto&) {
         ASSERT_EQ(mkdir(logs.c_str(), 0777), 0);
         ASSERT_EQ(chmod(logs.c_str(), 0777), 0);
       }},
      {"a link to a folder of another user",
       [](auto& logs, auto& theirs) { ASSERT_EQ(symlink(theirs.c_str(), logs.c_str()), 0); }},
      {"a link that leads nowhere", [](auto& logs, auto&) { ASSERT_EQ(symlink("nowhere", logs.c_str()), 0); }},
      {"a file", [](auto& logs, auto&) { ASSERT_EQ(mknod(logs.c_str(), S_IFREG | 0666, 0), 0); }},
  };
  if (geteuid() != 0) GTEST_SKIP() << "only root may be two users";
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    RUN_IN_CHILD({
      const TemporaryFolder temporary, theirs;
      ASSERT_EQ(chmod(theirs.path().c_str(), 0777), 0);
      row.put(temporary.path("Logs"), theirs.path());
      if (!becomeNobody(temporary)) return;
      const kernel::SystemLogCapture console;
      const std::string first = temporary.path("Logs-54321/" + kernel::processName());
      const auto manager = make<DDLogFileManagerDefault>();
      EXPECT_EQ(manager->defaultLogsDirectory(), first);
      EXPECT_EQ(manager->createNewLogFile().stringByDeletingLastPathComponent(), first);
      EXPECT_EQ(filesIn(first).size(), 1U);
      EXPECT_TRUE(filesIn(theirs.path()).empty());
      EXPECT_TRUE(console.lines().empty());
      // A folder that others may write to is not used either, although it belongs to this user.
      ASSERT_EQ(chmod(temporary.path("Logs-54321").c_str(), 0770), 0);
      const std::string second = temporary.path("Logs-54321-2/" + kernel::processName());
      EXPECT_EQ(manager->createNewLogFile().stringByDeletingLastPathComponent(), second);
      EXPECT_EQ(manager->sortedLogFilePaths().size(), 1U);
    });
  }
}

TEST(DDLogFileManagerDefault, WhereEveryNameIsTakenNoFileIsMadeAndTheReasonIsReported) {
  RUN_IN_CHILD({
    const TemporaryFolder temporary;
    if (!becomeNobody(temporary)) return;
    const std::string own = "Logs-" + std::to_string(geteuid());
    std::vector<std::string> taken{"Logs", own};
    for (int i = 2; i < 10; ++i) taken.push_back(own + "-" + std::to_string(i));
    for (const std::string& name : taken) {
      const std::string inner = temporary.path(name) + "/" + kernel::processName();
      std::filesystem::create_directories(inner);
      ASSERT_EQ(chmod(temporary.path(name).c_str(), 0777), 0);
      ASSERT_EQ(chmod(inner.c_str(), 0777), 0);
    }
    const kernel::SystemLogCapture console;
    const auto manager = make<DDLogFileManagerDefault>();
    for (int i = 0; i < 3; ++i) EXPECT_FALSE(std::filesystem::exists(manager->createNewLogFile().str()));
    EXPECT_TRUE(manager->unsortedLogFilePaths().empty());
    ASSERT_EQ(console.lines().size(), 1U);
    EXPECT_THAT(console.lines()[0], ::testing::HasSubstr("Operation not permitted"));
    std::filesystem::remove_all(temporary.path(own));
    EXPECT_TRUE(std::filesystem::exists(manager->createNewLogFile().str()));
  });
}

}  // namespace
}  // namespace norvik
