#include "PayslipFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <system_error>

#include "OutputFile.h"
#include "tests/examples/payrun/PayrunProgram.h"
#include "tests/examples/payrun/SmallEmployer.h"

namespace payrun_test {
namespace {

using namespace payrun;
using testing::ElementsAre;
using testing::HasSubstr;

std::vector<std::string> namesOf(const std::vector<std::pair<const char*, const char*>>& people) {
  Employer employer = smallEmployer();
  for (const auto& [number, name] : people) EXPECT_TRUE(employer.add(person(number, name)));
  return payslipFileNames(PayRun(employer, 12), "html");
}

std::vector<std::string> filesIn(const TemporaryFolder& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder.path())) names.push_back(entry.path().filename());
  return names;
}

TEST(PayslipFiles, AreNamedAfterNumberNameAndMonth) {
  EXPECT_THAT(namesOf({{"E001", "Zoë O'Brien"}}), ElementsAre("E001 Zoë O'Brien 2024-25 month 12.html"));
}

TEST(PayslipFiles, HoldNothingThatAPathOrACommandTakesForSomethingElse) {
  EXPECT_THAT(namesOf({{"../..", "/etc/passwd"},
                       {"-rf", "*"},
                       {"E:1", "<b>\"A\"?</b>|"},
                       {"C:\\x", "王小明"},
                       {"7", "\u202Efdp.exe"},
                       {"8", "محمد"}}),
              ElementsAre("_____ _etc_passwd 2024-25 month 12.html", "_rf _ 2024-25 month 12.html",
                          "E_1 _b__A____b__ 2024-25 month 12.html", "C__x 王小明 2024-25 month 12.html",
                          "7 fdp_exe 2024-25 month 12.html", "8 محمد 2024-25 month 12.html"));
}

TEST(PayslipFiles, OfTwoThatWouldBeTheSameAlsoOnADiskThatIgnoresCaseTheLaterGetsANumber) {
  EXPECT_THAT(namesOf({{"E/1", "Ann"}, {"E:1", "Ann"}, {"e_1", "ANN"}, {"E_1", "Ben"}}),
              ElementsAre("E_1 Ann 2024-25 month 12.html", "E_1 Ann 2024-25 month 12 (2).html",
                          "e_1 ANN 2024-25 month 12 (3).html", "E_1 Ben 2024-25 month 12.html"));
}

TEST(PayslipFiles, NamesAreShortEnoughForADiskAndNotCutWithinACharacter) {
  const std::string number(300, 'n');
  std::string name;
  for (int i = 0; i < 100; ++i) name += "王";
  const std::vector<std::string> names = namesOf({{number.c_str(), name.c_str()}});
  std::string expected = std::string(80, 'n') + " ";
  for (int i = 0; i < 26; ++i) expected += "王";
  EXPECT_EQ(names.at(0), expected + " 2024-25 month 12.html");
  EXPECT_LE(names[0].size(), 200U);
}

class OutputFolderOfATest : public testing::Test {
 protected:
  TemporaryFolder folder_;
};

TEST_F(OutputFolderOfATest, GivesAllFilesTheirNamesTogether) {
  OutputFolder files(folder_.path("new/html"));
  files.write("a.html", "one");
  files.write("b.html", "two");
  for (const auto& entry : std::filesystem::directory_iterator(folder_.path("new/html"))) {
    EXPECT_NE(entry.path().extension(), ".html");
  }
  files.publish();
  EXPECT_EQ(readFile(folder_.path("new/html/a.html")), "one");
  EXPECT_EQ(readFile(folder_.path("new/html/b.html")), "two");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.path("new/html")), {}), 2);
}

TEST_F(OutputFolderOfATest, LeavesNothingOfWhatWasNotPublished) {
  writeFile(folder_.path("a.html"), "earlier");
  {
    OutputFolder files(folder_.path());
    files.write("a.html", "one");
    files.write("b.html", "two");
  }
  EXPECT_THAT(filesIn(folder_), ElementsAre("a.html"));
  EXPECT_EQ(readFile(folder_.path("a.html")), "earlier");
}

TEST_F(OutputFolderOfATest, WhatIsReplacedKeepsItsPermissions) {
  writeFile(folder_.path("a.html"), "earlier");
  ASSERT_EQ(::chmod(folder_.path("a.html").c_str(), 0640), 0);
  OutputFolder files(folder_.path());
  files.write("a.html", "one");
  files.publish();
  struct stat status {};
  ASSERT_EQ(::stat(folder_.path("a.html").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0640U);
  EXPECT_EQ(readFile(folder_.path("a.html")), "one");
}

TEST_F(OutputFolderOfATest, NamesTheFolderThatCannotBeMade) {
  writeFile(folder_.path("file"), "in the way");
  try {
    OutputFolder files(folder_.path("file/html"));
    FAIL() << "a folder in a file";
  } catch (const std::system_error& error) {
    EXPECT_THAT(error.what(), HasSubstr(folder_.path("file/html") + " cannot be created"));
  }
}

TEST_F(OutputFolderOfATest, NamesTheFileThatCannotBeWritten) {
  std::filesystem::create_directories(folder_.path("a.html/x"));
  OutputFolder files(folder_.path());
  files.write("a.html", "one");
  try {
    files.publish();
    FAIL() << "a file in place of a folder";
  } catch (const std::system_error& error) {
    EXPECT_THAT(error.what(), HasSubstr(folder_.path("a.html") + " cannot be written"));
  }
}

TEST(PayslipFiles, HoldThePayslipOfTheirEmployee) {
  const TemporaryFolder folder;
  Employer employer = smallEmployer();
  for (int i = 0; i < 100; ++i) employer.add(person("E" + std::to_string(i), "Person " + std::to_string(i)));
  const PayRun run(employer, 1);
  const PayslipTemplate form(TextFile("t", "{number}: {employee}"));
  writePayslips(run, form, folder.path("html"), "txt", [](const Document& document) {
    return std::get<Paragraph>(document.blocks.at(0)).text->string().str();
  });
  for (const int i : {0, 57, 99}) {
    const std::string number = std::to_string(i);
    EXPECT_EQ(readFile(folder.path("html/E" + number + " Person " + number + " 2024-25 month 1.txt")),
              "E" + number + ": Person " + number);
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path("html")), {}), 100);
}

}  // namespace
}  // namespace payrun_test
