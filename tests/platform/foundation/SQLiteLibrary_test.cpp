// When SQLite is loaded, and what happens if it cannot be loaded. This program does not link SQLite.
#include "NorvikCore/platform/foundation/internal/SQLiteLibrary.h"

#include "NorvikCore/platform/foundation/NSUserDefaults.h"
#include "tests/support/ChildProgram.h"
#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace norvik {
namespace {

using norvik::test::ChildProgram;
using norvik::test::TemporaryFolder;

TEST(SQLiteLibrary, IsLoadedWithTheFirstPreferences) {
  RUN_IN_CHILD({
    const auto isLoaded = [] { return dlopen("libsqlite3.so.0", RTLD_NOLOAD | RTLD_LAZY) != nullptr; };
    const TemporaryFolder folder;
    EXPECT_FALSE(isLoaded());
    const auto defaults = make<NSUserDefaults>(NSString(folder.path("defaults.sqlite")));
    EXPECT_TRUE(isLoaded());
    defaults->setInteger(2, "rate");
    EXPECT_EQ(make<NSUserDefaults>(NSString(folder.path("defaults.sqlite")))->integerForKey("rate"), 2);
  });
}

TEST(SQLiteLibrary, WithoutItValuesAreKeptInMemoryAndALineSaysWhy) {
  const TemporaryFolder folder;
  const std::string path = folder.path("defaults.sqlite"), broken = folder.write("libsqlite3.so.0", "no library");
  ChildProgram program(
      {"/bin/sh", "-c",
       "LD_LIBRARY_PATH=" + folder.path() + " exec " NORVIK_PREFERENCES_PROGRAM " " + path + " rate=2 get:rate 2>&1"});
  const std::string line = program.readLine();  // begins with the time and the program
  EXPECT_EQ(line.substr(std::min(line.find("] ") + 2, line.size())),
            "The preferences in " + path + " cannot be written: databases cannot be opened without SQLite: " + broken +
                ": file too short. Values that are set are kept in memory, and writing is tried again until this "
                "process ends.");
  EXPECT_EQ(program.readLine(), "2");
  EXPECT_EQ(program.wait(), 0);
}

TEST(SQLiteLibrary, MayBeLoadedWhileASharedObjectIsLoadedThatReadsPreferences) {
  const TemporaryFolder folder;
  ChildProgram program(
      {"/usr/bin/env", "NORVIK_DEFAULTS_FOLDER=" + folder.path(), NORVIK_LOADING_PROGRAM, NORVIK_LOADING_PLUGIN});
  EXPECT_EQ(program.readLine(), "both");
  EXPECT_EQ(program.wait(), 0);
}

}  // namespace
}  // namespace norvik
