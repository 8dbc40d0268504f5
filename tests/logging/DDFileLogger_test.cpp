#include "NorvikCore/logging/DDFileLogger.h"

#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/DDLogFileFormatterDefault.h"
#include "NorvikCore/logging/DDLogFileManagerDefault.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/foundation/NSFileHandle.h"
#include "NorvikCore/platform/kernel/FileStatus.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "tests/support/InChild.h"
#include "tests/support/LogFolder.h"
#include "tests/support/QuietFork.h"
#include "tests/support/RecordingLogger.h"
#include "tests/support/Sanitizers.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
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
using test::say;
using test::TemporaryFolder;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::MatchesRegex;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

using Strings = std::vector<std::string>;

/// A file logger without time stamps, added to the dispatcher, and its folder.
class DDFileLoggerTest : public test::CleanDDLog {
 protected:
  void SetUp() override {
    CleanDDLog::SetUp();
    begin();
  }
  void TearDown() override {
    CleanDDLog::TearDown();
    if (logger) dispatch_sync(logger->loggerQueue(), [] {});
  }

  /// Adds another logger for the same folder with a manager of its own, as after a restart.
  void begin() {
    manager = make<RecordingManager>(folder.path());
    logger = DDFileLogger::initWithLogFileManager(manager);
    logger->setLogFormatter(nullptr);
    DDLog::addLogger(logger);
  }
  /// Waits for everything that the dispatcher and the logger were asked to do, and for what that caused.
  void settle() {
    for (int i = 0; i < 2; ++i) {
      DDLog::flushLog();
      dispatch_sync(logger->loggerQueue(), [] {});
    }
  }
  std::string currentPath() {
    return dispatch_sync(logger->loggerQueue(), [&] { return logger->currentLogFileInfo()->filePath().str(); });
  }
  static void sayNow(const NSString& text) { say(text, LOG_FLAG_ERROR, false); }
  static bool isArchived(const std::string& path) { return DDLogFileInfo::logFileWithPath(path)->isArchived(); }

  TemporaryFolder folder;
  Ref<RecordingManager> manager;
  Ref<DDFileLogger> logger;
};

TEST_F(DDFileLoggerTest, HeaderExample) {
  auto fresh = DDFileLogger::initWithLogFileManager(make<RecordingManager>(folder.path()));
  fresh->setMaximumFileSize(4 << 20);
  fresh->logFileManager()->setMaximumNumberOfLogFiles(7);
  DDLog::addLogger(fresh);
  EXPECT_EQ(fresh->maximumFileSize(), 4194304U);
}

TEST_F(DDFileLoggerTest, HasTheUsualSettings) {
  EXPECT_EQ(logger->maximumFileSize(), 1048576U);
  EXPECT_EQ(logger->rollingFrequency(), 86400.0);
  EXPECT_EQ(logger->loggerName(), "cocoa.quillmarch.fileLogger");
  EXPECT_STREQ(dispatch_queue_get_label(logger->loggerQueue()), "cocoa.quillmarch.fileLogger");
  EXPECT_EQ(logger->logFileManager(), manager);
  const auto fresh = DDFileLogger::initWithLogFileManager(manager);
  EXPECT_TRUE(refCast<DDLogFileFormatterDefault>(fresh->logFormatter()));
}

TEST_F(DDFileLoggerTest, NoFileIsMadeBeforeTheFirstMessage) {
  settle();
  EXPECT_TRUE(filesIn(folder.path()).empty());
  sayNow("first");
  EXPECT_EQ(filesIn(folder.path()).size(), 1U);
}

// If all parts of a logger are the library's own, queued messages are written together.
TEST_F(DDFileLoggerTest, MessagesInARowAreSplitExactlyAtTheSizeLimit) {
  DDLog::removeAllLoggers();
  const auto plainManager = DDLogFileManagerDefault::initWithLogsDirectory(NSString(folder.path()));
  plainManager->setMaximumNumberOfLogFiles(0);
  const auto plain = DDFileLogger::initWithLogFileManager(plainManager);
  plain->setLogFormatter(nullptr);
  plain->setMaximumFileSize(1000);
  DDLog::addLogger(plain);
  const dispatch_semaphore_t gate = dispatch_semaphore_create(0);
  dispatch_async(DDLog::loggingQueue(), [gate] { dispatch_semaphore_wait(gate, DISPATCH_TIME_FOREVER); });
  for (int i = 0; i < 500; ++i) say(stringWithFormat("line %04d", i));
  dispatch_semaphore_signal(gate);
  DDLog::flushLog();
  const auto files = filesIn(folder.path());
  EXPECT_EQ(files.size(), 5U);
  for (const auto& file : files) EXPECT_EQ(fs::file_size(file), 1000U) << file;
  auto lines = allLinesIn(folder.path());
  std::ranges::sort(lines);
  ASSERT_EQ(lines.size(), 500U);
  for (int i = 0; i < 500; ++i) EXPECT_EQ(lines[static_cast<std::size_t>(i)], stringWithFormat("line %04d", i).utf8());
}

TEST_F(DDFileLoggerTest, MessagesInARowLookAsIfTheyCameOneByOne) {
  DDLog::removeAllLoggers();
  DDLog::addLogger(DDFileLogger::initWithLogFileManager(DDLogFileManagerDefault::initWithLogsDirectory(folder.path())));
  const NSString smile = "\U0001F600", high = smile.substringToIndex(1), low = smile.substringFromIndex(1);
  const auto sayAll = [&](bool asynchronous) {
    const auto log = [&]<class... Args>(FormatStringFor<Args...> format, const Args&... arguments) {
      DDLog::log(asynchronous, LOG_LEVEL_VERBOSE, LOG_FLAG_ERROR, 0, "f", "g", 1, Value(), format, arguments...);
    };
    log("%d of %@, %.2f%%", 3, "Zo\u00EB", 99.5);
    log("%@%@", high, low);
    log("%@ %@", high, low);
    log("%@%@", NSString(std::string(100, 'x')) + high, low);
    log("%@\n", "ends in a line feed");
    log("");
  };
  const dispatch_semaphore_t gate = dispatch_semaphore_create(0);
  dispatch_async(DDLog::loggingQueue(), [gate] { dispatch_semaphore_wait(gate, DISPATCH_TIME_FOREVER); });
  sayAll(true);
  dispatch_semaphore_signal(gate);
  sayAll(false);
  const std::string texts[] = {"3 of Zo\u00EB, 99.50%", "\U0001F600",
                               "\uFFFD \uFFFD",         std::string(100, 'x') + "\U0001F600",
                               "ends in a line feed",   ""};
  const Strings lines = allLinesIn(folder.path());
  ASSERT_EQ(lines.size(), 12U);
  for (std::size_t i = 0; i < 12; ++i) {
    EXPECT_THAT(lines[i].substr(0, 25),
                MatchesRegex("[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}:[0-9]{3}  "));
    EXPECT_EQ(lines[i].substr(25), texts[i % 6]) << i;
  }
}

/// Logs a further message for each outer message that it formats.
class LoggingFormatter : public DDLogFormatter {
  NK_OBJECT(LoggingFormatter, DDLogFormatter)
  std::optional<NSString> formatLogMessage(const DDLogMessage& message) override {
    if (message.logMsg().hasPrefix("outer")) say("inner");
    return message.logMsg();
  }
};

TEST_F(DDFileLoggerTest, AFormatterMayLogWhileTheQueueIsNearlyFull) {
  logger->setLogFormatter(make<LoggingFormatter>());
  settle();
  const dispatch_semaphore_t gate = dispatch_semaphore_create(0);
  dispatch_async(DDLog::loggingQueue(), [gate] { dispatch_semaphore_wait(gate, DISPATCH_TIME_FOREVER); });
  for (int i = 0; i < 950; ++i) say("outer");
  dispatch_semaphore_signal(gate);
  settle();
  EXPECT_EQ(allLinesIn(folder.path()).size(), 1900U);
}

TEST_F(DDFileLoggerTest, EachMessageIsALine) {
  say("one"), say("zwei – Zoë"), sayNow("three");
  EXPECT_THAT(allLinesIn(folder.path()), ElementsAre("one", "zwei – Zoë", "three"));
}

TEST_F(DDFileLoggerTest, ALineFeedIsAddedOnlyWhereThereIsNone) {
  say("ends in one\n"), say(""), say("\n"), say("two\nlines"), sayNow("last");
  EXPECT_EQ(TemporaryFolder::read(currentPath()), "ends in one\n\n\ntwo\nlines\nlast\n");
}

TEST_F(DDFileLoggerTest, TheUsualLineBeginsWithTheTime) {
  logger->setLogFormatter(make<DDLogFileFormatterDefault>());
  for (int i = 0; i < 300; ++i) say("text");
  sayNow("text");
  const Strings lines = allLinesIn(folder.path());
  EXPECT_EQ(lines.size(), 301U);
  EXPECT_THAT(lines, Each(MatchesRegex("[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}:[0-9]{3}  text")));
}

class Dropping : public DDLogFormatter {
  NK_OBJECT(Dropping, DDLogFormatter)
  std::optional<NSString> formatLogMessage(const DDLogMessage& message) override {
    if (message.logMsg() == "drop") return std::nullopt;
    return "<" + message.logMsg() + ">";
  }
};

TEST_F(DDFileLoggerTest, AFormatterMayDropMessages) {
  logger->setLogFormatter(make<Dropping>());
  say("a"), say("drop"), sayNow("b");
  EXPECT_THAT(allLinesIn(folder.path()), ElementsAre("<a>", "<b>"));
}

TEST_F(DDFileLoggerTest, AFormatterFindsEveryEarlierLineInTheFile) {
  class Counting : public DDLogFormatter {
   public:
    explicit Counting(std::string path) : path_(std::move(path)) {}
    std::optional<NSString> formatLogMessage(const DDLogMessage&) override {
      return stringWithFormat("%d", static_cast<int>(linesOf(path_).size()));
    }

   private:
    std::string path_;
  };
  sayNow("0");
  logger->setLogFormatter(make<Counting>(currentPath()));
  for (int i = 0; i < 50; ++i) say("text");
  sayNow("text");
  const Strings lines = allLinesIn(folder.path());
  ASSERT_EQ(lines.size(), 52U);
  for (std::size_t i = 0; i < lines.size(); ++i) EXPECT_EQ(lines[i], std::to_string(i));
}

class Shouting : public DDFileLogger {
  NK_OBJECT(Shouting, DDFileLogger)
  explicit Shouting(Ref<DDLogFileManager> manager) : DDFileLogger(std::move(manager)) {}
  void logMessage(const DDLogMessage& message) override {
    ++calls;
    DDFileLogger::logMessage(message);
  }
  int calls = 0;
};

TEST_F(DDFileLoggerTest, ASubclassGetsEveryMessageByItself) {
  DDLog::removeAllLoggers();
  const auto shouting = make<Shouting>(manager);
  DDLog::addLogger(shouting);
  for (int i = 0; i < 100; ++i) say("text");
  sayNow("text");
  EXPECT_EQ(shouting->calls, 101);
  EXPECT_EQ(allLinesIn(folder.path()).size(), 101U);
  clean();
  dispatch_sync(shouting->loggerQueue(), [] {});
}

// Rolling by size

TEST_F(DDFileLoggerTest, TheWriteThatReachesTheLimitRollsTheFile) {
  logger->setMaximumFileSize(20);
  say("123456789"), sayNow("12345678");  // 10 + 9 bytes
  const std::string first = currentPath();
  EXPECT_FALSE(isArchived(first));
  sayNow("");  // 20 bytes
  EXPECT_TRUE(isArchived(first));
  EXPECT_THAT(manager->rolled(), ElementsAre(first));
  EXPECT_THAT(manager->archived(), ElementsAre());
  EXPECT_EQ(filesIn(folder.path()).size(), 1U);
  sayNow("next");
  EXPECT_EQ(TemporaryFolder::read(first), "123456789\n12345678\n\n");
  EXPECT_NE(currentPath(), first);
  EXPECT_EQ(TemporaryFolder::read(currentPath()), "next\n");
  EXPECT_FALSE(isArchived(currentPath()));
}

TEST_F(DDFileLoggerTest, TheUsualLimitIsOneMebibyte) {
  sayNow(std::string(1048574, 'x'));
  const std::string first = currentPath();
  EXPECT_EQ(fs::file_size(first), 1048575U);
  EXPECT_FALSE(isArchived(first));
  sayNow("");
  EXPECT_EQ(fs::file_size(first), 1048576U);
  EXPECT_TRUE(isArchived(first));
}

TEST_F(DDFileLoggerTest, ALimitOfZeroNeverRolls) {
  logger->setMaximumFileSize(0);
  sayNow(std::string(2000000, 'x'));
  sayNow("more");
  EXPECT_EQ(filesIn(folder.path()).size(), 1U);
}

TEST_F(DDFileLoggerTest, ManyLinesAtOnceAreSplitAtTheLimitAsIfTheyCameOneByOne) {
  logger->setMaximumFileSize(100);
  manager->setMaximumNumberOfLogFiles(0);
  settle();
  dispatch_sync(DDLog::loggingQueue(), [] {                              // so that they are queued together
    for (int i = 0; i < 95; ++i) say(stringWithFormat("line %04d", i));  // 10 bytes each
  });
  settle();
  std::size_t full = 0;
  Strings lines;
  for (const std::string& path : filesIn(folder.path())) {
    const std::size_t size = fs::file_size(path);
    EXPECT_TRUE(size == 100 || size == 50) << size;
    full += size == 100;
    EXPECT_EQ(isArchived(path), size == 100);
    const Strings some = linesOf(path);
    EXPECT_TRUE(std::is_sorted(some.begin(), some.end()));
    lines.insert(lines.end(), some.begin(), some.end());
  }
  EXPECT_EQ(full, 9U);
  std::sort(lines.begin(), lines.end());
  ASSERT_EQ(lines.size(), 95U);
  EXPECT_EQ(std::unique(lines.begin(), lines.end()), lines.end());
}

TEST_F(DDFileLoggerTest, ALowerLimitAppliesToTheCurrentFileAtOnce) {
  sayNow("some text");
  const std::string first = currentPath();
  logger->setMaximumFileSize(11);
  EXPECT_EQ(logger->maximumFileSize(), 11U);
  EXPECT_FALSE(isArchived(first));
  logger->setMaximumFileSize(10);
  EXPECT_EQ(logger->maximumFileSize(), 10U);
  EXPECT_TRUE(isArchived(first));
}

TEST_F(DDFileLoggerTest, SettingALimitMakesNoFile) {
  logger->setMaximumFileSize(1);
  logger->setRollingFrequency(1);
  settle();
  EXPECT_TRUE(filesIn(folder.path()).empty());
}

// Rolling by age

TEST_F(DDFileLoggerTest, AFileRollsWhenItIsOldEnoughAlsoWithoutMessages) {
  sayNow("text");
  const std::string first = currentPath();
  logger->setRollingFrequency(0.05);
  while (manager->rolled().empty()) std::this_thread::yield();
  EXPECT_THAT(manager->rolled(), ElementsAre(first));
  EXPECT_GE(DDLogFileInfo::logFileWithPath(first)->age(), 0.05);
  EXPECT_TRUE(isArchived(first));
}

TEST_F(DDFileLoggerTest, AFileOfThePastRollsWhenTheFrequencyIsSet) {
  sayNow("text");
  const std::string first = currentPath();
  while (DDLogFileInfo::logFileWithPath(first)->age() < 0.01) std::this_thread::yield();
  logger->setRollingFrequency(0.01);
  EXPECT_EQ(logger->rollingFrequency(), 0.01);
  EXPECT_TRUE(isArchived(first));
}

TEST_F(DDFileLoggerTest, AForkedChildRollsByAgeToo) {
#ifdef NK_TEST_THREAD_SANITIZER
  GTEST_SKIP() << "the thread sanitizer starts no threads in a child made by fork()";
#endif
  logger->setRollingFrequency(0.5);
  sayNow("of the parent");
  test::quietBeforeFork();
  const pid_t child = fork();
  if (child == 0) {
    alarm(20);  // the signal ends a child in which nothing rolls
    const std::size_t before = manager->rolled().size();
    sayNow("of the child");
    while (manager->rolled().size() == before) std::this_thread::yield();
    _exit(0);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
}

TEST_F(DDFileLoggerTest, AFrequencyMayBeADuration) {
  logger->setRollingFrequency(std::chrono::hours(12));
  EXPECT_EQ(logger->rollingFrequency(), 43200);
}

TEST_F(DDFileLoggerTest, AFrequencyOfZeroOrLessNeverRolls) {
  sayNow("text");
  for (const double frequency : {0.0, -1.0}) {
    logger->setRollingFrequency(frequency);
    EXPECT_EQ(logger->rollingFrequency(), frequency);
    sayNow("text");
  }
  EXPECT_THAT(manager->rolled(), ElementsAre());
}

TEST_F(DDFileLoggerTest, AnEndlessFrequencyNeverRolls) {
  sayNow("text");
  logger->setRollingFrequency(1e300);
  EXPECT_EQ(logger->rollingFrequency(), 1e300);
  sayNow("text");
  EXPECT_THAT(manager->rolled(), ElementsAre());
}

TEST_F(DDFileLoggerTest, TheTimerDoesNotKeepItsLogger) {
  sayNow("text");
  const Weak<DDFileLogger> watched = logger;
  const dispatch_queue_t queue = logger->loggerQueue();
  DDLog::removeLogger(logger);
  DDLog::flushLog();
  logger = nullptr;
  dispatch_sync(queue, [] {});
  EXPECT_FALSE(watched.lock());
}

// Rolling on demand

TEST_F(DDFileLoggerTest, RollingOnDemandArchivesTheCurrentFile) {
  sayNow("before");
  const std::string first = currentPath();
  logger->rollLogFile();
  settle();
  EXPECT_TRUE(isArchived(first));
  EXPECT_THAT(manager->rolled(), ElementsAre(first));
  sayNow("after");
  EXPECT_NE(currentPath(), first);
  EXPECT_THAT(linesOf(currentPath()), ElementsAre("after"));
}

TEST_F(DDFileLoggerTest, RollingComesInItsTurnElsewhereAndAtOnceOnTheLoggersQueue) {
  say("a");
  logger->rollLogFile();
  sayNow("b");
  ASSERT_EQ(manager->rolled().size(), 1U);
  EXPECT_THAT(linesOf(manager->rolled()[0]), ElementsAre("a"));
  dispatch_sync(logger->loggerQueue(), [&] {
    logger->rollLogFile();
    EXPECT_EQ(manager->rolled().size(), 2U);
  });
}

TEST_F(DDFileLoggerTest, RollingWithoutAnOpenFileDoesNothing) {
  logger->rollLogFile();
  settle();
  EXPECT_THAT(manager->rolled(), ElementsAre());
  EXPECT_TRUE(filesIn(folder.path()).empty());
}

TEST_F(DDFileLoggerTest, RemovingTheLoggerArchivesItsFile) {
  sayNow("text");
  const std::string path = currentPath();
  DDLog::removeLogger(logger);
  settle();
  EXPECT_TRUE(isArchived(path));
  EXPECT_THAT(manager->rolled(), ElementsAre(path));
}

// The choice of the first file

TEST_F(DDFileLoggerTest, ALoggerThatGoesLeavesItsFileToTheNextOne) {
  TemporaryFolder other;
  const auto queue = dispatch_queue_create("test");
  auto first = DDFileLogger::initWithLogFileManager(make<RecordingManager>(other.path()));
  auto second = DDFileLogger::initWithLogFileManager(make<RecordingManager>(other.path()));
  const auto message = DDLogMessage::initWithLogMsg("text", 31, 1, 0, "f", "g", 1, Value(), 0);
  dispatch_sync(first->loggerQueue(), [&] { first->logMessage(*message); });
  first = nullptr;
  ASSERT_EQ(filesIn(other.path()).size(), 1U);
  EXPECT_FALSE(isArchived(filesIn(other.path())[0]));
  dispatch_sync(second->loggerQueue(), [&] { second->logMessage(*message); });
  ASSERT_EQ(filesIn(other.path()).size(), 1U);
  EXPECT_EQ(linesOf(filesIn(other.path())[0]).size(), 2U);
}

TEST_F(DDFileLoggerTest, AnArchivedNewestFileIsNotUsedAgain) {
  const std::string old = folder.write("log-ABC123.txt", "old\n");
  DDLogFileInfo::logFileWithPath(old)->setIsArchived(true);
  sayNow("text");
  EXPECT_NE(currentPath(), old);
  EXPECT_EQ(TemporaryFolder::read(old), "old\n");
  EXPECT_THAT(manager->archived(), ElementsAre());
}

TEST_F(DDFileLoggerTest, ATooLargeNewestFileIsArchived) {
  const std::string old = folder.write("log-ABC123.txt", "0123456789");
  logger->setMaximumFileSize(10);
  sayNow("text");
  EXPECT_NE(currentPath(), old);
  EXPECT_TRUE(isArchived(old));
  EXPECT_THAT(manager->archived(), ElementsAre(old));
  EXPECT_THAT(manager->rolled(), ElementsAre());
}

TEST_F(DDFileLoggerTest, ANewestFileJustBelowTheLimitIsUsed) {
  const std::string old = folder.write("log-ABC123.txt", "01234567\n");
  logger->setMaximumFileSize(10);
  sayNow("text");
  EXPECT_EQ(TemporaryFolder::read(old), "01234567\ntext\n");
}

TEST_F(DDFileLoggerTest, ATooOldNewestFileIsArchived) {
  const kernel::WithoutBirthTimes byModification;
  const std::string old = folder.write("log-ABC123.txt", "old\n");
  const std::timespec times[2] = {{1600000000, 0}, {1600000000, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, old.c_str(), times, 0), 0);
  sayNow("text");
  EXPECT_NE(currentPath(), old);
  EXPECT_TRUE(isArchived(old));
  EXPECT_THAT(manager->archived(), ElementsAre(old));
}

// Changes of the file by others

TEST_F(DDFileLoggerTest, SeveralLoggersMayShareAFileAndLoseNothing) {
  constexpr int each = 500;
  sayNow("first");
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&] {
      const auto other = DDFileLogger::initWithLogFileManager(make<RecordingManager>(folder.path()));
      const auto message = DDLogMessage::initWithLogMsg("shared line", 31, 1, 0, "f", "g", 1, Value(), 0);
      for (int i = 0; i < each; ++i) dispatch_sync(other->loggerQueue(), [&] { other->logMessage(*message); });
    });
  }
  for (std::thread& thread : threads) thread.join();
  ASSERT_EQ(filesIn(folder.path()).size(), 1U);
  const Strings lines = allLinesIn(folder.path());
  EXPECT_EQ(lines.size(), 1501U);
  EXPECT_EQ(
      std::count_if(lines.begin(), lines.end(), [](const std::string& line) { return line.ends_with("shared line"); }),
      1500);
}

TEST_F(DDFileLoggerTest, ADeletedFileIsNoticedWithinFiveHundredLines) {
  sayNow("first");
  fs::remove(currentPath());
  for (int i = 0; i < 499; ++i) sayNow("lost at worst");
  sayNow("here");
  ASSERT_EQ(filesIn(folder.path()).size(), 1U);
  EXPECT_EQ(allLinesIn(folder.path()).back(), "here");
  EXPECT_THAT(manager->rolled(), ElementsAre());
}

TEST_F(DDFileLoggerTest, ADeletedFileIsNoticedWithinFiveHundredLinesAlsoWhereTheyComeInRuns) {
  DDLog::removeAllLoggers();
  DDLog::addLogger(DDFileLogger::initWithLogFileManager(DDLogFileManagerDefault::initWithLogsDirectory(folder.path())));
  sayNow("first");
  ASSERT_EQ(filesIn(folder.path()).size(), 1U);
  fs::remove(filesIn(folder.path())[0]);
  for (int i = 0; i < 1500; ++i) say("the first 499 may be lost");
  DDLog::flushLog();
  ASSERT_EQ(filesIn(folder.path()).size(), 1U);
  EXPECT_GE(allLinesIn(folder.path()).size(), 1001U);
}

TEST_F(DDFileLoggerTest, AMovedFileIsNoticedWithinHalfASecond) {
  sayNow("first");
  const std::string path = currentPath();
  fs::rename(path, folder.path("moved.txt"));
  const auto begin = std::chrono::steady_clock::now();
  while (std::chrono::steady_clock::now() - begin < std::chrono::milliseconds(500)) std::this_thread::yield();
  sayNow("here");
  EXPECT_NE(currentPath(), path);
  EXPECT_THAT(linesOf(currentPath()), ElementsAre("here"));
  EXPECT_THAT(linesOf(folder.path("moved.txt")), ElementsAre("first"));
}

TEST_F(DDFileLoggerTest, ADeletedFolderIsMadeAgain) {
  sayNow("first");
  fs::remove_all(folder.path());
  for (int i = 0; i < 499; ++i) sayNow("lost at worst");
  sayNow("here");
  ASSERT_EQ(filesIn(folder.path()).size(), 1U);
  EXPECT_EQ(allLinesIn(folder.path()).back(), "here");
}

TEST_F(DDFileLoggerTest, AReplacedFileIsNoticed) {
  sayNow("first");
  const std::string path = currentPath();
  fs::rename(path, folder.path("moved.txt"));
  folder.write(fs::path(path).filename().string(), "");
  for (int i = 0; i < 1000; ++i) sayNow("somewhere");
  sayNow("here");
  EXPECT_EQ(linesOf(path).back(), "here");
}

// A manager may compress and remove the file of which it is notified. Here that file is another program's, or there is
// none.
TEST_F(DDFileLoggerTest, ARollOfAFileThatWasMovedOrReplacedOnlyClosesIt) {
  for (const bool isReplaced : {false, true}) {
    sayNow("first");
    const std::string path = currentPath();
    fs::rename(path, folder.path("moved.txt"));
    if (isReplaced) folder.write(fs::path(path).filename().string(), "");
    logger->rollLogFile();
    DDLog::flushLog();
    dispatch_sync(logger->loggerQueue(), [] {});
    EXPECT_THAT(manager->rolled(), ElementsAre()) << isReplaced;
    EXPECT_FALSE(isArchived(path)) << isReplaced;
    sayNow("here");
    EXPECT_THAT(linesOf(currentPath()), ElementsAre("here")) << isReplaced;
    EXPECT_EQ(currentPath() == path, isReplaced);
    EXPECT_EQ(linesOf(folder.path("moved.txt")).back(), "first") << isReplaced;
  }
}

// Refusals of the system

/// Limits the size of the process's files while this object exists, including the test's own output, which may be a
/// long file.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &before_), 0);
    const rlimit limit{bytes, before_.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() { EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &before_), 0); }

 private:
  rlimit before_{};
};

TEST_F(DDFileLoggerTest, TenExceptionsAreReportedAndNoMore) {
  RUN_IN_CHILD({
    const SystemLogCapture console;
    sayNow("fits");
    {
      const FileSizeLimit limit(8);
      for (int i = 0; i < 15; ++i) sayNow("does not fit");
    }
    const Strings lines = console.lines();
    ASSERT_EQ(lines.size(), 11U);
    for (std::size_t i = 0; i < 10; ++i)
      EXPECT_THAT(lines[i], StartsWith("DDFileLogger.logMessage: NSFileHandle")) << i;
    EXPECT_EQ(lines[10], "DDFileLogger.logMessage: Too many exceptions -- will not log any more of them.");
  });
}

TEST_F(DDFileLoggerTest, LinesThatFailTogetherAreReportedOneByOne) {
  RUN_IN_CHILD({
    const SystemLogCapture console;
    sayNow("fits");
    {
      const FileSizeLimit limit(8);
      dispatch_sync(DDLog::loggingQueue(), [] {
        for (int i = 0; i < 4; ++i) say("does not fit");
      });
      settle();
    }
    EXPECT_EQ(console.lines().size(), 4U);
  });
}

// For a logger that writes a run of lines at once.
TEST_F(DDFileLoggerTest, OfLinesThatAreWrittenTogetherThoseThatFitArriveAndEveryOtherIsReported) {
  RUN_IN_CHILD({
    DDLog::removeAllLoggers();
    const TemporaryFolder plainFolder;
    const auto plain = DDFileLogger::initWithLogFileManager(
        DDLogFileManagerDefault::initWithLogsDirectory(NSString(plainFolder.path())));
    plain->setLogFormatter(nullptr);
    DDLog::addLogger(plain);
    const SystemLogCapture console;
    sayNow("the first");  // 10 bytes, as each later line
    {
      const FileSizeLimit limit(45);
      const dispatch_semaphore_t gate = dispatch_semaphore_create(0);
      dispatch_async(DDLog::loggingQueue(), [gate] { dispatch_semaphore_wait(gate, DISPATCH_TIME_FOREVER); });
      for (int i = 0; i < 8; ++i) say(stringWithFormat("line %04d", i));
      dispatch_semaphore_signal(gate);
      DDLog::flushLog();
    }
    EXPECT_EQ(console.lines().size(), 5U);  // the line that was cut, and the four after it
    sayNow("room again");
    ASSERT_EQ(filesIn(plainFolder.path()).size(), 1U);
    EXPECT_EQ(TemporaryFolder::read(filesIn(plainFolder.path())[0]),
              "the first\nline 0000\nline 0001\nline 0002\nline \nroom again\n");
  });
}

TEST_F(DDFileLoggerTest, OtherExceptionsPassAndEndTheProcess) {
  struct Failing : RecordingManager {
    using RecordingManager::RecordingManager;
    NSString createNewLogFile() override { throw std::runtime_error("not an NSException"); }
  };
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        DDLog::addLogger(DDFileLogger::initWithLogFileManager(make<Failing>(folder.path("other"))));
        sayNow("text");
      },
      ::testing::KilledBySignal(SIGABRT), "not an NSException");
}

TEST_F(DDFileLoggerTest, TheLoggersOwnFileSurvivesCleanUp) {
  manager->setMaximumNumberOfLogFiles(1);
  logger->setMaximumFileSize(5);
  settle();
  for (int i = 0; i < 8; ++i) {
    sayNow("12");
    ASSERT_TRUE(fs::exists(currentPath()));
    sayNow("34");
  }
  EXPECT_EQ(manager->rolled().size(), 8U);
  EXPECT_EQ(filesIn(folder.path()).size(), 2U);
}

}  // namespace
}  // namespace norvik
