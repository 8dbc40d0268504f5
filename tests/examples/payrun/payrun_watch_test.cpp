// The pay run with --watch, end to end: files change while it runs, and it prints which payslips changed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <thread>

#include "tests/examples/payrun/PayrunProgram.h"

namespace payrun_test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* employerIni =
    "[employer]\nname = Gorwel\npaye_reference = 123/GW456\ntax_year = 2024-25\n[departments]\nOPS = Operations\n"
    "SAL = Sales\n";
constexpr const char* headingsOfEmployees = "employee,name,department,sort_code,account\n";
constexpr const char* ann = "E1,Ann Smith,OPS,11-22-33,12345678\n";
constexpr const char* bob = "E2,Bob Jones,SAL,11-22-44,87654321\n";
constexpr const char* headingsOfItems = "employee,date,kind,description,amount\n";
constexpr const char* annsPay = "E1,2024-04-30,pay,April,1000.00\n";
constexpr const char* bobsPay = "E2,2024-04-30,pay,April,2000.00\n";
constexpr const char* bobsTax = "E2,2024-04-30,deduction,Tax,300.00\n";

/// Ann has 1,000.00. Bob has 2,000.00 less 300.00.
class PayrunWatch : public testing::Test {
 protected:
  PayrunWatch() {
    std::filesystem::create_directory(input_);
    writeFile(input_ / "employer.ini", employerIni);
    saveEmployees(std::string(ann) + bob);
    saveItems(std::string(annsPay) + bobsPay + bobsTax);
  }

  /// Saves as editors do: writes another file and renames it, so that no process reads an incomplete file.
  void save(const char* file, const std::string& text) {
    writeFile(folder_.path("draft"), text);
    std::filesystem::rename(folder_.path("draft"), input_ / file);
  }
  void saveItems(const std::string& items) { save("items.csv", headingsOfItems + items); }
  void saveEmployees(const std::string& employees) { save("employees.csv", headingsOfEmployees + employees); }

  std::vector<std::string> arguments() const {
    return {"--watch", "--input", input_.string(), "--month", "1", "--logs", logs_.string()};
  }

  const TemporaryFolder folder_;
  const std::filesystem::path input_ = folder_.path("employer"), logs_ = folder_.path("logs");
};

TEST_F(PayrunWatch, PrintsTheReportAndEndsCleanlyOnEitherSignalWithTheLogFlushed) {
  for (const int signal : {SIGINT, SIGTERM}) {
    WatchingPayrun program(folder_, arguments());
    const std::string report = program.readUntil("In words:");
    EXPECT_THAT(report, StartsWith("Gorwel\nPAYE reference 123/GW456\n"));
    EXPECT_THAT(report, EndsWith("Net pay: £2,700.00\nIn words: two thousand seven hundred pounds and zero pence\n"));
    const Result end = program.stop(signal);
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.out, "");
    EXPECT_EQ(end.err, "payrun: watching " + input_.string() + "; Ctrl-C ends it\n");
    EXPECT_THAT(readLogs(logs_), HasSubstr("2 employees, 3 items"));
    EXPECT_THAT(readLogs(logs_), HasSubstr(signal == SIGINT ? "ended by SIGINT" : "ended by SIGTERM"));
  }
}

TEST_F(PayrunWatch, SaysWhichPayslipsAChangedFileChangesAndTheNewTotals) {
  WatchingPayrun program(folder_, arguments());
  program.readUntil("In words:");
  saveItems(std::string(annsPay) + bobsPay + "E2,2024-04-30,deduction,Tax,350.00\n");
  EXPECT_EQ(program.readUntil("total:"),
            "changed: E2 Bob Jones: deductions 300.00 -> 350.00, deductions to date 300.00 -> 350.00\n"
            "total: pay 3,000.00, deductions 350.00, net 2,650.00\n");
  saveItems(std::string("E1,2024-04-30,pay,April,1100.00\n") + bobsPay + bobsTax);
  EXPECT_EQ(program.readUntil("total:"),
            "changed: E1 Ann Smith: pay 1,000.00 -> 1,100.00, pay to date 1,000.00 -> 1,100.00\n"
            "changed: E2 Bob Jones: deductions 350.00 -> 300.00, deductions to date 350.00 -> 300.00\n"
            "total: pay 3,100.00, deductions 300.00, net 2,800.00\n");
  EXPECT_EQ(program.stop(SIGTERM).status, 0);
}

TEST_F(PayrunWatch, SaysWhoCameWhoWentAndWhoseDetailsChanged) {
  WatchingPayrun program(folder_, arguments());
  program.readUntil("In words:");
  saveItems(annsPay);
  EXPECT_THAT(program.readUntil("total:"), HasSubstr("changed: E2 Bob Jones: pay 2,000.00 -> 0.00"));
  saveEmployees("E1,Ann Brown,SAL,11-22-33,12345678\nE3,Cai Evans,OPS,11-22-55,11112222\n");
  EXPECT_EQ(program.readUntil("total:"),
            "changed: E1 Ann Brown: name Ann Smith -> Ann Brown, department Operations -> Sales\n"
            "new: E3 Cai Evans: pay 0.00, deductions 0.00\n"
            "gone: E2 Bob Jones\n"
            "total: pay 1,000.00, deductions 0.00, net 1,000.00\n");
  EXPECT_EQ(program.stop(SIGTERM).status, 0);
}

TEST_F(PayrunWatch, ABurstOfSavesIsOneRun) {
  WatchingPayrun program(folder_, arguments());
  program.readUntil("In words:");
  const auto saveTax = [&](const std::string& tax) {
    saveItems(std::string(annsPay) + bobsPay + "E2,2024-04-30,deduction,Tax," + tax + "\n");
  };
  // Twenty saves in 0.3 s. On a busy machine two of them may be 0.2 s apart, and are then correctly read twice. Such a
  // burst is repeated.
  const std::string oneRun =
      "changed: E2 Bob Jones: deductions 300.00 -> 420.00, deductions to date 300.00 -> 420.00\n"
      "total: pay 3,000.00, deductions 420.00, net 2,580.00\n";
  std::string printed;
  for (int attempt = 0; attempt < 5 && printed != oneRun; ++attempt) {
    if (attempt > 0) {
      saveTax("300.00");
      program.readUntil("deductions 300.00, net");
    }
    for (int tax = 401; tax <= 420; ++tax) {
      saveTax(std::to_string(tax) + ".00");
      std::this_thread::sleep_for(std::chrono::milliseconds(15));
    }
    printed = program.readUntil("deductions 420.00, net");
  }
  EXPECT_EQ(printed, oneRun);
  EXPECT_EQ(program.stop(SIGTERM).out, "");
}

TEST_F(PayrunWatch, AFileWrittenInPlaceIsAChange) {
  WatchingPayrun program(folder_, arguments());
  program.readUntil("In words:");
  writeFile(input_ / "items.csv", std::string(headingsOfItems) + annsPay);
  EXPECT_THAT(program.readUntil("total: pay 1,000.00"),
              EndsWith("total: pay 1,000.00, deductions 0.00, net 1,000.00\n"));
}

TEST_F(PayrunWatch, AFileThatIsGoneForAWhileIsReportedAndReadWhenItIsBack) {
  WatchingPayrun program(folder_, arguments());
  program.readUntil("In words:");
  std::filesystem::remove(input_ / "employees.csv");
  EXPECT_THAT(program.readErrorUntil("employees.csv"), HasSubstr("cannot be read: No such file or directory"));
  saveEmployees(std::string("E1,Ann Brown,OPS,11-22-33,12345678\n") + bob);
  EXPECT_EQ(program.readUntil("total:"),
            "changed: E1 Ann Brown: name Ann Smith -> Ann Brown\n"
            "total: pay 3,000.00, deductions 300.00, net 2,700.00\n");
}

TEST_F(PayrunWatch, ThoseWhoGoAreNamedInTheOrderOfTheirNumbers) {
  saveEmployees(std::string("E9,Zoe Price,OPS,11-22-66,22223333\nE3,Cai Evans,OPS,11-22-55,11112222\n") + bob + ann);
  WatchingPayrun program(folder_, arguments());
  program.readUntil("In words:");
  saveEmployees(std::string(ann) + bob);
  EXPECT_EQ(program.readUntil("total:"),
            "gone: E3 Cai Evans\ngone: E9 Zoe Price\n"
            "total: pay 3,000.00, deductions 300.00, net 2,700.00\n");
}

TEST_F(PayrunWatch, SavesThatChangeNoPayslipSaySo) {
  WatchingPayrun program(folder_, arguments());
  program.readUntil("In words:");
  saveItems(std::string(bobsTax) + bobsPay + annsPay);
  EXPECT_EQ(program.readUntil("total:"), "no payslip changed\ntotal: pay 3,000.00, deductions 300.00, net 2,700.00\n");
}

TEST_F(PayrunWatch, OtherFilesOfTheFolderAreNotItsConcern) {
  WatchingPayrun program(folder_, arguments());
  program.readUntil("In words:");
  writeFile(input_ / "notes.txt", "remember the bank holiday");
  saveItems(annsPay);
  EXPECT_THAT(program.readUntil("total:"), StartsWith("changed: E2 Bob Jones: pay 2,000.00 -> 0.00"));
}

TEST_F(PayrunWatch, FilesThatCannotBeFollowedAreReportedAndTheNextGoodOnesAreComparedWithTheLastGoodOnes) {
  WatchingPayrun program(folder_, arguments());
  program.readUntil("In words:");
  saveItems("E9,2024-04-30,pay,April,1.00\n");
  EXPECT_THAT(program.readErrorUntil("items.csv"), HasSubstr("\"E9\" is not an employee of employees.csv"));
  saveItems(std::string(annsPay) + bobsPay);
  EXPECT_EQ(program.readUntil("total:"),
            "changed: E2 Bob Jones: deductions 300.00 -> 0.00, deductions to date 300.00 -> 0.00\n"
            "total: pay 3,000.00, deductions 0.00, net 3,000.00\n");
  EXPECT_EQ(program.stop(SIGINT).status, 0);
  EXPECT_THAT(readLogs(logs_), HasSubstr("\"E9\" is not an employee of employees.csv"));
}

TEST_F(PayrunWatch, AnEmployeeNamedInBothFilesIsReadWithBoth) {
  WatchingPayrun program(folder_, arguments());
  program.readUntil("In words:");
  saveItems(std::string(annsPay) + bobsPay + bobsTax + "E3,2024-04-30,pay,April,500.00\n");
  saveEmployees(std::string(ann) + bob + "E3,Cai Evans,OPS,11-22-55,11112222\n");
  EXPECT_EQ(program.readUntil("total:"),
            "new: E3 Cai Evans: pay 500.00, deductions 0.00\n"
            "total: pay 3,500.00, deductions 300.00, net 3,200.00\n");
}

TEST_F(PayrunWatch, TheOutputFileIsWrittenAnew) {
  std::vector<std::string> words = arguments();
  words.insert(words.end(), {"--output", folder_.path("report.txt")});
  WatchingPayrun program(folder_, words);
  program.readErrorUntil("watching");
  EXPECT_THAT(readFile(folder_.path("report.txt")), HasSubstr("Net pay: £2,700.00\n"));
  saveItems(annsPay);
  program.readUntil("total:");
  EXPECT_THAT(readFile(folder_.path("report.txt")), HasSubstr("Net pay: £1,000.00\n"));
}

TEST_F(PayrunWatch, InputThatCannotBeFollowedAtTheBeginningIsRefused) {
  saveItems("E9,2024-04-30,pay,April,1.00\n");
  WatchingPayrun program(folder_, arguments());
  const Result end = program.waitForEnd();
  EXPECT_EQ(end.status, 2);
  EXPECT_EQ(end.out, "");
  EXPECT_THAT(end.err, HasSubstr("\"E9\" is not an employee of employees.csv"));
}

TEST_F(PayrunWatch, AFolderThatIsNotThereIsRefused) {
  std::vector<std::string> words = arguments();
  words[2] = folder_.path("nowhere");
  WatchingPayrun program(folder_, words);
  const Result end = program.waitForEnd();
  EXPECT_EQ(end.status, 2);
  EXPECT_EQ(end.err, "payrun: " + folder_.path("nowhere") + ": cannot be read: No such file or directory\n");
}

TEST_F(PayrunWatch, AFolderThatGoesEndsIt) {
  WatchingPayrun program(folder_, arguments());
  program.readUntil("In words:");
  std::filesystem::rename(input_, folder_.path("elsewhere"));
  const Result end = program.waitForEnd();
  EXPECT_EQ(end.status, 1);
  EXPECT_THAT(end.err, HasSubstr("is not there any more"));
}

TEST_F(PayrunWatch, AReaderThatGoesEndsItWithAnErrorAtTheNextChange) {
  WatchingPayrun program(folder_, arguments());
  program.readUntil("In words:");
  program.closeOut();
  saveItems(annsPay);
  const Result end = program.waitForEnd();
  EXPECT_EQ(end.status, 1);
  EXPECT_THAT(end.err, HasSubstr("standard output"));
}

TEST_F(PayrunWatch, AChangeCostsNoMoreThanARun) {
  const std::filesystem::path many = folder_.path("many");
  ASSERT_EQ(runPayrun(folder_, {"--generate", "2000", "--input", many.string()}).status, 0);
  WatchingPayrun program(folder_, {"--watch", "--input", many.string(), "--month", "1", "--logs", logs_.string(),
                                   "--output", folder_.path("report.txt")});
  program.readErrorUntil("watching");
  const double run = program.cpuSeconds();
  writeFile(folder_.path("draft"), readFile(many / "items.csv") + "E0000001,2024-04-28,bonus,Bonus,1.00\n");
  std::filesystem::rename(folder_.path("draft"), many / "items.csv");
  program.readUntil("total:");
  EXPECT_LT(program.cpuSeconds() - run, 3 * run + 0.1) << "the first run took " << run << " s";
}

TEST_F(PayrunWatch, WaitingUsesNoProcessorTime) {
  WatchingPayrun program(folder_, arguments());
  program.readErrorUntil("watching");
  const double before = program.cpuSeconds();
  std::this_thread::sleep_for(std::chrono::seconds(1));  // measures a second in which nothing happens
  EXPECT_LT(program.cpuSeconds() - before, 0.05);
}

}  // namespace
}  // namespace payrun_test
