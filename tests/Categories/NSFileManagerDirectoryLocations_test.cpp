#include "NorvikCore/Categories/NSFileManager+DirectoryLocations.h"

#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "NorvikCore/platform/foundation/NSBundle.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/support/AnotherUser.h"
#include "tests/support/InChild.h"
#include "tests/support/OnThreads.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WarningRecorder.h"

namespace norvik {
namespace {

using test::becomeUserWithoutRights;
using test::RecordedWarning;
using test::TemporaryFolder;
using test::WarningRecorder;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr const char* executable = "categories_environment_tests";

/// HOME is a new folder and no XDG variable is set. For tests in a process of their own.
class Home {
 public:
  Home() {
    setenv("HOME", folder.path().c_str(), 1);
    for (const char* name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"}) unsetenv(name);
  }
  TemporaryFolder folder;

  [[nodiscard]] NSString path(const std::string& name) const { return folder.path(name); }
};

NSFileManager& files() { return NSFileManager::defaultManager(); }

std::optional<NSString> documents(const std::optional<NSString>& component, Ref<NSError>* error = nullptr) {
  return pathForDirectory(files(), NSDocumentDirectory, NSUserDomainMask, component, error);
}

unsigned modeOf(const NSString& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.bytes().c_str(), &status), 0) << path;
  return status.st_mode & 07777;
}

bool isFolder(const NSString& path) {
  bool answer = false;
  return files().fileExistsAtPath(path, &answer) && answer;
}

Ref<NSError> earlierError() { return NSError::errorWithDomain("Earlier", 7); }

void setBundle(const Value& value, const NSString& key) {
  NSBundle::mainBundle().setObject_forInfoDictionaryKey(value, key);
}

/// Creates no folder but raises the exception that a test chooses.
class HalfDoneManager : public NSFileManager {
  NK_OBJECT(HalfDoneManager, NSFileManager)

  bool createDirectoryAtPath(const NSString&, bool, const Ref<NSDictionary>&, Ref<NSError>* error) override {
    if (error) *error = NSError::errorWithDomain("Half done", 1);
    if (raisesPlatformException) NSException::raise(NSGenericException, "no folder today");
    throw std::runtime_error("no folder today");
  }
  bool raisesPlatformException = true;
};

TEST(NSFileManagerDirectoryLocations, HeaderExample) {
  RUN_IN_CHILD({
    const Home home;
    setBundle("payroll", "CFBundleExecutable");
    setBundle("payroll-3", "NKBundleExecutablePreviousVersion");
    EXPECT_EQ(applicationSupportDirectory(files()), home.path(".local/share/payroll"));
    EXPECT_TRUE(isFolder(home.path(".local/share/payroll")));
    EXPECT_EQ(applicationSupportDirectoryPreviousVersion(files()), home.path(".local/share/payroll-3"));
    EXPECT_FALSE(isFolder(home.path(".local/share/payroll-3")));
  });
}

TEST(NSFileManagerDirectoryLocations, APathIsTheFirstOfTheDomainsWithTheComponentAppended) {
  RUN_IN_CHILD({
    const Home home;
    Ref<NSError> error;
    EXPECT_EQ(documents("Payroll", &error), home.path("Documents/Payroll"));
    EXPECT_EQ(documents(std::nullopt, &error), home.path("Documents"));
    EXPECT_EQ(pathForDirectory(files(), NSApplicationSupportDirectory, NSAllDomainsMask, "payroll", &error),
              home.path(".local/share/payroll"));
    EXPECT_EQ(pathForDirectory(files(), NSApplicationSupportDirectory, NSLocalDomainMask | NSSystemDomainMask),
              NSString("/usr/local/share"));
    EXPECT_FALSE(error);
    EXPECT_TRUE(std::filesystem::is_empty(home.folder.path())) << "nothing is made";
  });
}

TEST(NSFileManagerDirectoryLocations, AComponentIsAppendedAsAPathIs) {
  RUN_IN_CHILD({
    setenv("HOME", "/home/pat", 1);
    unsetenv("XDG_CONFIG_HOME");
    const struct {
      const char *component, *expected;
    } rows[] = {
        {"", "/home/pat/Documents"},
        {"/", "/home/pat/Documents"},
        {"Payroll", "/home/pat/Documents/Payroll"},
        {"Payroll/", "/home/pat/Documents/Payroll"},
        {"/Payroll", "/home/pat/Documents/Payroll"},
        {"Payroll/2024", "/home/pat/Documents/Payroll/2024"},
        {".", "/home/pat/Documents/."},
        {"..", "/home/pat/Documents/.."},
        {"../Pay", "/home/pat/Documents/../Pay"},
        {"~", "/home/pat/Documents/~"},
        {" ", "/home/pat/Documents/ "},
        {"P\xC3\xA2ie", "/home/pat/Documents/P\xC3\xA2ie"},
        {"\xE9t\xE9", "/home/pat/Documents/\xE9t\xE9"},
    };
    for (const auto& row : rows) EXPECT_EQ(documents(row.component), NSString(row.expected)) << row.component;
  });
}

TEST(NSFileManagerDirectoryLocations, WithoutAPathThereIsTheDirectoryError) {
  const struct {
    NSSearchPathDirectory kind;
    NSSearchPathDomainMask domain;
  } rows[] = {
      {NSDocumentDirectory, NSSystemDomainMask},
      {NSApplicationSupportDirectory, NSNetworkDomainMask},
      {static_cast<NSSearchPathDirectory>(4711), NSAllDomainsMask},
      {NSDocumentDirectory, static_cast<NSSearchPathDomainMask>(0)},
  };
  for (const auto& row : rows) {
    Ref<NSError> error;
    EXPECT_EQ(pathForDirectory(files(), row.kind, row.domain, "payroll", &error), std::nullopt);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), "DirectoryLocationDomain");
    EXPECT_EQ(error->domain(), DirectoryLocationDomain);
    EXPECT_EQ(error->code(), 0);
    EXPECT_EQ(error->userInfo()->count(), 3U);
    EXPECT_EQ(error->userInfo()->objectForKey(NSLocalizedDescriptionKey),
              Value("No path found for directory in domain."));
    EXPECT_EQ(error->userInfo()->objectForKey("NSSearchPathDirectory"), Value(static_cast<std::uint64_t>(row.kind)));
    EXPECT_EQ(error->userInfo()->objectForKey("NSSearchPathDomainMask"), Value(static_cast<std::uint64_t>(row.domain)));
    EXPECT_EQ(findOrCreateDirectory(files(), row.kind, row.domain, "payroll", &(error = nullptr)), std::nullopt);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), "DirectoryLocationDomain");
  }
}

TEST(NSFileManagerDirectoryLocations, WithoutAnErrorToFillNothingIsSaid) {
  WarningRecorder warnings;
  EXPECT_EQ(pathForDirectory(files(), NSDocumentDirectory, NSSystemDomainMask, "payroll", nullptr), std::nullopt);
  EXPECT_EQ(pathForDirectory(files(), NSDocumentDirectory, NSSystemDomainMask), std::nullopt);
  EXPECT_EQ(findOrCreateDirectory(files(), NSDocumentDirectory, NSSystemDomainMask), std::nullopt);
  EXPECT_THAT(warnings.take(), IsEmpty());
}

TEST(NSFileManagerDirectoryLocations, APathThatIsFoundLeavesTheErrorAndAFolderThatIsMadeEmptiesIt) {
  RUN_IN_CHILD({
    const Home home;
    Ref<NSError> error = earlierError();
    EXPECT_EQ(documents("Payroll", &error), home.path("Documents/Payroll"));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), "Earlier");
    EXPECT_EQ(findOrCreateDirectory(files(), NSDocumentDirectory, NSUserDomainMask, "Payroll", &error),
              home.path("Documents/Payroll"));
    EXPECT_FALSE(error) << "made";
    error = earlierError();
    EXPECT_EQ(findOrCreateDirectory(files(), NSDocumentDirectory, NSUserDomainMask, "Payroll", &error),
              home.path("Documents/Payroll"));
    EXPECT_FALSE(error) << "found";
  });
}

TEST(NSFileManagerDirectoryLocations, AFolderIsMadeWithThoseAboveIt) {
  RUN_IN_CHILD({
    const Home home;
    EXPECT_EQ(findOrCreateDirectory(files(), NSApplicationSupportDirectory, NSUserDomainMask, "payroll/2024/April"),
              home.path(".local/share/payroll/2024/April"));
    EXPECT_TRUE(isFolder(home.path(".local/share/payroll/2024/April")));
  });
}

TEST(NSFileManagerDirectoryLocations, AComponentOfTwoFullStopsLeadsOutOfTheFolder) {
  RUN_IN_CHILD({
    const Home home;
    EXPECT_EQ(findOrCreateDirectory(files(), NSDocumentDirectory, NSUserDomainMask, "../Pay"),
              home.path("Documents/../Pay"));
    EXPECT_TRUE(isFolder(home.path("Pay")));
    EXPECT_TRUE(isFolder(home.path("Documents")));
  });
}

TEST(NSFileManagerDirectoryLocations, AComponentWithAZeroNamesNoFolder) {
  RUN_IN_CHILD({
    const Home home;
    Ref<NSError> error;
    EXPECT_EQ(findOrCreateDirectory(files(), NSDocumentDirectory, NSUserDomainMask,
                                    NSString(std::string_view("Pay\0roll", 8)), &error),
              std::nullopt);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), NSPOSIXErrorDomain);
    EXPECT_EQ(error->code(), ENOENT);
    EXPECT_TRUE(std::filesystem::is_empty(home.folder.path()));
  });
}

TEST(NSFileManagerDirectoryLocations, AFileInTheWayIsTheErrorOfTheSystem) {
  RUN_IN_CHILD({
    const Home home;
    home.folder.write("Documents");
    Ref<NSError> error;
    EXPECT_EQ(findOrCreateDirectory(files(), NSDocumentDirectory, NSUserDomainMask, std::nullopt, &error),
              std::nullopt);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), NSPOSIXErrorDomain);
    EXPECT_EQ(error->code(), EEXIST);
    EXPECT_EQ(error->userInfo()->objectForKey(NSFilePathErrorKey), Value(home.path("Documents")));
    EXPECT_EQ(findOrCreateDirectory(files(), NSDocumentDirectory, NSUserDomainMask, "Payroll", &error), std::nullopt);
    EXPECT_EQ(error->code(), EEXIST) << "the file is above the folder";
    EXPECT_EQ(findOrCreateDirectory(files(), NSDocumentDirectory, NSUserDomainMask), std::nullopt);
  });
}

TEST(NSFileManagerDirectoryLocations, ALinkToAFolderIsFollowedAndOneToNothingIsInTheWay) {
  RUN_IN_CHILD({
    const Home home;
    std::filesystem::create_directory(home.folder.path("elsewhere"));
    std::filesystem::create_symlink("elsewhere", home.folder.path("Documents"));
    EXPECT_EQ(findOrCreateDirectory(files(), NSDocumentDirectory, NSUserDomainMask, "Payroll"),
              home.path("Documents/Payroll"));
    EXPECT_TRUE(isFolder(home.path("elsewhere/Payroll")));
    std::filesystem::remove(home.folder.path("Documents"));
    std::filesystem::create_symlink("nowhere", home.folder.path("Documents"));
    Ref<NSError> error;
    EXPECT_EQ(findOrCreateDirectory(files(), NSDocumentDirectory, NSUserDomainMask, std::nullopt, &error),
              std::nullopt);
    EXPECT_EQ(error->code(), EEXIST);
  });
}

TEST(NSFileManagerDirectoryLocations, APlatformExceptionIsSwallowedAndLeavesNoError) {
  RUN_IN_CHILD({
    const Home home;
    const auto manager = make<HalfDoneManager>();
    Ref<NSError> error = earlierError();
    EXPECT_EQ(findOrCreateDirectory(*manager, NSDocumentDirectory, NSUserDomainMask, "Payroll", &error), std::nullopt);
    EXPECT_FALSE(error);
    EXPECT_EQ(findOrCreateDirectory(*manager, NSDocumentDirectory, NSUserDomainMask, "Payroll"), std::nullopt);
    WarningRecorder warnings;
    EXPECT_EQ(applicationSupportDirectory(*manager), std::nullopt);
    const std::vector<RecordedWarning> taken = warnings.take();
    ASSERT_THAT(taken, SizeIs(1));
    EXPECT_EQ(taken[0].text, "Unable to find or create application support directory:\n(null)");
  });
}

TEST(NSFileManagerDirectoryLocations, AnotherExceptionPasses) {
  RUN_IN_CHILD({
    const Home home;
    const auto manager = make<HalfDoneManager>();
    manager->raisesPlatformException = false;
    EXPECT_THROW(findOrCreateDirectory(*manager, NSDocumentDirectory, NSUserDomainMask, "Payroll"), std::runtime_error);
  });
}

TEST(NSFileManagerDirectoryLocations, TheApplicationsFolderIsNamedAfterItsExecutable) {
  RUN_IN_CHILD({
    const Home home;
    WarningRecorder warnings;
    EXPECT_EQ(applicationSupportDirectory(files()), home.path(std::string(".local/share/") + executable));
    EXPECT_TRUE(isFolder(home.path(std::string(".local/share/") + executable)));
    EXPECT_EQ(applicationSupportDirectory(files()), home.path(std::string(".local/share/") + executable)) << "again";
    setenv("XDG_DATA_HOME", home.folder.path("data").c_str(), 1);
    EXPECT_EQ(applicationSupportDirectory(files()), home.path(std::string("data/") + executable));
    EXPECT_THAT(warnings.take(), IsEmpty());
  });
}

TEST(NSFileManagerDirectoryLocations, AnExecutableWithoutANameMeansTheFolderItself) {
  RUN_IN_CHILD({
    const Home home;
    for (const Value& name : {Value(""), Value(42), Value::null()}) {
      setBundle(name, "CFBundleExecutable");
      EXPECT_EQ(applicationSupportDirectory(files()), home.path(".local/share"));
    }
  });
}

TEST(NSFileManagerDirectoryLocations, WithoutAnEarlierVersionItsFolderIsTheOneForAllApplications) {
  RUN_IN_CHILD({
    const Home home;
    WarningRecorder warnings;
    EXPECT_EQ(applicationSupportDirectoryPreviousVersion(files()), home.path(".local/share"));
    setBundle("payroll-3", "NKBundleExecutablePreviousVersion");
    EXPECT_EQ(applicationSupportDirectoryPreviousVersion(files()), home.path(".local/share/payroll-3"));
    setBundle(3, "NKBundleExecutablePreviousVersion");
    EXPECT_EQ(applicationSupportDirectoryPreviousVersion(files()), home.path(".local/share"));
    EXPECT_TRUE(std::filesystem::is_empty(home.folder.path())) << "nothing is made";
    EXPECT_THAT(warnings.take(), IsEmpty());
  });
}

TEST(NSFileManagerDirectoryLocations, TheUsersDocumentsAreWhereTheirDesktopHasThem) {
  RUN_IN_CHILD({
    const Home home;
    EXPECT_EQ(userDocumentsDirectory(files()), home.path("Documents"));
    EXPECT_TRUE(isFolder(home.path("Documents")));
    std::filesystem::create_directory(home.folder.path(".config"));
    home.folder.write(".config/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"$HOME/My Papers\"\n");
    EXPECT_EQ(userDocumentsDirectory(files()), home.path("My Papers"));
    EXPECT_TRUE(isFolder(home.path("My Papers")));
  });
}

TEST(NSFileManagerDirectoryLocations, AFailureIsAWarningWithTheError) {
  RUN_IN_CHILD({
    const Home home;
    home.folder.write(".local");
    home.folder.write("Documents");
    WarningRecorder warnings;
    EXPECT_EQ(applicationSupportDirectory(files()), std::nullopt);
    EXPECT_EQ(userDocumentsDirectory(files()), std::nullopt);
    const std::vector<RecordedWarning> taken = warnings.take();
    ASSERT_THAT(taken, SizeIs(2));
    EXPECT_EQ(taken[0].text.substr(0, 56), "Unable to find or create application support directory:\n");
    EXPECT_THAT(taken[0].text, HasSubstr("create folder " + home.folder.path(".local") + ": File exists"));
    EXPECT_EQ(taken[0].function, "applicationSupportDirectory");
    EXPECT_EQ(taken[1].text.substr(0, 51), "Unable to find or create user documents directory:\n");
    EXPECT_THAT(taken[1].text, HasSubstr("create folder " + home.folder.path("Documents") + ": File exists"));
    EXPECT_EQ(taken[1].function, "userDocumentsDirectory");
    for (const RecordedWarning& warning : taken) {
      EXPECT_EQ(warning.file, "Categories/NSFileManager+DirectoryLocations");
      EXPECT_EQ(warning.level, 3);
      EXPECT_EQ(warning.flag, 2);
      EXPECT_EQ(warning.context, 0);
      EXPECT_FALSE(warning.hasTag);
    }
  });
}

TEST(NSFileManagerDirectoryLocations, WithoutAHomeThereIsNoPath) {
  RUN_IN_CHILD({
    for (const char* name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME"}) unsetenv(name);
    if (geteuid() == 0) {
      ASSERT_EQ(setuid(54321), 0);
    }
    if (getpwuid(geteuid())) return;  // this user has an account
    for (const char* home : {"", "relative/home", "~"}) {
      setenv("HOME", home, 1);
      Ref<NSError> error;
      EXPECT_EQ(documents("Payroll", &error), std::nullopt) << home;
      ASSERT_TRUE(error);
      EXPECT_EQ(error->domain(), "DirectoryLocationDomain");
      EXPECT_EQ(applicationSupportDirectoryPreviousVersion(files()), std::nullopt) << home;
    }
    unsetenv("HOME");
    WarningRecorder warnings;
    EXPECT_EQ(applicationSupportDirectory(files()), std::nullopt);
    EXPECT_EQ(userDocumentsDirectory(files()), std::nullopt);
    const std::vector<RecordedWarning> taken = warnings.take();
    ASSERT_THAT(taken, SizeIs(2));
    EXPECT_THAT(taken[0].text, HasSubstr("No path found for directory in domain."));
    EXPECT_THAT(taken[1].text, HasSubstr("No path found for directory in domain."));
  });
}

TEST(NSFileManagerDirectoryLocations, AHomeThatMayNotBeWrittenToIsAFailure) {
  RUN_IN_CHILD({
    const Home home;
    if (geteuid() == 0) {
      ASSERT_TRUE(becomeUserWithoutRights(home.folder.path()));
    }
    ASSERT_EQ(chmod(home.folder.path().c_str(), 0500), 0);
    Ref<NSError> error;
    EXPECT_EQ(findOrCreateDirectory(files(), NSDocumentDirectory, NSUserDomainMask, std::nullopt, &error),
              std::nullopt);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), EACCES);
    EXPECT_EQ(applicationSupportDirectory(files()), std::nullopt);
    EXPECT_EQ(applicationSupportDirectoryPreviousVersion(files()), home.path(".local/share"));
  });
}

TEST(NSFileManagerDirectoryLocations, NewFoldersHaveWhatTheUmaskLeaves) {
  const struct {
    mode_t mask;
    unsigned expected;
  } rows[] = {{0, 0777}, {022, 0755}, {077, 0700}};
  for (const auto& row : rows) {
    RUN_IN_CHILD({
      const Home home;
      umask(row.mask);
      ASSERT_NE(applicationSupportDirectory(files()), std::nullopt);
      EXPECT_EQ(modeOf(home.path(".local")), row.expected);
      EXPECT_EQ(modeOf(home.path(".local/share")), row.expected);
      EXPECT_EQ(modeOf(home.path(std::string(".local/share/") + executable)), row.expected);
      ASSERT_EQ(chmod(home.folder.path(".local").c_str(), 0711), 0);
      ASSERT_NE(applicationSupportDirectory(files()), std::nullopt);
      EXPECT_EQ(modeOf(home.path(".local")), 0711U) << "one that is there is left as it is";
    });
  }
}

TEST(NSFileManagerDirectoryLocations, ThreadsThatAskAtOnceAllGetTheFolder) {
  RUN_IN_CHILD({
    const Home home;
    test::onThreads(8, [&](int) {
      for (int round = 0; round < 50; ++round) {
        const NSString component = stringWithFormat("payroll/%d/April", round);
        EXPECT_EQ(findOrCreateDirectory(files(), NSApplicationSupportDirectory, NSUserDomainMask, component),
                  home.path(".local/share").stringByAppendingPathComponent(component));
      }
    });
  });
}

}  // namespace
}  // namespace norvik
