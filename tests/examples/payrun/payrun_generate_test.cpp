// Employers created by --generate: the same every time, valid input, and right to the penny at 100,000 people.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <numeric>
#include <sstream>

#include "tests/examples/payrun/PayrunProgram.h"
#include "tests/examples/payrun/Pennies.h"

namespace payrun_test {
namespace {

using testing::HasSubstr;

Result generate(const TemporaryFolder& home, const std::filesystem::path& folder, int people) {
  return runPayrun(home, {"--generate", std::to_string(people), "--input", folder.string()});
}

Result pay(const TemporaryFolder& home, const std::filesystem::path& folder, int month) {
  return runPayrun(home, {"--input", folder.string(), "--month", std::to_string(month), "--logs", home.path("logs"),
                          "--output", home.path("report.txt")});
}

/// The employer's six totals in pennies.
std::vector<Pennies> employerTotals(const std::string& report) {
  const std::size_t at = report.rfind("\nEmployer ");
  if (at == std::string::npos) return {};
  std::istringstream words(report.substr(at));
  std::string word, people;
  words >> word >> people;
  std::vector<Pennies> totals;
  for (int i = 0; i < 6 && words >> word; ++i) totals.push_back(penniesOf(word));
  return totals;
}

void expectTotalsOf(const std::string& report, const MonthlySums& sums, int month) {
  const auto upTo = [&](const std::array<Pennies, 13>& months) {
    return std::accumulate(months.begin(), months.begin() + month + 1, Pennies{0});
  };
  const auto at = static_cast<std::size_t>(month);
  const Pennies payToDate = upTo(sums.pay), deductionsToDate = upTo(sums.deductions);
  EXPECT_EQ(employerTotals(report),
            (std::vector<Pennies>{sums.pay[at], sums.deductions[at], sums.pay[at] - sums.deductions[at], payToDate,
                                  deductionsToDate, payToDate - deductionsToDate}));
}

TEST(PayrunGenerate, MakesAnEmployerOfSoManyPeopleWithItemsInTwelveMonths) {
  const TemporaryFolder folder;
  ASSERT_EQ(generate(folder, folder.path("employer"), 100).status, 0);
  EXPECT_EQ(linesOf(readFile(folder.path("employer/employees.csv"))).size(), 101U);
  const MonthlySums sums = sumItems(folder.path("employer"));
  for (std::size_t month = 1; month <= 12; ++month) {
    EXPECT_GT(sums.pay[month], 0) << month;
    EXPECT_GT(sums.deductions[month], 0) << month;
  }
}

TEST(PayrunGenerate, MakesTheSameFilesEveryTime) {
  const TemporaryFolder folder;
  ASSERT_EQ(generate(folder, folder.path("one"), 50).status, 0);
  ASSERT_EQ(generate(folder, folder.path("two"), 50).status, 0);
  for (const std::string name : {"employer.ini", "employees.csv", "items.csv"}) {
    EXPECT_EQ(readFile(folder.path("one/" + name)), readFile(folder.path("two/" + name))) << name;
  }
}

TEST(PayrunGenerate, WritesOverNothing) {
  const TemporaryFolder folder;
  writeFile(folder.path("items.csv"), "mine\n");
  const Result result = generate(folder, folder.path(), 10);
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err, "payrun: " + folder.path("items.csv") + " already exists\n");
  EXPECT_EQ(readFile(folder.path("items.csv")), "mine\n");
  EXPECT_FALSE(std::filesystem::exists(folder.path("employer.ini")));
}

TEST(PayrunGenerate, NamesTheFolderThatCannotBeMade) {
  const TemporaryFolder folder;
  writeFile(folder.path("file"), "in the way");
  const Result result = generate(folder, folder.path("file/employer"), 2);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "payrun: " + folder.path("file/employer") + " cannot be created: Not a directory\n");
}

TEST(PayrunGenerate, AGeneratedEmployerReconcilesToThePenny) {
  const TemporaryFolder folder;
  ASSERT_EQ(generate(folder, folder.path("employer"), 1000).status, 0);
  const Result result = pay(folder, folder.path("employer"), 9);
  ASSERT_EQ(result.status, 0) << result.err;
  expectTotalsOf(readFile(folder.path("report.txt")), sumItems(folder.path("employer")), 9);
}

// Not with sanitizers, which take several times the time and memory.
#if defined(NDEBUG)
TEST(PayrunScale, AHundredThousandPeopleReconcileToThePenny) {
  const TemporaryFolder folder;
  ASSERT_EQ(generate(folder, folder.path("employer"), 100'000).status, 0);
  const Result result = pay(folder, folder.path("employer"), 12);
  ASSERT_EQ(result.status, 0) << result.err;
  RecordProperty("cpuMilliseconds", static_cast<int>(result.cpuSeconds * 1000));
  RecordProperty("peakMebibytes", static_cast<int>(result.peakMebibytes));
  EXPECT_LT(result.cpuSeconds, 10);
  EXPECT_LT(result.peakMebibytes, 1024);
  const std::string report = readFile(folder.path("report.txt"));
  EXPECT_GT(linesOf(report).size(), 100'000U);
  expectTotalsOf(report, sumItems(folder.path("employer")), 12);
}
#endif

}  // namespace
}  // namespace payrun_test
