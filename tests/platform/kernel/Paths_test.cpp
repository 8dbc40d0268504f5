#include "NorvikCore/platform/kernel/Paths.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <optional>

#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik {
namespace {

using norvik::test::TemporaryFolder;

// An environment in which HOME is /home/pat and none of the XDG variables is set; the former one comes back at the end.
class Paths : public ::testing::Test {
 protected:
  Paths() {
    for (const char* name :
         {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME", "TMPDIR"}) {
      const char* value = std::getenv(name);
      before_[name] = value ? std::optional<std::string>(value) : std::nullopt;
      unsetenv(name);
    }
    set("HOME", "/home/pat");
  }
  ~Paths() override {
    for (const auto& [name, value] : before_) {
      if (value) {
        set(name.c_str(), *value);
      } else {
        unsetenv(name.c_str());
      }
    }
  }
  static void set(const char* name, const std::string& value) { setenv(name, value.c_str(), 1); }

 private:
  std::map<std::string, std::optional<std::string>> before_;
};

TEST_F(Paths, HeaderExample) {
  EXPECT_EQ(kernel::libraryDirectory(), "/home/pat/.local/share");
  EXPECT_EQ(kernel::expandTilde("~/Documents/pay.csv"), "/home/pat/Documents/pay.csv");
}

TEST_F(Paths, WithoutVariablesTheFoldersAreInTheHomeFolder) {
  EXPECT_EQ(kernel::homeDirectory(), "/home/pat");
  EXPECT_EQ(kernel::configurationDirectory(), "/home/pat/.config");
  EXPECT_EQ(kernel::cachesDirectory(), "/home/pat/.cache");
  EXPECT_EQ(kernel::stateDirectory(), "/home/pat/.local/state");
  EXPECT_EQ(kernel::documentsDirectory(), "/home/pat/Documents");
  EXPECT_EQ(kernel::downloadsDirectory(), "/home/pat/Downloads");
  EXPECT_EQ(kernel::desktopDirectory(), "/home/pat/Desktop");
  EXPECT_EQ(kernel::temporaryDirectory(), "/tmp");
}

TEST_F(Paths, AVariableNamesItsFolder) {
  set("XDG_DATA_HOME", "/data/share/");
  set("XDG_CONFIG_HOME", "/data/config");
  set("XDG_CACHE_HOME", "/data/cache//");
  set("XDG_STATE_HOME", "/data/state");
  set("TMPDIR", "/data/tmp");
  EXPECT_EQ(kernel::libraryDirectory(), "/data/share");
  EXPECT_EQ(kernel::configurationDirectory(), "/data/config");
  EXPECT_EQ(kernel::cachesDirectory(), "/data/cache");
  EXPECT_EQ(kernel::stateDirectory(), "/data/state");
  EXPECT_EQ(kernel::temporaryDirectory(), "/data/tmp");
}

TEST_F(Paths, AVariableThatIsEmptyOrRelativeDoesNotCount) {
  for (const char* value : {"", "share", "./share", "~/share"}) {
    set("XDG_DATA_HOME", value);
    set("TMPDIR", value);
    EXPECT_EQ(kernel::libraryDirectory(), "/home/pat/.local/share") << value;
    EXPECT_EQ(kernel::temporaryDirectory(), "/tmp") << value;
  }
}

TEST_F(Paths, WithoutHOMETheAccountTellsTheHomeFolder) {
  const passwd* account = getpwuid(geteuid());
  const std::string expected = account ? account->pw_dir : "/";
  unsetenv("HOME");
  EXPECT_EQ(kernel::homeDirectory(), expected);
  set("HOME", "");
  EXPECT_EQ(kernel::homeDirectory(), expected);
}

TEST_F(Paths, AHomeFolderThatIsTheRootGivesNoDoubleSlash) {
  set("HOME", "/");
  EXPECT_EQ(kernel::homeDirectory(), "/");
  EXPECT_EQ(kernel::libraryDirectory(), "/.local/share");
  EXPECT_EQ(kernel::expandTilde("~/pay"), "/pay");
  EXPECT_EQ(kernel::expandTilde("~"), "/");
}

TEST_F(Paths, TheUsersOwnChoiceOfFoldersCounts) {
  const TemporaryFolder configuration;
  set("XDG_CONFIG_HOME", configuration.path());
  configuration.write("user-dirs.dirs",
                      "# written by hand\n"
                      "XDG_DOCUMENTS_DIR=\"$HOME/Papers/\"\n"
                      "  XDG_DOWNLOAD_DIR=\"/data/new \\\"files\\\"\"\n"
                      "XDG_DESKTOP_DIR=\"relative\"\n"
                      "XDG_DOCUMENTS_DIRECTORY=\"/no\"");
  EXPECT_EQ(kernel::documentsDirectory(), "/home/pat/Papers");
  EXPECT_EQ(kernel::downloadsDirectory(), "/data/new \"files\"");
  EXPECT_EQ(kernel::desktopDirectory(), "/home/pat/Desktop");
}

TEST_F(Paths, ATildeIsExpandedAtTheBeginningOnly) {
  const struct {
    const char *path, *expected;
  } rows[] = {
      {"~", "/home/pat"},
      {"~/", "/home/pat/"},
      {"~/a/~/b", "/home/pat/a/~/b"},
      {"/a/~", "/a/~"},
      {"a~", "a~"},
      {"", ""},
      {"~no such user/a", "~no such user/a"},
  };
  for (const auto& row : rows) EXPECT_EQ(kernel::expandTilde(row.path), row.expected);
}

TEST_F(Paths, ANameAfterTheTildeIsAUser) {
  EXPECT_EQ(kernel::expandTilde("~root/pay"), "/root/pay");
  EXPECT_EQ(kernel::expandTilde("~root"), "/root");
  EXPECT_EQ(kernel::homeDirectoryOfUser("root"), "/root");
  EXPECT_EQ(kernel::homeDirectoryOfUser("no such user"), "");
  EXPECT_EQ(kernel::homeDirectoryOfUser(std::string("root\0", 5)), "");
}

TEST_F(Paths, WithoutAnyHomeThereIsNoLibraryUnlessTheEnvironmentNamesIt) {
  RUN_IN_CHILD({
    if (geteuid() == 0) {
      ASSERT_EQ(setuid(54321), 0);
    }
    if (getpwuid(geteuid())) return;  // this user has an account
    unsetenv("HOME");
    EXPECT_EQ(kernel::homeDirectory(), "/");
    EXPECT_EQ(kernel::libraryDirectory(), "");
    set("XDG_DATA_HOME", "/data");
    EXPECT_EQ(kernel::libraryDirectory(), "/data");
  });
}

}  // namespace
}  // namespace norvik
