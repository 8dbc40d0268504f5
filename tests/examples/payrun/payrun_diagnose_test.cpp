// The contents of the pay run's report for a support request, and the facts that it must not reveal.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "NorvikCore/constants/PreferenceKeys.h"
#include "NorvikCore/platform/collections/NSData.h"
#include "NorvikCore/platform/foundation/NSUserDefaults.h"
#include "NorvikCore/platform/values/Decimal_literal.h"
#include "tests/examples/payrun/PayrunProgram.h"
#include "tests/support/AnotherUser.h"
#include "tests/support/ChildProgram.h"
#include "tests/support/InChild.h"

namespace payrun_test {
namespace {

using namespace norvik;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

/// The lines below a heading, without their two leading spaces.
std::vector<std::string> section(const Result& result, const std::string& heading) {
  std::vector<std::string> lines;
  bool isInside = false;
  for (const std::string& line : linesOf(result.out)) {
    if (isInside && line.empty()) break;
    if (isInside) lines.push_back(line.substr(2));
    isInside = isInside || line == heading;
  }
  return lines;
}

Result diagnose(const TemporaryFolder& home) {
  ::unsetenv("NORVIK_DEFAULTS_FOLDER");
  const Result result = runPayrun(home, {"--diagnose"});
  EXPECT_EQ(result.status, 0);
  return result;
}

Ref<NSUserDefaults> preferencesIn(const TemporaryFolder& home, const char* application = "payrun") {
  return make<NSUserDefaults>(NSString(home.path(".config/" + std::string(application) + "/defaults.sqlite")));
}

TEST(PayrunDiagnose, EverySectionIsThereAndNothingIsMade) {
  const TemporaryFolder home;
  const Result result = diagnose(home);
  EXPECT_EQ(result.err, "");
  std::vector<std::string> headings;
  for (const std::string& line : linesOf(result.out)) {
    if (!line.empty() && line[0] != ' ') headings.push_back(line);
  }
  EXPECT_THAT(headings, ElementsAre("payrun, for a support request; it has names of folders and of preferences in it",
                                    "Program", "Folders", "Versions", "Machine", "Open files", "Preferences"));
  EXPECT_TRUE(std::filesystem::is_empty(home.path()));
}

TEST(PayrunDiagnose, TheTextsOfASectionBeginInOneColumn) {
  const TemporaryFolder home;
  for (const std::string& line : linesOf(diagnose(home).out)) {
    if (line.empty() || line[0] != ' ') continue;
    ASSERT_GT(line.size(), 24U) << line;
    EXPECT_EQ(line.substr(22, 2), "  ") << line;
    EXPECT_NE(line[24], ' ') << line;
  }
}

TEST(PayrunDiagnose, TheProgramAndTheVersionsAreThoseThatRun) {
  const TemporaryFolder home;
  const Result result = diagnose(home);
  EXPECT_THAT(section(result, "Program"),
              ElementsAre(MatchesRegex("version {15}[0-9]+\\.[0-9]+\\.[0-9]+"),
                          "executable            " + std::string(PAYRUN_PROGRAM), "identifier            none",
                          MatchesRegex("process {15}[0-9]+")));
  EXPECT_THAT(
      section(result, "Versions"),
      ElementsAre(MatchesRegex("NorvikCore {12}[0-9]+\\.[0-9]+\\.[0-9]+"), MatchesRegex("ICU {19}[0-9]+\\.[0-9.]+"),
                  MatchesRegex("SQLite {16}3\\.[0-9]+\\.[0-9.]+"), "vocabulary            1.0",
                  MatchesRegex("operating system {6}[0-9]+\\.[0-9]+\\.[0-9]+"), HasSubstr("Linux ")));
  EXPECT_THAT(section(result, "Machine"),
              ElementsAre(MatchesRegex("model {17}.+"), MatchesRegex("processors {12}[1-9][0-9]*")));
}

TEST(PayrunDiagnose, FoldersAreToldWithTheirState) {
  const TemporaryFolder home;
  std::filesystem::create_directories(home.path(".local/share"));
  home.write("Documents");
  std::filesystem::create_symlink("nowhere", home.path(".cache"));
  const std::string at = home.path();
  EXPECT_THAT(
      section(diagnose(home), "Folders"),
      ElementsAre("home                  " + at + " (exists)",
                  "application support   " + at + "/.local/share/payrun (does not exist yet)",
                  "documents             " + at + "/Documents (not a folder: something else has its name)",
                  "caches                " + at + "/.cache (not a folder: a link that leads nowhere has its name)",
                  "temporary             " + std::filesystem::temp_directory_path().string() + " (exists)",
                  "logs                  " + at + "/.local/share/Logs/payrun (does not exist yet)"));
}

TEST(PayrunDiagnose, AHomeThatIsNoFolderIsTold) {
  const TemporaryFolder folder;
  const std::string file = folder.write("file");
  ASSERT_EQ(::chmod(file.c_str(), 0755), 0);
  norvik::test::ChildProgram run({"/usr/bin/env", "-u", "XDG_DATA_HOME", "HOME=" + file, PAYRUN_PROGRAM, "--diagnose"});
  Result result;
  result.out = run.readAll();
  EXPECT_EQ(run.wait(), 0);
  EXPECT_THAT(section(result, "Folders"),
              testing::IsSupersetOf({"home                  " + file + " (not a folder: something else has its name)",
                                     "application support   " + file +
                                         "/.local/share/payrun (does not exist, cannot be created: Not a directory)"}));
}

TEST(PayrunDiagnose, SecretsOfTheEnvironmentAreNotTold) {
  const TemporaryFolder home;
  const char* const variables[] = {"PGPASSWORD", "PGSERVICE", "DATABASE_URL", "AWS_SECRET_ACCESS_KEY", "http_proxy"};
  for (const char* name : variables) ::setenv(name, "postgresql://clerk:hunter2@db/pay", 1);
  const Result result = diagnose(home);
  for (const char* name : variables) ::unsetenv(name);
  EXPECT_THAT(result.out + result.err, Not(HasSubstr("hunter2")));
}

TEST(PayrunDiagnose, AHomeThatMayNotBeWrittenToIsTold) {
  RUN_IN_CHILD({
    const TemporaryFolder home;
    if (::geteuid() == 0) {
      ASSERT_TRUE(norvik::test::becomeUserWithoutRights(home.path()));
    }
    if (::access(PAYRUN_PROGRAM, X_OK) != 0) return;  // the other user may not run the program
    ASSERT_EQ(::chmod(home.path().c_str(), 0500), 0);
    const Result result = diagnose(home);
    ASSERT_EQ(::chmod(home.path().c_str(), 0700), 0);
    const std::string at = home.path();
    EXPECT_THAT(
        section(result, "Folders"),
        testing::IsSupersetOf({"home                  " + at + " (exists, cannot be used: Permission denied)",
                               "application support   " + at +
                                   "/.local/share/payrun (does not exist, cannot be created: Permission denied)"}));
  });
}

TEST(PayrunDiagnose, OpenFilesAreChecked) {
  const TemporaryFolder home;
  EXPECT_THAT(section(diagnose(home), "Open files"),
              ElementsAre("check                 1, all are valid", MatchesRegex("valid files {11}[1-9][0-9]*")));
}

TEST(PayrunDiagnose, WithoutPreferencesThereAreNone) {
  const TemporaryFolder home;
  EXPECT_THAT(
      section(diagnose(home), "Preferences"),
      ElementsAre("database              " + home.path(".config/payrun/defaults.sqlite"), "stored                0"));
}

TEST(PayrunDiagnose, NamesOfPreferencesAreToldAndOnlyHarmlessValues) {
  const TemporaryFolder home;
  const Ref<NSUserDefaults> defaults = preferencesIn(home);
  defaults->setBool(true, NKDeveloperMode);
  defaults->setBool(false, NKTestingMode);
  defaults->setInteger(20, NKMaxAutoSnapshotCount);
  defaults->setObject(2.50_dec, NKRTISubmissionPollTimeout);
  defaults->setObject("hunter2", NKPDFSecurityKey);
  defaults->setObject("hunter2", NKShowDebugMenu);  // a text is never shown, even for a known key
  defaults->setObject(987654321, "PIN");
  defaults->setObject(NSData::dataWithText("hunter2"), NKAgentSettingsKey);
  defaults->setObject(NSArray::arrayFrom(std::vector<NSString>{"/home/pat/hunter2.payroll"}), NKRecentEmployerFiles);
  defaults->setObject(NSDictionary::dictionaryWith({{"password", "hunter2"}}), "Server");
  defaults->setBool(true, "IsRich");
  const Result result = diagnose(home);
  EXPECT_THAT(section(result, "Preferences"),
              ElementsAre(StartsWith("database                  /"), "stored                    11",
                          "AgentSettings             data, not shown", "DeveloperMode             yes",
                          "IsRich                    yes or no, not shown", "MaxAutoSnapshotCount      20",
                          "PDFSecurityKey            text, not shown", "PIN                       number, not shown",
                          "RTISubmissionPollTimeout  2.50", "RecentEmployerFiles       list, not shown",
                          "Server                    table, not shown", "ShowDebugMenu             text, not shown",
                          "TestingMode               no"))
      << "the longest name says where the texts begin";
  EXPECT_THAT(result.out, Not(HasSubstr("hunter2")));
  EXPECT_THAT(result.out, Not(HasSubstr("987654321")));
  EXPECT_EQ(result.err, "");
}

TEST(PayrunDiagnose, ANameThatATerminalWouldObeyIsMadeVisible) {
  const TemporaryFolder home;
  preferencesIn(home)->setInteger(1, "a\nb\x1B[2J");
  const Result result = diagnose(home);
  EXPECT_THAT(result.out, HasSubstr("\n  a\\x0Ab\\x1B[2J         number, not shown\n"));
  preferencesIn(home)->removeObjectForKey("a\nb\x1B[2J");
  preferencesIn(home)->setInteger(1, NSString(std::string(200, 'k')));
  EXPECT_THAT(diagnose(home).out, HasSubstr("\n  " + std::string(80, 'k') + "...  number, not shown\n"));
}

TEST(PayrunDiagnose, AnotherApplicationsPreferencesAreShownByItsIdentifier) {
  const TemporaryFolder home;
  preferencesIn(home, "uk.co.norvik.payroll")->setBool(true, NKDeveloperMode);
  ::setenv("NORVIK_BUNDLE_IDENTIFIER", "uk.co.norvik.payroll", 1);
  const Result result = diagnose(home);
  ::setenv("NORVIK_BUNDLE_IDENTIFIER", "no/name", 1);
  const Result refused = diagnose(home);
  ::unsetenv("NORVIK_BUNDLE_IDENTIFIER");
  EXPECT_THAT(section(result, "Preferences"),
              ElementsAre("database              " + home.path(".config/uk.co.norvik.payroll/defaults.sqlite"),
                          "stored                1", "DeveloperMode         yes"));
  EXPECT_THAT(
      section(refused, "Preferences"),
      ElementsAre("not available         NSInvalidArgumentException: \"no/name\" cannot be the name of a folder"));
  EXPECT_THAT(section(refused, "Open files"), testing::SizeIs(2)) << "the others are told";
}

TEST(PayrunDiagnose, AnInformationFileBesideTheProgramNamesItAndItsFolders) {
  RUN_IN_CHILD({
    const TemporaryFolder home;
    const std::string program = home.path("pay");
    std::filesystem::copy_file(PAYRUN_PROGRAM, program);
    home.write("pay.info", "CFBundleIdentifier = uk.co.norvik.pay\nCFBundleExecutable = ledger\n");
    ::setenv("HOME", home.path().c_str(), 1);
    for (const char* name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "NORVIK_BUNDLE_IDENTIFIER"}) ::unsetenv(name);
    norvik::test::ChildProgram run({program, "--diagnose"});
    Result result;
    result.out = run.readAll();
    EXPECT_EQ(run.wait(), 0);
    EXPECT_THAT(section(result, "Program"),
                testing::IsSupersetOf(
                    {"executable            " + program, std::string("identifier            uk.co.norvik.pay")}));
    EXPECT_THAT(
        section(result, "Folders"),
        testing::Contains("application support   " + home.path(".local/share/ledger") + " (does not exist yet)"));
    EXPECT_THAT(section(result, "Preferences"),
                testing::Contains("database              " + home.path(".config/uk.co.norvik.pay/defaults.sqlite")));
  });
}

TEST(PayrunDiagnose, PreferencesThatCannotBeReadAreToldAndLeftAlone) {
  const TemporaryFolder home;
  std::filesystem::create_directories(home.path(".config/payrun"));
  const std::string file = home.write(".config/payrun/defaults.sqlite", std::string(4096, 'x'));
  const Result result = diagnose(home);
  EXPECT_THAT(
      section(result, "Preferences"),
      ElementsAre("database              " + file, "stored                cannot be read, standard error says why"));
  EXPECT_THAT(result.err, HasSubstr("The preferences in " + file + " cannot be read"));
  EXPECT_EQ(readFile(file), std::string(4096, 'x'));
}

}  // namespace
}  // namespace payrun_test
