#include "NorvikCore/platform/foundation/NSPathUtilities.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "tests/support/InChild.h"

namespace norvik {
namespace {

/// Sets HOME; called in a process of its own.
void setHome(const char* home) { setenv("HOME", home, 1); }

TEST(NSPathUtilities, HeaderExample) {
  RUN_IN_CHILD({
    setHome("/home/pat");
    EXPECT_EQ(stringByExpandingTildeInPath("~/Pay/april.csv"), "/home/pat/Pay/april.csv");
    EXPECT_EQ(stringByAbbreviatingWithTildeInPath("/home/pat/Pay"), "~/Pay");
  });
}

TEST(NSPathUtilities, ATildeIsExpandedAtTheBeginningOnly) {
  RUN_IN_CHILD({
    setHome("/home/pat/");
    const struct {
      const char *path, *expected;
    } rows[] = {
        {"~", "/home/pat"},
        {"~/", "/home/pat"},
        {"~/a//", "/home/pat/a"},
        {"~/a/~/b", "/home/pat/a/~/b"},
        {"/a/~", "/a/~"},
        {"a~", "a~"},
        {"", ""},
        {"/", "/"},
        {"///", "/"},
        {"/a/", "/a"},
        {"~no such user/a", "~no such user/a"},
        {"~root", "/root"},
        {"~root/pay", "/root/pay"},
    };
    for (const auto& row : rows) EXPECT_EQ(stringByExpandingTildeInPath(row.path), row.expected) << row.path;
  });
}

TEST(NSPathUtilities, ANameWithANULIsNobody) {
  EXPECT_EQ(stringByExpandingTildeInPath("~root\0x/a"_ns), "~root\0x/a"_ns);
}

TEST(NSPathUtilities, OnlyAWholeHomeFolderIsAbbreviated) {
  RUN_IN_CHILD({
    setHome("/home/pat");
    const struct {
      const char *path, *expected;
    } rows[] = {
        {"/home/pat", "~"},
        {"/home/pat/", "~"},
        {"/home/pat/a/b", "~/a/b"},
        {"/home/patricia/a", "/home/patricia/a"},
        {"/home", "/home"},
        {"/x/home/pat", "/x/home/pat"},
        {"home/pat", "home/pat"},
        {"~/a", "~/a"},
        {"/a/", "/a"},
        {"", ""},
        {"/", "/"},
    };
    for (const auto& row : rows) EXPECT_EQ(stringByAbbreviatingWithTildeInPath(row.path), row.expected) << row.path;
  });
}

TEST(NSPathUtilities, AHomeFolderThatIsTheRootIsNotAbbreviated) {
  RUN_IN_CHILD({
    setHome("/");
    EXPECT_EQ(stringByAbbreviatingWithTildeInPath("/etc"), "/etc");
    EXPECT_EQ(stringByAbbreviatingWithTildeInPath("/"), "/");
    EXPECT_EQ(stringByExpandingTildeInPath("~/etc"), "/etc");
  });
}

TEST(NSPathUtilities, WithoutHOMETheAccountTellsTheHomeFolder) {
  RUN_IN_CHILD({
    const passwd* account = getpwuid(geteuid());
    const std::string expected = account ? account->pw_dir : "/";
    unsetenv("HOME");
    EXPECT_EQ(stringByExpandingTildeInPath("~"), NSString(expected));
    setHome("relative");
    EXPECT_EQ(stringByExpandingTildeInPath("~"), NSString(expected));
  });
}

TEST(NSPathUtilities, BytesThatAreNotUTF8StayAsTheyAre) {
  RUN_IN_CHILD({
    setHome("/home/p\xFF");
    EXPECT_EQ(stringByExpandingTildeInPath(NSString::fromBytes("~/\xE4")).bytes(), "/home/p\xFF/\xE4");
    EXPECT_EQ(stringByAbbreviatingWithTildeInPath(NSString::fromBytes("/home/p\xFF/\xE4")).bytes(), "~/\xE4");
  });
}

}  // namespace
}  // namespace norvik
