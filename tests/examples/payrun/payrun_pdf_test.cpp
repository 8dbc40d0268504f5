// Payslips as PDF files, as poppler reads them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/examples/payrun/PayrunProgram.h"
#include "tests/support/PdfReader.h"

namespace payrun_test {
namespace {

using norvik::test::linesOfPdf;
using norvik::test::readPdf;
using testing::Contains;
using testing::HasSubstr;
using testing::IsSupersetOf;

struct Person {
  std::string name, address;
};

/// An employer of these people. The first one has `items` items on 1 June.
std::filesystem::path writeEmployer(const TemporaryFolder& folder, const std::vector<Person>& people, int items) {
  const std::filesystem::path input = folder.path("input");
  std::filesystem::create_directory(input);
  writeFile(input / "employer.ini",
            "[employer]\nname = Caffi Gorwel\npaye_reference = 123/GW456\ntax_year = 2024-25\n"
            "[departments]\nOPS = Operations\n");
  std::string employees = "employee,name,department,sort_code,account,address\n";
  for (std::size_t i = 0; i < people.size(); ++i) {
    employees += "E" + std::to_string(i + 1) + ",\"" + people[i].name + "\",OPS,12-34-56,12345678,\"" +
                 people[i].address + "\"\n";
  }
  writeFile(input / "employees.csv", employees);
  std::string lines = "employee,date,kind,description,amount\n";
  for (int i = 1; i <= items; ++i) lines += "E1,2024-06-01,pay,Shift " + std::to_string(i) + ",10.25\n";
  writeFile(input / "items.csv", lines);
  return input;
}

/// Prints payslips and returns the paths of the files, sorted by name. Month 2 is May and the first days of June.
std::vector<std::string> printPayslips(const TemporaryFolder& folder, const std::filesystem::path& input) {
  const Result result = runPayrun(folder, {"--input", input.string(), "--month", "2", "--logs", folder.path("logs"),
                                           "--output", folder.path("report.txt"), "--pdf", folder.path("pdf")});
  EXPECT_EQ(result.status, 0) << result.err;
  std::vector<std::string> paths;
  for (const auto& entry : std::filesystem::directory_iterator(folder.path("pdf"))) paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  return paths;
}

TEST(PayrunPdf, EachEmployeeHasAPageOfA4) {
  const TemporaryFolder folder;
  const std::vector<std::string> paths = printPayslips(folder, exampleEmployer());
  ASSERT_EQ(paths.size(), 40u);
  EXPECT_EQ(std::filesystem::path(paths[1]).filename(), "E002 Zo\u00EB Fairweather 2024-25 month 2.pdf");
  const std::string file = readFile(paths[1]);
  const std::vector<std::string> facts = readPdf(NORVIK_PDFINFO, {}, file);
  EXPECT_THAT(facts, IsSupersetOf({"Pages:           1", "Page size:       595.276 x 841.89 pts (A4)",
                                   "Title:           Payslip of Zo\u00EB Fairweather, tax month 2 of 2024-25"}));
  std::string text;
  for (const std::string& line : linesOfPdf(file)) text += line + "\n";
  for (const char* const part :
       {"Caffi Gorwel & Sons Ltd", "Zo\u00EB Fairweather", "E002", "Sales", "20-12-52, 50803771",
        "6 May 2024 to 5 June 2024", "Total pay", "Total deductions", "Net pay"}) {
    EXPECT_THAT(text, HasSubstr(part));
  }
}

TEST(PayrunPdf, ManyItemsGoOnUponAnotherPageUnderTheirHeadings) {
  const TemporaryFolder folder;
  const auto paths = printPayslips(folder, writeEmployer(folder, {{"Zo\u00EB", ""}}, 60));
  ASSERT_EQ(paths.size(), 1u);
  const std::string file = readFile(paths[0]);
  const std::vector<std::string> lines = linesOfPdf(file);
  EXPECT_THAT(readPdf(NORVIK_PDFINFO, {}, file), Contains("Pages:           2"));
  EXPECT_THAT(lines, IsSupersetOf({"Page 1 of 2", "Page 2 of 2"}));
  int items = 0, headings = 0;
  for (const std::string& line : lines) {
    items += line.find("Shift ") != std::string::npos ? 1 : 0;
    headings += line.starts_with("Date") && line.find("Payment") != std::string::npos ? 1 : 0;
  }
  EXPECT_EQ(items, 60);
  EXPECT_EQ(headings, 2);
  EXPECT_THAT(lines, Contains(HasSubstr("615.00")));
}

TEST(PayrunPdf, FortyItemsAreOnOnePage) {
  const TemporaryFolder folder;
  const auto paths = printPayslips(folder, writeEmployer(folder, {{"Zo\u00EB", "1 Low Road, Barmouth, LL42 1AB"}}, 40));
  ASSERT_EQ(paths.size(), 1u);
  const std::string file = readFile(paths[0]);
  EXPECT_THAT(readPdf(NORVIK_PDFINFO, {}, file), Contains("Pages:           1"));
  EXPECT_THAT(linesOfPdf(file), Contains(HasSubstr("Shift 40")));
}

TEST(PayrunPdf, ATotalIsOnThePageOfTheItemAboveIt) {
  const TemporaryFolder folder;
  constexpr int people = 12, fewest = 34;
  const auto input = writeEmployer(folder, std::vector<Person>(people, {"Zo\u00EB", ""}), 0);
  std::string items = "employee,date,kind,description,amount\n";
  for (int person = 1; person <= people; ++person) {
    for (int i = 0; i < fewest + 2 * person; ++i) {
      items += "E" + std::to_string(person) + ",2024-06-01," + (i < 30 ? "pay" : "deduction") + ",Shift,1.00\n";
    }
  }
  writeFile(input / "items.csv", items);
  const auto paths = printPayslips(folder, input);
  ASSERT_EQ(paths.size(), std::size_t{people});
  for (const std::string& path : paths) {
    const auto lines = linesOfPdf(readFile(path));
    for (const char* const total : {"Total pay", "Total deductions"}) {
      const auto found = std::find_if(lines.begin(), lines.end(),
                                      [&](const std::string& line) { return line.find(total) != std::string::npos; });
      ASSERT_TRUE(found != lines.begin() && found != lines.end()) << path;
      EXPECT_THAT(*(found - 1), HasSubstr("Shift")) << path;
    }
  }
}

TEST(PayrunPdf, NamesOfEveryScriptAndLengthAreThere) {
  const TemporaryFolder folder;
  const std::string longName = "Wolfeschlegelsteinhausenbergerdorff Featherstonehaugh-Cholmo";
  const auto paths =
      printPayslips(folder, writeEmployer(folder,
                                          {{longName, "Flat 12, The Old Granary, 221 Long Lane, Aberystwyth, SY23 2AX"},
                                           {"\u738B\u5C0F\u660E", ""},
                                           {"\u0645\u062D\u0645\u062F", ""},
                                           {"Nguye\u0302\u0303n <b>&amp;", ""}},
                                          2));
  ASSERT_EQ(paths.size(), 4u);
  EXPECT_THAT(linesOfPdf(readFile(paths[0])), Contains(HasSubstr(longName)));
  EXPECT_THAT(linesOfPdf(readFile(paths[0])), Contains(HasSubstr("Aberystwyth")));
  EXPECT_THAT(linesOfPdf(readFile(paths[1])), Contains(HasSubstr("\u738B\u5C0F\u660E")));
  EXPECT_THAT(linesOfPdf(readFile(paths[2])), Contains(HasSubstr("\u0645\u062D\u0645\u062F")));
  EXPECT_THAT(linesOfPdf(readFile(paths[3])), Contains(HasSubstr("<b>&amp;")));
  for (const std::string& path : paths) {
    EXPECT_THAT(readPdf(NORVIK_PDFINFO, {}, readFile(path)), Contains("Pages:           1")) << path;
  }
}

TEST(PayrunPdf, ADescriptionThatIsLongerThanAPageGoesOnUponTheNext) {
  const TemporaryFolder folder;
  const std::filesystem::path input = writeEmployer(folder, {{"Zo\u00EB", ""}}, 1);
  std::string description;
  for (int word = 1; word <= 3000; ++word) description += "word" + std::to_string(word) + " ";
  writeFile(input / "items.csv",
            "employee,date,kind,description,amount\nE1,2024-06-01,pay,\"" + description + "end\",10.25\n");
  const auto paths = printPayslips(folder, input);
  ASSERT_EQ(paths.size(), 1u);
  std::string text;
  for (const std::string& line : linesOfPdf(readFile(paths[0]))) text += line + " ";
  for (int word = 1; word <= 3000; ++word) {
    ASSERT_NE(text.find("word" + std::to_string(word) + " "), std::string::npos) << word;
  }
}

TEST(PayrunPdf, AFolderThatCannotBeMadeFailsAndLeavesNothing) {
  const TemporaryFolder folder;
  folder.write("file");
  const Result result = runPayrun(folder, {"--input", exampleEmployer().string(), "--month", "1", "--logs",
                                           folder.path("logs"), "--pdf", folder.path("file")});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr(folder.path("file")));
  EXPECT_EQ(result.out, "");
}

}  // namespace
}  // namespace payrun_test
