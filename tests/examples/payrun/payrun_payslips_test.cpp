// Payslips end to end: on standard output, as pages, and from a user's template; and the notices for a clerk.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/examples/payrun/PayrunProgram.h"

namespace payrun_test {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::UnorderedElementsAre;

class PayrunPayslips : public testing::Test {
 protected:
  PayrunPayslips() {
    std::filesystem::create_directory(folder_.path("in"));
    writeFile(folder_.path("in/employer.ini"),
              "[employer]\nname = Test & Sons Ltd\npaye_reference = 123/T1\ntax_year = 2024-25\n[departments]\nOPS = "
              "Operations\nSAL = Sales\n");
    writeFile(folder_.path("in/employees.csv"),
              "employee,name,department,sort_code,account,address\n"
              "E1,王小明,OPS,12-34-56,12345678,\"1 High Street, Cardiff\"\n"
              "E/2,\"<b>O'Neil</b>\",OPS,12-34-56,12345678,\n");
    writeFile(folder_.path("in/items.csv"),
              "employee,date,kind,description,amount\n"
              "E1,2024-04-28,pay,Salary,\"1,234.50\"\n"
              "E1,2024-05-05 13:00:00,bonus,\"Long\nservice\",100\n"
              "E1,2024-05-05 12:59:59,bonus,Suggestion,5.50\n"
              "E/2,2024-04-28,deduction,Season ticket loan,12.34\n");
    writeFile(folder_.path("short.template"),
              "<b>{employee}</b> {£net}\n<items>\n| {description} | <right>{amount}</right> |\n</items>\n");
  }

  std::vector<std::string> arguments(const std::vector<std::string>& more, int month = 1) const {
    std::vector<std::string> all = {"--input", folder_.path("in"),  "--month", std::to_string(month),
                                    "--logs",  folder_.path("logs")};
    all.insert(all.end(), more.begin(), more.end());
    return all;
  }
  Result run(const std::vector<std::string>& more, int month = 1) const {
    return runPayrun(folder_, arguments(more, month));
  }

  TemporaryFolder folder_;
};

constexpr const char* moved =
    "\n"
    "Items of items.csv that their time of day moved to the next day\n"
    "Employee  Name    Line  From                 To\n"
    "--------  ------  ----  -------------------  ----------\n"
    "E1        王小明     3  2024-05-05 13:00:00  2024-05-06\n";

constexpr const char* belowZero =
    "\n"
    "Net pay below zero\n"
    "Employee  Name              Net\n"
    "--------  -------------  ------\n"
    "E/2       <b>O'Neil</b>  -12.34\n";

TEST_F(PayrunPayslips, ArePrintedOneBelowTheOther) {
  const Result result = run({"--payslips", "--template", folder_.path("short.template")});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out,
            "王小明 £1,240.00\n"
            "Salary      1,234.50\n"
            "Suggestion      5.50\n"
            "\n" +
                std::string(80, '=') +
                "\n\n"
                "<b>O'Neil</b> -£12.34\n"
                "Season ticket loan  12.34\n");
  EXPECT_EQ(result.err,
            std::string("payrun: needs attention: 1 item moved by its time of day, 1 net pay below zero\n") + moved +
                belowZero)
      << "no report names them";
}

TEST_F(PayrunPayslips, ThatAreInstalledShowEverything) {
  const Result result = run({"--payslips"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, testing::StartsWith("Test & Sons Ltd\n"
                                              "Payslip for tax month 1 of 2024-25, 6 April 2024 to 5 May 2024\n"
                                              "--------------------------------------------------------------\n"
                                              "Employee        王小明\n"
                                              "Number          E1\n"
                                              "Address         1 High Street\n"
                                              "                Cardiff\n"
                                              "Department      Operations\n"
                                              "PAYE reference  123/T1\n"
                                              "Paid into       12-34-56, 12345678\n"
                                              "\n"
                                              "Date         Payment           Kind                          £\n"));
  EXPECT_THAT(result.out, HasSubstr("\n5 May 2024   Suggestion        Bonus                      5.50\n"));
  EXPECT_THAT(result.out, HasSubstr("The net pay is below zero.\n"));
  EXPECT_THAT(result.out, Not(HasSubstr("\033")));
}

TEST_F(PayrunPayslips, AreInColourOnATerminalThatHasIt) {
  writeFile(folder_.path("red.template"), "<color value=\"#FF0000\">{number}</color>");
  const auto printed = [&](const char* term, const char* colours, const char* noColour) {
    const Result result =
        runPayrunPrintingOnTerminal(folder_, arguments({"--payslips", "--template", folder_.path("red.template")}), 10,
                                    {{"TERM", term}, {"COLORTERM", colours}, {"NO_COLOR", noColour}});
    EXPECT_EQ(result.status, 0) << result.err;
    return linesOf(result.out).at(0);
  };
  EXPECT_EQ(printed("xterm", "", ""), "\033[91mE1\033[0m");
  EXPECT_EQ(printed("xterm-256color", "", ""), "\033[38;5;196mE1\033[0m");
  EXPECT_EQ(printed("xterm", "truecolor", ""), "\033[38;2;255;0;0mE1\033[0m");
  EXPECT_EQ(printed("xterm-256color", "truecolor", "1"), "E1");
  EXPECT_EQ(printed("dumb", "truecolor", ""), "E1");
  EXPECT_EQ(printed("", "", ""), "E1");
}

TEST_F(PayrunPayslips, AreAsWideAsTheTerminal) {
  writeFile(folder_.path("long.template"), "one two three {number}");
  const Result result = runPayrunPrintingOnTerminal(
      folder_, arguments({"--payslips", "--template", folder_.path("long.template")}), 8, {{"TERM", "xterm"}});
  EXPECT_EQ(result.out, "one two\nthree E1\n\n========\n\none two\nthree\nE/2\n");
}

TEST_F(PayrunPayslips, StandBesideAReportThatIsWrittenToAFile) {
  const Result result = run({"--payslips", "--template", folder_.path("short.template"), "--output",
                             folder_.path("report.txt"), "--html", folder_.path("html")});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, testing::StartsWith("王小明 £1,240.00\n"));
  EXPECT_EQ(result.err,
            "payrun: needs attention: 1 item moved by its time of day, 1 net pay below zero; the report names them\n");
  EXPECT_TRUE(readFile(folder_.path("report.txt")).ends_with(std::string(moved) + belowZero));
  EXPECT_THAT(readLogs(folder_.path("logs")),
              HasSubstr("needs attention: 1 item moved by its time of day, 1 net pay below zero"));
}

TEST_F(PayrunPayslips, TheReportIsPrintedWherePagesAreWritten) {
  const Result result = run({"--html", folder_.path("a/html")});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, testing::StartsWith("Test & Sons Ltd\nPAYE reference 123/T1\n"));
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder_.path("a/html"))) {
    names.push_back(entry.path().filename());
  }
  EXPECT_THAT(names, UnorderedElementsAre("E1 王小明 2024-25 month 1.html", "E_2 _b_O'Neil__b_ 2024-25 month 1.html"));
  const std::string page = readFile(folder_.path("a/html/E_2 _b_O'Neil__b_ 2024-25 month 1.html"));
  EXPECT_THAT(page, HasSubstr("<title>Payslip of &lt;b&gt;O&#39;Neil&lt;/b&gt;, tax month 1 of 2024-25</title>"));
  EXPECT_THAT(page, HasSubstr("&lt;b&gt;O&#39;Neil&lt;/b&gt;</span></td>"));
}

TEST_F(PayrunPayslips, ABadTemplateIsRefusedBeforeAnythingIsWritten) {
  writeFile(folder_.path("bad.template"), "{employee}\n<b>{net}\n");
  const Result result = run({"--payslips", "--html", folder_.path("html"), "--output", folder_.path("report.txt"),
                             "--template", folder_.path("bad.template")});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "payrun: " + folder_.path("bad.template") +
                            ":2:1: \"<b>{net}\": Reached end of string with 1 tags remaining (b)\n");
  EXPECT_FALSE(std::filesystem::exists(folder_.path("html")));
  EXPECT_FALSE(std::filesystem::exists(folder_.path("report.txt")));
}

TEST_F(PayrunPayslips, ATemplateThatIsNotThereIsNamed) {
  const Result result = run({"--payslips", "--template", folder_.path("none")});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err, "payrun: " + folder_.path("none") + ": cannot be read: No such file or directory\n");
}

TEST_F(PayrunPayslips, TheReportDoesNotReplaceTheTemplate) {
  const std::string form = folder_.path("short.template"), before = readFile(form);
  const Result result = run({"--payslips", "--template", form, "--output", form});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err, "payrun: --output \"" + form + "\" is the template; see payrun --help\n");
  EXPECT_EQ(readFile(form), before);
}

TEST_F(PayrunPayslips, AnItemThatMovedIntoAMonthIsNamedInItsReport) {
  const Result result = run({}, 2);
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, testing::EndsWith(moved));
  EXPECT_EQ(result.err, "payrun: needs attention: 1 item moved by its time of day; the report names them\n");
  EXPECT_EQ(run({}, 3).err, "");
}

}  // namespace
}  // namespace payrun_test
