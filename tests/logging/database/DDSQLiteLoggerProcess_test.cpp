// The content of a file after processes that end, or that share the file; sqlite_child.cpp is their program.
#include "tests/support/ChildProgram.h"
#include "tests/support/ForeignDatabase.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace norvik {
namespace {

using test::ChildProgram;
using test::ForeignDatabase;
using test::TemporaryFolder;

TEST(DDSQLiteLoggerProcess, EverySavedEntryIsThereAfterAKill) {
  const TemporaryFolder folder;
  const std::string path = folder.path("log.db");
  ChildProgram child({NORVIK_SQLITE_CHILD, "killed", path});
  EXPECT_EQ(child.readLine(), "saved");
  child.kill();
  EXPECT_EQ(child.wait(), 128 + 9);
  ForeignDatabase database(path);
  EXPECT_EQ(database.run("SELECT count(*) FROM entry WHERE id <= 1000 AND text = 'entry ' || (id - 1)"), "1000");
  EXPECT_EQ(database.run("PRAGMA integrity_check"), "ok");
}

TEST(DDSQLiteLoggerProcess, WhatIsUnsavedIsSavedAtTheEndOfTheProcess) {
  for (const char* ending : {"exit", "return"}) {
    const TemporaryFolder folder;
    const std::string path = folder.path("log.db");
    EXPECT_EQ(ChildProgram({NORVIK_SQLITE_CHILD, ending, path}).wait(), 0) << ending;
    EXPECT_EQ(ForeignDatabase(path).run("SELECT count(*) FROM entry"), "50") << ending;
    EXPECT_FALSE(std::filesystem::exists(path + "-wal")) << ending;
  }
}

#ifdef NORVIK_DATABASES_EXAMPLE
TEST(DDSQLiteLoggerProcess, TheExampleLeavesItsEntries) {
  const TemporaryFolder folder;
  const std::string path = folder.path("log.db");
  EXPECT_EQ(ChildProgram({NORVIK_DATABASES_EXAMPLE, path}).wait(), 0);
  EXPECT_EQ(ForeignDatabase(path).run("SELECT level || ' ' || text || '|' FROM entry ORDER BY id"),
            "4 40 payslips read|1 no bank account for Zo\u00EB Smith|");
}
#endif

TEST(DDSQLiteLoggerProcess, ProcessesThatShareAFileLoseNothing) {
  const TemporaryFolder folder;
  const std::string path = folder.path("log.db");
  std::vector<std::unique_ptr<ChildProgram>> children;
  for (const char* name : {"a", "b", "c"}) {
    children.push_back(
        std::make_unique<ChildProgram>(std::vector<std::string>{NORVIK_SQLITE_CHILD, "shares", path, name}));
  }
  for (const auto& child : children) EXPECT_EQ(child->wait(), 0);
  ForeignDatabase database(path);
  EXPECT_EQ(database.run("SELECT count(DISTINCT text) FROM entry"), "3000");
  EXPECT_EQ(database.run("SELECT count(*) FROM entry"), "3000");
  EXPECT_EQ(database.run("PRAGMA integrity_check"), "ok");
}

}  // namespace
}  // namespace norvik
