// Several processes that use one database, processes that fork, and processes that are killed.
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "NorvikCore/platform/foundation/NSUserDefaults.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "tests/support/DefaultsFolder.h"
#include "tests/support/InChild.h"

namespace norvik {
namespace {

using norvik::test::DefaultsFolder;

pid_t inFork(const std::function<bool()>& run) {
  const pid_t child = fork();
  if (child == 0) _exit(run() ? 0 : 1);
  return child;
}

bool endedWell(pid_t child) {
  int status = 0;
  return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

NSString numbered(const char* name, int number) { return NSString(name + std::to_string(number)); }

/// The errors that SQLite finds in the file; "ok" if there are none.
std::string integrity(const std::string& path) {
  sqlite3* database = nullptr;
  std::string result;
  if (sqlite3_open(path.c_str(), &database) == SQLITE_OK) {
    const auto keep = [](void* text, int, char** columns, char**) {
      *static_cast<std::string*>(text) += columns[0];
      return 0;
    };
    sqlite3_exec(database, "PRAGMA integrity_check", keep, &result, nullptr);
  }
  sqlite3_close(database);
  return result;
}

TEST(NSUserDefaultsProcesses, AChildReadsAndWritesWhatItsParentHasOpen) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  defaults->setInteger(1, "parent");
  const pid_t child = inFork([&] {
    if (defaults->integerForKey("parent") != 1) return false;
    defaults->setInteger(2, "child");
    return defaults->integerForKey("child") == 2;
  });
  defaults->setInteger(3, "parent");
  EXPECT_TRUE(endedWell(child));
  EXPECT_TRUE(defaults->synchronize());
  EXPECT_EQ(defaults->integerForKey("child"), 2);
  EXPECT_EQ(folder.open()->integerForKey("parent"), 3);
  EXPECT_EQ(integrity(folder.path()), "ok");
}

// The parent closes the database last. It would remove the log that a child uses if the child did not hold its own
// lock.
TEST(NSUserDefaultsProcesses, WhatAChildWritesOutlivesItsParentsConnection) {
  const DefaultsFolder folder;
  Ref<NSUserDefaults> defaults = folder.open();
  defaults->setInteger(1, "parent");
  int toChild[2], toParent[2];
  ASSERT_EQ(pipe(toChild), 0);
  ASSERT_EQ(pipe(toParent), 0);
  const pid_t child = inFork([&] {
    char byte = 0;
    defaults->setInteger(2, "child");
    if (write(toParent[1], "x", 1) != 1 || read(toChild[0], &byte, 1) != 1) return false;
    for (int i = 0; i < 50; ++i) defaults->setInteger(i, numbered("child", i));
    return true;
  });
  char byte = 0;
  ASSERT_EQ(read(toParent[0], &byte, 1), 1);
  defaults->setInteger(3, "parent");
  defaults = nullptr;
  ASSERT_EQ(write(toChild[1], "x", 1), 1);
  EXPECT_TRUE(endedWell(child));
  for (const int end : {toChild[0], toChild[1], toParent[0], toParent[1]}) close(end);
  EXPECT_EQ(folder.open()->dictionaryRepresentation()->count(), 52u);
  EXPECT_EQ(integrity(folder.path()), "ok");
}

TEST(NSUserDefaultsProcesses, SeveralProcessesLoseNothingOfOneAnother) {
  constexpr int processes = 4, values = 50;
  const DefaultsFolder folder;
  std::vector<pid_t> children;
  for (int process = 0; process < processes; ++process) {
    children.push_back(inFork([&folder, process] {
      const Ref<NSUserDefaults> defaults = folder.open();
      for (int i = 0; i < values; ++i) defaults->setInteger(i, numbered("key", process * values + i));
      return defaults->synchronize();
    }));
  }
  for (const pid_t child : children) EXPECT_TRUE(endedWell(child));
  EXPECT_EQ(folder.open()->dictionaryRepresentation()->count(), 200u);
  EXPECT_EQ(integrity(folder.path()), "ok");
}

TEST(NSUserDefaultsProcesses, ProcessesThatStartTogetherInAnEmptyFolderLoseNothing) {
  constexpr int processes = 6;
  for (int round = 0; round < 60; ++round) {
    const DefaultsFolder folder;
    int gate[2];
    ASSERT_EQ(pipe(gate), 0);
    std::vector<pid_t> children;
    for (int process = 0; process < processes; ++process) {
      children.push_back(inFork([&folder, &gate, process] {
        close(gate[1]);
        const Ref<NSUserDefaults> defaults = folder.open();
        char byte = 0;
        if (read(gate[0], &byte, 1) != 0) return false;
        defaults->setInteger(process, numbered("key", process));
        defaults->setInteger(process, "same");
        return true;
      }));
    }
    close(gate[0]);
    close(gate[1]);
    for (const pid_t child : children) EXPECT_TRUE(endedWell(child)) << "round " << round;
    ASSERT_EQ(folder.open()->dictionaryRepresentation()->count(), 7u) << "round " << round;
    ASSERT_EQ(integrity(folder.path()), "ok");
  }
}

/// Another connection creates the database before one of the statements of this process: when the count has reached 0.
struct Meanwhile {
  const DefaultsFolder* folder = nullptr;
  int statements = 0;
} meanwhile;

int beforeEachStatement(unsigned, void*, void*, void*) {
  if (meanwhile.statements-- == 0) meanwhile.folder->open()->setInteger(1, "other");
  return 0;
}

int watchStatements(sqlite3* database, char**, const void*) {
  return sqlite3_trace_v2(database, SQLITE_TRACE_STMT, &beforeEachStatement, nullptr);
}

TEST(NSUserDefaultsProcesses, ADatabaseThatAnotherMakesAtAnyMomentIsNotTakenForSomethingElse) {
  const auto watch = reinterpret_cast<void (*)()>(&watchStatements);
  constexpr int statementsUntilItIsRecognized = 12;
  for (int moment = 0; moment < statementsUntilItIsRecognized; ++moment) {
    const DefaultsFolder folder;
    std::filesystem::create_directory(folder.folder().path("pay"));
    folder.folder().write("pay/defaults.sqlite");
    meanwhile = {&folder, moment};
    const kernel::SystemLogCapture console;
    ASSERT_EQ(sqlite3_auto_extension(watch), SQLITE_OK);
    folder.open()->setInteger(2, "mine");
    sqlite3_cancel_auto_extension(watch);
    EXPECT_LT(meanwhile.statements, 0);
    EXPECT_EQ(folder.open()->integerForKey("mine"), 2) << "before statement " << moment;
    for (const std::string& line : console.lines()) EXPECT_EQ(line.find("another application's"), line.npos) << line;
  }
}

// A child sets increasing numbers and reports each one after it was set. Whenever it is killed, the last reported
// number must be in the database.
TEST(NSUserDefaultsProcesses, WhatWasSetSurvivesTheKillingOfTheProcess) {
  const DefaultsFolder folder;
  std::int64_t last = 0;
  for (int round = 0; round < 20; ++round) {
    int told[2];
    ASSERT_EQ(pipe(told), 0);
    const pid_t child = inFork([&] {
      const Ref<NSUserDefaults> defaults = folder.open();
      for (std::int64_t i = last + 1;; ++i) {
        defaults->setInteger(i, "number");
        defaults->setObject(NSString(std::string(static_cast<std::size_t>(i % 7) * 1000, 'a')), "text");
        if (write(told[1], &i, sizeof i) != sizeof i) return false;
      }
    });
    close(told[1]);
    // Kills the child at a different moment in each round, after one number at least.
    std::int64_t number = 0;
    for (int i = 0; i <= round; ++i)
      ASSERT_EQ(read(told[0], &number, sizeof number), static_cast<ssize_t>(sizeof number));
    kill(child, SIGKILL);
    while (read(told[0], &number, sizeof number) == static_cast<ssize_t>(sizeof number)) continue;
    close(told[0]);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
    const std::int64_t found = folder.open()->integerForKey("number");
    EXPECT_GE(found, number);
    EXPECT_LE(found, number + 1);
    EXPECT_EQ(integrity(folder.path()), "ok");
    last = found;
  }
}

// The child is killed a little later in each round, from before the database is created until after that.
TEST(NSUserDefaultsProcesses, AKillWhileTheDatabaseIsMadeLeavesOneThatCanBeMade) {
  for (int round = 0; round < 60; ++round) {
    const DefaultsFolder folder;
    const pid_t child = inFork([&] {
      folder.open()->setInteger(1, "child");
      return true;
    });
    const auto start = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() - start < round * std::chrono::microseconds(100)) continue;
    kill(child, SIGKILL);
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    const kernel::SystemLogCapture console;
    folder.open()->setInteger(2, "parent");
    EXPECT_EQ(folder.open()->integerForKey("parent"), 2);
    EXPECT_TRUE(console.lines().empty()) << "round " << round << ": " << console.lines()[0];
    EXPECT_EQ(integrity(folder.path()), "ok");
  }
}

TEST(NSUserDefaultsProcesses, TheEndOfTheProcessLeavesNoLogBesideTheDatabase) {
  const char* const variable = "NORVIK_TEST_DATABASE";
  const DefaultsFolder folder;
  setenv(variable, folder.path().c_str(), 0);  // already set in the child
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        NSUserDefaults::setStandardUserDefaults(make<NSUserDefaults>(NSString(std::getenv(variable))));
        NSUserDefaults::standardUserDefaults().setInteger(7, "rate");
        if (!std::filesystem::exists(std::string(std::getenv(variable)) + "-wal")) std::abort();
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "");
  unsetenv(variable);
  EXPECT_FALSE(std::filesystem::exists(folder.path() + "-wal"));
  EXPECT_EQ(folder.open()->integerForKey("rate"), 7);
}

}  // namespace
}  // namespace norvik
