// The pay run end to end. The reports in expected/ were computed from the example employer's files by a separate
// program in another language, with that language's own decimal numbers, CSV reader and words. That program shares
// nothing with the pay run or the library.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <map>

#include "tests/examples/payrun/PayrunProgram.h"
#include "tests/examples/payrun/Pennies.h"

namespace payrun_test {
namespace {

using testing::HasSubstr;

std::vector<std::string> arguments(const std::filesystem::path& input, int month, const std::filesystem::path& logs) {
  return {"--input", input.string(), "--month", std::to_string(month), "--logs", logs.string()};
}

/// The amounts in pennies of the line that begins with "Employer", from "Pay" to "Net to date".
std::vector<Pennies> totalsOfEmployer(const std::string& report) {
  std::vector<Pennies> totals;
  for (const std::string& line : linesOf(report)) {
    if (!line.starts_with("Employer ")) continue;
    std::istringstream words(line);
    std::string word, people;
    words >> word >> people;
    while (words >> word) totals.push_back(penniesOf(word));
  }
  return totals;
}

class PayrunReport : public testing::TestWithParam<int> {};

TEST_P(PayrunReport, IsWordForWordTheExpectedOne) {
  const TemporaryFolder folder;
  char name[16];
  std::snprintf(name, sizeof name, "month-%02d.txt", GetParam());
  const Result result = runPayrun(folder, arguments(exampleEmployer(), GetParam(), folder.path("logs")));
  EXPECT_EQ(result.status, 0);
  const char* const moved = "payrun: needs attention: 1 item moved by its time of day; the report names them\n";
  const char* const negative = "payrun: needs attention: 1 net pay below zero; the report names them\n";
  const std::map<int, const char*> notices = {{3, moved}, {4, moved}, {6, negative}, {9, moved}, {10, moved}};
  EXPECT_EQ(result.err, notices.contains(GetParam()) ? notices.at(GetParam()) : "");
  EXPECT_EQ(firstDifference(result.out, readFile(expectedReports() / name)), "");
}

INSTANTIATE_TEST_SUITE_P(Months, PayrunReport, testing::Values(1, 3, 4, 6, 7, 9, 10, 12));

TEST(Payrun, TotalsOfEveryMonthReconcileToThePennyWithASumOfWholePennies) {
  const MonthlySums sums = sumItems(exampleEmployer());
  Pennies payToDate = 0, deductionsToDate = 0;
  for (int month = 1; month <= 12; ++month) {
    const TemporaryFolder folder;
    const Result result = runPayrun(folder, arguments(exampleEmployer(), month, folder.path("logs")));
    ASSERT_EQ(result.status, 0) << result.err;
    const Pennies pay = sums.pay[static_cast<std::size_t>(month)];
    const Pennies deductions = sums.deductions[static_cast<std::size_t>(month)];
    payToDate += pay;
    deductionsToDate += deductions;
    const std::vector<Pennies> expected = {pay,       deductions,       pay - deductions,
                                           payToDate, deductionsToDate, payToDate - deductionsToDate};
    EXPECT_EQ(totalsOfEmployer(result.out), expected) << "month " << month;
  }
}

TEST(Payrun, WritesTheReportToAFileInsteadOfToStandardOutput) {
  const TemporaryFolder folder;
  auto words = arguments(exampleEmployer(), 1, folder.path("logs"));
  words.insert(words.end(), {"--output", folder.path("report.txt")});
  const Result result = runPayrun(folder, words);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(firstDifference(readFile(folder.path("report.txt")), readFile(expectedReports() / "month-01.txt")), "");
}

TEST(Payrun, IsBritishWhateverTheUsersLocale) {
  const TemporaryFolder folder;
  const Result result = runPayrun(folder, arguments(exampleEmployer(), 1, folder.path("logs")), "de_DE.UTF-8");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(firstDifference(result.out, readFile(expectedReports() / "month-01.txt")), "");
}

TEST(Payrun, FailsWhereItCannotLeaveALog) {
  const TemporaryFolder folder;
  writeFile(folder.path("logs"), "a file where the folder should be");
  const Result result = runPayrun(folder, arguments(exampleEmployer(), 1, folder.path("logs")));
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr("payrun: no log can be written in " + folder.path("logs")));
}

TEST(Payrun, LeavesNothingBehindWhereTheReportCannotBeWritten) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.path("taken"));
  auto words = arguments(exampleEmployer(), 1, folder.path("logs"));
  words.insert(words.end(), {"--output", folder.path("taken")});
  const Result result = runPayrun(folder, words);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("taken cannot be written"));
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder.path())) names.push_back(entry.path().filename());
  EXPECT_THAT(names, testing::UnorderedElementsAre("taken", "logs"));
}

TEST(Payrun, NamesTheReportThatCannotBeWritten) {
  const TemporaryFolder folder;
  auto words = arguments(exampleEmployer(), 1, folder.path("logs"));
  words.insert(words.end(), {"--output", folder.path("nowhere/report.txt")});
  const Result result = runPayrun(folder, words);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err,
            "payrun: " + folder.path("nowhere/report.txt") + " cannot be written: No such file or directory\n");
}

TEST(Payrun, WritesTheFileThatALinkLeadsToBeItThereOrNotAndKeepsTheLink) {
  for (const bool isThere : {true, false}) {
    const TemporaryFolder folder;
    if (isThere) writeFile(folder.path("report.txt"), "an earlier report");
    std::filesystem::create_symlink("report.txt", folder.path("latest"));
    auto words = arguments(exampleEmployer(), 1, folder.path("logs"));
    words.insert(words.end(), {"--output", folder.path("latest")});
    EXPECT_EQ(runPayrun(folder, words).status, 0) << isThere;
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path("latest"))) << isThere;
    EXPECT_EQ(firstDifference(readFile(folder.path("report.txt")), readFile(expectedReports() / "month-01.txt")), "")
        << isThere;
  }
}

TEST(Payrun, WritesIntoAPipeInsteadOfReplacingIt) {
  const TemporaryFolder folder;
  ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
  const int reader = ::open(folder.path("pipe").c_str(), O_RDONLY | O_NONBLOCK);
  auto words = arguments(exampleEmployer(), 1, folder.path("logs"));
  words.insert(words.end(), {"--output", folder.path("pipe")});
  EXPECT_EQ(runPayrun(folder, words).status, 0);
  std::string read(65536, '\0');  // the capacity of a pipe, which is more than the report
  read.resize(static_cast<std::size_t>(std::max<ssize_t>(0, ::read(reader, read.data(), read.size()))));
  ::close(reader);
  EXPECT_EQ(firstDifference(read, readFile(expectedReports() / "month-01.txt")), "");
  EXPECT_TRUE(std::filesystem::is_fifo(folder.path("pipe")));
}

TEST(Payrun, LogsAWarningForEachDateBroughtToItsStartOfDay) {
  const TemporaryFolder folder;
  ASSERT_EQ(runPayrun(folder, arguments(exampleEmployer(), 9, folder.path("logs"))).status, 0);
  std::vector<std::string> warned;
  const std::string warning = "Date time component is non zero : ";
  for (const std::string& line : linesOf(readLogs(folder.path("logs")))) {
    const std::size_t at = line.find(warning);
    if (at != std::string::npos) warned.push_back(line.substr(at + warning.size()));
  }
  const std::vector<std::string> expected = {
      "2024-04-30 09:15:00 +0000", "2024-05-03 11:30:05 +0000", "2024-05-28 14:30:00 +0000",
      "2024-05-31 12:59:59 +0000", "2024-07-05 14:30:00 +0000", "2024-08-30 12:59:59 +0000",
      "2024-10-05 12:59:59 +0000", "2024-10-11 12:59:59 +0000", "2024-10-31 11:30:05 +0000",
      "2024-11-29 12:59:59 +0000", "2024-12-31 12:00:00 +0000", "2025-01-05 23:59:59 +0000",
      "2025-01-31 11:30:05 +0000",
  };
  EXPECT_EQ(warned, expected);
}

TEST(Payrun, LogsToItsFolderInTheUsersLibraryWhereNoneIsGiven) {
  const TemporaryFolder home;
  const Result result = runPayrun(home, {"--input", exampleEmployer().string(), "--month", "1"});
  ASSERT_EQ(result.status, 0) << result.err;
  std::vector<std::filesystem::path> logs;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(home.path())) {
    if (entry.is_regular_file()) logs.push_back(entry.path());
  }
  ASSERT_EQ(logs.size(), 1U);
  EXPECT_THAT(logs[0].string(), HasSubstr("/Logs/payrun/log-"));
  EXPECT_THAT(readFile(logs[0]), HasSubstr("40 employees, 1871 items"));
}

TEST(Payrun, TheNextRunGoesOnInTheSameLogFile) {
  const TemporaryFolder folder;
  for (int month : {1, 2})
    ASSERT_EQ(runPayrun(folder, arguments(exampleEmployer(), month, folder.path("logs"))).status, 0);
  std::size_t files = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder.path("logs"))) ++files;
  EXPECT_EQ(files, 1U);
}

// No warning may be deleted with an old file before the run ends, however many dates the run warns about.
TEST(Payrun, ALogIsNotBrokenUpByItsSize) {
  const TemporaryFolder folder;
  const std::filesystem::path logs = folder.path("logs"), large = logs / "log-ABCDEF.txt";
  std::filesystem::create_directory(logs);
  const std::string before(3 << 20, '\n');
  writeFile(large, before);
  ASSERT_EQ(runPayrun(folder, arguments(exampleEmployer(), 1, logs)).status, 0);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(logs), {}), 1);
  EXPECT_THAT(readFile(large).substr(before.size()), HasSubstr("40 employees, 1871 items"));
}

TEST(Payrun, ShowsNoProgressWhereStandardErrorIsNoTerminal) {
  const TemporaryFolder folder;
  EXPECT_EQ(runPayrun(folder, arguments(exampleEmployer(), 1, folder.path("logs"))).err, "");
}

TEST(Payrun, ShowsProgressOnATerminalAndClearsItAway) {
  const TemporaryFolder folder;
  const Result result = runPayrunOnTerminal(folder, arguments(exampleEmployer(), 1, folder.path("logs")));
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.err, HasSubstr("\rreading items [########################################] 100 %"));
  EXPECT_TRUE(result.err.ends_with("\r\033[K")) << result.err;
  EXPECT_EQ(firstDifference(result.out, readFile(expectedReports() / "month-01.txt")), "");
}

}  // namespace
}  // namespace payrun_test
