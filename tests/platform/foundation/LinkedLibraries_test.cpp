#include "NorvikCore/platform/foundation/LinkedLibraries.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unicode/uvernum.h>

#include <string>

namespace norvik {
namespace {

TEST(LinkedLibraries, HeaderExample) {
  std::string shown;
  for (const LinkedLibrary& library : linkedLibraries()) shown += library.name.str() + "\n";
  EXPECT_EQ(shown, "NorvikCore\nICU\nSQLite\n");
}

// The tests are built with the headers of the libraries with which they run.
TEST(LinkedLibraries, TheVersionsAreThoseOfTheLibraries) {
  const std::vector<LinkedLibrary> libraries = linkedLibraries();
  ASSERT_EQ(libraries.size(), 3U);
  EXPECT_EQ(libraries[0].version, NORVIK_EXPECTED_VERSION);
  EXPECT_EQ(libraries[1].version, U_ICU_VERSION);
  EXPECT_EQ(libraries[2].version, SQLITE_VERSION);
}

}  // namespace
}  // namespace norvik
