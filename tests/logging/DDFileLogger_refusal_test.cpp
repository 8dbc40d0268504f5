// A file logger and files that are not its own: entries that others put into its folder, files that a killed process
// left, and refusals of the system.
#include "NorvikCore/logging/DDFileLogger.h"

#include "NorvikCore/logging/DDLogFileManagerDefault.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "tests/support/InChild.h"
#include "tests/support/LogFolder.h"
#include "tests/support/RecordingLogger.h"
#include "tests/support/Sanitizers.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace norvik {
namespace {

namespace fs = std::filesystem;
using kernel::SystemLogCapture;
using test::allLinesIn;
using test::filesIn;
using test::linesOf;
using test::RecordingManager;
using test::TemporaryFolder;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class DDFileLoggerRefusal : public test::CleanDDLog {
 protected:
  static constexpr uid_t somebodyElse = 54321;

  void TearDown() override {
    CleanDDLog::TearDown();
    for (const auto& logger : added_) dispatch_sync(logger->loggerQueue(), [] {});  // their files are archived then
  }

  Ref<DDFileLogger> addLogger(const Ref<DDLogFileManager>& manager) {
    auto logger = DDFileLogger::initWithLogFileManager(manager);
    logger->setLogFormatter(nullptr);
    DDLog::addLogger(logger);
    added_.push_back(logger);
    return logger;
  }
  Ref<DDFileLogger> addLogger(const std::string& path) { return addLogger(make<RecordingManager>(path)); }
  static void sayNow(const NSString& text) { test::say(text, LOG_FLAG_ERROR, false); }
  /// Logs as many lines as a logger writes between two checks of its folder.
  static void sayUntilTheNextLook() {
    for (int i = 0; i < 500; ++i) sayNow("meanwhile");
  }
  static std::string currentPath(const Ref<DDFileLogger>& logger) {
    return dispatch_sync(logger->loggerQueue(), [&] { return logger->currentLogFileInfo()->filePath().str(); });
  }
  static mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
  }

  TemporaryFolder folder, elsewhere;

 private:
  std::vector<Ref<DDFileLogger>> added_;
};

struct Impostor {
  const char* why;
  const char* reason;  // the console's name for it
  std::function<void(const std::string& path, const std::string& outside)> put;
  bool isRootNeeded = false;
};

const Impostor impostors[] = {
    {"a pipe", "a named pipe", [](auto& path, auto&) { ASSERT_EQ(mkfifo(path.c_str(), 0600), 0); }},
    {"a folder", "a folder", [](auto& path, auto&) { fs::create_directory(path); }},
    {"a dangling link", "a symbolic link", [](auto& path, auto&) { fs::create_symlink("nowhere", path); }},
    {"a link to a file", "a symbolic link", [](auto& path, auto& outside) { fs::create_symlink(outside, path); }},
    {"a link to a folder", "a symbolic link", [](auto& path, auto&) { fs::create_symlink("/tmp", path); }},
    {"a link to a device", "a symbolic link", [](auto& path, auto&) { fs::create_symlink("/dev/full", path); }},
    {"a second name of a file", "another name", [](auto& path, auto& outside) { fs::create_hard_link(outside, path); }},
    {"a socket", "a socket",
     [](auto& path, auto&) {
       sockaddr_un address{};
       address.sun_family = AF_UNIX;
       ASSERT_LT(path.size(), sizeof address.sun_path);
       std::memcpy(address.sun_path, path.c_str(), path.size());
       const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
       ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
       close(listener);
     }},
    {"a device", "a device",
     [](auto& path, auto&) { ASSERT_EQ(mknod(path.c_str(), S_IFCHR | 0600, makedev(1, 7)), 0); }, true},
    {"a file of somebody else", "belongs to user 54321",
     [](auto& path, auto&) {
       const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
       ASSERT_EQ(fchown(file, 54321, 54321), 0);
       close(file);
     },
     true},
};

TEST_F(DDFileLoggerRefusal, WhatIsNoLogFileOfThisUserIsPassedOverAndTheConsoleSaysWhyOnce) {
  for (const Impostor& impostor : impostors) {
    SCOPED_TRACE(impostor.why);
    if (impostor.isRootNeeded && geteuid() != 0) continue;
    const TemporaryFolder logs;
    const std::string path = logs.path("log-ABCDEF.txt"), outside = elsewhere.write("outside", "not a log\n");
    impostor.put(path, outside);
    RUN_IN_CHILD({
      alarm(60);  // a logger that hangs is ended by the signal
      const SystemLogCapture console;
      const auto logger = addLogger(logs.path());
      sayNow("first");
      const std::string current = currentPath(logger);
      EXPECT_NE(current, path);
      EXPECT_EQ(linesOf(current).back(), "first");
      logger->rollLogFile();
      DDLog::flushLog();
      sayNow("second");
      EXPECT_EQ(linesOf(currentPath(logger)).back(), "second");
      ASSERT_EQ(console.lines().size(), 1U);
      EXPECT_THAT(console.lines()[0], HasSubstr(path));
      EXPECT_THAT(console.lines()[0], HasSubstr(impostor.reason));
      EXPECT_EQ(TemporaryFolder::read(outside), "not a log\n");
    });
    fs::remove(outside);
  }
}

TEST_F(DDFileLoggerRefusal, APipeThatSomebodyReadsGetsNoLine) {
  const std::string pipe = folder.path("log-ABCDEF.txt");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  ASSERT_GE(reader, 0);
  const SystemLogCapture console;
  const auto logger = addLogger(folder.path());
  sayNow("text");
  EXPECT_THAT(linesOf(currentPath(logger)), ElementsAre("text"));
  char byte = 0;
  EXPECT_EQ(read(reader, &byte, 1), 0);
  close(reader);
}

TEST_F(DDFileLoggerRefusal, WhatTakesThePlaceOfTheCurrentFileIsNoticedAndPassedOver) {
  for (const Impostor& impostor : impostors) {
    SCOPED_TRACE(impostor.why);
    if (impostor.isRootNeeded && geteuid() != 0) continue;
    const TemporaryFolder logs;
    const std::string outside = elsewhere.write("outside", "not a log\n");
    RUN_IN_CHILD({
      alarm(60);
      const SystemLogCapture console;
      const auto logger = addLogger(logs.path());
      sayNow("first");
      const std::string first = currentPath(logger);
      fs::remove(first);
      impostor.put(first, outside);
      sayUntilTheNextLook();
      sayNow("here");
      EXPECT_NE(currentPath(logger), first);
      EXPECT_EQ(linesOf(currentPath(logger)).back(), "here");
      EXPECT_EQ(console.lines().size(), 1U);
      EXPECT_EQ(TemporaryFolder::read(outside), "not a log\n");
      std::exit(testing::Test::HasFailure() ? 1 : 0);  // the end of the process does not hang either
    });
    fs::remove(outside);
  }
}

TEST_F(DDFileLoggerRefusal, ALinkToTheMovedFileItselfIsNoticed) {
  const SystemLogCapture console;
  const auto logger = addLogger(folder.path());
  sayNow("first");
  const std::string first = currentPath(logger);
  fs::rename(first, elsewhere.path("moved"));
  fs::create_symlink(elsewhere.path("moved"), first);
  sayUntilTheNextLook();
  sayNow("here");
  EXPECT_NE(currentPath(logger), first);
  EXPECT_EQ(linesOf(currentPath(logger)).back(), "here");
}

TEST_F(DDFileLoggerRefusal, TheNextRunGoesOnInTheFileThatWasBegunInstead) {
  const SystemLogCapture console;
  fs::create_directory(folder.path("log-ABCDEF.txt"));
  auto logger = addLogger(folder.path());
  sayNow("first run");
  const std::string path = currentPath(logger);
  ASSERT_EQ(console.lines().size(), 1U);
  const auto message = DDLogMessage::initWithLogMsg("second run", 31, 1, 0, "f", "g", 1, Value(), 0);
  const auto next = DDFileLogger::initWithLogFileManager(make<RecordingManager>(folder.path()));
  next->setLogFormatter(nullptr);
  DDLog::flushLog();
  dispatch_sync(next->loggerQueue(), [&] { next->logMessage(*message); });
  EXPECT_EQ(linesOf(path).size(), 2U);
  EXPECT_EQ(console.lines().size(), 1U);
}

TEST_F(DDFileLoggerRefusal, AFileThatWasReplacedIsNotMarkedOrReportedAsArchivedInTheRolledOnesPlace) {
  const SystemLogCapture console;
  const auto manager = make<RecordingManager>(folder.path());
  const auto logger = addLogger(manager);
  sayNow("first");
  const std::string first = currentPath(logger), outside = elsewhere.write("outside");
  fs::remove(first);
  fs::create_symlink(outside, first);
  logger->rollLogFile();
  DDLog::flushLog();
  dispatch_sync(logger->loggerQueue(), [] {});
  EXPECT_FALSE(DDLogFileInfo::logFileWithPath(outside)->isArchived());
  EXPECT_THAT(manager->rolled(), IsEmpty());
}

TEST_F(DDFileLoggerRefusal, AFileWithoutPermissionToWriteIsPassedOver) {
  const std::string locked = folder.write("log-ABCDEF.txt", "locked\n");
  ASSERT_EQ(chmod(locked.c_str(), 0400), 0);
  if (geteuid() == 0) {
    ASSERT_EQ(chown(folder.path().c_str(), somebodyElse, somebodyElse), 0);
    ASSERT_EQ(chown(locked.c_str(), somebodyElse, somebodyElse), 0);
  }
  RUN_IN_CHILD({
    if (geteuid() == 0) {
      ASSERT_EQ(setuid(somebodyElse), 0);
    }
    const SystemLogCapture console;
    const auto logger = addLogger(folder.path());
    sayNow("text");
    EXPECT_THAT(linesOf(currentPath(logger)), ElementsAre("text"));
    ASSERT_EQ(console.lines().size(), 1U);
    EXPECT_THAT(console.lines()[0], HasSubstr("Permission denied"));
    EXPECT_EQ(TemporaryFolder::read(locked), "locked\n");
  });
}

// How the file ends is not known: an empty line is better than two messages in one line.
TEST_F(DDFileLoggerRefusal, AFileThatMayBeWrittenButNotReadIsUsedAndHasALineFeedFirstUnlessItIsEmpty) {
  const struct {
    const char *why, *left, *expected;
  } rows[] = {
      {"cut in the middle", "whole\nhal", "whole\nhal\ntext\nmore\n"},
      {"whole", "whole\n", "whole\n\ntext\nmore\n"},
      {"empty", "", "text\nmore\n"},
  };
  for (const auto& row : rows) {
    const TemporaryFolder logs;
    const std::string blind = logs.write("log-ABCDEF.txt", row.left);
    ASSERT_EQ(chmod(blind.c_str(), 0200), 0);
    if (geteuid() == 0) {
      ASSERT_EQ(chown(logs.path().c_str(), somebodyElse, somebodyElse), 0);
      ASSERT_EQ(chown(blind.c_str(), somebodyElse, somebodyElse), 0);
    }
    RUN_IN_CHILD({
      if (geteuid() == 0) {
        ASSERT_EQ(setuid(somebodyElse), 0);
      }
      const SystemLogCapture console;
      addLogger(logs.path());
      sayNow("text"), sayNow("more");
      ASSERT_EQ(chmod(blind.c_str(), 0600), 0);
      EXPECT_EQ(TemporaryFolder::read(blind), row.expected) << row.why;
      EXPECT_THAT(console.lines(), IsEmpty());
    });
  }
}

TEST_F(DDFileLoggerRefusal, TheLongestNameIsALogFileLikeAnyOther) {
  const std::string path = folder.write("log-ABCDEF" + std::string(245, 'x'), "old\n");
  addLogger(folder.path());
  sayNow("text");
  EXPECT_EQ(TemporaryFolder::read(path), "old\ntext\n");
}

TEST_F(DDFileLoggerRefusal, TheFolderItselfMayBeALink) {
  fs::create_directory(folder.path("real"));
  fs::create_symlink(folder.path("real"), folder.path("link"));
  const SystemLogCapture console;
  addLogger(folder.path("link"));
  sayNow("text");
  EXPECT_THAT(allLinesIn(folder.path("real")), ElementsAre("text"));
  EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(DDFileLoggerRefusal, AThousandFilesOfOthersAreNoObstacle) {
  for (int i = 0; i < 1000; ++i) {
    fs::create_symlink("/dev/null", folder.path("log-" + std::to_string(100000 + i) + ".txt"));
  }
  const SystemLogCapture console;
  const auto logger = addLogger(folder.path());
  sayNow("text");
  EXPECT_THAT(linesOf(currentPath(logger)), ElementsAre("text"));
  EXPECT_EQ(console.lines().size(), 1U);
}

// Files that a killed process left

TEST_F(DDFileLoggerRefusal, AnIncompleteLastLineIsEndedBeforeTheFirstLineOfTheNextRun) {
  const struct {
    const char *why, *left, *expected;
  } rows[] = {
      {"cut in the middle", "whole\nhal", "whole\nhal\ntext\nmore\n"},
      {"nothing but a part", "h", "h\ntext\nmore\n"},
      {"whole", "whole\n", "whole\ntext\nmore\n"},
      {"empty", "", "text\nmore\n"},
  };
  for (const auto& row : rows) {
    const TemporaryFolder logs;
    const std::string path = logs.write("log-ABCDEF.txt", row.left);
    const auto logger = addLogger(logs.path());
    sayNow("text"), sayNow("more");
    EXPECT_EQ(TemporaryFolder::read(path), row.expected) << row.why;
    clean();
    dispatch_sync(logger->loggerQueue(), [] {});
  }
}

// Refusals of the system

TEST_F(DDFileLoggerRefusal, AFolderThatCannotBeMadeIsSaidOnceUntilItCouldBeMade) {
  const std::string obstacle = folder.write("obstacle");
  const SystemLogCapture console;
  addLogger(folder.path("obstacle/logs"));
  for (int i = 0; i < 5; ++i) sayUntilTheNextLook();
  ASSERT_EQ(console.lines().size(), 1U);
  EXPECT_THAT(console.lines()[0], HasSubstr(obstacle));
  fs::remove(obstacle);
  sayUntilTheNextLook();
  sayNow("here");
  EXPECT_EQ(allLinesIn(folder.path("obstacle/logs")).back(), "here");
  EXPECT_EQ(console.lines().size(), 1U);
  fs::remove_all(obstacle);
  folder.write("obstacle");
  for (int i = 0; i < 3; ++i) sayUntilTheNextLook();
  EXPECT_EQ(console.lines().size(), 2U);
}

TEST_F(DDFileLoggerRefusal, AFileInThePlaceOfTheFolderIsSaidOnce) {
  folder.write("logs");
  const SystemLogCapture console;
  addLogger(folder.path("logs"));
  for (int i = 0; i < 3; ++i) sayUntilTheNextLook();
  ASSERT_EQ(console.lines().size(), 1U);
  EXPECT_THAT(console.lines()[0], HasSubstr(folder.path("logs")));
}

TEST_F(DDFileLoggerRefusal, AFolderInWhichNoFileCanBeMadeIsSaidOnceUntilOneCould) {
  if (geteuid() == 0) {
    ASSERT_EQ(chown(folder.path().c_str(), somebodyElse, somebodyElse), 0);
  }
  ASSERT_EQ(chmod(folder.path().c_str(), 0500), 0);
  RUN_IN_CHILD({
    if (geteuid() == 0) {
      ASSERT_EQ(setuid(somebodyElse), 0);
    }
    const SystemLogCapture console;
    const auto logger = addLogger(folder.path());
    for (int i = 0; i < 3; ++i) sayUntilTheNextLook();
    ASSERT_EQ(console.lines().size(), 1U);
    EXPECT_THAT(console.lines()[0], HasSubstr("Permission denied"));
    ASSERT_EQ(chmod(folder.path().c_str(), 0700), 0);
    sayUntilTheNextLook();
    sayNow("here");
    EXPECT_EQ(allLinesIn(folder.path()).back(), "here");
    ASSERT_EQ(chmod(folder.path().c_str(), 0000), 0);
    sayUntilTheNextLook();
    sayNow("still here");  // the open file does not need the folder
    logger->rollLogFile();
    for (int i = 0; i < 3; ++i) sayUntilTheNextLook();
    ASSERT_EQ(chmod(folder.path().c_str(), 0700), 0);
    EXPECT_THAT(allLinesIn(folder.path()), Contains("still here"));
  });
}

TEST_F(DDFileLoggerRefusal, WithoutADescriptorLinesAreLostAndTheReasonIsSaidOnce) {
#ifdef NK_TEST_ADDRESS_SANITIZER
  GTEST_SKIP() << "the undefined behaviour sanitizer checks the kind of an object through a pipe of its own";
#endif
  RUN_IN_CHILD({
    const SystemLogCapture console;
    addLogger(folder.path());
    DDLog::flushLog();
    const int next = dup(STDIN_FILENO);
    close(next);
    rlimit limit{static_cast<rlim_t>(next), 0};
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    limit.rlim_max = before.rlim_max;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
    for (int i = 0; i < 3; ++i) sayUntilTheNextLook();
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    ASSERT_EQ(console.lines().size(), 1U);
    EXPECT_THAT(console.lines()[0], HasSubstr("Too many open files"));
    EXPECT_THAT(filesIn(folder.path()), IsEmpty());
    sayUntilTheNextLook();
    sayNow("here");
    ASSERT_EQ(filesIn(folder.path()).size(), 1U);
    EXPECT_EQ(allLinesIn(folder.path()).back(), "here");
  });
}

// Permissions

TEST_F(DDFileLoggerRefusal, FilesAndFoldersAreTheUsersAlone) {
  RUN_IN_CHILD({
    umask(0);
    const auto logger = addLogger(folder.path("a/logs"));
    sayNow("text");
    EXPECT_EQ(modeOf(currentPath(logger)), 0600U);
    EXPECT_EQ(modeOf(folder.path("a/logs")), 0700U);
    EXPECT_EQ(modeOf(folder.path("a")), 0700U);
  });
}

TEST_F(DDFileLoggerRefusal, WhereAGroupMayWriteFilesOfItsUsersAreShared) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may make a file somebody else's";
  const std::string theirs = folder.write("log-ABCDEF.txt", "theirs\n");
  ASSERT_EQ(chown(theirs.c_str(), somebodyElse, somebodyElse), 0);
  const auto manager = make<RecordingManager>(folder.path());
  manager->setLogFilePermissions(0660);
  addLogger(manager);
  sayNow("ours");
  EXPECT_EQ(TemporaryFolder::read(theirs), "theirs\nours\n");
}

/// Lets another user change a file between its creation and its opening.
class Meddled : public RecordingManager {
  NK_OBJECT(Meddled, RecordingManager)
  Meddled(const std::string& folder, std::function<void(const std::string&)> meddle)
      : RecordingManager(folder), meddle_(std::move(meddle)) {}
  NSString createNewLogFile() override {
    const NSString path = RecordingManager::createNewLogFile();
    meddle_(path.str());
    return path;
  }

 private:
  std::function<void(const std::string&)> meddle_;
};

TEST_F(DDFileLoggerRefusal, AFileThatWasReplacedBeforeItWasOpenedIsNotWrittenTo) {
  for (const Impostor& impostor : impostors) {
    SCOPED_TRACE(impostor.why);
    if (impostor.isRootNeeded && geteuid() != 0) continue;
    RUN_IN_CHILD({
      alarm(60);
      const TemporaryFolder logs;
      const std::string outside = elsewhere.write("outside", "not a log\n");
      std::string made;
      addLogger(make<Meddled>(logs.path(), [&](const std::string& path) {
        if (!made.empty()) return;
        made = path;
        fs::remove(path);
        impostor.put(path, outside);
      }));
      const SystemLogCapture console;
      sayNow("lost");
      ASSERT_EQ(console.lines().size(), 1U);
      EXPECT_THAT(console.lines()[0], HasSubstr(impostor.reason));
      sayUntilTheNextLook();
      sayNow("here");
      EXPECT_EQ(TemporaryFolder::read(outside), "not a log\n");
      ASSERT_EQ(filesIn(logs.path()).size(), 2U);
      fs::remove_all(made);
      EXPECT_EQ(allLinesIn(logs.path()).back(), "here");
      DDLog::removeAllLoggers();
      DDLog::flushLog();
    });
  }
}

// As on a disk of another machine, which does not know the users of this one.
TEST_F(DDFileLoggerRefusal, AFileThatBelongsToSomebodyElseAsSoonAsItIsMadeIsWrittenTo) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may make a file somebody else's";
  addLogger(make<Meddled>(
      folder.path(), [&](const std::string& path) { ASSERT_EQ(chown(path.c_str(), somebodyElse, somebodyElse), 0); }));
  const SystemLogCapture console;
  sayNow("text");
  EXPECT_THAT(allLinesIn(folder.path()), ElementsAre("text"));
  EXPECT_THAT(console.lines(), IsEmpty());
}

}  // namespace
}  // namespace norvik
