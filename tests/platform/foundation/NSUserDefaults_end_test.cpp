// What happens to preferences when a program ends: unwritten values are written, and nothing ends the program early.
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "NorvikCore/platform/foundation/NSUserDefaults.h"
#include "tests/support/ChildProgram.h"
#include "tests/support/DefaultsFolder.h"
#include "tests/support/ForeignDatabase.h"

namespace norvik {
namespace {

using norvik::test::ChildProgram;
using norvik::test::DefaultsFolder;
using norvik::test::ForeignDatabase;

std::vector<std::string> program(const DefaultsFolder& folder, std::vector<std::string> steps) {
  std::vector<std::string> arguments = {NORVIK_PREFERENCES_PROGRAM, folder.path()};
  arguments.insert(arguments.end(), steps.begin(), steps.end());
  return arguments;
}

TEST(NSUserDefaultsEnd, WhatAnotherProcessLockedIsWrittenAtTheEnd) {
  const DefaultsFolder folder;
  folder.open()->setInteger(1, "before");
  ChildProgram child(program(folder, {"wait", "rate=2", "wait"}));
  child.readLine();
  {
    ForeignDatabase another(folder.path());
    another.run("BEGIN IMMEDIATE");
    child.write("\n");
    child.readLine();
    EXPECT_EQ(folder.open()->integerForKey("rate"), 0);
  }
  child.write("\n");
  EXPECT_EQ(child.wait(), 0);
  EXPECT_EQ(folder.open()->integerForKey("rate"), 2);
}

TEST(NSUserDefaultsEnd, AForkedChildWritesAtItsEndWhatWasLocked) {
  const DefaultsFolder folder;
  folder.open()->setInteger(1, "before");
  ChildProgram child(program(folder, {"before=2", "fork", "wait", "rate=2", "wait"}));
  child.readLine();
  {
    ForeignDatabase another(folder.path());
    another.run("BEGIN IMMEDIATE");
    child.write("\n");
    child.readLine();
  }
  child.write("\n");
  EXPECT_EQ(child.wait(), 0);
  EXPECT_EQ(folder.open()->integerForKey("rate"), 2);
  EXPECT_EQ(folder.open()->integerForKey("before"), 2);
}

TEST(NSUserDefaultsEnd, WhatWasLockedIsWrittenBeforeAForkSoThatNeitherSideHasToKeepIt) {
  const DefaultsFolder folder;
  folder.open()->setInteger(1, "before");
  ChildProgram child(program(folder, {"wait", "rate=2", "wait", "fork", "wait"}));
  child.readLine();
  {
    ForeignDatabase another(folder.path());
    another.run("BEGIN IMMEDIATE");
    child.write("\n");
    child.readLine();
  }
  child.write("\n");
  child.readLine();
  EXPECT_EQ(folder.open()->integerForKey("rate"), 2);
  child.write("\n");
  EXPECT_EQ(child.wait(), 0);
}

TEST(NSUserDefaultsEnd, NoLimitOnTheSizeOfFilesEndsTheProcess) {
  const DefaultsFolder folder;
  folder.open()->setInteger(1, "before");
  for (const char* limit : {"limit:0", "limit:4096", "limit:30000", "limit:40000"}) {
    ChildProgram child(program(folder, {"rate=2", limit, "rate=3", "get:rate"}));
    EXPECT_EQ(child.readLine(), "3") << limit;
    EXPECT_EQ(child.wait(), 0) << limit;
  }
  for (const char* limit : {"limit:0", "limit:4096", "limit:10000"}) {
    ChildProgram child(program(folder, {"rate=4", limit}));  // its log is read by the next process
    EXPECT_EQ(child.wait(), 0) << limit;
    EXPECT_EQ(folder.open()->integerForKey("rate"), 4) << limit;
  }
  for (const char* limit : {"limit:0", "limit:4096"}) {
    const DefaultsFolder empty;
    ChildProgram child(program(empty, {limit, "rate=3", "get:rate"}));
    EXPECT_EQ(child.readLine(), "3") << limit;
    EXPECT_EQ(child.wait(), 0) << limit;
    empty.open()->setInteger(4, "rate");
    EXPECT_EQ(empty.open()->integerForKey("rate"), 4) << limit;
  }
  EXPECT_EQ(folder.open()->integerForKey("before"), 1);
}

TEST(NSUserDefaultsEnd, ALimitDoesNotEndAForkedChildEither) {
  const DefaultsFolder folder;
  ChildProgram child(program(folder, {"rate=2", "limit:1000", "fork", "rate=3", "get:rate"}));
  EXPECT_EQ(child.readLine(), "3");
  EXPECT_EQ(child.wait(), 0);
  EXPECT_EQ(folder.open()->integerForKey("rate"), 2);
}

TEST(NSUserDefaultsEnd, AnEndWhileAnotherThreadWritesLosesNothing) {
  const DefaultsFolder folder;
  for (int round = 1; round <= 20; ++round) {
    ChildProgram child(program(folder, {"busy", "round=" + std::to_string(round)}));
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(folder.open()->integerForKey("round"), round);
  }
}

TEST(NSUserDefaultsEnd, ProgramsThatStartTogetherInAnEmptyFolderLoseNothing) {
  constexpr int programs = 6;
  for (int round = 0; round < 10; ++round) {
    const DefaultsFolder folder;
    std::vector<std::unique_ptr<ChildProgram>> children;
    for (int i = 0; i < programs; ++i) {
      const std::string number = std::to_string(i);
      children.push_back(
          std::make_unique<ChildProgram>(program(folder, {"wait", "own" + number + "=" + number, "same=7"})));
    }
    for (const auto& child : children) child->readLine();
    for (const auto& child : children) child->write("\n");
    for (const auto& child : children) EXPECT_EQ(child->wait(), 0);
    for (int i = 0; i < programs; ++i) {
      EXPECT_EQ(folder.open()->objectForKey(NSString("own" + std::to_string(i))), Value(i)) << "round " << round;
    }
    EXPECT_EQ(folder.open()->integerForKey("same"), 7);
    EXPECT_FALSE(std::filesystem::exists(folder.path() + "-wal"));
  }
}

}  // namespace
}  // namespace norvik
