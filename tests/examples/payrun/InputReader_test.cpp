// Items of files that are longer than a block, which several threads read.
#include "InputReader.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "CsvBlocks.h"
#include "InputError.h"
#include "tests/examples/payrun/SmallEmployer.h"
#include "tests/support/TemporaryFolder.h"

namespace payrun_test {
namespace {

using norvik::test::TemporaryFolder;

constexpr std::size_t people = 100, items = 40'000;

payrun::Employer manyPeople() {
  payrun::Employer employer = smallEmployer();
  for (std::size_t i = 0; i < people; ++i) employer.add(person("E" + std::to_string(i), "Zoë O'Brien"));
  return employer;
}

/// An item in line `index` + 2. Its amount in pounds is `index`.
std::string itemLine(std::size_t index, const std::string& date = "2024-04-28") {
  return "E" + std::to_string(index * 7 % people) + "," + date + ",pay,\"Item \"\"" + std::to_string(index) +
         "\"\"\"," + std::to_string(index) + "\n";
}

class ManyItems : public testing::Test {
 protected:
  ManyItems() : lines_(items) {
    for (std::size_t i = 0; i < items; ++i) lines_[i] = itemLine(i);
  }

  void write() {
    std::string text = "employee,date,kind,description,amount\n";
    for (const std::string& line : lines_) text += line;
    ASSERT_GT(text.size(), 5 * payrun::CsvBlocks::usualSize);
    folder_.write("items.csv", text);
  }
  /// The complaint about the file, without the folder.
  std::string complaint() {
    write();
    try {
      static_cast<void>(payrun::readItems(folder_.path(), employer_, [](const payrun::PayItem&) {}));
    } catch (const payrun::InputError& error) {
      return std::string(error.what()).substr(folder_.path().size() + 1);
    }
    return "nothing was refused";
  }

  TemporaryFolder folder_;
  const payrun::Employer employer_ = manyPeople();
  std::vector<std::string> lines_;  // after the headings
};

TEST_F(ManyItems, AreUsedOneAtATimeInTheOrderOfTheFile) {
  lines_[100] = itemLine(100, "2024-04-28 13:30:00");
  lines_[39'000] = itemLine(39'000, "2024-04-28 13:30:00");
  write();
  std::size_t count = 0;
  std::vector<std::size_t> moved;
  const auto use = [&](const payrun::PayItem& item) {
    ASSERT_EQ(item.amount, norvik::Decimal(static_cast<std::int64_t>(count)));
    ASSERT_EQ(item.employee, count * 7 % people);
    ASSERT_EQ(item.description, "Item \"" + std::to_string(count) + "\"");
    if (item.moved) moved.push_back(item.moved->line);
    ++count;
  };
  EXPECT_EQ(payrun::readItems(folder_.path(), employer_, use), items);
  EXPECT_EQ(count, items);
  EXPECT_EQ(moved, (std::vector<std::size_t>{102, 39'002}));
}

TEST_F(ManyItems, MayFollowBlankLinesBeforeAndAfterTheHeadings) {
  const std::string blank(payrun::CsvBlocks::usualSize - 10, '\n');
  folder_.write("items.csv", blank + "employee,date,kind,description,amount\n" + blank + itemLine(7) + blank);
  const auto use = [](const payrun::PayItem& item) { EXPECT_EQ(item.amount, 7); };
  EXPECT_EQ(payrun::readItems(folder_.path(), employer_, use), 1U);
}

TEST_F(ManyItems, TheFirstErrorOfTheFileIsReported) {
  lines_[39'999] = "E1,2024-04-28,pay,Salary\n";
  EXPECT_EQ(complaint(), "items.csv:40001:25: \"E1,2024-04-28,pay,Salary\" has 4 fields instead of 5");
  lines_[20'000] = "E1,2024-04-28,pay,Sal\"ary,1\n";
  EXPECT_EQ(complaint(),
            "items.csv:20002:19: \"Sal\"\" has a quotation mark inside a field that does not begin with one");
  lines_[15'000] = "E1,2024-04-28,pay,Salary,x\n";
  EXPECT_EQ(complaint(), "items.csv:15002:26: \"x\" is not an amount");
  lines_[7] = "E100,2024-04-28,pay,Salary,1\n";
  EXPECT_EQ(complaint(), "items.csv:9:1: \"E100\" is not an employee of employees.csv");
}

TEST_F(ManyItems, AMarkThatIsNeverClosedIsReportedUnlessAnErrorIsBeforeIt) {
  lines_[10] = "E1,2024-04-28,pay,\"Salary,1\n";
  for (std::size_t i = 11; i < items; ++i) lines_[i] = "E1,2024-04-28,pay,A salary of the month,1\n";
  EXPECT_EQ(complaint(), "items.csv:12:19: \"\"Salary,1\" has a quotation mark that is never closed");
  lines_[9] = "\n";
  EXPECT_EQ(complaint(), "items.csv:12:19: \"\"Salary,1\" has a quotation mark that is never closed");
  lines_[8] = "E1,2024-04-31,pay,Salary,1\n";
  EXPECT_EQ(complaint(), "items.csv:10:4: \"2024-04-31\" is not a date such as 2024-05-28 or 2024-05-28 14:30:00");
}

TEST_F(ManyItems, BytesThatAreNotUtf8AreReportedBeforeOtherErrors) {
  lines_[7] = "E100,2024-04-28,pay,Salary,1\n";
  lines_[39'998] = "E1,2024-04-28,pay,Sal\xFFry,1\n";
  lines_[39'999] = "E1,2024-04-28,pay,Sal\xFEry,1\n";
  EXPECT_EQ(complaint(), "items.csv:40000:22: \"Sal\\xFFry\" is not UTF-8");
}

TEST_F(ManyItems, AnErrorOfTheUserEndsTheReading) {
  write();
  std::size_t count = 0;
  const auto use = [&](const payrun::PayItem&) {
    if (++count == 10'000) throw std::length_error("enough");
  };
  EXPECT_THROW(static_cast<void>(payrun::readItems(folder_.path(), employer_, use)), std::length_error);
  EXPECT_EQ(count, 10'000U);
}

}  // namespace
}  // namespace payrun_test
