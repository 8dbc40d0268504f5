#include "NorvikCore/platform/foundation/NSBundle.h"

#include "NorvikCore/platform/kernel/HostInfo.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "tests/support/AnotherUser.h"
#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <thread>

namespace norvik {
namespace {

using test::TemporaryFolder;

TEST(NSBundle, HeaderExample) {
  RUN_IN_CHILD({
    NSBundle& bundle = NSBundle::mainBundle();
    bundle.setObject_forInfoDictionaryKey("uk.co.norvik.payroll", "CFBundleIdentifier");
    EXPECT_EQ(bundle.bundleIdentifier(), NSString("uk.co.norvik.payroll"));
    EXPECT_EQ(bundle.objectForInfoDictionaryKey("CFBundleExecutable"), Value("foundation_system_tests"));
  });
}

TEST(NSBundle, TheMainBundleIsThatOfTheRunningProgram) {
  NSBundle& bundle = NSBundle::mainBundle();
  EXPECT_EQ(&bundle, &NSBundle::mainBundle());
  EXPECT_EQ(bundle.executablePath(), NSString(kernel::executablePath()));
  EXPECT_TRUE(bundle.executablePath().hasSuffix("/foundation_system_tests"));
  EXPECT_EQ(bundle.executablePath(), NSString(bundle.bundlePath().str() + "/foundation_system_tests"));
}

TEST(NSBundle, AProgramThatSaysNothingHasNoIdentifier) {
  RUN_IN_CHILD({
    unsetenv("NORVIK_BUNDLE_IDENTIFIER");
    EXPECT_EQ(NSBundle::mainBundle().bundleIdentifier(), std::nullopt);
    EXPECT_TRUE(NSBundle::mainBundle().objectForInfoDictionaryKey("CFBundleIdentifier").isAbsent());
    EXPECT_EQ(NSBundle::mainBundle().infoDictionary()->count(), 2U);
  });
}

TEST(NSBundle, TheEnvironmentGivesOneRunAnIdentifier) {
  RUN_IN_CHILD({
    setenv("NORVIK_BUNDLE_IDENTIFIER", "uk.co.norvik.trial", 1);
    EXPECT_EQ(NSBundle::mainBundle().bundleIdentifier(), NSString("uk.co.norvik.trial"));
    EXPECT_EQ(NSBundle::mainBundle().infoDictionary()->objectForKey("CFBundleIdentifier"), Value("uk.co.norvik.trial"));
    const auto other = NSBundle::bundleWithExecutablePath("/nowhere/bin/other");
    EXPECT_EQ(other->bundleIdentifier(), std::nullopt);
    setenv("NORVIK_BUNDLE_IDENTIFIER", "", 1);
    EXPECT_EQ(NSBundle::mainBundle().bundleIdentifier(), std::nullopt);
  });
}

TEST(NSBundle, WhatTheProgramSetsComesBeforeTheEnvironment) {
  RUN_IN_CHILD({
    setenv("NORVIK_BUNDLE_IDENTIFIER", "uk.co.norvik.trial", 1);
    NSBundle::mainBundle().setObject_forInfoDictionaryKey("uk.co.norvik.payroll", "CFBundleIdentifier");
    EXPECT_EQ(NSBundle::mainBundle().bundleIdentifier(), NSString("uk.co.norvik.payroll"));
    NSBundle::mainBundle().setObject_forInfoDictionaryKey(Value(), "CFBundleIdentifier");
    EXPECT_EQ(NSBundle::mainBundle().bundleIdentifier(), NSString("uk.co.norvik.trial"));
  });
}

TEST(NSBundle, TheInformationFileLiesNextToTheExecutable) {
  const TemporaryFolder folder;
  folder.write("payroll.info",
               "# Norvik Payroll\n"
               "\n"
               "CFBundleIdentifier = uk.co.norvik.payroll\r\n"
               "CFBundleName=Norvik Payroll\n"
               "  NKBundleExecutablePreviousVersion\t=\tpayroll-3  \n"
               "NKFormula = a = b\n"
               "NKEmpty =\n"
               "CFBundleShortVersionString = 4.2");
  const auto bundle = NSBundle::bundleWithExecutablePath(NSString(folder.path("payroll")));
  EXPECT_EQ(bundle->bundleIdentifier(), NSString("uk.co.norvik.payroll"));
  EXPECT_EQ(bundle->bundlePath(), NSString(folder.path()));
  const struct {
    const char* key;
    const char* expected;
  } rows[] = {{"CFBundleExecutable", "payroll"},
              {"CFBundleName", "Norvik Payroll"},
              {"NKBundleExecutablePreviousVersion", "payroll-3"},
              {"NKFormula", "a = b"},
              {"NKEmpty", ""},
              {"CFBundleShortVersionString", "4.2"}};
  for (const auto& row : rows) EXPECT_EQ(bundle->objectForInfoDictionaryKey(row.key), Value(row.expected)) << row.key;
  EXPECT_EQ(bundle->infoDictionary()->count(), 7U);
}

TEST(NSBundle, AnInstalledProgramHasItsInformationInTheShareFolder) {
  const TemporaryFolder folder;
  for (const char* made : {"bin", "share", "share/payroll"}) ASSERT_EQ(mkdir(folder.path(made).c_str(), 0755), 0);
  folder.write("share/payroll/payroll.info", "CFBundleIdentifier = uk.co.norvik.installed\n");
  const NSString path(folder.path("bin/payroll"));
  EXPECT_EQ(NSBundle::bundleWithExecutablePath(path)->bundleIdentifier(), NSString("uk.co.norvik.installed"));
  folder.write("bin/payroll.info", "CFBundleName = Payroll\n");
  EXPECT_EQ(NSBundle::bundleWithExecutablePath(path)->bundleIdentifier(), std::nullopt) << "the nearer file counts";
}

TEST(NSBundle, AnEmptyIdentifierIsNone) {
  const auto bundle = NSBundle::bundleWithExecutablePath("/nowhere/payroll");
  bundle->setObject_forInfoDictionaryKey("", "CFBundleIdentifier");
  EXPECT_EQ(bundle->bundleIdentifier(), std::nullopt);
}

TEST(NSBundle, ALineWithoutAnEqualsSignIsToldOnTheConsole) {
  const TemporaryFolder folder;
  const std::string file = folder.write("payroll.info", "CFBundleName = Payroll\n[Payroll]\nNKKey = kept\n");
  const kernel::SystemLogCapture console;
  const auto bundle = NSBundle::bundleWithExecutablePath(NSString(folder.path("payroll")));
  EXPECT_EQ(bundle->objectForInfoDictionaryKey("NKKey"), Value("kept"));
  EXPECT_EQ(console.lines(), std::vector<std::string>{"The bundle's information " + file + " has no '=' in line 2"});
}

TEST(NSBundle, AFileThatCannotBeReadIsToldOnTheConsole) {
  const TemporaryFolder folder;
  const std::string loop = folder.path("payroll.info");
  ASSERT_EQ(symlink("payroll.info", loop.c_str()), 0);
  const kernel::SystemLogCapture console;
  const auto bundle = NSBundle::bundleWithExecutablePath(NSString(folder.path("payroll")));
  EXPECT_EQ(bundle->bundleIdentifier(), std::nullopt);
  EXPECT_EQ(console.lines(), std::vector<std::string>{"Unable to read the bundle's information " + loop +
                                                      ": Too many levels of symbolic links"});
}

TEST(NSBundle, WhatIsNoFileIsNotReadAndIsToldOnTheConsole) {
  const struct {
    const char *name, *why;
  } rows[] = {{"pipe", "No such device or address"}, {"folder", "Is a directory"}, {"large", "File too large"}};
  const TemporaryFolder folder;
  ASSERT_EQ(mkfifo(folder.path("pipe.info").c_str(), 0600), 0);
  ASSERT_EQ(mkdir(folder.path("folder.info").c_str(), 0700), 0);
  folder.write("large.info", "CFBundleIdentifier = uk.co.norvik.payroll\n");
  ASSERT_EQ(truncate(folder.path("large.info").c_str(), 100 << 20), 0);
  for (const auto& row : rows) {
    const kernel::SystemLogCapture console;
    const auto bundle = NSBundle::bundleWithExecutablePath(NSString(folder.path(row.name)));
    EXPECT_EQ(bundle->bundleIdentifier(), std::nullopt) << row.name;
    EXPECT_EQ(console.lines(), std::vector<std::string>{"Unable to read the bundle's information " +
                                                        folder.path(row.name) + ".info: " + row.why});
  }
}

TEST(NSBundle, AnInformationFileMayBeBehindALink) {
  const TemporaryFolder folder;
  folder.write("kept", "CFBundleIdentifier = uk.co.norvik.payroll\n");
  ASSERT_EQ(symlink("kept", folder.path("payroll.info").c_str()), 0);
  const auto bundle = NSBundle::bundleWithExecutablePath(NSString(folder.path("payroll")));
  EXPECT_EQ(bundle->bundleIdentifier(), NSString("uk.co.norvik.payroll"));
}

TEST(NSBundle, AnotherUsersFileInASharedFolderIsNotRead) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  const TemporaryFolder folder;
  const std::string file = folder.write("payroll.info", "CFBundleIdentifier = uk.co.norvik.payroll\n");
  ASSERT_EQ(chmod(folder.path().c_str(), 01777), 0);
  const NSString path(folder.path("payroll"));
  EXPECT_EQ(NSBundle::bundleWithExecutablePath(path)->bundleIdentifier(), NSString("uk.co.norvik.payroll"));
  ASSERT_EQ(chown(file.c_str(), test::userWithoutRights, test::userWithoutRights), 0);
  const kernel::SystemLogCapture console;
  EXPECT_EQ(NSBundle::bundleWithExecutablePath(path)->bundleIdentifier(), std::nullopt);
  EXPECT_EQ(console.lines(),
            std::vector<std::string>{"Unable to read the bundle's information " + file + ": Operation not permitted"});
}

TEST(NSBundle, WithoutAWholePathTheCurrentFolderIsNotSearched) {
  RUN_IN_CHILD({
    const TemporaryFolder folder;
    folder.write("payroll.info", "CFBundleIdentifier = uk.co.norvik.payroll\n");
    ASSERT_EQ(chdir(folder.path().c_str()), 0);
    for (const char* path : {"payroll", "./payroll"}) {
      const auto bundle = NSBundle::bundleWithExecutablePath(path);
      EXPECT_EQ(bundle->bundleIdentifier(), std::nullopt) << path;
      EXPECT_EQ(bundle->objectForInfoDictionaryKey("CFBundleExecutable"), Value("payroll")) << path;
    }
  });
}

TEST(NSBundle, ValuesAreSetAndReadFromSeveralThreads) {
  const auto bundle = NSBundle::bundleWithExecutablePath("/nowhere/payroll");
  std::thread writer([&] {
    for (int i = 0; i < 1000; ++i) bundle->setObject_forInfoDictionaryKey(i, "NKCount");
  });
  for (int i = 0; i < 1000; ++i) {
    const Value seen = bundle->objectForInfoDictionaryKey("NKCount");
    ASSERT_TRUE(seen.isAbsent() || seen.isNumber());
  }
  writer.join();
  EXPECT_EQ(bundle->objectForInfoDictionaryKey("NKCount"), Value(999));
}

}  // namespace
}  // namespace norvik
