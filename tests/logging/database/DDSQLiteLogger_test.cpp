#include "NorvikCore/logging/database/DDSQLiteLogger.h"

#include "NorvikCore/logging/DDLogLineFormatter.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/kernel/Thread.h"
#include "tests/support/AnotherUser.h"
#include "tests/support/ConsoleLines.h"
#include "tests/support/ForeignDatabase.h"
#include "tests/support/GrowingMemory.h"
#include "tests/support/InChild.h"
#include "tests/support/PrivateMount.h"
#include "tests/support/QuietFork.h"
#include "tests/support/RecordingLogger.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace norvik {
namespace {

using test::consoleOf;
using test::ForeignDatabase;
using test::say;
using test::TemporaryFolder;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

unsigned permissionsOf(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

/// A logger that writes to a new folder, and is added.
class DDSQLiteLoggerTest : public test::CleanDDLog {
 protected:
  void SetUp() override {
    CleanDDLog::SetUp();
    add(path_);
  }
  void TearDown() override {
    CleanDDLog::TearDown();
    logger_ = nullptr;
  }
  void add(const std::string& path) {
    clean();
    logger_ = DDSQLiteLogger::initWithPath(NSString(path));
    DDLog::addLogger(logger_);
    settle();
  }
  /// The result of the query: the columns and rows, one after the other.
  std::string query(const char* sql) { return ForeignDatabase(path_).run(sql); }
  std::string texts() { return query("SELECT text || '|' FROM entry ORDER BY id"); }
  /// Logs the text and saves it.
  void save(const std::string& text) {
    say(NSString(text));
    DDLog::flushLog();
  }
  /// Removes the logger; returns when it has done its work for the removal.
  void remove() {
    clean();
    dispatch_sync(logger_->loggerQueue(), [] {});
  }
  /// Makes every entry older.
  void age(int seconds) { query(("UPDATE entry SET time = time - " + std::to_string(seconds)).c_str()); }

  TemporaryFolder folder_;
  const std::string path_ = folder_.path("log.db");
  Ref<DDSQLiteLogger> logger_;
};

TEST_F(DDSQLiteLoggerTest, HeaderExample) {
  logger_->setMaxAge(30 * 24 * 60 * 60);
  say("40 payslips read", LOG_FLAG_INFO);
  say("no bank account for Zoë Smith", LOG_FLAG_ERROR);
  DDLog::flushLog();
  EXPECT_EQ(query("SELECT text FROM entry WHERE level <= 2 ORDER BY id"), "no bank account for Zoë Smith");
}

TEST_F(DDSQLiteLoggerTest, AnEntryHasWhatTheCallGave) {
  const auto queue = dispatch_queue_create("payroll.import");
  const double before = Date::systemDate().timeIntervalSince1970();
  dispatch_sync(queue, [] {
    DDLog::log(false, LOG_LEVEL_VERBOSE, LOG_FLAG_DEBUG, 7, "/src/Payslip.cpp", "pay:", 42, Value(), "%d of %@", 3,
               NSString("Zoë"));
  });
  const double after = Date::systemDate().timeIntervalSince1970();
  DDLog::flushLog();
  EXPECT_EQ(query("SELECT level || ',' || context || ',' || queue || ',' || file || ',' || function || ',' || line || "
                  "',' || text FROM entry"),
            "8,7,payroll.import,/src/Payslip.cpp,pay:,42,3 of Zoë");
  EXPECT_EQ(query("SELECT thread FROM entry"), std::to_string(kernel::currentThreadId()));
  EXPECT_EQ(query("SELECT typeof(time) FROM entry"), "real");
  const double time = std::stod(query("SELECT printf('%.6f', time) FROM entry"));
  EXPECT_GE(time, before - 0.001);
  EXPECT_LE(time, after + 0.001);
}

TEST_F(DDSQLiteLoggerTest, WhatTheCallDoesNotGiveIsNull) {
  DDLog::log(true, LOG_LEVEL_VERBOSE, LOG_FLAG_ERROR, 0, nullptr, nullptr, 0, Value(), "text");
  DDLog::flushLog();
  EXPECT_EQ(query("SELECT typeof(file) || typeof(function) || line FROM entry"), "nullnull0");
}

TEST_F(DDSQLiteLoggerTest, TimeAndLevelHaveIndexes) {
  save("text");
  EXPECT_THAT(query("EXPLAIN QUERY PLAN SELECT text FROM entry WHERE time > 5"), HasSubstr("entry_time"));
  EXPECT_THAT(query("EXPLAIN QUERY PLAN SELECT text FROM entry WHERE level = 1 AND time > 5"),
              HasSubstr("entry_level"));
}

TEST_F(DDSQLiteLoggerTest, AwkwardTextsAreKeptWhole) {
  const std::string awkward[] = {"", "'; DROP TABLE entry; --", "two\nlines\ttab", "50% of %@", "\U0001F4B7 \u00A3"};
  for (const std::string& text : awkward) say(NSString(text));
  say(NSString(std::string("a\0b", 3)));
  DDLog::flushLog();
  ForeignDatabase database(path_);
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(database.run(("SELECT text FROM entry WHERE id = " + std::to_string(i + 1)).c_str()), awkward[i]);
  }
  EXPECT_EQ(database.run("SELECT hex(text) FROM entry WHERE id = 6"), "610062");
}

TEST_F(DDSQLiteLoggerTest, BytesThatAreNoUtf8AreReplaced) {
  const char* const file = "caf\xE9.cpp";
  DDLog::log(true, LOG_LEVEL_VERBOSE, LOG_FLAG_ERROR, 0, file, "g\xFF", 1, Value(), "%@",
             NSString::fromUtf16(std::u16string(u"half \xD83D")));
  DDLog::flushLog();
  EXPECT_EQ(query("SELECT file || ',' || function || ',' || text FROM entry"), "caf\uFFFD.cpp,g\uFFFD,half \uFFFD");
}

class Bracketed : public DDLogFormatter {
  NK_OBJECT(Bracketed, DDLogFormatter)
  std::optional<NSString> formatLogMessage(const DDLogMessage& message) override {
    if (message.logMsg() == "dropped") return std::nullopt;
    return "<" + message.logMsg() + ">";
  }
};

TEST_F(DDSQLiteLoggerTest, AFormatterMakesTheTextOrDropsTheMessage) {
  logger_->setLogFormatter(make<Bracketed>());
  for (const char* text : {"a", "dropped", "b"}) say(text);
  say("c", LOG_FLAG_ERROR, false);
  DDLog::flushLog();
  EXPECT_EQ(texts(), "<a>|<b>|<c>|");
}

TEST_F(DDSQLiteLoggerTest, AMessageMadeElsewhereIsCopiedWithItsNames) {
  {
    std::string file = "gone.cpp", function = "gone:";
    DDLog::queueLogMessage(DDLogMessage::initWithLogMsg("text", 31, 1, 0, file.c_str(), function.c_str(), 1, Value(),
                                                        DDLogMessage::copyFile | DDLogMessage::copyFunction),
                           false);
  }
  DDLog::flushLog();
  EXPECT_EQ(query("SELECT file || function || text FROM entry"), "gone.cppgone:text");
}

TEST_F(DDSQLiteLoggerTest, NothingIsMadeBeforeTheFirstSave) {
  say("text", LOG_FLAG_ERROR, false);
  EXPECT_FALSE(std::filesystem::exists(path_));
  DDLog::flushLog();
  EXPECT_TRUE(std::filesystem::exists(path_));
}

TEST_F(DDSQLiteLoggerTest, DeletingMakesNoFile) {
  logger_->deleteOldLogEntries();
  settle();
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(DDSQLiteLoggerTest, ARelativePathAndATildeBecomeAbsolute) {
  EXPECT_EQ(DDSQLiteLogger::initWithPath("log.db")->path(),
            NSString((std::filesystem::current_path() / "log.db").string()));
  EXPECT_EQ(DDSQLiteLogger::initWithPath("/tmp/log.db")->path(), "/tmp/log.db");
  const NSString home = DDSQLiteLogger::initWithPath("~/log.db")->path();
  EXPECT_EQ(home.str().front(), '/');
  EXPECT_THAT(home.str(), Not(HasSubstr("~")));
}

TEST_F(DDSQLiteLoggerTest, APathMayHaveAnyBytes) {
  EXPECT_EQ(DDSQLiteLogger::initWithPath(NSString::fromBytes("/tmp/p\xE9y.db"))->path().bytes(), "/tmp/p\xE9y.db");
}

// Counting

TEST_F(DDSQLiteLoggerTest, OfAHundredThousandEntriesNoneIsLostAndNoneIsThereTwice) {
  constexpr int entries = 100'000;
  for (int i = 0; i < entries; ++i) {
    DDLog::log(true, LOG_LEVEL_VERBOSE, LOG_FLAG_INFO, 0, "Payslip.cpp", "pay:", 42, Value(), "payslip %d", i);
  }
  DDLog::flushLog();
  ForeignDatabase database(path_);
  EXPECT_EQ(database.run("SELECT count(*) FROM entry"), "100000");
  EXPECT_EQ(database.run("SELECT count(DISTINCT text) FROM entry"), "100000");
  EXPECT_EQ(database.run("SELECT count(*) FROM entry WHERE text <> 'payslip ' || (id - 1)"), "0") << "in order";
  EXPECT_EQ(database.run("PRAGMA integrity_check"), "ok");
  EXPECT_EQ(logger_->lostEntryCount(), 0U);
}

TEST_F(DDSQLiteLoggerTest, TheFiveHundredthEntryIsSavedAtOnce) {
  for (int i = 0; i < 499; ++i) say("m", LOG_FLAG_ERROR, false);
  EXPECT_FALSE(std::filesystem::exists(path_));
  say("m", LOG_FLAG_ERROR, false);
  EXPECT_EQ(query("SELECT count(*) FROM entry"), "500");
}

TEST_F(DDSQLiteLoggerTest, ABufferThatHasReachedItsLimitIsSavedWhateverTheThreshold) {
  logger_->setSaveThreshold(0);
  logger_->setMaximumBufferSize(10'000);
  EXPECT_EQ(logger_->maximumBufferSize(), 10'000U);
  say(NSString(std::string(5'000, 'a')), LOG_FLAG_ERROR, false);
  EXPECT_FALSE(std::filesystem::exists(path_));
  say(NSString(std::string(5'000, 'b')), LOG_FLAG_ERROR, false);
  EXPECT_EQ(query("SELECT count(*) FROM entry"), "2");
  EXPECT_EQ(logger_->lostEntryCount(), 0U);
}

TEST_F(DDSQLiteLoggerTest, ABufferOfNoSizeHoldsOneEntry) {
  logger_->setMaximumBufferSize(0);
  for (const char* text : {"a", "b", "c"}) say(text, LOG_FLAG_ERROR, false);
  EXPECT_EQ(texts(), "a|b|c|");
  EXPECT_EQ(logger_->lostEntryCount(), 0U);
}

// Deleting

TEST_F(DDSQLiteLoggerTest, EntriesOlderThanTheAgeAreDeletedAndYoungerOnesStay) {
  save("old");
  age(3600);
  save("young");
  logger_->setMaxAge(4000);
  settle();
  EXPECT_EQ(texts(), "old|young|");
  logger_->setMaxAge(3000);
  settle();
  EXPECT_EQ(texts(), "young|");
}

TEST_F(DDSQLiteLoggerTest, ASaveThatDeletesDoesBoth) {
  save("old");
  age(30 * 24 * 3600);
  logger_->setDeleteOnEverySave(true);
  save("young");
  EXPECT_EQ(texts(), "young|");
}

TEST_F(DDSQLiteLoggerTest, ASaveThatDeletesKeepsAllWhereThereIsNoAge) {
  save("old");
  age(30 * 24 * 3600);
  logger_->setMaxAge(0);
  logger_->setDeleteOnEverySave(true);
  save("young");
  EXPECT_EQ(texts(), "old|young|");
}

TEST_F(DDSQLiteLoggerTest, DeletingInPartsDeletesAll) {
  for (int i = 0; i < 9'999; ++i) say("m");
  DDLog::flushLog();
  age(3600);
  save("young");
  logger_->setMaxAge(3000);
  while (query("SELECT count(*) FROM entry") != "1") settle();
  EXPECT_EQ(texts(), "young|");
}

TEST_F(DDSQLiteLoggerTest, TheFileOfALogThatIsDeletedAsItIsWrittenDoesNotGrow) {
  const auto sizeAfterRound = [this] {
    for (int i = 0; i < 5'000; ++i) say("a message of some length, which is deleted before the next ones are saved");
    DDLog::flushLog();
    age(3600);
    logger_->setMaxAge(1000);
    logger_->setMaxAge(2000);
    logger_->deleteOldLogEntries();
    settle();
    while (query("SELECT count(*) FROM entry") != "0") settle();
    query("PRAGMA wal_checkpoint(TRUNCATE)");
    return std::filesystem::file_size(path_);
  };
  const auto first = sizeAfterRound();
  for (int round = 0; round < 4; ++round) EXPECT_LE(sizeAfterRound(), first + first / 2);
}

TEST_F(DDSQLiteLoggerTest, AFileOfWhichMostIsFreeIsMadeSmaller) {
  for (int i = 0; i < 20'000; ++i) say("a message of some length, of which there are many more than usual");
  DDLog::flushLog();
  age(3600);
  save("young");
  query("PRAGMA wal_checkpoint(TRUNCATE)");
  const auto large = std::filesystem::file_size(path_);
  EXPECT_GT(large, 2'000'000U);
  logger_->setMaxAge(1000);
  while (query("SELECT (SELECT count(*) FROM entry) || (SELECT 2 * f.freelist_count <= p.page_count "
               "FROM pragma_freelist_count f, pragma_page_count p)") != "11") {
    settle();
  }
  query("PRAGMA wal_checkpoint(TRUNCATE)");
  EXPECT_LT(std::filesystem::file_size(path_), large / 10);
  EXPECT_EQ(query("PRAGMA integrity_check"), "ok");
  EXPECT_EQ(texts(), "young|");
}

TEST_F(DDSQLiteLoggerTest, ASaveThatDeletesMakesTheFileSmallerToo) {
  logger_->setDeleteInterval(0);
  for (int i = 0; i < 1'900; ++i) say(NSString(std::string(1'000, 'x')));
  DDLog::flushLog();
  age(30 * 24 * 3600);
  query("PRAGMA wal_checkpoint(TRUNCATE)");
  const auto large = std::filesystem::file_size(path_);
  EXPECT_GT(large, 1'900'000U);
  logger_->setDeleteOnEverySave(true);
  save("young");
  for (int i = 0; i < 100; ++i) settle();
  query("PRAGMA wal_checkpoint(TRUNCATE)");
  EXPECT_LT(std::filesystem::file_size(path_), large / 10);
  EXPECT_EQ(query("PRAGMA integrity_check"), "ok");
  EXPECT_EQ(texts(), "young|");
}

// The file

TEST_F(DDSQLiteLoggerTest, FileAndFoldersAreThisUsersOnly) {
  const std::string path = folder_.path("new/folder/log.db");
  add(path);
  save("text");
  EXPECT_EQ(permissionsOf(path), 0600U);
  EXPECT_EQ(permissionsOf(path + "-wal"), 0600U);
  EXPECT_EQ(permissionsOf(folder_.path("new/folder")), 0700U);
  EXPECT_EQ(permissionsOf(folder_.path("new")), 0700U);
}

TEST_F(DDSQLiteLoggerTest, ALinkOfThisUsersIsFollowed) {
  const std::string link = folder_.path("link.db"), file = folder_.path("file.db");
  std::filesystem::create_symlink(file, link);
  add(link);
  save("text");
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(permissionsOf(file), 0600U);
  EXPECT_EQ(ForeignDatabase(file).run("SELECT text FROM entry"), "text");
}

TEST_F(DDSQLiteLoggerTest, ADeletedFileIsMadeAgain) {
  save("gone");
  for (const char* side : {"", "-wal", "-shm"}) std::filesystem::remove(path_ + side);
  save("kept");
  EXPECT_EQ(texts(), "kept|");
}

TEST_F(DDSQLiteLoggerTest, TheFileOfARemovedLoggerIsOneFile) {
  save("text");
  EXPECT_TRUE(std::filesystem::exists(path_ + "-wal"));
  remove();
  EXPECT_FALSE(std::filesystem::exists(path_ + "-wal"));
  EXPECT_EQ(texts(), "text|");
}

TEST_F(DDSQLiteLoggerTest, TwoLoggersMayShareAFile) {
  const auto other = DDSQLiteLogger::initWithPath(NSString(path_));
  DDLog::addLogger(other);
  for (int i = 0; i < 2'000; ++i) say("m");
  DDLog::flushLog();
  EXPECT_EQ(query("SELECT count(*) FROM entry"), "4000");
}

// Failures

TEST_F(DDSQLiteLoggerTest, ADeletionThatFailsIsReportedOnceAndAgainOnceOneHasWorked) {
  save("old");
  age(30 * 24 * 3600);
  const auto deleteTwice = [this] {
    return consoleOf([this] {
      for (int i = 0; i < 2; ++i) logger_->deleteOldLogEntries();
      settle();
    });
  };
  const auto oneReport = ElementsAre(HasSubstr("old entries cannot be deleted from " + path_ + ": kept by hand"));
  const char* const keeping =
      "CREATE TRIGGER keeping BEFORE DELETE ON entry BEGIN SELECT RAISE(ABORT, 'kept by hand'); END";
  query(keeping);
  EXPECT_THAT(deleteTwice(), oneReport);
  save("a save that works is no deletion");
  EXPECT_THAT(deleteTwice(), IsEmpty()) << "it was never gone";
  query("DROP TRIGGER keeping");
  EXPECT_THAT(deleteTwice(), IsEmpty());
  EXPECT_EQ(texts(), "a save that works is no deletion|");
  age(30 * 24 * 3600);
  query(keeping);
  EXPECT_THAT(deleteTwice(), oneReport);
}

/// An obstacle at the path of the file. The logger keeps its entries meanwhile, reports the reason once, and writes the
/// entries when the obstacle is removed.
struct Obstacle {
  const char* what;
  std::string reason;
  std::function<void(const std::string&path)> make, remove;
};

TEST_F(DDSQLiteLoggerTest, WhatIsNoDatabaseOfALogIsLeftAsItIsAndEntriesAreKept) {
  namespace fs = std::filesystem;
  const auto removeFile = [](const std::string& path) { fs::remove_all(path); };
  const auto writeText = [](const std::string& text) {
    return [text](const std::string& path) { std::ofstream(path) << text; };
  };
  const Obstacle obstacles[] = {
      {"a folder", "a folder is in its place", [](const std::string& path) { fs::create_directory(path); }, removeFile},
      {"a pipe", "a named pipe is in its place", [](const std::string& path) { mkfifo(path.c_str(), 0600); },
       removeFile},
      {"a text", "file is not a database", writeText(std::string(5000, 'x')), removeFile},
      {"another database", "it is another application's database",
       [](const std::string& path) { ForeignDatabase(path).run("CREATE TABLE payslip(id)"); }, removeFile},
      {"a later version", "it was written by a later version",
       [](const std::string& path) {
         ForeignDatabase(path).run(
             "PRAGMA application_id = 1315654759; PRAGMA user_version = 2; CREATE TABLE entry(id)");
       },
       removeFile},
      {"a file in the place of the folder", "cannot be created: File exists",
       [](const std::string& path) { std::ofstream(fs::path(path).parent_path().string()) << "text"; },
       [](const std::string& path) { fs::remove(fs::path(path).parent_path()); }},
  };
  int number = 0;
  for (const Obstacle& obstacle : obstacles) {
    std::string path = folder_.path("log" + std::to_string(++number) + ".db");
    if (obstacle.reason.starts_with("cannot be created")) path = folder_.path("folder/log.db");
    obstacle.make(path);
    const std::string before = std::filesystem::is_regular_file(path) ? TemporaryFolder::read(path) : "";
    add(path);
    const std::vector<std::string> lines = consoleOf([this] {
      save("a");
      save("b");
    });
    ASSERT_EQ(lines.size(), 1U) << obstacle.what;
    EXPECT_THAT(lines[0], HasSubstr("DDSQLiteLogger: entries cannot be saved to " + path + ": ")) << obstacle.what;
    EXPECT_THAT(lines[0], HasSubstr(obstacle.reason)) << obstacle.what;
    if (!before.empty()) {
      EXPECT_EQ(TemporaryFolder::read(path), before) << obstacle.what;
    }
    obstacle.remove(path);
    EXPECT_THAT(consoleOf([this] { save("c"); }), IsEmpty()) << obstacle.what;
    EXPECT_EQ(ForeignDatabase(path).run("SELECT text || '|' FROM entry ORDER BY id"), "a|b|c|") << obstacle.what;
  }
}

TEST_F(DDSQLiteLoggerTest, AnotherUsersFileIsLeftAsItIs) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may give a file away";
  constexpr uid_t another = 12'345;
  const std::string path = folder_.write("anothers.db");
  ASSERT_EQ(chown(path.c_str(), another, another), 0);
  const std::string before = TemporaryFolder::read(path);
  add(path);
  const std::vector<std::string> lines = consoleOf([this] { save("a"); });
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_THAT(lines[0], HasSubstr("anothers.db belongs to another user"));
  EXPECT_EQ(TemporaryFolder::read(path), before);
  std::filesystem::remove(path);
  EXPECT_THAT(consoleOf([this] { save("b"); }), IsEmpty());
  EXPECT_EQ(ForeignDatabase(path).run("SELECT text || '|' FROM entry ORDER BY id"), "a|b|");
}

TEST_F(DDSQLiteLoggerTest, AFileThatMayNotBeWrittenKeepsTheEntriesUntilItMay) {
  RUN_IN_CHILD({
    if (geteuid() == 0 && !test::becomeUserWithoutRights(folder_.path())) return;
    save("a");
    remove();  // an open file could still be written to, independent of its permissions
    chmod(path_.c_str(), 0400);
    add(path_);
    EXPECT_EQ(consoleOf([this] { save("b"); }).size(), 1U);
    chmod(path_.c_str(), 0600);
    save("c");
    EXPECT_EQ(texts(), "a|b|c|");
  });
}

TEST_F(DDSQLiteLoggerTest, ALockedDatabaseKeepsTheBuffer) {
  save("a");
  ForeignDatabase other(path_);
  other.run("BEGIN IMMEDIATE");
  const std::vector<std::string> lines = consoleOf([this] {
    save("b");
    save("c");
  });
  EXPECT_THAT(lines, ElementsAre("DDSQLiteLogger: entries cannot be saved to " + path_ +
                                 ": database is locked; they are kept until they can be saved"));
  other.run("COMMIT");
  save("d");
  EXPECT_EQ(texts(), "a|b|c|d|");
  EXPECT_EQ(logger_->lostEntryCount(), 0U);
}

TEST_F(DDSQLiteLoggerTest, WhatComesWhenTheBufferIsFullIsLostCountedAndReportedOnce) {
  save("first");
  logger_->setMaximumBufferSize(4'000);
  ForeignDatabase other(path_);
  other.run("BEGIN IMMEDIATE");
  const std::string large(1'500, 'x');
  const std::vector<std::string> lines = consoleOf([&] {
    for (int i = 0; i < 10; ++i) say(NSString(large), LOG_FLAG_ERROR, false);
  });
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_THAT(lines[0], HasSubstr("database is locked"));
  EXPECT_EQ(lines[1], "DDSQLiteLogger: the buffer for " + path_ + " is full; entries are lost until they can be saved");
  EXPECT_EQ(logger_->lostEntryCount(), 7U) << "three fill it";
  other.run("COMMIT");
  EXPECT_THAT(consoleOf([] { DDLog::flushLog(); }),
              ElementsAre("DDSQLiteLogger: the buffer for " + path_ + " had no room; entries lost: 7"));
  save("last");
  EXPECT_EQ(query("SELECT count(*) FROM entry"), "5");
  EXPECT_EQ(query("SELECT text FROM entry ORDER BY id DESC LIMIT 1"), "last");
  EXPECT_EQ(logger_->lostEntryCount(), 7U);
}

// Not in the fixture, because a thread that was started earlier would not see the mount.
TEST(DDSQLiteLoggerDisk, AFullDiskKeepsTheBuffer) {
  if (!test::PrivateMount::isAllowed("tmpfs")) GTEST_SKIP() << "this user may not mount";
  RUN_IN_CHILD({
    const test::PrivateMount mount("tmpfs", "size=1m");
    ASSERT_TRUE(mount.mounted());
    const std::string path = mount.folder().path("log.db");
    const std::string fill = mount.folder().path("fill");
    auto logger = DDSQLiteLogger::initWithPath(NSString(path));
    DDLog::addLogger(logger);
    say("a");
    DDLog::flushLog();
    {
      std::ofstream file(fill);
      const std::string block(4096, 'x');
      while (file.write(block.data(), 4096).flush()) continue;
    }
    for (int i = 0; i < 100; ++i) say(NSString(std::string(1'000, 'b')));
    const std::vector<std::string> lines = consoleOf([] {
      DDLog::flushLog();
      DDLog::flushLog();
    });
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines[0], ::testing::AnyOf(HasSubstr("full"), HasSubstr("No space left")));
    EXPECT_EQ(logger->lostEntryCount(), 0U);
    std::filesystem::remove(fill);
    say("c");
    DDLog::flushLog();
    ForeignDatabase database(path);
    EXPECT_EQ(database.run("SELECT count(*) FROM entry"), "102");
    EXPECT_EQ(database.run("PRAGMA integrity_check"), "ok");
    DDLog::removeAllLoggers();
    dispatch_sync(DDLog::loggingQueue(), [] {});
    dispatch_sync(logger->loggerQueue(), [] {});
  });
}

TEST_F(DDSQLiteLoggerTest, WhatThereIsNoMemoryForIsLostAndCounted) {
  const std::string text(5000, 'x');
  const auto message = DDLogMessage::initWithLogMsg(NSString(text), 4, 4, 0, "f", "g", 1, Value(), 0);
  std::uint64_t logged = 0;
  const std::vector<std::string> lines = consoleOf([&] {
    logged = test::logWithGrowingMemory(*logger_, *message, [] {});
    DDLog::flushLog();
  });
  const std::uint64_t lost = logger_->lostEntryCount();
  EXPECT_GE(lost, 1U);
  ASSERT_LT(lost, logged);
  EXPECT_EQ(query("SELECT count(*) FROM entry WHERE length(text) = 5000"), std::to_string(logged - lost));
  EXPECT_EQ(query("SELECT count(*) FROM entry"), std::to_string(logged - lost));
  EXPECT_THAT(lines.back(), HasSubstr("entries lost: " + std::to_string(lost)));
}

TEST_F(DDSQLiteLoggerTest, APathWithAZeroByteIsNotTakenForAShorterOne) {
  add(folder_.path(std::string("log\0of.db", 9)));
  const std::vector<std::string> lines = consoleOf([this] { save("a"); });
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_THAT(lines[0], HasSubstr("Invalid argument"));
  EXPECT_FALSE(std::filesystem::exists(folder_.path("log")));
}

TEST_F(DDSQLiteLoggerTest, ADerivedClassGetsItsMessagesOneByOne) {
  class Counting : public DDSQLiteLogger {
   public:
    using DDSQLiteLogger::DDSQLiteLogger;
    bool db_log(const DDLogMessage& message) override {
      ++count;
      return DDSQLiteLogger::db_log(message);
    }
    int count = 0;
  };
  const auto logger = make<Counting>(NSString(path_));
  clean();
  DDLog::addLogger(logger);
  for (int i = 0; i < 10; ++i) say("m");
  DDLog::flushLog();
  EXPECT_EQ(logger->count, 10);
  EXPECT_EQ(query("SELECT count(*) FROM entry"), "10");
}

TEST_F(DDSQLiteLoggerTest, ParentAndForkedChildWriteEachTheirOwn) {
#ifdef NK_TEST_THREAD_SANITIZER
  GTEST_SKIP() << "the thread sanitizer starts no threads in a forked child";
#endif
  save("before");
  say("parents", LOG_FLAG_ERROR, false);
  test::quietBeforeFork();
  const pid_t child = fork();
  if (child == 0) {
    save("childs");
    _exit(0);
  }
  int status = 1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(texts(), "before|childs|");
  DDLog::flushLog();
  EXPECT_EQ(texts(), "before|childs|parents|");
}

}  // namespace
}  // namespace norvik
