// Parts of the pay run under unusual conditions: limits, and files that other processes left.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <system_error>

#include "Generator.h"
#include "OutputFile.h"
#include "RunLog.h"
#include "tests/examples/payrun/PayrunProgram.h"
#include "tests/support/InChild.h"

namespace payrun_test {
namespace {

using testing::UnorderedElementsAre;

std::vector<std::string> namesIn(const TemporaryFolder& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder.path())) names.push_back(entry.path().filename());
  return names;
}

mode_t permissionsOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
  return status.st_mode & 07777;
}

/// For the rest of the process, which is a child process.
void limitFilesTo(rlim_t bytes) {
  std::signal(SIGXFSZ, SIG_IGN);
  const rlimit limit{bytes, bytes};
  EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
}

TEST(PayrunOutputFile, ADraftThatAKilledProcessOfTheSameNumberLeftIsNotInTheWay) {
  const TemporaryFolder folder;
  const std::string left = "report.txt.part-" + std::to_string(::getpid());
  writeFile(folder.path(left), "half of a rep");
  payrun::writeWhole(folder.path("report.txt"), "a report\n");
  EXPECT_EQ(readFile(folder.path("report.txt")), "a report\n");
  EXPECT_EQ(readFile(folder.path(left)), "half of a rep") << "it may be another's, in another container";
  EXPECT_THAT(namesIn(folder), UnorderedElementsAre("report.txt", left));
}

TEST(PayrunOutputFile, WhatIsReplacedKeepsItsPermissions) {
  const TemporaryFolder folder;
  for (const mode_t permissions : {0600U, 0640U, 0444U}) {
    writeFile(folder.path("report.txt"), "an earlier report\n");
    ASSERT_EQ(::chmod(folder.path("report.txt").c_str(), permissions), 0);
    payrun::writeWhole(folder.path("report.txt"), "a report\n");
    EXPECT_EQ(permissionsOf(folder.path("report.txt")), permissions);
    EXPECT_EQ(readFile(folder.path("report.txt")), "a report\n");
    std::filesystem::remove(folder.path("report.txt"));
  }
}

TEST(PayrunOutputFile, ANewFileHasThePermissionsOfThoseTheUserMakes) {
  const TemporaryFolder folder;
  payrun::writeWhole(folder.path("report.txt"), "a report\n");
  writeFile(folder.path("other"), "");
  EXPECT_EQ(permissionsOf(folder.path("report.txt")), permissionsOf(folder.path("other")));
}

TEST(PayrunRunLog, ALineOfAnEarlierProcessOfTheSameNumberIsNoLog) {
  RUN_IN_CHILD({
    const TemporaryFolder folder;
    writeFile(folder.path("log-ABCDEF.txt"), "begun by process " + std::to_string(::getpid()) + "\n");
    limitFilesTo(0);
    const payrun::LogChoice choice{.file = true, .folder = folder.path()};
    EXPECT_THROW(payrun::RunLog{choice}, std::runtime_error);
  });
}

TEST(PayrunGenerate, LeavesNoFileWhereOneCannotBeWritten) {
  RUN_IN_CHILD({
    const TemporaryFolder folder;
    limitFilesTo(64 * 1024);  // the file of people fits, the file of items does not
    EXPECT_THROW(payrun::generateEmployer(1000, folder.path()), std::system_error);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
  });
}

}  // namespace
}  // namespace payrun_test
