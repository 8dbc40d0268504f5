#include "NorvikCore/platform/kernel/Paths.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <iterator>
#include <map>
#include <optional>
#include <random>
#include <regex>
#include <sstream>
#include <string>

#include "tests/support/AnotherUser.h"
#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik {
namespace {

using norvik::test::TemporaryFolder;

// An environment in which HOME is /home/pat and no XDG variable is set; the destructor restores the former one.
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

TEST_F(Paths, ARelativeHOMEDoesNotCount) {
  const passwd* account = getpwuid(geteuid());
  const std::string expected = account ? account->pw_dir : "/";
  for (const char* value : {"home/pat", "./pat", "..", "~"}) {
    set("HOME", value);
    EXPECT_EQ(kernel::homeDirectory(), expected) << value;
  }
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

TEST_F(Paths, ALineOfUserDirectoriesIsReadAsDesktopsReadIt) {
  const TemporaryFolder configuration;
  set("XDG_CONFIG_HOME", configuration.path());
  const struct {
    const char *why, *text, *expected;
  } rows[] = {
      {"below the home folder", "XDG_DOCUMENTS_DIR=\"$HOME/Papers\"\n", "/home/pat/Papers"},
      {"the home folder itself", "XDG_DOCUMENTS_DIR=\"$HOME/\"\n", "/home/pat"},
      {"the same without a slash", "XDG_DOCUMENTS_DIR=\"$HOME\"\n", "/home/pat"},
      {"an absolute path", "XDG_DOCUMENTS_DIR=\"/data/papers//\"\n", "/data/papers"},
      {"the root", "XDG_DOCUMENTS_DIR=\"/\"\n", "/"},
      {"white space", " \t XDG_DOCUMENTS_DIR =\t\"$HOME/Papers\" # mine\n", "/home/pat/Papers"},
      {"a line end of another system", "XDG_DOCUMENTS_DIR=\"$HOME/Papers\"\r\n", "/home/pat/Papers"},
      {"without a line end", "XDG_DOCUMENTS_DIR=\"$HOME/Papers\"", "/home/pat/Papers"},
      {"white space inside", "XDG_DOCUMENTS_DIR=\"$HOME/My Papers \"\n", "/home/pat/My Papers "},
      {"quoted characters", "XDG_DOCUMENTS_DIR=\"$HOME/a\\\"b\\\\c\\$d\\`e\"\n", "/home/pat/a\"b\\c$d`e"},
      {"bytes that are no UTF-8", "XDG_DOCUMENTS_DIR=\"/data/\xE9t\xE9\"\n", "/data/\xE9t\xE9"},
      {"the last line counts", "XDG_DOCUMENTS_DIR=\"/a\"\nXDG_DOCUMENTS_DIR=\"/b\"\n", "/b"},
      {"but not one that is none", "XDG_DOCUMENTS_DIR=\"/a\"\nXDG_DOCUMENTS_DIR=\"b\"\n", "/a"},
      {"a dollar sign without its meaning", "XDG_DOCUMENTS_DIR=\"\\$HOME/a\"\n", "/home/pat/Documents"},
      {"a slash without its meaning", "XDG_DOCUMENTS_DIR=\"\\/a\"\n", "/home/pat/Documents"},
      {"a remark", "#XDG_DOCUMENTS_DIR=\"/a\"\n", "/home/pat/Documents"},
      {"another variable", "XDG_DOCUMENTS_DIR=\"$XDG_DATA_HOME/a\"\n", "/home/pat/Documents"},
      {"a longer name", "XDG_DOCUMENTS_DIR=\"$HOMELESS/a\"\n", "/home/pat/Documents"},
      {"braces", "XDG_DOCUMENTS_DIR=\"${HOME}/a\"\n", "/home/pat/Documents"},
      {"a tilde", "XDG_DOCUMENTS_DIR=\"~/a\"\n", "/home/pat/Documents"},
      {"without quotation marks", "XDG_DOCUMENTS_DIR=$HOME/a\n", "/home/pat/Documents"},
      {"apostrophes", "XDG_DOCUMENTS_DIR='/a'\n", "/home/pat/Documents"},
      {"export", "export XDG_DOCUMENTS_DIR=\"/a\"\n", "/home/pat/Documents"},
      {"cut short", "XDG_DOCUMENTS_DIR=\"$HOME/Pap", "/home/pat/Documents"},
      {"cut short before another line", "XDG_DOCUMENTS_DIR=\"/a\nXDG_DESKTOP_DIR=\"/b\"\n", "/home/pat/Documents"},
      {"cut short behind a backslash", "XDG_DOCUMENTS_DIR=\"/a\\", "/home/pat/Documents"},
      {"nothing", "XDG_DOCUMENTS_DIR=\"\"\n", "/home/pat/Documents"},
      {"an empty file", "", "/home/pat/Documents"},
  };
  for (const auto& row : rows) {
    configuration.write("user-dirs.dirs", row.text);
    EXPECT_EQ(kernel::documentsDirectory(), row.expected) << row.why;
  }
  configuration.write("user-dirs.dirs", std::string("XDG_DOCUMENTS_DIR=\"/a\0b\"\n", 26));
  EXPECT_EQ(kernel::documentsDirectory(), "/home/pat/Documents") << "a zero byte would end the path for the system";
  configuration.write("user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"$HOME\"\nXDG_DESKTOP_DIR=\"$HOME/Desk\"\n");
  set("HOME", "/");
  EXPECT_EQ(kernel::documentsDirectory(), "/");
  EXPECT_EQ(kernel::desktopDirectory(), "/Desk");
}

// The folder by the form of a line, as a regular expression; the last matching line has effect.
std::string documentsIn(const std::string& text) {
  static const std::regex form(
      "[ \\t]*XDG_DOCUMENTS_DIR[ \\t]*=[ \\t]*\"(\\$HOME(?=[/\"])|(?=/))((?:\\\\[^]|[^\"\\\\])*)\"[^]*");
  std::string answer = "/home/pat/Documents";
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::smatch found;
    if (!std::regex_match(line, found, form)) continue;
    std::string value = std::regex_replace(found[2].str(), std::regex("\\\\([^])"), "$1");
    if (value.find('\0') != value.npos) continue;
    while (value.ends_with('/')) value.pop_back();
    value = (found[1].length() > 0 ? "/home/pat" : "") + value;
    answer = value.empty() ? "/" : value;
  }
  return answer;
}

TEST_F(Paths, AnyTextInUserDirectoriesIsReadAsItsFormSays) {
  const TemporaryFolder configuration;
  set("XDG_CONFIG_HOME", configuration.path());
  const std::string pieces[] = {
      "XDG_DOCUMENTS_DIR", "=", "\"", "$HOME", "/", "\\", "\n", " ", "a", "#", "\t", "\r", "$", "\xE9", "..",
      std::string(1, '\0')};
  const std::string begin = "XDG_DOCUMENTS_DIR=\"";
  std::mt19937 random(4711);
  int own = 0;
  for (int round = 0; round < 1000; ++round) {
    std::string text;
    for (auto length = random() % 12; length > 0; --length) {
      text += random() % 3 == 0 ? begin : pieces[random() % std::size(pieces)];
    }
    if (random() % 2 == 0) text += "\n" + begin + "$HOME/" + pieces[random() % std::size(pieces)] + "\"";
    configuration.write("user-dirs.dirs", text);
    const std::string expected = documentsIn(text);
    ASSERT_EQ(kernel::documentsDirectory(), expected) << text;
    own += expected != "/home/pat/Documents";
  }
  EXPECT_GT(own, 200) << "of 1000 texts";
}

// Uses a fresh configuration folder, in which a test can put anything in the place of user-dirs.dirs.
class UserDirectories : public Paths {
 protected:
  UserDirectories() { set("XDG_CONFIG_HOME", configuration_.path()); }

  const TemporaryFolder configuration_;
  const std::string file_ = configuration_.path("user-dirs.dirs");
};

TEST_F(UserDirectories, WithoutAFileTheUsualFoldersCount) {
  EXPECT_EQ(kernel::documentsDirectory(), "/home/pat/Documents");
}

TEST_F(UserDirectories, AFolderInThePlaceOfTheFileCountsAsNone) {
  ASSERT_EQ(mkdir(file_.c_str(), 0700), 0);
  EXPECT_EQ(kernel::documentsDirectory(), "/home/pat/Documents");
}

TEST_F(UserDirectories, APipeInThePlaceOfTheFileIsNotWaitedFor) {
  ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
  EXPECT_EQ(kernel::documentsDirectory(), "/home/pat/Documents");
}

TEST_F(UserDirectories, ADeviceInThePlaceOfTheFileCountsAsNone) {
  ASSERT_EQ(symlink("/dev/zero", file_.c_str()), 0);
  EXPECT_EQ(kernel::documentsDirectory(), "/home/pat/Documents");
}

TEST_F(UserDirectories, AFileBehindALinkCounts) {
  configuration_.write("kept elsewhere", "XDG_DOCUMENTS_DIR=\"/data/papers\"\n");
  ASSERT_EQ(symlink("kept elsewhere", file_.c_str()), 0);
  EXPECT_EQ(kernel::documentsDirectory(), "/data/papers");
}

TEST_F(UserDirectories, ALinkToItselfCountsAsNone) {
  ASSERT_EQ(symlink("user-dirs.dirs", file_.c_str()), 0);
  EXPECT_EQ(kernel::documentsDirectory(), "/home/pat/Documents");
}

TEST_F(UserDirectories, AMegabyteIsReadAndMoreIsNot) {
  const std::string line = "XDG_DOCUMENTS_DIR=\"/data/papers\"\n";
  configuration_.write("user-dirs.dirs", std::string((1 << 20) - line.size(), '\n') + line);
  EXPECT_EQ(kernel::documentsDirectory(), "/data/papers");
  configuration_.write("user-dirs.dirs", std::string((1 << 20) - line.size() + 1, '\n') + line);
  EXPECT_EQ(kernel::documentsDirectory(), "/home/pat/Documents");
}

TEST_F(UserDirectories, AHundredMegabytesCostNoMoreThanOne) {
  RUN_IN_CHILD({
    configuration_.write("user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"/data/papers\"\n");
    ASSERT_EQ(truncate(file_.c_str(), 100 << 20), 0);
    rusage before{};
    rusage after{};
    ASSERT_EQ(getrusage(RUSAGE_SELF, &before), 0);
    EXPECT_EQ(kernel::documentsDirectory(), "/home/pat/Documents");
    ASSERT_EQ(getrusage(RUSAGE_SELF, &after), 0);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 16 << 10) << "KiB";
  });
}

TEST_F(UserDirectories, AFileThatMayNotBeReadCountsAsNone) {
  RUN_IN_CHILD({
    configuration_.write("user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"/data/papers\"\n");
    if (geteuid() == 0) {
      ASSERT_EQ(chown(file_.c_str(), norvik::test::userWithoutRights, norvik::test::userWithoutRights), 0);
      ASSERT_TRUE(norvik::test::becomeUserWithoutRights(configuration_.path()));
    }
    EXPECT_EQ(kernel::documentsDirectory(), "/data/papers");
    ASSERT_EQ(chmod(file_.c_str(), 0), 0);
    EXPECT_EQ(kernel::documentsDirectory(), "/home/pat/Documents");
  });
}

TEST_F(UserDirectories, AnotherUsersFileInASharedFolderCountsAsNone) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  configuration_.write("user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"/data/papers\"\n");
  ASSERT_EQ(chmod(configuration_.path().c_str(), 01777), 0);
  EXPECT_EQ(kernel::documentsDirectory(), "/data/papers");
  ASSERT_EQ(chown(file_.c_str(), norvik::test::userWithoutRights, norvik::test::userWithoutRights), 0);
  EXPECT_EQ(kernel::documentsDirectory(), "/home/pat/Documents");
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

TEST_F(Paths, WithoutAnyHomeThereAreNoFoldersButThoseThatAreNamed) {
  RUN_IN_CHILD({
    if (geteuid() == 0) {
      ASSERT_EQ(setuid(54321), 0);
    }
    if (getpwuid(geteuid())) return;  // this user has an account
    unsetenv("HOME");
    EXPECT_EQ(kernel::homeDirectory(), "/");
    EXPECT_EQ(kernel::libraryDirectory(), "");
    EXPECT_EQ(kernel::documentsDirectory(), "");
    EXPECT_EQ(kernel::downloadsDirectory(), "");
    EXPECT_EQ(kernel::desktopDirectory(), "");
    EXPECT_EQ(kernel::cachesDirectory(), "");
    set("XDG_DATA_HOME", "/data");
    set("XDG_CACHE_HOME", "/cache");
    EXPECT_EQ(kernel::libraryDirectory(), "/data");
    EXPECT_EQ(kernel::cachesDirectory(), "/cache");
    const TemporaryFolder configuration;
    set("XDG_CONFIG_HOME", configuration.path());
    configuration.write("user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"/papers\"\nXDG_DESKTOP_DIR=\"$HOME/Desk\"\n");
    EXPECT_EQ(kernel::documentsDirectory(), "/papers");
    EXPECT_EQ(kernel::desktopDirectory(), "");
  });
}

}  // namespace
}  // namespace norvik
