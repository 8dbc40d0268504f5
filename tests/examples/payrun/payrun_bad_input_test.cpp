// Input that must be refused. Every refusal names file, line, column and the offending text, and nothing else is
// written.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "tests/examples/payrun/PayrunProgram.h"

namespace payrun_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr const char* goodIni =
    "[employer]\n"
    "name = Test Ltd\n"
    "paye_reference = 123/T1\n"
    "tax_year = 2024-25\n"
    "\n"
    "[departments]\n"
    "OPS = Operations\n";

constexpr const char* goodEmployees =
    "employee,name,department,sort_code,account\n"
    "E1,Zoë O'Brien,OPS,12-34-56,12345678\n"
    "E2,\"Hughes, Dafydd\",OPS,123456,87654321\n";

constexpr const char* goodItems =
    "employee,date,kind,description,amount\n"
    "E1,2024-04-28,pay,Salary,\"1,234.50\"\n"
    "E2,2024-04-28,deduction,\"Tax\n(two lines)\",10\n"
    "E1,2024-05-28,bonus,Bonus,1\n";

class PayrunInput : public testing::Test {
 protected:
  PayrunInput() {
    writeFile(folder_.path("employer.ini"), goodIni);
    writeFile(folder_.path("employees.csv"), goodEmployees);
    writeFile(folder_.path("items.csv"), goodItems);
  }

  Result run() {
    return runPayrun(folder_, {"--input", folder_.path(), "--month", "1", "--logs", folder_.path("logs"), "--output",
                               folder_.path("report.txt")});
  }

  TemporaryFolder folder_;
};

/// The valid input with one change, and the complaint of a run over it.
struct BadInput {
  const char* what;
  const char* file;
  const char* replace;
  const char* by;
  const char* complaint;  // the part after the folder
};

std::ostream& operator<<(std::ostream& out, const BadInput& input) { return out << input.what; }

class PayrunBadInput : public PayrunInput, public testing::WithParamInterface<BadInput> {};

TEST_F(PayrunInput, TheInputThatTheseTestsChangeIsGood) {
  const Result result = run();
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(readFile(folder_.path("report.txt")), HasSubstr("Net pay: £1,224.50\n"));
}

TEST_P(PayrunBadInput, IsRefusedWithItsPlaceAndNoOutput) {
  const BadInput& input = GetParam();
  std::string text = readFile(folder_.path(input.file));
  const std::size_t at = text.find(input.replace);
  ASSERT_NE(at, std::string::npos) << input.replace;
  writeFile(folder_.path(input.file), text.replace(at, std::string(input.replace).size(), input.by));
  const Result result = run();
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "payrun: " + folder_.path() + "/" + input.complaint + "\n");
  EXPECT_FALSE(std::filesystem::exists(folder_.path("report.txt")));
  std::string logged;  // the log escapes the complaint's backslashes
  for (const char c : std::string(input.complaint)) logged.append(c == '\\' ? 2 : 1, c);
  EXPECT_THAT(readLogs(folder_.path("logs")), HasSubstr(logged));
}

const BadInput badIni[] = {
    {"no key and no section", "employer.ini", "name = Test Ltd", "Test Ltd",
     "employer.ini:2:1: \"Test Ltd\" is neither [section] nor key = value"},
    {"an empty value", "employer.ini", "name = Test Ltd", "name =", "employer.ini:2:7: \"name\" has no value"},
    {"a key twice", "employer.ini", "\n\n", "\nname = Other Ltd\n", "employer.ini:5:1: \"name\" is given twice"},
    {"a key that is not known", "employer.ini", "\n\n", "\n  nmae = x\n",
     "employer.ini:5:3: \"nmae\" in section \"employer\" is not known"},
    {"a key that is missing", "employer.ini", "paye_reference = 123/T1\n", "",
     "employer.ini:7:1: \"paye_reference\" is missing in section \"employer\""},
    {"a tax year that is none", "employer.ini", "2024-25", "2024-26",
     "employer.ini:4:12: \"2024-26\" is not a tax year such as 2024-25"},
    {"no departments", "employer.ini", "OPS = Operations\n", "",
     "employer.ini:7:1: section \"departments\" has no department"},
    {"a department twice", "employer.ini", "OPS = Operations\n", "OPS = Operations\nOPS = Other\n",
     "employer.ini:8:1: \"OPS\" is given twice"},
    {"a name with a control character", "employer.ini", "Test Ltd", "Test\tLtd",
     "employer.ini:2:8: \"Test\\x09Ltd\" has a control character"},
    {"bytes that are not UTF-8", "employer.ini", "Test Ltd", "T\xE9st Ltd",
     "employer.ini:2:9: \" T\\xE9st Ltd\" is not UTF-8"},
};

const BadInput badEmployees[] = {
    {"headings missing", "employees.csv", "employee,name", "E0,name",
     "employees.csv:1:1: \"E0,name,department,sort_code,account\" is not the headings "
     "employee,name,department,sort_code,account, with or without address"},
    {"a sixth heading that is not the address", "employees.csv", "account\n", "account,e-mail\n",
     "employees.csv:1:44: \"employee,name,department,sort_code,account,e-mail\" is not the headings "
     "employee,name,department,sort_code,account, with or without address"},
    {"a heading behind the address", "employees.csv", "account\n", "account,address,address\n",
     "employees.csv:1:52: \"employee,name,department,sort_code,account,address,address\" is not the headings "
     "employee,name,department,sort_code,account, with or without address"},
    {"no address where there is a column for it", "employees.csv", "account\n", "account,address\n",
     "employees.csv:2:37: \"E1,Zoë O'Brien,OPS,12-34-56,12345678\" has 5 fields instead of 6"},
    {"a field too few", "employees.csv", ",12345678", "",
     "employees.csv:2:28: \"E1,Zoë O'Brien,OPS,12-34-56\" has 4 fields instead of 5"},
    {"a field too many", "employees.csv", ",12345678", ",12345678,x",
     "employees.csv:2:38: \"E1,Zoë O'Brien,OPS,12-34-56,12345678,x\" has 6 fields instead of 5"},
    {"a number twice", "employees.csv", "E2,", "E1,", "employees.csv:3:1: \"E1\" is given twice"},
    {"no number", "employees.csv", "E2,", ",", "employees.csv:3:1: \"\" is not an employee's number"},
    {"no name", "employees.csv", "Zoë O'Brien", "", "employees.csv:2:4: \"\" is not a name"},
    {"a name of spaces", "employees.csv", "Zoë O'Brien", "  ", "employees.csv:2:4: \"  \" is not a name"},
    {"a name of two lines", "employees.csv", "Hughes, Dafydd", "Hughes,\nDafydd",
     "employees.csv:3:4: \"Hughes,\\x0ADafydd\" has a control character"},
    {"a name that a terminal would obey", "employees.csv", "Zoë",
     "Zo\xC2\x9B"
     "31m",
     "employees.csv:2:4: \"Zo\\xC2\\x9B31m O'Brien\" has a control character"},
    {"a name that turns the amounts behind it", "employees.csv", "Zoë", "\u202EZoë",
     "employees.csv:2:4: \"\\xE2\\x80\\xAEZoë O'Brien\" has a control character"},
    {"a name with a line separator", "employees.csv", "Zoë", "Zoë\u2028",
     "employees.csv:2:4: \"Zoë\\xE2\\x80\\xA8 O'Brien\" has a control character"},
    {"a number with a control character", "employees.csv", "E1", "E\x7F",
     "employees.csv:2:1: \"E\\x7F\" has a control character"},
    {"an unknown department", "employees.csv", "Zoë O'Brien,OPS", "Zoë O'Brien,SAL",
     "employees.csv:2:16: \"SAL\" is not a department of employer.ini"},
    {"a sort code too short", "employees.csv", "12-34-56", "12-34-5",
     "employees.csv:2:20: \"12-34-5\" is not a sort code"},
    {"a sort code with letters", "employees.csv", "123456,", "12345O,",
     "employees.csv:3:25: \"12345O\" is not a sort code"},
    {"an account too long", "employees.csv", "12345678", "123456789",
     "employees.csv:2:29: \"123456789\" is not an account number of eight digits"},
    {"a quotation mark inside", "employees.csv", "O'Brien", "O\"Brien",
     "employees.csv:2:4: \"Zoë O\"\" has a quotation mark inside a field that does not begin with one"},
    {"text after the closing mark", "employees.csv", "Dafydd\"", "Dafydd\" Jr",
     "employees.csv:3:4: \"\"Hughes, Dafydd\" \" continues after its closing quotation mark"},
    {"a mark that is never closed", "employees.csv", "Dafydd\"", "Dafydd",
     "employees.csv:3:4: \"\"Hughes, Dafydd,OPS,123456,87654321\" has a quotation mark that is never closed"},
    {"bytes that are not UTF-8", "employees.csv", "Zoë", "Zo\xEB",
     "employees.csv:2:6: \"Zo\\xEB O'Brien\" is not UTF-8"},
};

const BadInput badItems[] = {
    {"an empty file", "items.csv", goodItems, "",
     "items.csv:1:1: \"\" is not the headings employee,date,kind,description,amount"},
    {"an unknown employee", "items.csv", "E2,", "E3,", "items.csv:3:1: \"E3\" is not an employee of employees.csv"},
    {"an unknown employee after a field of two lines", "items.csv", "E1,2024-05-28", "E9,2024-05-28",
     "items.csv:5:1: \"E9\" is not an employee of employees.csv"},
    {"an empty date in the first item", "items.csv", "2024-04-28,pay", ",pay",
     "items.csv:2:4: \"\" is not a date such as 2024-05-28 or 2024-05-28 14:30:00"},
    {"a day that does not exist", "items.csv", "2024-05-28", "2024-02-30",
     "items.csv:5:4: \"2024-02-30\" is not a date such as 2024-05-28 or 2024-05-28 14:30:00"},
    {"a date in another form", "items.csv", "2024-05-28", "28/05/2024",
     "items.csv:5:4: \"28/05/2024\" is not a date such as 2024-05-28 or 2024-05-28 14:30:00"},
    {"a time that does not exist", "items.csv", "2024-05-28", "2024-05-28 24:30:00",
     "items.csv:5:4: \"2024-05-28 24:30:00\" is not a date such as 2024-05-28 or 2024-05-28 14:30:00"},
    {"a time in another zone", "items.csv", "2024-05-28", "2024-05-28T14:30:00+01:00",
     "items.csv:5:4: \"2024-05-28T14:30:00+01:00\" is not a date such as 2024-05-28 or 2024-05-28 14:30:00"},
    {"the day before the tax year", "items.csv", "2024-05-28", "2024-04-05",
     "items.csv:5:4: \"2024-04-05\" is not in the tax year 2024-25"},
    {"the day after the tax year", "items.csv", "2024-05-28", "2025-04-06",
     "items.csv:5:4: \"2025-04-06\" is not in the tax year 2024-25"},
    {"an afternoon that counts as the day after the tax year", "items.csv", "2024-05-28", "2025-04-05 13:00:00",
     "items.csv:5:4: \"2025-04-05 13:00:00\" is not in the tax year 2024-25"},
    {"an unknown kind", "items.csv", "bonus", "Bonus", "items.csv:5:15: \"Bonus\" is not pay, bonus or deduction"},
    {"an amount with letters", "items.csv", "1,234.50", "12abc", "items.csv:2:26: \"12abc\" is not an amount"},
    {"an amount with groups of any length", "items.csv", "1,234.50", "1,2,34.5x",
     "items.csv:2:26: \"1,2,34.5x\" is not an amount"},
    {"an amount with two points", "items.csv", "1,234.50", "1.2.3", "items.csv:2:26: \"1.2.3\" is not an amount"},
    {"an amount above the bound", "items.csv", "1,234.50", "1,000,000,000.00",
     "items.csv:2:26: \"1,000,000,000.00\" is too large: an amount is 999,999,999.99 at most"},
    {"an amount a fraction of a penny above the bound", "items.csv", "1,234.50", "999,999,999.991",
     "items.csv:2:26: \"999,999,999.991\" is too large: an amount is 999,999,999.99 at most"},
    {"a correction below the bound", "items.csv", "1,234.50", "-1,000,000,000",
     "items.csv:2:26: \"-1,000,000,000\" is too large: an amount is 999,999,999.99 at most"},
    {"an amount of thirty digits", "items.csv", "1,234.50", "123456789012345678901234567890",
     "items.csv:2:26: \"123456789012345678901234567890\" is too large: an amount is 999,999,999.99 at most"},
    {"an amount of sixty digits", "items.csv", "1,234.50",
     "123456789012345678901234567890123456789012345678901234567890",
     "items.csv:2:26: \"123456789012345678901234567890123456789012345678901234567890\" is too large: an amount is "
     "999,999,999.99 at most"},
    {"an amount of more digits than any number has", "items.csv", "1,234.50",
     "10000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000"
     "000000000000000000000000000000000000000000000000000000000000000000000000000000",
     "items.csv:2:26: \"100000000000000000000000000000000000000000000000000000000000...\" is too large: an amount is "
     "999,999,999.99 at most"},
    {"an empty amount", "items.csv", "1,234.50", "", "items.csv:2:26: \"\" is not an amount"},
    {"an amount of spaces", "items.csv", "1,234.50", "  ", "items.csv:2:26: \"  \" is not an amount"},
    {"bytes that are not UTF-8", "items.csv", "Salary", "Sala\xFFry", "items.csv:2:23: \"Sala\\xFFry\" is not UTF-8"},
    {"half of a character at the end", "items.csv", "Bonus,1\n", "Bonus,1\xC3",
     "items.csv:5:28: \"1\\xC3\" is not UTF-8"},
};

INSTANTIATE_TEST_SUITE_P(Ini, PayrunBadInput, testing::ValuesIn(badIni));
INSTANTIATE_TEST_SUITE_P(Employees, PayrunBadInput, testing::ValuesIn(badEmployees));
INSTANTIATE_TEST_SUITE_P(Items, PayrunBadInput, testing::ValuesIn(badItems));

TEST_F(PayrunInput, TheLargestAmountsAreTaken) {
  writeFile(folder_.path("items.csv"),
            "employee,date,kind,description,amount\n"
            "E1,2024-04-28,pay,Salary,\"999,999,999.99\"\n"
            "E2,2024-04-28,pay,Correction,\"-999,999,999.99\"\n");
  EXPECT_EQ(run().status, 0);
  const std::string report = readFile(folder_.path("report.txt"));
  EXPECT_THAT(report, HasSubstr(" 999,999,999.99 "));
  EXPECT_THAT(report, HasSubstr(" -999,999,999.99 "));
  EXPECT_THAT(report, HasSubstr("\nNet pay: £0.00\n"));
}

TEST_F(PayrunInput, AMissingFileIsNamed) {
  for (const char* name : {"items.csv", "employees.csv", "employer.ini"}) {
    std::filesystem::remove(folder_.path(name));
    const Result result = run();
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "payrun: " + folder_.path(name) + ": cannot be read: No such file or directory\n");
    EXPECT_FALSE(std::filesystem::exists(folder_.path("report.txt")));
  }
}

TEST_F(PayrunInput, AFolderInPlaceOfAFileIsNamed) {
  std::filesystem::remove(folder_.path("items.csv"));
  std::filesystem::create_directory(folder_.path("items.csv"));
  const Result result = run();
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err, "payrun: " + folder_.path("items.csv") + ": cannot be read: it is a folder\n");
}

TEST_F(PayrunInput, IsNotWrittenOver) {
  std::filesystem::create_symlink(folder_.path("items.csv"), folder_.path("link"));
  for (const char* name : {"employer.ini", "employees.csv", "items.csv", "link"}) {
    const std::string before = readFile(folder_.path(name));
    for (const bool watching : {false, true}) {
      std::vector<std::string> words = {"--input", folder_.path(),       "--month",  "1",
                                        "--logs",  folder_.path("logs"), "--output", folder_.path(name)};
      if (watching) words.emplace_back("--watch");
      const Result result = runPayrun(folder_, words);
      EXPECT_EQ(result.status, 2);
      EXPECT_EQ(result.err,
                "payrun: --output \"" + folder_.path(name) + "\" is a file of the input; see payrun --help\n");
      EXPECT_EQ(readFile(folder_.path(name)), before);
    }
  }
}

TEST_F(PayrunInput, ThatCostsTheEmployerLessThanNothingIsShownInTheBritishWay) {
  writeFile(folder_.path("items.csv"),
            "employee,date,kind,description,amount\nE1,2024-04-28,deduction,Loan,\"1,234.50\"\n");
  EXPECT_EQ(run().status, 0);
  EXPECT_THAT(readFile(folder_.path("report.txt")),
              HasSubstr("\nNet pay: -£1,234.50\nIn words: minus one thousand two hundred and thirty-four pounds and "
                        "fifty pence\n"));
}

TEST_F(PayrunInput, MayHaveWindowsLineEndsAByteOrderMarkAndNoLastLineEnd) {
  ASSERT_EQ(run().status, 0);
  const std::string report = readFile(folder_.path("report.txt"));
  std::string items = "\xEF\xBB\xBF";
  for (const std::string& line : linesOf(readFile(folder_.path("items.csv")))) items += line + "\r\n";
  items.resize(items.size() - 2);
  writeFile(folder_.path("items.csv"), items);
  EXPECT_EQ(run().status, 0);
  EXPECT_EQ(readFile(folder_.path("report.txt")), report);
}

TEST_F(PayrunInput, PlacesInAFileWithAByteOrderMarkAreCountedAfterIt) {
  writeFile(folder_.path("items.csv"),
            "\xEF\xBB\xBF"
            "employee,date\n");
  EXPECT_THAT(run().err, HasSubstr("items.csv:1:1: \"employee,date\" is not the headings"));
}

TEST_F(PayrunInput, WarnsOfTimesOfDayInTheOrderOfALargeFileUpToItsFirstError) {
  constexpr std::size_t count = 40'000;
  const auto write = [&](const std::map<std::size_t, std::string>& odd) {
    std::string text = "employee,date,kind,description,amount\n";
    for (std::size_t i = 0; i < count; ++i) {
      text += odd.contains(i) ? odd.at(i) : "E1,2024-04-28,pay,Salary of a day,1\n";
    }
    writeFile(folder_.path("items.csv"), text);
  };
  std::map<std::size_t, std::string> odd = {{100, "E1,2024-04-28 01:00:00,pay,Salary,1\n"},
                                            {20'000, "E1,2024-04-28 02:00:00,pay,Salary,1\n"},
                                            {30'000, "E1,2024-04-28 03:00:00,pay,Salary,x\n"},
                                            {30'001, "E1,2024-04-28 04:00:00,pay,Salary,1\n"}};
  write(odd);
  EXPECT_EQ(run().err, "payrun: " + folder_.path("items.csv") + ":30002:35: \"x\" is not an amount\n");
  const std::string warning = "Date time component is non zero : 2024-04-28 0";
  std::vector<std::string> logged;
  for (const std::string& line : linesOf(readLogs(folder_.path("logs")))) {
    const std::size_t at = line.find(warning);
    if (at != std::string::npos) logged.push_back(line.substr(at + warning.size(), 1));
    if (line.find("is not an amount") != std::string::npos) logged.emplace_back("error");
  }
  EXPECT_THAT(logged, ElementsAre("1", "2", "3", "error"));

  std::filesystem::remove_all(folder_.path("logs"));
  odd[count - 1] = "E1,2024-04-28,pay,Sal\xFFry,1\n";
  write(odd);
  EXPECT_EQ(run().err, "payrun: " + folder_.path("items.csv") + ":40001:22: \"Sal\\xFFry\" is not UTF-8\n");
  EXPECT_THAT(readLogs(folder_.path("logs")), Not(HasSubstr("non zero")));
}

}  // namespace
}  // namespace payrun_test
